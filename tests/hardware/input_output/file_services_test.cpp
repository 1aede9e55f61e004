// What the inputs and outputs do when the platform library's file services raise exceptions. Here
// writes go to a substitute and a search for files can be made to fail.

#include <gtest/gtest.h>

#include <iomanip>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/zrapi_utility/zr_files_and_folders.h"
#include "tests/hardware/input_output/channel.h"
#include "tests/support/output_capture.h"
#include "tests/support/substitutes/file_write_substitute.h"

namespace {

/// Which look at a path raises, counted from 1; 0 for none.
int raisingLook = 0;
bool raisesStandardException = true;
std::vector<std::string> looks;

}  // namespace

// Takes the place of the platform library's: every path is a file.
bool ZR::ZRFilesAndFolders::isFile(const std::string& path) {
    looks.push_back(path);
    if (static_cast<int>(looks.size()) != raisingLook)
        return true;
    if (raisesStandardException)
        throw std::runtime_error("look");
    throw raisingLook;  // NOLINT(*-throw-*): no std::exception, on purpose
}

namespace ZR::test {

namespace {

using Writes = std::vector<std::string>;

const std::string measureMode = "/sys/class/analog/ai.2/measure_mode";
const std::string toggleLoad = "/sys/class/analog/ai.2/toggle_load";
const std::string hysteresis = "/sys/class/analog/ai.2/hysteresis";
constexpr char errorLine[] = "Error setting analog options for port 3, value: 2\n";

/// What the library gave to the substitute.
Writes writes() {
    Writes texts;
    for (const FileWrite& call : FileWriteSubstitute::calls)
        texts.push_back(call.path + " := " + std::to_string(call.value));
    return texts;
}

}  // namespace

TEST(FileServices, the_three_attributes_of_mode_2_are_written_in_order) {
    Channel channel(DigitalInput, 0);
    EXPECT_EQ(channel.configureInput(3, 2, 17), 0U);
    EXPECT_EQ(writes(),
              (Writes{measureMode + " := 1", toggleLoad + " := 1", hysteresis + " := 17"}));
    EXPECT_EQ(looks, (std::vector<std::string>{measureMode, hysteresis}));
}

TEST(FileServices, a_write_that_raises_skips_the_rest_prints_and_returns_1) {
    const ReportLog log;
    const OutputCapture capture;
    Channel channel(DigitalInput, 0);
    FileWriteSubstitute::next = FileWriteFault::ThrowStandardException;
    EXPECT_EQ(channel.configureInput(3, 2, 17), 1U);
    EXPECT_EQ(writes(), (Writes{measureMode + " := 1"}));
    EXPECT_EQ(capture.output(), errorLine);
    EXPECT_EQ(log.reports(), Reports{});
    EXPECT_EQ(channel.hysteresis, 17);
    EXPECT_EQ(channel.measureMode, 2);
}

TEST(FileServices, a_write_of_the_hysteresis_that_raises_returns_1_also_after_a_bad_mode) {
    const OutputCapture capture;
    Channel channel(DigitalInput, 0);
    FileWriteSubstitute::next = FileWriteFault::ThrowStandardException;
    EXPECT_EQ(channel.configureInput(1, -3, 17), 1U);
    EXPECT_EQ(capture.output(), "Error setting analog options for port 1, value: -3\n");
    EXPECT_EQ(channel.measureMode, 0);
}

TEST(FileServices, a_look_that_raises_skips_everything_and_returns_1) {
    const OutputCapture capture;
    Channel channel(DigitalInput, 0);
    raisingLook = 1;
    EXPECT_EQ(channel.configureInput(3, 2, 17), 1U);
    EXPECT_EQ(writes(), Writes{});
    EXPECT_EQ(capture.output(), errorLine);
    EXPECT_EQ(channel.hysteresis, 17);
    EXPECT_EQ(channel.measureMode, 0);
}

TEST(FileServices, a_second_look_that_raises_skips_the_hysteresis_and_returns_1) {
    const OutputCapture capture;
    Channel channel(DigitalInput, 0);
    raisingLook = 2;
    EXPECT_EQ(channel.configureInput(3, 2, 17), 1U);
    EXPECT_EQ(writes(), (Writes{measureMode + " := 1", toggleLoad + " := 1"}));
    EXPECT_EQ(capture.output(), errorLine);
    EXPECT_EQ(channel.measureMode, 2);
}

TEST(FileServices, the_line_of_an_exception_does_not_depend_on_the_format_of_standard_output) {
    const OutputCapture capture;
    Channel channel(DigitalInput, 0);
    FileWriteSubstitute::next = FileWriteFault::ThrowStandardException;
    std::cout << std::hex << std::showbase << std::showpos << std::setfill('*') << std::setw(60);
    EXPECT_EQ(channel.configureInput(31, 2, 17), 1U);
    EXPECT_EQ(capture.output(), "Error setting analog options for port 31, value: 2\n");
}

TEST(FileServices, exceptions_of_other_kinds_pass_to_the_caller) {
    const OutputCapture capture;
    Channel channel(DigitalInput, 0);
    FileWriteSubstitute::next = FileWriteFault::ThrowOtherException;
    EXPECT_THROW((void)channel.configureInput(3, 2, 17), int);
    raisesStandardException = false;
    raisingLook = static_cast<int>(looks.size()) + 1;
    EXPECT_THROW((void)channel.configureInput(3, 2, 17), int);
    EXPECT_EQ(capture.output(), "");
}

TEST(FileServices, a_call_after_an_exception_works) {
    const OutputCapture capture;
    Channel channel(DigitalInput, 0);
    FileWriteSubstitute::next = FileWriteFault::ThrowStandardException;
    EXPECT_EQ(channel.configureInput(3, 2, 17), 1U);
    FileWriteSubstitute::calls.clear();
    EXPECT_EQ(channel.configureInput(3, 1, 18), 0U);
    EXPECT_EQ(writes(), (Writes{measureMode + " := 0", hysteresis + " := 18"}));
}

TEST(FileServices, a_write_that_fails_shows_in_no_result_of_a_configuration) {
    const ReportLog log;
    const OutputCapture capture;
    Channel channel(DigitalInput, 0);
    FileWriteSubstitute::next = FileWriteFault::Fail;
    EXPECT_EQ(channel.configureInput(3, 0, 17), 0U);
    EXPECT_EQ(writes(), (Writes{measureMode + " := 0", hysteresis + " := 17"}));
    EXPECT_EQ(capture.output(), "");
    EXPECT_EQ(log.reports(), Reports{});
}

TEST(FileServices, an_output_is_switched_by_one_write_of_0_or_1) {
    const OutputCapture capture;
    Channel channel(DigitalOutput, 0);
    EXPECT_EQ(channel.on(true), 0U);
    EXPECT_EQ(channel.on(false), 0U);
    EXPECT_EQ(writes(), (Writes{"/dev/null := 1", "/dev/null := 0"}));
}

TEST(FileServices, the_light_sensor_is_given_10_and_100_before_it_is_opened) {
    const ReportLog log;
    FileWriteSubstitute::next = FileWriteFault::Fail;
    const Channel channel(LightSensor, 1);
    EXPECT_EQ(writes(), (Writes{"/sys/class/analog/light/hysteresis := 10",
                                "/sys/class/analog/light/scan_interval := 100"}));
    EXPECT_EQ(log.reports(), failedConstruction("Opening light sensor file"));
}

}  // namespace ZR::test
