#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "board.h"
#include "hardware/dimmable/zr_dimmable.h"
#include "hardware/feature_detection/zr_feature_detection.h"
#include "hardware/input_output/zr_input_output.h"

namespace ZR::test {
namespace {

using Lines = std::vector<std::string>;

}  // namespace

TEST(EmptyBoard, a_missing_backlight_is_told_once_and_answers_1_and_1) {
    const auto& reports = collectReports();
    testing::internal::CaptureStdout();
    ZRDimmable& dimmable = *ZRDimmable::getInstance();
    EXPECT_EQ("Error opening display backlight device file!\n",
              testing::internal::GetCapturedStdout());
    unsigned int percent = 0;
    EXPECT_EQ(1U, dimmable.setIntensity(50, DisplayBacklight));
    EXPECT_EQ(1U, dimmable.setIntensity(0, DisplayBacklight));
    EXPECT_EQ(1U, dimmable.getIntensity(&percent, DisplayBacklight));
    EXPECT_EQ(Lines{"zr_dimmable: Reading from display backlight device file (file != good()) 0"},
              reports);
}

TEST(EmptyBoard, no_led_and_no_beeper_answer_1) {
    collectReports();
    ZRDimmable& dimmable = *ZRDimmable::getInstance();
    unsigned int color = 0;
    EXPECT_EQ(1U, dimmable.setIntensity(50, KeyBacklight));
    EXPECT_EQ(1U, dimmable.setIntensity(50, EncoderBacklight));
    EXPECT_EQ(1U, dimmable.setIntensity(50, Beeper));
    EXPECT_EQ(1U, dimmable.setColor(0, RGBLED));
    EXPECT_EQ(1U, dimmable.getColor(&color, RGBLED));
    EXPECT_EQ(11U, dimmable.getColor(&color, KeyBacklight));
}

TEST(EmptyBoard, the_minimum_is_known_but_cannot_be_enforced) {
    collectReports();
    unsigned int percent = 0;
    EXPECT_EQ(1U, ZRDimmable::getInstance()->getMinDisplayBacklightIntensity(&percent));
    EXPECT_EQ(5U, percent);
}

TEST(EmptyBoard, each_channel_reports_the_file_that_it_misses) {
    const std::vector<std::pair<zrIOType, std::string>> channels{
        {DigitalInput, "Opening digital input file"},
        {DigitalOutput, "Opening digital output file"},
        {AnalogInput, "Opening analog input file"},
        {PowerSensor, "Opening power sensor file"},
        {LightSensor, "Opening light sensor file"},
        {TemperatureSensor, "Opening temperature sensor file"},
        {FrequencyInput, "Opening frequency input sysfs file"},
        {IgnitionInput, "Opening ignition input file"},
    };
    const auto& reports = collectReports();
    Lines expected;
    for (const auto& [type, report] : channels) {
        const ZRInputOutput channel(type, 1);
        expected.push_back("zr_io: " + report);
        expected.emplace_back("zr_io: Initializing I/O interface");
    }
    EXPECT_EQ(expected, reports);
}

TEST(EmptyBoard, no_input_device_is_found_and_no_device_tree_means_single_core) {
    EXPECT_FALSE(ZRFeatureDetection::hasEncoder());
    EXPECT_FALSE(ZRFeatureDetection::hasTouchscreen());
    EXPECT_FALSE(ZRFeatureDetection::hasKeyboard());
    EXPECT_TRUE(ZRFeatureDetection::isRunningOnSingleCore());
}

}  // namespace ZR::test
