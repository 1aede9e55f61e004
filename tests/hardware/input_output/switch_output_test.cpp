#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cerrno>
#include <iomanip>
#include <iostream>
#include <locale>
#include <string>
#include <vector>

#include "common/zrapi_common/zr_debug.h"
#include "tests/hardware/input_output/channel.h"
#include "tests/support/output_capture.h"
#include "tests/support/private_root.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::test {
namespace {

constexpr char output[] = "/sys/bus/platform/devices/zr_do.0/state";
constexpr char switchedOn[] = "Set /sys/bus/platform/devices/zr_do.0/state to 1 successful!\n";
constexpr char switchedOff[] = "Set /sys/bus/platform/devices/zr_do.0/state to 0 successful!\n";
constexpr char notSwitchedOn[] = "Set /sys/bus/platform/devices/zr_do.0/state to 1 FAILED!\n";
constexpr char notSwitchedOff[] = "Set /sys/bus/platform/devices/zr_do.0/state to 0 FAILED!\n";
constexpr char failureReport[] = "Writing state to file /sys/bus/platform/devices/zr_do.0/state";

class BooleanWords : public std::numpunct<char> {
  protected:
    std::string do_truename() const override { return "yes"; }
    std::string do_falsename() const override { return "no"; }
};

/// Sets on std::cout what an application may have set for texts of its own.
void formatOddly() {
    std::cout << std::hex << std::boolalpha << std::showbase << std::showpos << std::uppercase
              << std::setfill('*') << std::left << std::setw(70);
}

}  // namespace

TEST(SwitchOutput, on_true_writes_1_prints_and_returns_0) {
    makeFile(output, "0\n");
    const ReportLog log;
    const OutputCapture capture;
    Channel channel(DigitalOutput, 1);
    EXPECT_EQ(channel.on(true), 0U);
    EXPECT_EQ(readFile(output), "1");
    EXPECT_EQ(channel.lastValue, 1);
    EXPECT_EQ(capture.output(), switchedOn);
    EXPECT_EQ(log.reports(), Reports{});
}

TEST(SwitchOutput, on_false_writes_0_prints_and_returns_0) {
    makeFile(output, "1\n");
    const ReportLog log;
    const OutputCapture capture;
    Channel channel(DigitalOutput, 1);
    EXPECT_EQ(channel.on(false), 0U);
    EXPECT_EQ(readFile(output), "0");
    EXPECT_EQ(channel.lastValue, 0);
    EXPECT_EQ(capture.output(), switchedOff);
    EXPECT_EQ(log.reports(), Reports{});
}

TEST(SwitchOutput, a_failed_write_prints_reports_and_returns_6) {
    makeFile(output, "0\n");
    const ReportLog log;
    const OutputCapture capture;
    Channel channel(DigitalOutput, 1);
    removeFile(output);
    EXPECT_EQ(channel.on(true), 6U);
    EXPECT_EQ(channel.on(false), 6U);
    EXPECT_EQ(capture.output(), std::string(notSwitchedOn) + notSwitchedOff);
    EXPECT_EQ(log.reports(),
              (Reports{inputOutputReport(failureReport), inputOutputReport(failureReport)}));
    EXPECT_FALSE(exists(output));
}

TEST(SwitchOutput, a_failed_write_leaves_the_last_value) {
    makeFile(output, "0\n");
    const ReportLog log;
    const OutputCapture capture;
    Channel channel(DigitalOutput, 1);
    removeFile(output);
    EXPECT_EQ(channel.on(true), 6U);
    EXPECT_EQ(channel.lastValue, -1);
    makeFile(output, "0\n");
    EXPECT_EQ(channel.on(true), 0U);
    removeFile(output);
    EXPECT_EQ(channel.on(false), 6U);
    EXPECT_EQ(channel.lastValue, 1);
}

TEST(SwitchOutput, the_line_of_a_failure_comes_before_its_report) {
    makeFile(output, "0\n");
    static const OutputCapture* printed = nullptr;
    static std::string printedAtReport;
    Channel channel(DigitalOutput, 1);
    removeFile(output);
    const OutputCapture capture;
    printed = &capture;
    ZRDebug::setSink([](int /*level*/, const char* /*section*/, const char* /*message*/) {
        printedAtReport = printed->output();
    });
    EXPECT_EQ(channel.on(true), 6U);
    ZRDebug::setSink(nullptr);
    EXPECT_EQ(printedAtReport, notSwitchedOn);
}

TEST(SwitchOutput, a_write_that_the_driver_refuses_fails_and_the_next_one_works) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    makeFile(output, "0\n");
    for (const int error : {EIO, EBUSY, EINVAL}) {
        const Trace trace = traceSystemCalls(
            [](TracedRun& run) {
                const ReportLog log;
                Channel channel(DigitalOutput, 1);
                run.begin();
                const unsigned int first = channel.on(true);
                const unsigned int second = channel.on(true);
                run.end();
                run.say(std::to_string(first) + ' ' + std::to_string(second) + ' ' +
                        std::to_string(log.reports().size()));
            },
            {{}, {{SYS_write, 1, error, 0}}});
        EXPECT_EQ(trace.text, "6 0 1");
        EXPECT_EQ(readFile(output), "1");
    }
}

TEST(SwitchOutput, the_line_does_not_depend_on_the_format_of_standard_output) {
    makeFile(output, "0\n");
    const ReportLog log;
    const OutputCapture capture;
    Channel channel(DigitalOutput, 1);
    std::cout.imbue(std::locale(std::locale::classic(), new BooleanWords));
    formatOddly();
    EXPECT_EQ(channel.on(true), 0U);
    formatOddly();
    EXPECT_EQ(channel.on(false), 0U);
    removeFile(output);
    formatOddly();
    EXPECT_EQ(channel.on(true), 6U);
    EXPECT_EQ(capture.output(), std::string(switchedOn) + switchedOff + notSwitchedOn);
}

TEST(SwitchOutput, the_format_of_standard_output_stays_the_applications) {
    makeFile(output, "0\n");
    const OutputCapture capture;
    Channel channel(DigitalOutput, 1);
    std::cout << std::hex << std::boolalpha << std::setfill('*');
    EXPECT_EQ(channel.on(true), 0U);
    std::cout << 255 << true << std::setw(3) << 1 << std::flush;
    EXPECT_EQ(capture.output(), std::string(switchedOn) + "fftrue**1");
}

TEST(SwitchOutput, costs_three_calls_and_one_write_for_the_whole_line) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    makeFile(output, "0\n");
    const Trace trace = traceSystemCalls([](TracedRun& run) {
        Channel channel(DigitalOutput, 1);
        (void)channel.on(true);  // the first line may cost standard output its set-up
        run.begin();
        (void)channel.on(true);
        run.end();
    });
    EXPECT_EQ(trace.names(), "openat write close write");
    ASSERT_EQ(trace.calls.size(), 4U);
    EXPECT_EQ(trace.calls[1].text, "1");
    EXPECT_EQ(trace.calls[3].text, switchedOn);
    EXPECT_EQ(trace.calls[3].arguments[0], 1U);
}

TEST(SwitchOutput, an_output_that_could_not_be_opened_fails_with_6) {
    const ReportLog log;
    const OutputCapture capture;
    Channel channel(DigitalOutput, 1);
    EXPECT_EQ(channel.on(true), 6U);
    EXPECT_EQ(capture.output(), notSwitchedOn);
}

TEST(SwitchOutput, an_output_out_of_range_writes_to_the_null_device_and_returns_0) {
    const ReportLog log;
    const OutputCapture capture;
    Channel channel(DigitalOutput, 4);
    EXPECT_EQ(channel.on(true), 0U);
    EXPECT_EQ(channel.lastValue, 1);
    EXPECT_EQ(capture.output(), "Set /dev/null to 1 successful!\n");
    EXPECT_EQ(log.reports(), Reports{});
}

TEST(SwitchOutput, every_other_type_returns_11_prints_and_reports_nothing) {
    const std::vector<zrIOType> types{
        DigitalInput, AnalogInput,    AnalogOutput,  PowerSensor, LightSensor, TemperatureSensor,
        RadarSensor,  FrequencyInput, IgnitionInput, InvalidType, zrIOType{12}};
    for (const zrIOType type : types) {
        makeFile("/sys/bus/platform/devices/zr_di.0/state", "0\n");
        ReportLog log;
        Channel channel(type, 1);
        log.clear();
        const OutputCapture capture;
        EXPECT_EQ(channel.on(true), 11U) << type;
        EXPECT_EQ(channel.lastValue, -1) << type;
        EXPECT_EQ(capture.output() + capture.errors(), "") << type;
        EXPECT_EQ(log.reports(), Reports{}) << type;
    }
    EXPECT_EQ(readFile("/sys/bus/platform/devices/zr_di.0/state"), "0\n");
}

}  // namespace ZR::test
