#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cerrno>
#include <string>
#include <vector>

#include "tests/hardware/input_output/channel.h"
#include "tests/support/private_root.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::test {
namespace {

constexpr char openReport[] = "Opening ignition input file";

std::string nameFile(const std::string& regulator) {
    return "/sys/class/regulator/" + regulator + "/name";
}

void makeRegulator(const std::string& regulator, const std::string& name) {
    makeFile(nameFile(regulator), name);
}

/// The path that a new ignition channel finds; empty when it finds none.
std::string foundPath() {
    const ReportLog log;
    const Channel channel(IgnitionInput, 0);
    return channel.path;
}

/// The calls that binding an ignition channel makes, after an earlier channel was made.
Trace traceBinding(const FaultPlan& plan = {}) {
    return traceSystemCalls(
        [](TracedRun& run) {
            const ReportLog log;
            Channel channel(IgnitionInput, 0);
            run.begin();
            const unsigned int result = channel.initialize(IgnitionInput, 0);
            run.end();
            run.say(std::to_string(result));
        },
        plan);
}

}  // namespace

TEST(Ignition, binds_the_name_of_the_regulator_that_is_called_ignition_irq) {
    makeRegulator("regulator.0", "vcc\n");
    makeRegulator("regulator.1", "ignition-irq\n");
    makeRegulator("regulator.2", "5v\n");
    const ReportLog log;
    const Channel channel(IgnitionInput, 0);
    EXPECT_EQ(channel.type, IgnitionInput);
    EXPECT_EQ(channel.path, nameFile("regulator.1"));
    EXPECT_EQ(Channel::ignitionInputPath, nameFile("regulator.1"));
    ASSERT_TRUE(isOpen(channel.fileDescriptor));
    EXPECT_EQ(accessMode(channel.fileDescriptor), O_RDONLY);
    EXPECT_TRUE(closesOnExec(channel.fileDescriptor));
    EXPECT_EQ(log.reports(), Reports{});
}

TEST(Ignition, initialize_returns_0_and_ignores_the_channel) {
    makeRegulator("regulator.1", "ignition-irq\n");
    for (const unsigned short number : std::vector<unsigned short>{0, 1, 5, 65535}) {
        Channel channel(IgnitionInput, number);
        EXPECT_EQ(channel.initialize(IgnitionInput, number), 0U);
        EXPECT_EQ(channel.channel, number);
    }
}

TEST(Ignition, is_found_behind_links_to_folders) {
    makeFile("/sys/devices/soc/regulators/regulator/regulator.7/name", "ignition-irq\n");
    makeLink("/sys/class/regulator/regulator.7",
             "../../devices/soc/regulators/regulator/regulator.7");
    EXPECT_EQ(foundPath(), nameFile("regulator.7"));
}

TEST(Ignition, is_found_by_a_name_without_a_newline) {
    makeRegulator("regulator.0", "ignition-irq");
    EXPECT_EQ(foundPath(), nameFile("regulator.0"));
}

TEST(Ignition, the_first_of_two_in_the_order_of_their_names_is_taken) {
    makeRegulator("regulator.2", "ignition-irq\n");
    makeRegulator("regulator.1", "ignition-irq\n");
    makeRegulator("regulator.0", "vcc\n");
    EXPECT_EQ(foundPath(), nameFile("regulator.1"));
}

TEST(Ignition, the_search_ends_at_the_first_match) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    makeRegulator("regulator.1", "ignition-irq\n");
    makeRegulator("regulator.2", "ignition-irq\n");
    makeRegulator("regulator.3", "vcc\n");
    const Trace trace = traceSystemCalls([](TracedRun& run) {
        run.begin();
        const Channel channel(IgnitionInput, 0);
        run.end();
    });
    for (const SystemCall& call : trace.calls) {
        EXPECT_NE(call.text, nameFile("regulator.2"));
        EXPECT_NE(call.text, nameFile("regulator.3"));
    }
    EXPECT_GT(trace.count("getdents64"), 0U) << trace.names();
}

TEST(Ignition, a_regulator_called_ignition_is_not_the_ignition) {
    makeRegulator("regulator.0", "ignition\n");
    makeRegulator("ignition", "vcc\n");
    EXPECT_EQ(foundPath(), "");
}

TEST(Ignition, a_name_must_match_whole_and_in_case) {
    makeRegulator("regulator.0", "ignition-irq \n");
    makeRegulator("regulator.1", "Ignition-irq\n");
    makeRegulator("regulator.2", "ignition-irq2\n");
    makeRegulator("regulator.3", "an ignition-irq\n");
    makeRegulator("regulator.4", std::string("ignition-irq\0\n", 14));
    EXPECT_EQ(foundPath(), "");
}

TEST(Ignition, entries_that_are_no_folders_or_have_no_name_are_passed_over) {
    makeFile("/sys/class/regulator/a_file", "ignition-irq\n");
    makeFolder("/sys/class/regulator/nameless");
    makeFolder("/sys/class/regulator/name_is_a_folder/name");
    makeLink("/sys/class/regulator/dangling", "no_such_entry");
    makeRegulator("regulator.0", "ignition-irq\n");
    EXPECT_EQ(foundPath(), nameFile("regulator.0"));
}

TEST(Ignition, a_name_that_cannot_be_read_does_not_end_the_search) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    makeRegulator("regulator.0", "vcc\n");
    makeRegulator("regulator.1", "ignition-irq\n");
    const Trace trace = traceSystemCalls(
        [](TracedRun& run) {
            run.begin();
            const Channel channel(IgnitionInput, 0);
            run.end();
            run.say(channel.path);
        },
        {{}, {{SYS_read, 1, EIO, 0}}});
    EXPECT_EQ(trace.text, nameFile("regulator.1"));
}

TEST(Ignition, the_path_is_found_once_and_used_by_later_channels) {
    makeRegulator("regulator.1", "ignition-irq\n");
    ASSERT_EQ(foundPath(), nameFile("regulator.1"));
    makeRegulator("regulator.0", "ignition-irq\n");
    makeRegulator("regulator.1", "renamed\n");
    EXPECT_EQ(foundPath(), nameFile("regulator.1"));
}

TEST(Ignition, a_later_channel_opens_the_path_without_listing_the_regulators) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    makeRegulator("regulator.1", "ignition-irq\n");
    const Trace trace = traceBinding();
    EXPECT_EQ(trace.names(), "openat");
    EXPECT_EQ(trace.calls.at(0).text, nameFile("regulator.1"));
    EXPECT_EQ(trace.text, "0");
}

TEST(Ignition, a_path_that_is_gone_fails_with_2_without_a_new_search) {
    makeRegulator("regulator.1", "ignition-irq\n");
    ASSERT_EQ(foundPath(), nameFile("regulator.1"));
    removeFile("/sys/class/regulator/regulator.1");
    makeRegulator("regulator.2", "ignition-irq\n");
    const ReportLog log;
    Channel channel(IgnitionInput, 0);
    EXPECT_EQ(channel.path, nameFile("regulator.1"));
    EXPECT_EQ(channel.fileDescriptor, -1);
    EXPECT_EQ(log.reports(), failedConstruction(openReport));
    EXPECT_EQ(channel.initialize(IgnitionInput, 0), 2U);
}

TEST(Ignition, without_a_match_every_construction_fails_with_2) {
    makeRegulator("regulator.0", "vcc\n");
    for (int i = 0; i < 3; ++i) {
        ReportLog log;
        Channel channel(IgnitionInput, 0);
        EXPECT_EQ(channel.type, IgnitionInput);
        EXPECT_EQ(channel.path, "");
        EXPECT_EQ(channel.fileDescriptor, -1);
        EXPECT_EQ(Channel::ignitionInputPath, "");
        EXPECT_EQ(log.reports(), failedConstruction(openReport));
        log.clear();
        EXPECT_EQ(channel.initialize(IgnitionInput, 0), 2U);
        EXPECT_EQ(log.reports(), Reports{inputOutputReport(openReport)});
    }
}

TEST(Ignition, without_any_regulators_it_fails_with_2) {
    const ReportLog log;
    const Channel channel(IgnitionInput, 0);
    EXPECT_EQ(channel.path, "");
    EXPECT_EQ(log.reports(), failedConstruction(openReport));
}

TEST(Ignition, a_failed_search_is_repeated_by_every_later_channel) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    makeRegulator("regulator.0", "vcc\n");
    const Trace trace = traceBinding();
    EXPECT_GT(trace.count("getdents64"), 0U) << trace.names();
    EXPECT_EQ(trace.text, "2");
}

TEST(Ignition, a_regulator_that_comes_later_is_found_then) {
    EXPECT_EQ(foundPath(), "");
    makeRegulator("regulator.3", "ignition-irq\n");
    EXPECT_EQ(foundPath(), nameFile("regulator.3"));
}

}  // namespace ZR::test
