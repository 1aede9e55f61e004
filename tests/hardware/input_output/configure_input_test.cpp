#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cerrno>
#include <climits>
#include <locale>
#include <string>

#include "tests/hardware/input_output/channel.h"
#include "tests/support/output_capture.h"
#include "tests/support/private_root.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::test {
namespace {

constexpr char missing[] = "missing";
constexpr char kept[] = "before\n";

class GroupedDigits : public std::numpunct<char> {
  protected:
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

/// The attributes of one analog input beside its value.
struct Attributes {
    explicit Attributes(const std::string& instance)
        : folder("/sys/class/analog/ai." + instance + '/') {}

    void make(const char* name) const { makeFile(folder + name, kept); }
    void makeAll() const {
        for (const char* const name : {"measure_mode", "toggle_load", "hysteresis"})
            make(name);
    }
    std::string content(const char* name) const {
        return exists(folder + name) ? readFile(folder + name) : missing;
    }
    std::string contents() const {
        return content("measure_mode") + ' ' + content("toggle_load") + ' ' + content("hysteresis");
    }

    std::string folder;
};

/// An object that is none of the board's analog inputs, which configureInput() does not mind.
struct Unbound {
    ReportLog log;
    OutputCapture capture;
    Channel channel{DigitalInput, 0};

    void expectSilence() const {
        EXPECT_EQ(log.reports(), Reports{});
        EXPECT_EQ(capture.output() + capture.errors(), "");
    }
};

/// What the mode leaves with all files present: contents and recorded mode.
void expectMode(int mode, unsigned int result, const std::string& measureMode,
                const std::string& toggleLoad, int recorded) {
    const Attributes input("0");
    input.makeAll();
    Unbound unbound;
    unbound.channel.measureMode = 99;
    EXPECT_EQ(unbound.channel.configureInput(1, mode, 25), result) << mode;
    EXPECT_EQ(input.contents(), measureMode + ' ' + toggleLoad + " 25") << mode;
    EXPECT_EQ(unbound.channel.measureMode, recorded) << mode;
    EXPECT_EQ(unbound.channel.hysteresis, 25) << mode;
    unbound.expectSilence();
}

}  // namespace

TEST(ConfigureInput, mode_0_writes_0_and_records_0) {
    expectMode(0, 0, "0", kept, 0);
}

TEST(ConfigureInput, mode_1_writes_0_and_records_1) {
    expectMode(1, 0, "0", kept, 1);
}

TEST(ConfigureInput, mode_2_writes_1_toggles_the_load_and_records_2) {
    expectMode(2, 0, "1", "1", 2);
}

TEST(ConfigureInput, a_mode_out_of_range_returns_11_and_still_writes_the_hysteresis) {
    for (const int mode : {3, 4, 256, INT_MAX, -1, -2, INT_MIN})
        expectMode(mode, 11, kept, kept, 99);
}

TEST(ConfigureInput, without_any_attribute_it_returns_0_and_records_the_hysteresis) {
    const Attributes input("0");
    for (const int mode : {0, 1, 2, 3, -1}) {
        Unbound unbound;
        EXPECT_EQ(unbound.channel.configureInput(1, mode, 42), 0U) << mode;
        EXPECT_EQ(unbound.channel.hysteresis, 42) << mode;
        EXPECT_EQ(unbound.channel.measureMode, 0) << mode;
        EXPECT_FALSE(exists("/sys/class/analog"));
        unbound.expectSilence();
    }
}

TEST(ConfigureInput, without_a_measure_mode_the_mode_is_neither_checked_nor_recorded) {
    for (const int mode : {1, 2, 3, -1, INT_MIN}) {
        const Attributes input("0");
        input.make("hysteresis");
        input.make("toggle_load");
        Unbound unbound;
        EXPECT_EQ(unbound.channel.configureInput(1, mode, 7), 0U) << mode;
        EXPECT_EQ(input.contents(), std::string("missing ") + kept + " 7") << mode;
        EXPECT_EQ(unbound.channel.measureMode, 0) << mode;
    }
}

TEST(ConfigureInput, without_a_hysteresis_file_the_mode_is_written_alone) {
    const Attributes input("0");
    input.make("measure_mode");
    input.make("toggle_load");
    Unbound unbound;
    EXPECT_EQ(unbound.channel.configureInput(1, 2, 7), 0U);
    EXPECT_EQ(input.contents(), "1 1 missing");
    EXPECT_EQ(unbound.channel.hysteresis, 7);
    EXPECT_EQ(unbound.channel.measureMode, 2);
}

TEST(ConfigureInput, without_a_hysteresis_file_a_bad_mode_returns_11) {
    const Attributes input("0");
    input.make("measure_mode");
    Unbound unbound;
    EXPECT_EQ(unbound.channel.configureInput(1, 3, 7), 11U);
    EXPECT_EQ(input.contents(), std::string(kept) + " missing missing");
    EXPECT_EQ(unbound.channel.hysteresis, 7);
    EXPECT_EQ(unbound.channel.measureMode, 0);
}

TEST(ConfigureInput, a_missing_load_switch_is_not_made_and_no_failure) {
    const Attributes input("0");
    input.make("measure_mode");
    input.make("hysteresis");
    Unbound unbound;
    EXPECT_EQ(unbound.channel.configureInput(1, 2, 7), 0U);
    EXPECT_EQ(input.contents(), "1 missing 7");
    unbound.expectSilence();
}

TEST(ConfigureInput, a_folder_is_no_attribute) {
    makeFolder("/sys/class/analog/ai.0/measure_mode");
    makeFolder("/sys/class/analog/ai.0/hysteresis");
    Unbound unbound;
    EXPECT_EQ(unbound.channel.configureInput(1, 3, 7), 0U);
    EXPECT_EQ(unbound.channel.measureMode, 0);
    unbound.expectSilence();
}

TEST(ConfigureInput, any_hysteresis_is_written_as_it_is) {
    const Attributes input("0");
    for (const int hysteresis : {0, -1, 1000000, INT_MAX, INT_MIN}) {
        input.make("hysteresis");
        Unbound unbound;
        EXPECT_EQ(unbound.channel.configureInput(1, 0, hysteresis), 0U);
        EXPECT_EQ(input.content("hysteresis"), std::to_string(hysteresis));
        EXPECT_EQ(unbound.channel.hysteresis, hysteresis);
    }
}

TEST(ConfigureInput, the_port_chooses_the_input_and_not_the_objects_channel) {
    makeFile("/sys/class/analog/ai.0/value", "1\n");
    const Attributes own("0");
    const Attributes other("2");
    own.makeAll();
    other.makeAll();
    Channel channel(AnalogInput, 1);
    EXPECT_EQ(channel.configureInput(3, 1, 5), 0U);
    EXPECT_EQ(own.contents(), std::string(kept) + ' ' + kept + ' ' + kept);
    EXPECT_EQ(other.contents(), std::string("0 ") + kept + " 5");
    EXPECT_EQ(channel.path, "/sys/class/analog/ai.0/value");
}

TEST(ConfigureInput, the_instance_is_the_port_less_1_in_decimal) {
    struct Port {
        int number;
        const char* instance;
    };
    for (const Port& port :
         {Port{1, "0"}, Port{10, "9"}, Port{11, "10"}, Port{0, "-1"}, Port{-5, "-6"},
          Port{INT_MAX, "2147483646"}, Port{INT_MIN, "-2147483649"}}) {
        const Attributes input(port.instance);
        input.make("hysteresis");
        Unbound unbound;
        EXPECT_EQ(unbound.channel.configureInput(port.number, 0, 3), 0U);
        EXPECT_EQ(input.content("hysteresis"), "3") << port.number;
    }
}

TEST(ConfigureInput, a_global_locale_that_groups_digits_changes_nothing) {
    const Attributes input("1000");
    input.makeAll();
    Unbound unbound;
    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new GroupedDigits));
    EXPECT_EQ(unbound.channel.configureInput(1001, 2, 123456), 0U);
    std::locale::global(before);
    EXPECT_EQ(input.contents(), "1 1 123456");
}

TEST(ConfigureInput, writes_the_mode_the_load_and_the_hysteresis_in_this_order) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Attributes input("0");
    input.makeAll();
    const Trace trace = traceSystemCalls([](TracedRun& run) {
        Channel channel(DigitalInput, 0);
        run.begin();
        (void)channel.configureInput(1, 2, 17);
        run.end();
    });
    std::string writes;
    for (const SystemCall& call : trace.calls)
        if (call.name == "openat" || call.name == "write")
            writes += call.text + '\n';
    EXPECT_EQ(writes,
              "/sys/class/analog/ai.0/measure_mode\n1\n"
              "/sys/class/analog/ai.0/toggle_load\n1\n"
              "/sys/class/analog/ai.0/hysteresis\n17\n");
}

TEST(ConfigureInput, writes_that_the_driver_refuses_show_in_no_result) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Attributes input("0");
    input.makeAll();
    const Trace trace = traceSystemCalls(
        [](TracedRun& run) {
            const ReportLog log;
            Channel channel(DigitalInput, 0);
            run.begin();
            const unsigned int result = channel.configureInput(1, 2, 17);
            run.end();
            run.say(std::to_string(result) + ' ' + std::to_string(channel.measureMode) + ' ' +
                    std::to_string(channel.hysteresis) + ' ' +
                    std::to_string(log.reports().size()));
        },
        {{}, {{SYS_write, 1, EIO, 0}, {SYS_write, 2, EINVAL, 0}, {SYS_write, 3, ERANGE, 0}}});
    EXPECT_EQ(trace.count("write"), 3U);
    EXPECT_EQ(trace.text, "0 2 17 0");
}

}  // namespace ZR::test
