#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cerrno>
#include <string>
#include <utility>
#include <vector>

#include "tests/hardware/input_output/channel.h"
#include "tests/support/allocation_counter.h"
#include "tests/support/output_capture.h"
#include "tests/support/private_root.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::test {
namespace {

constexpr char input[] = "/sys/bus/platform/devices/zr_di.0/state";
constexpr char output[] = "/sys/bus/platform/devices/zr_do.0/state";
constexpr char ignition[] = "/sys/class/regulator/regulator.0/name";

const std::vector<std::pair<zrIOType, std::string>>& digitalChannels() {
    static const std::vector<std::pair<zrIOType, std::string>> channels{{DigitalInput, input},
                                                                        {DigitalOutput, output}};
    return channels;
}

/// A bound ignition channel whose attribute then holds @p content.
struct Ignition {
    explicit Ignition(const std::string& content) {
        makeFile(ignition, "ignition-irq\n");
        channel.initialize(IgnitionInput, 0);
        log.clear();
        makeFile(ignition, content);
    }
    ReportLog log;
    Channel channel{DigitalInput, 0};
};

}  // namespace

TEST(GetState, gives_false_for_0_and_true_for_1) {
    for (const auto& [type, path] : digitalChannels()) {
        const ReportLog log;
        makeFile(path, "0\n");
        Channel channel(type, 1);
        bool state = true;
        EXPECT_EQ(channel.getState(&state), 0U);
        EXPECT_FALSE(state);
        EXPECT_EQ(channel.lastValue, 0);
        makeFile(path, "1\n");
        EXPECT_EQ(channel.getState(&state), 0U);
        EXPECT_TRUE(state);
        EXPECT_EQ(channel.lastValue, 1);
        EXPECT_EQ(log.reports(), Reports{});
    }
}

TEST(GetState, returns_10_and_true_for_2) {
    for (const auto& [type, path] : digitalChannels()) {
        const ReportLog log;
        makeFile(path, "2\n");
        Channel channel(type, 1);
        bool state = false;
        EXPECT_EQ(channel.getState(&state), 10U);
        EXPECT_TRUE(state);
        EXPECT_EQ(channel.lastValue, -1);
        EXPECT_EQ(
            log.reports(),
            Reports{inputOutputReport("Received not possible state from digital I/O " + path)});
    }
}

TEST(GetState, returns_10_and_true_for_any_number_but_0_and_1) {
    const ReportLog log;
    for (const char* const content : {"-1\n", "3\n", "255\n", "2147483647\n", "-2147483648\n"}) {
        makeFile(input, content);
        Channel channel(DigitalInput, 1);
        bool state = false;
        EXPECT_EQ(channel.getState(&state), 10U) << content;
        EXPECT_TRUE(state) << content;
    }
}

TEST(GetState, an_impossible_state_leaves_the_last_value) {
    const ReportLog log;
    makeFile(input, "0\n");
    Channel channel(DigitalInput, 1);
    bool state = false;
    EXPECT_EQ(channel.getState(&state), 0U);
    makeFile(input, "7\n");
    EXPECT_EQ(channel.getState(&state), 10U);
    EXPECT_EQ(channel.lastValue, 0);
}

TEST(GetState, a_failed_read_returns_5_reports_and_changes_nothing) {
    for (const auto& [type, path] : digitalChannels())
        for (const char* const content : {"", "on\n", "1 1\n", "99999999999\n"}) {
            makeFile(path, "1\n");
            ReportLog log;
            Channel channel(type, 1);
            bool state = false;
            EXPECT_EQ(channel.getState(&state), 0U);
            makeFile(path, content);
            for (const bool before : {false, true}) {
                state = before;
                log.clear();
                EXPECT_EQ(channel.getState(&state), 5U) << content;
                EXPECT_EQ(state, before);
                EXPECT_EQ(channel.lastValue, 1);
                EXPECT_EQ(log.reports(), Reports{inputOutputReport("Reading state")});
            }
        }
}

TEST(GetState, a_driver_that_goes_fails_the_read_and_one_that_comes_back_is_read) {
    const ReportLog log;
    makeFile(input, "1\n");
    Channel channel(DigitalInput, 1);
    bool state = false;
    removeFile(input);
    EXPECT_EQ(channel.getState(&state), 5U);
    EXPECT_EQ(channel.getState(&state), 5U);
    makeFile(input, "1\n");
    EXPECT_EQ(channel.getState(&state), 0U);
    EXPECT_TRUE(state);
}

TEST(GetState, any_error_of_a_call_returns_5_and_the_next_read_works) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    makeFile(input, "1\n");
    for (const long call : {SYS_openat, SYS_read})
        for (const int error : {EIO, EACCES, ENOENT}) {
            const Trace trace = traceSystemCalls(
                [](TracedRun& run) {
                    const ReportLog log;
                    Channel channel(DigitalInput, 1);
                    bool state = false;
                    run.begin();
                    const unsigned int first = channel.getState(&state);
                    const unsigned int second = channel.getState(&state);
                    run.end();
                    run.say(std::to_string(first) + ' ' + std::to_string(second) + ' ' +
                            log.reports().at(0).message);
                },
                {{}, {{call, 1, error, 0}}});
            EXPECT_EQ(trace.text, "5 0 Reading state");
        }
}

TEST(GetState, costs_three_system_calls_on_the_path_and_no_heap) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    makeFile(input, "1\n");
    const Trace trace = traceSystemCalls([](TracedRun& run) {
        Channel channel(DigitalInput, 1);
        bool state = false;
        const AllocationCounter counter;
        run.begin();
        (void)channel.getState(&state);
        run.end();
        run.say(std::to_string(counter.count()));
    });
    EXPECT_EQ(trace.names(), "openat read close");
    EXPECT_EQ(trace.calls.at(0).text, input);
    if (canCountAllocations()) {
        EXPECT_EQ(trace.text, "0");
    }
}

TEST(GetState, a_channel_out_of_range_has_nothing_to_read) {
    for (const zrIOType type : {DigitalInput, DigitalOutput}) {
        const ReportLog log;
        Channel channel(type, 9);
        bool state = true;
        EXPECT_EQ(channel.getState(&state), 5U);
        EXPECT_TRUE(state);
        EXPECT_EQ(log.reports(), Reports{inputOutputReport("Reading state")});
    }
}

TEST(GetState, prints_nothing) {
    const ReportLog log;
    makeFile(input, "2\n");
    Channel channel(DigitalInput, 1);
    const OutputCapture capture;
    bool state = false;
    EXPECT_EQ(channel.getState(&state), 10U);
    EXPECT_EQ(capture.output() + capture.errors(), "");
}

TEST(GetState, an_enabled_ignition_is_true) {
    for (const char* const content : {"enabled\n", "enabled"}) {
        Ignition ignitionInput(content);
        bool state = false;
        EXPECT_EQ(ignitionInput.channel.getState(&state), 0U);
        EXPECT_TRUE(state);
        EXPECT_EQ(ignitionInput.channel.lastValue, 1);
        EXPECT_EQ(ignitionInput.log.reports(), Reports{});
    }
}

TEST(GetState, a_disabled_ignition_is_false) {
    Ignition ignitionInput("disabled\n");
    bool state = true;
    EXPECT_EQ(ignitionInput.channel.getState(&state), 0U);
    EXPECT_FALSE(state);
    EXPECT_EQ(ignitionInput.channel.lastValue, 0);
    EXPECT_EQ(ignitionInput.log.reports(), Reports{});
}

TEST(GetState, an_ignition_with_any_other_text_is_false) {
    for (const char* const content : {"", "1\n", "Enabled\n", "enabled \n", " enabled\n",
                                      "enabled\nenabled\n", "ignition-irq\n"}) {
        Ignition ignitionInput(content);
        bool state = true;
        EXPECT_EQ(ignitionInput.channel.getState(&state), 0U) << content;
        EXPECT_FALSE(state) << content;
        EXPECT_EQ(ignitionInput.channel.lastValue, 0) << content;
    }
}

TEST(GetState, an_ignition_that_cannot_be_read_returns_5_and_changes_nothing) {
    Ignition ignitionInput("enabled\n");
    bool state = false;
    EXPECT_EQ(ignitionInput.channel.getState(&state), 0U);
    removeFile(ignition);
    for (const bool before : {false, true}) {
        state = before;
        ignitionInput.log.clear();
        EXPECT_EQ(ignitionInput.channel.getState(&state), 5U);
        EXPECT_EQ(state, before);
        EXPECT_EQ(ignitionInput.channel.lastValue, 1);
        EXPECT_EQ(ignitionInput.log.reports(),
                  Reports{inputOutputReport("Reading ignition state")});
    }
}

TEST(GetState, an_ignition_that_was_never_found_returns_5) {
    ReportLog log;
    Channel channel(IgnitionInput, 0);
    log.clear();
    bool state = true;
    EXPECT_EQ(channel.getState(&state), 5U);
    EXPECT_TRUE(state);
    EXPECT_EQ(log.reports(), Reports{inputOutputReport("Reading ignition state")});
}

TEST(GetState, every_other_type_returns_11_with_a_report) {
    for (const zrIOType type : {AnalogInput, AnalogOutput, PowerSensor, LightSensor,
                                TemperatureSensor, RadarSensor, FrequencyInput, InvalidType}) {
        ReportLog log;
        Channel channel(type, 1);
        for (const bool before : {false, true}) {
            bool state = before;
            log.clear();
            EXPECT_EQ(channel.getState(&state), 11U) << type;
            EXPECT_EQ(state, before) << type;
            EXPECT_EQ(channel.lastValue, -1) << type;
            EXPECT_EQ(log.reports(),
                      Reports{inputOutputReport(
                          "Trying to get state from neither digital input or digital output.")});
        }
    }
}

}  // namespace ZR::test
