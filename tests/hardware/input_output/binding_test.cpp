#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cerrno>
#include <climits>
#include <string>
#include <vector>

#include "tests/hardware/input_output/channel.h"
#include "tests/support/output_capture.h"
#include "tests/support/private_root.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::test {
namespace {

struct Binding {
    zrIOType type;
    unsigned short channel;
    std::string path;
    int accessMode;
};

std::vector<Binding> numberedChannels() {
    std::vector<Binding> bindings;
    const auto add = [&bindings](zrIOType type, unsigned short channels, const std::string& prefix,
                                 const std::string& suffix, int mode) {
        for (unsigned short channel = 1; channel <= channels; ++channel)
            bindings.push_back(
                {type, channel, prefix + std::to_string(channel - 1) + suffix, mode});
    };
    add(DigitalInput, 4, "/sys/bus/platform/devices/zr_di.", "/state", O_RDONLY);
    add(DigitalOutput, 3, "/sys/bus/platform/devices/zr_do.", "/state", O_RDWR);
    add(AnalogInput, 4, "/sys/class/analog/ai.", "/value", O_RDONLY);
    return bindings;
}

/// A type, the channels just outside its range, and what it reports when it cannot open.
struct Group {
    zrIOType type;
    std::vector<unsigned short> outside;
    const char* report;
};

const std::vector<Group>& groups() {
    static const std::vector<Group> all{
        {DigitalInput, {0, 5, 10, 65535}, "Opening digital input file"},
        {DigitalOutput, {0, 4, 5, 65535}, "Opening digital output file"},
        {AnalogInput, {0, 5, 10, 65535}, "Opening analog input file"}};
    return all;
}

}  // namespace

TEST(Binding, each_numbered_channel_binds_its_attribute) {
    for (const Binding& binding : numberedChannels()) {
        makeFile(binding.path, "0\n");
        const ReportLog log;
        const OutputCapture capture;
        const Channel channel(binding.type, binding.channel);
        EXPECT_EQ(channel.path, binding.path);
        EXPECT_EQ(channel.type, binding.type);
        EXPECT_EQ(channel.channel, binding.channel);
        ASSERT_TRUE(isOpen(channel.fileDescriptor)) << binding.path;
        EXPECT_EQ(accessMode(channel.fileDescriptor), binding.accessMode) << binding.path;
        EXPECT_TRUE(closesOnExec(channel.fileDescriptor)) << binding.path;
        EXPECT_EQ(log.reports(), Reports{});
        EXPECT_EQ(capture.output() + capture.errors(), "");
    }
}

TEST(Binding, channel_1_of_a_digital_input_is_instance_0) {
    makeFile("/sys/bus/platform/devices/zr_di.0/state", "1\n");
    const Channel channel(DigitalInput, 1);
    EXPECT_EQ(channel.path, "/sys/bus/platform/devices/zr_di.0/state");
}

TEST(Binding, initialize_returns_0_for_each_numbered_channel) {
    for (const Binding& binding : numberedChannels()) {
        makeFile(binding.path, "0\n");
        Channel channel(binding.type, binding.channel);
        EXPECT_EQ(channel.initialize(binding.type, binding.channel), 0U) << binding.path;
    }
}

TEST(Binding, follows_links_to_device_folders) {
    makeFile("/sys/devices/platform/zr_di.0/state", "1\n");
    makeLink("/sys/bus/platform/devices/zr_di.0", "../../../devices/platform/zr_di.0");
    const Channel channel(DigitalInput, 1);
    EXPECT_TRUE(isOpen(channel.fileDescriptor));
    EXPECT_EQ(channel.path, "/sys/bus/platform/devices/zr_di.0/state");
}

TEST(Binding, a_new_channel_has_its_initial_values) {
    makeFile("/sys/class/analog/ai.0/value", "123\n");
    const Channel channel(AnalogInput, 1);
    EXPECT_EQ(channel.lastValue, -1);
    EXPECT_EQ(channel.hysteresis, -1);
    EXPECT_EQ(channel.reserved1, -1);
    EXPECT_EQ(channel.reserved2, -1);
    EXPECT_EQ(channel.measureMode, 0);
}

TEST(Binding, a_channel_out_of_range_succeeds_quietly_and_binds_nothing) {
    for (const Group& group : groups())
        for (const unsigned short number : group.outside) {
            const ReportLog log;
            Channel channel(group.type, number);
            EXPECT_EQ(channel.initialize(group.type, number), 0U);
            EXPECT_EQ(channel.type, group.type);
            EXPECT_EQ(channel.channel, number);
            EXPECT_EQ(channel.path, "/dev/null");
            EXPECT_EQ(channel.fileDescriptor, -1);
            EXPECT_EQ(log.reports(), Reports{});
        }
}

TEST(Binding, a_channel_out_of_range_leaves_an_earlier_binding_alone) {
    makeFile("/sys/bus/platform/devices/zr_di.0/state", "1\n");
    Channel channel(DigitalInput, 1);
    const int descriptor = channel.fileDescriptor;
    EXPECT_EQ(channel.initialize(AnalogInput, 5), 0U);
    EXPECT_EQ(channel.type, AnalogInput);
    EXPECT_EQ(channel.path, "/sys/bus/platform/devices/zr_di.0/state");
    EXPECT_EQ(channel.fileDescriptor, descriptor);
}

TEST(Binding, a_missing_attribute_fails_with_2_and_keeps_its_path) {
    for (const Binding& binding : numberedChannels()) {
        const ReportLog log;
        Channel channel(binding.type, binding.channel);
        EXPECT_EQ(channel.initialize(binding.type, binding.channel), 2U);
        EXPECT_EQ(channel.type, binding.type);
        EXPECT_EQ(channel.path, binding.path);
        EXPECT_EQ(channel.fileDescriptor, -1);
    }
}

TEST(Binding, the_constructor_reports_the_cause_and_then_itself) {
    for (const Group& group : groups()) {
        const ReportLog log;
        const Channel channel(group.type, 1);
        EXPECT_EQ(log.reports(), failedConstruction(group.report));
    }
}

TEST(Binding, initialize_reports_the_cause_only) {
    ReportLog log;
    for (const Group& group : groups()) {
        Channel channel(group.type, 1);
        log.clear();
        EXPECT_EQ(channel.initialize(group.type, 1), 2U);
        EXPECT_EQ(log.reports(), Reports{inputOutputReport(group.report)});
    }
}

TEST(Binding, a_driver_that_comes_later_can_be_bound_then) {
    const ReportLog log;
    Channel channel(DigitalInput, 2);
    makeFile("/sys/bus/platform/devices/zr_di.1/state", "1\n");
    EXPECT_EQ(channel.initialize(DigitalInput, 2), 0U);
    EXPECT_TRUE(isOpen(channel.fileDescriptor));
}

TEST(Binding, initialize_leaves_the_number_that_the_constructor_recorded) {
    makeFile("/sys/bus/platform/devices/zr_di.0/state", "1\n");
    makeFile("/sys/bus/platform/devices/zr_di.1/state", "1\n");
    Channel channel(DigitalInput, 1);
    EXPECT_EQ(channel.initialize(DigitalInput, 2), 0U);
    EXPECT_EQ(channel.path, "/sys/bus/platform/devices/zr_di.1/state");
    EXPECT_EQ(channel.channel, 1);
}

TEST(Binding, an_open_that_a_signal_interrupted_is_repeated) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    makeFile("/sys/bus/platform/devices/zr_di.0/state", "1\n");
    const Trace trace = traceSystemCalls(
        [](TracedRun& run) {
            Channel channel(DigitalInput, 1);
            run.begin();
            const unsigned int result = channel.initialize(DigitalInput, 1);
            run.end();
            run.say(std::to_string(result));
        },
        {{}, {{SYS_openat, 1, EINTR, 0}}});
    EXPECT_EQ(trace.names(), "openat openat");
    EXPECT_EQ(trace.text, "0");
}

TEST(Binding, any_error_of_the_open_fails_with_2) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    makeFile("/sys/bus/platform/devices/zr_do.0/state", "1\n");
    for (const int error : {EACCES, EIO, ENODEV, EMFILE}) {
        const Trace trace = traceSystemCalls(
            [](TracedRun& run) {
                const ReportLog log;
                Channel channel(DigitalOutput, 1);
                run.begin();
                const unsigned int result = channel.initialize(DigitalOutput, 1);
                run.end();
                run.say(std::to_string(result) + ' ' + std::to_string(channel.fileDescriptor) +
                        ' ' + log.reports().at(0).message);
            },
            {{}, {{SYS_openat, 1, error, 0}}});
        EXPECT_EQ(trace.text, "2 -1 Opening digital output file");
    }
}

TEST(UnsupportedType, an_analog_output_fails_with_11) {
    const ReportLog log;
    const Channel channel(AnalogOutput, 1);
    EXPECT_EQ(channel.type, InvalidType);
    EXPECT_EQ(channel.path, "/dev/null");
    EXPECT_EQ(channel.fileDescriptor, -1);
    EXPECT_EQ(log.reports(), failedConstruction("Analog output not supported"));
}

TEST(UnsupportedType, a_radar_sensor_fails_with_11) {
    const ReportLog log;
    const Channel channel(RadarSensor, 1);
    EXPECT_EQ(channel.type, InvalidType);
    EXPECT_EQ(channel.path, "/dev/null");
    EXPECT_EQ(channel.fileDescriptor, -1);
    EXPECT_EQ(log.reports(), failedConstruction("Radar sensor not supported on K4"));
}

TEST(UnsupportedType, takes_an_earlier_binding_away) {
    for (const zrIOType type : {AnalogOutput, RadarSensor}) {
        makeFile("/sys/bus/platform/devices/zr_di.0/state", "1\n");
        const ReportLog log;
        Channel channel(DigitalInput, 1);
        EXPECT_EQ(channel.initialize(type, 1), 11U);
        EXPECT_EQ(channel.type, InvalidType);
        EXPECT_EQ(channel.path, "/dev/null");
        EXPECT_EQ(channel.fileDescriptor, -1);
        EXPECT_EQ(log.reports().size(), 1U);
    }
}

TEST(UnknownType, fails_with_3_and_becomes_type_10) {
    for (const unsigned int number : {10U, 11U, 12U, 255U, UINT_MAX}) {
        const ReportLog log;
        Channel channel(static_cast<zrIOType>(number), 1);
        EXPECT_EQ(channel.type, InvalidType) << number;
        EXPECT_EQ(channel.path, "/dev/null") << number;
        EXPECT_EQ(channel.fileDescriptor, -1) << number;
        EXPECT_EQ(log.reports(), failedConstruction("Wrong type ID")) << number;
        EXPECT_EQ(channel.initialize(static_cast<zrIOType>(number), 1), 3U) << number;
    }
}

TEST(UnknownType, keeps_the_path_of_an_earlier_binding) {
    makeFile("/sys/bus/platform/devices/zr_di.0/state", "1\n");
    const ReportLog log;
    Channel channel(DigitalInput, 1);
    EXPECT_EQ(channel.initialize(static_cast<zrIOType>(12), 1), 3U);
    EXPECT_EQ(channel.type, InvalidType);
    EXPECT_EQ(channel.path, "/sys/bus/platform/devices/zr_di.0/state");
    EXPECT_EQ(channel.fileDescriptor, -1);
    EXPECT_EQ(log.reports(), Reports{inputOutputReport("Wrong type ID")});
}

}  // namespace ZR::test
