#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "board.h"
#include "hardware/dimmable/zr_dimmable.h"
#include "hardware/feature_detection/zr_feature_detection.h"
#include "hardware/input_output/zr_input_output.h"

namespace ZR::test {
namespace {

struct BoundChannel : ZRInputOutput {
    using ZRInputOutput::path;
    using ZRInputOutput::ZRInputOutput;
};

using Lines = std::vector<std::string>;

}  // namespace

TEST(ColourBoard, the_second_name_of_the_status_led_is_told_on_standard_output) {
    testing::internal::CaptureStdout();
    ZRDimmable& dimmable = *ZRDimmable::getInstance();
    EXPECT_EQ("OK: /sys/class/leds/sys:status:rgb/brightness\n",
              testing::internal::GetCapturedStdout());
    EXPECT_EQ(0U, dimmable.setColor(0x00FF00, RGBLED));
    EXPECT_EQ("65280", seenByCat("/sys/class/leds/sys:status:rgb/brightness"));
}

TEST(ColourBoard, the_backlight_is_found_under_its_class_name) {
    ZRDimmable& dimmable = *ZRDimmable::getInstance();
    EXPECT_EQ(0U, dimmable.setIntensity(50, DisplayBacklight));
    EXPECT_EQ("128", seenByCat("/sys/class/backlight/backlight/brightness"));
}

TEST(ColourBoard, a_colour_led_takes_and_gives_raw_numbers) {
    ZRDimmable& dimmable = *ZRDimmable::getInstance();
    EXPECT_TRUE(dimmable.isColorSupported(KeyBacklight));
    EXPECT_TRUE(dimmable.isColorSupported(EncoderBacklight));
    EXPECT_EQ(0U, dimmable.setIntensity(101, KeyBacklight));
    EXPECT_EQ("101", seenByCat("/sys/class/leds/bl:key/brightness"));
    EXPECT_EQ(0U, dimmable.setColor(0xABCDEF, EncoderBacklight));
    unsigned int color = 0;
    EXPECT_EQ(0U, dimmable.getColor(&color, EncoderBacklight));
    EXPECT_EQ(0xABCDEFU, color);
    EXPECT_EQ(0U, dimmable.getIntensity(&color, EncoderBacklight));
    EXPECT_EQ(0xABCDEFU, color);
}

TEST(ColourBoard, a_colour_beyond_24_bits_is_24_and_no_led_sees_it) {
    collectReports();
    ZRDimmable& dimmable = *ZRDimmable::getInstance();
    clearLog();
    EXPECT_EQ(24U, dimmable.setColor(0x1000000, KeyBacklight));
    EXPECT_EQ(Lines{}, logLines());
}

TEST(ColourBoard, the_power_sensor_falls_back_to_the_battery) {
    BoundChannel sensor(PowerSensor, 0);
    EXPECT_EQ("/sys/class/analog/board_12v_bat/value", sensor.path);
    int millivolts = 0;
    EXPECT_EQ(0U, sensor.getValue(&millivolts));
    EXPECT_EQ(12000, millivolts);
}

TEST(ColourBoard, without_an_ignition_regulator_the_channel_fails) {
    const auto& reports = collectReports();
    ZRInputOutput ignition(IgnitionInput, 0);
    bool state = false;
    EXPECT_EQ(5U, ignition.getState(&state));
    EXPECT_EQ((Lines{"zr_io: Opening ignition input file", "zr_io: Initializing I/O interface",
                     "zr_io: Reading ignition state"}),
              reports);
}

TEST(ColourBoard, without_a_measure_mode_any_mode_is_accepted_and_the_hysteresis_written) {
    ZRInputOutput channel(AnalogInput, 1);
    clearLog();
    EXPECT_EQ(0U, channel.configureInput(2, 99, 5));
    EXPECT_EQ(Lines{"ai.1 hysteresis 5"}, logLines());
}

TEST(ColourBoard, only_the_touch_screen_under_its_second_name_is_there) {
    EXPECT_FALSE(ZRFeatureDetection::hasEncoder());
    EXPECT_TRUE(ZRFeatureDetection::hasTouchscreen());
    EXPECT_FALSE(ZRFeatureDetection::hasKeyboard());
}

TEST(ColourBoard, the_quad_variant_is_not_single_core) {
    EXPECT_FALSE(ZRFeatureDetection::isRunningOnSingleCore());
}

}  // namespace ZR::test
