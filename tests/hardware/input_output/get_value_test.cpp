#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cerrno>
#include <climits>
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

constexpr char input[] = "/sys/class/analog/ai.0/value";
constexpr int untouched = 4711;

const std::vector<std::pair<zrIOType, std::string>>& analogChannels() {
    static const std::vector<std::pair<zrIOType, std::string>> channels{
        {AnalogInput, input},
        {PowerSensor, "/sys/class/analog/supply_vcc/value"},
        {LightSensor, "/sys/class/analog/light/value"},
        {TemperatureSensor, "/sys/class/analog/temperature/value"},
        {FrequencyInput, "/sys/class/analog/frequency/value"}};
    return channels;
}

struct Reading {
    int content;  ///< of the attribute
    int value;    ///< as getValue() is to give it
};

}  // namespace

TEST(GetValue, reads_every_analog_type) {
    for (const auto& [type, path] : analogChannels()) {
        const ReportLog log;
        makeFile(path, "1234\n");
        Channel channel(type, 1);
        int value = untouched;
        EXPECT_EQ(channel.getValue(&value), 0U) << path;
        EXPECT_EQ(value, 1234) << path;
        EXPECT_EQ(channel.lastValue, 1234) << path;
        EXPECT_EQ(log.reports(), Reports{}) << path;
    }
}

TEST(GetValue, gives_the_low_16_bits_and_remembers_the_whole_number) {
    for (const Reading& reading : std::vector<Reading>{{0, 0},
                                                       {65535, 65535},
                                                       {65536, 0},
                                                       {70000, 4464},
                                                       {-1, 65535},
                                                       {-65536, 0},
                                                       {INT_MAX, 65535},
                                                       {INT_MIN, 0}}) {
        makeFile(input, std::to_string(reading.content) + '\n');
        Channel channel(AnalogInput, 1);
        int value = untouched;
        EXPECT_EQ(channel.getValue(&value), 0U);
        EXPECT_EQ(value, reading.value) << reading.content;
        EXPECT_EQ(channel.lastValue, reading.content);
    }
}

TEST(GetValue, does_not_scale) {
    makeFile(input, "8525\n");
    Channel channel(AnalogInput, 1);
    int value = untouched;
    EXPECT_EQ(channel.getValue(&value), 0U);
    EXPECT_EQ(value, 8525);
}

TEST(GetValue, a_failed_read_returns_5_reports_and_changes_nothing) {
    for (const auto& [type, path] : analogChannels())
        for (const char* const content : {"", "warm\n", "1.5\n", "2147483648\n"}) {
            makeFile(path, "77\n");
            ReportLog log;
            Channel channel(type, 1);
            int value = 0;
            EXPECT_EQ(channel.getValue(&value), 0U);
            makeFile(path, content);
            value = untouched;
            EXPECT_EQ(channel.getValue(&value), 5U) << content;
            EXPECT_EQ(value, untouched) << content;
            EXPECT_EQ(channel.lastValue, 77) << content;
            EXPECT_EQ(log.reports(), Reports{inputOutputReport("Reading int value")});
        }
}

TEST(GetValue, a_sensor_that_goes_fails_the_read_and_one_that_comes_back_is_read) {
    const ReportLog log;
    makeFile(input, "1\n");
    Channel channel(AnalogInput, 1);
    removeFile(input);
    int value = untouched;
    EXPECT_EQ(channel.getValue(&value), 5U);
    EXPECT_EQ(channel.getValue(&value), 5U);
    makeFile(input, "2\n");
    EXPECT_EQ(channel.getValue(&value), 0U);
    EXPECT_EQ(value, 2);
}

TEST(GetValue, any_transient_error_returns_5_and_the_next_read_works) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    makeFile(input, "12\n");
    for (const int error : {EIO, EAGAIN, ENODATA, ENXIO, ETIMEDOUT, ENODEV, EACCES}) {
        const Trace trace = traceSystemCalls(
            [](TracedRun& run) {
                const ReportLog log;
                Channel channel(AnalogInput, 1);
                int value = untouched;
                run.begin();
                const unsigned int first = channel.getValue(&value);
                const unsigned int second = channel.getValue(&value);
                run.end();
                run.say(std::to_string(first) + ' ' + std::to_string(second) + ' ' +
                        std::to_string(value));
            },
            {{}, {{SYS_read, 1, error, 0}}});
        EXPECT_EQ(trace.text, "5 0 12");
    }
}

TEST(GetValue, costs_three_system_calls_on_the_path_and_no_heap) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    makeFile(input, "12\n");
    const Trace trace = traceSystemCalls([](TracedRun& run) {
        Channel channel(AnalogInput, 1);
        int value = untouched;
        const AllocationCounter counter;
        run.begin();
        (void)channel.getValue(&value);
        run.end();
        run.say(std::to_string(counter.count()));
    });
    EXPECT_EQ(trace.names(), "openat read close");
    EXPECT_EQ(trace.calls.at(0).text, input);
    if (canCountAllocations()) {
        EXPECT_EQ(trace.text, "0");
    }
}

TEST(GetValue, an_analog_input_out_of_range_has_nothing_to_read) {
    const ReportLog log;
    Channel channel(AnalogInput, 5);
    int value = untouched;
    EXPECT_EQ(channel.getValue(&value), 5U);
    EXPECT_EQ(value, untouched);
    EXPECT_EQ(log.reports(), Reports{inputOutputReport("Reading int value")});
}

TEST(GetValue, a_sensor_that_could_not_be_opened_fails_with_5) {
    for (const auto& [type, path] : analogChannels()) {
        ReportLog log;
        Channel channel(type, 1);
        log.clear();
        int value = untouched;
        EXPECT_EQ(channel.getValue(&value), 5U) << path;
        EXPECT_EQ(log.reports(), Reports{inputOutputReport("Reading int value")});
    }
}

TEST(GetValue, every_other_type_returns_11_and_reports_nothing) {
    for (const zrIOType type :
         {DigitalInput, DigitalOutput, AnalogOutput, RadarSensor, IgnitionInput, InvalidType}) {
        ReportLog log;
        Channel channel(type, 1);
        log.clear();
        const OutputCapture capture;
        int value = untouched;
        EXPECT_EQ(channel.getValue(&value), 11U) << type;
        EXPECT_EQ(value, untouched) << type;
        EXPECT_EQ(channel.lastValue, -1) << type;
        EXPECT_EQ(log.reports(), Reports{}) << type;
        EXPECT_EQ(capture.output() + capture.errors(), "") << type;
    }
}

}  // namespace ZR::test
