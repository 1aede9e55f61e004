#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "board.h"
#include "hardware/dimmable/zr_dimmable.h"

namespace ZR::test {
namespace {

constexpr char display[] =
    "/sys/devices/platform/pwm-backlight.0/backlight/pwm-backlight.0/brightness";
constexpr char key[] = "/sys/class/leds/bl:key/brightness";
constexpr char keyTrigger[] = "/sys/class/leds/bl:key/trigger";
constexpr char encoder[] = "/sys/class/leds/bl:enc/brightness";
constexpr char rgb[] = "/sys/class/leds/user:rgb/brightness";
constexpr char beeper[] = "/sys/bus/platform/devices/pwm-speaker.0/volume";

using Lines = std::vector<std::string>;

}  // namespace

TEST(FullBoardDimmable, each_percentage_reaches_the_kernel_scaled_and_reads_back) {
    ZRDimmable& dimmable = *ZRDimmable::getInstance();
    const std::vector<std::pair<ZRDimmableDevice, const char*>> devices{
        {DisplayBacklight, display}, {KeyBacklight, key}, {EncoderBacklight, encoder}};
    for (const auto& [device, attribute] : devices) {
        for (const auto& [percent, raw] : {std::pair(5U, "13"), {50U, "128"}, {100U, "255"}}) {
            EXPECT_EQ(0U, dimmable.setIntensity(percent, device)) << device;
            EXPECT_EQ(raw, seenByCat(attribute)) << device;
            unsigned int read = 0;
            EXPECT_EQ(0U, dimmable.getIntensity(&read, device)) << device;
            EXPECT_EQ(percent, read) << device;
        }
    }
}

TEST(FullBoardDimmable, the_display_refuses_less_than_its_minimum_before_the_kernel_is_asked) {
    const auto& reports = collectReports();
    ZRDimmable& dimmable = *ZRDimmable::getInstance();
    clearLog();
    EXPECT_EQ(24U, dimmable.setIntensity(0, DisplayBacklight));
    EXPECT_EQ(Lines{"zr_dimmable: Intensity out of range for device 0, requested: 0"}, reports);
    EXPECT_EQ(Lines{}, logLines());
}

TEST(FullBoardDimmable, reading_a_display_that_is_too_dark_raises_it) {
    ZRDimmable& dimmable = *ZRDimmable::getInstance();
    turn("backlight/brightness/value", "3");
    unsigned int percent = 0;
    EXPECT_EQ(0U, dimmable.getIntensity(&percent, DisplayBacklight));
    EXPECT_EQ(5U, percent);
    EXPECT_EQ("13", seenByCat(display));
}

TEST(FullBoardDimmable, the_key_trigger_lets_go_when_the_object_is_built) {
    std::ofstream(keyTrigger) << "zr-attached" << std::flush;
    ASSERT_NE(std::string::npos, seenByCat(keyTrigger).find("[zr-attached]"));
    clearLog();
    ZRDimmable::getInstance();
    EXPECT_NE(std::string::npos, seenByCat(keyTrigger).find("[none]"));
    EXPECT_EQ("key trigger none", logLines().back());
}

TEST(FullBoardDimmable, a_colour_of_the_status_led_loses_its_upper_byte) {
    ZRDimmable& dimmable = *ZRDimmable::getInstance();
    EXPECT_EQ(0U, dimmable.setColor(0x12345678, RGBLED));
    EXPECT_EQ("3430008", seenByCat(rgb));
    unsigned int color = 0;
    EXPECT_EQ(0U, dimmable.getColor(&color, RGBLED));
    EXPECT_EQ(0x345678U, color);
}

TEST(FullBoardDimmable, a_plain_led_has_no_colour) {
    collectReports();
    ZRDimmable& dimmable = *ZRDimmable::getInstance();
    unsigned int color = 7;
    EXPECT_FALSE(dimmable.isColorSupported(KeyBacklight));
    EXPECT_EQ(11U, dimmable.getColor(&color, KeyBacklight));
    EXPECT_EQ(24U, dimmable.setIntensity(101, KeyBacklight));
}

TEST(FullBoardDimmable, a_volume_of_50_is_50_to_the_kernel_and_reads_as_20) {
    ZRDimmable& dimmable = *ZRDimmable::getInstance();
    EXPECT_EQ(0U, dimmable.setIntensity(50, Beeper));
    EXPECT_EQ("50", seenByCat(beeper));
    unsigned int volume = 0;
    EXPECT_EQ(0U, dimmable.getIntensity(&volume, Beeper));
    EXPECT_EQ(20U, volume);
}

TEST(FullBoardDimmable, a_value_that_the_backlight_refused_is_never_sent_again) {
    const auto& reports = collectReports();
    ZRDimmable& dimmable = *ZRDimmable::getInstance();
    clearLog();
    turn("backlight/brightness/fail_write", "EIO");
    EXPECT_EQ(6U, dimmable.setIntensity(20, DisplayBacklight));
    EXPECT_EQ(Lines{"zr_dimmable: Writing intensity to device file 0"}, reports);
    unsigned int percent = 0;
    EXPECT_EQ(0U, dimmable.getIntensity(&percent, DisplayBacklight));
    EXPECT_EQ(0U, dimmable.setIntensity(80, DisplayBacklight));
    EXPECT_EQ((Lines{"backlight brightness 51 error EIO", "backlight brightness 204"}), logLines());
    EXPECT_EQ("204", seenByCat(display));
}

TEST(FullBoardDimmable, each_error_of_the_beeper_is_6_or_5_once) {
    collectReports();
    ZRDimmable& dimmable = *ZRDimmable::getInstance();
    for (const char* error : {"EIO", "EBUSY", "ERANGE", "ENXIO"}) {
        unsigned int volume = 77;
        turn("beeper/volume/fail_write", error);
        EXPECT_EQ(6U, dimmable.setIntensity(10, Beeper)) << error;
        turn("beeper/volume/fail_read", error);
        EXPECT_EQ(5U, dimmable.getIntensity(&volume, Beeper)) << error;
        EXPECT_EQ(77U, volume) << error;
        EXPECT_EQ(0U, dimmable.setIntensity(51, Beeper)) << error;
        EXPECT_EQ(0U, dimmable.getIntensity(&volume, Beeper)) << error;
        EXPECT_EQ(20U, volume) << error;
    }
}

TEST(FullBoardDimmable, an_led_that_another_driver_has_claimed_answers_6_until_it_is_released) {
    const auto& reports = collectReports();
    ZRDimmable& dimmable = *ZRDimmable::getInstance();
    turn("rgb/claimed", "1");
    EXPECT_EQ(6U, dimmable.setColor(0xFF, RGBLED));
    EXPECT_EQ(Lines{"zr_dimmable: WRITING LED device file"}, reports);
    turn("rgb/claimed", "0");
    EXPECT_EQ(0U, dimmable.setColor(0xFF, RGBLED));
    EXPECT_EQ("255", seenByCat(rgb));
}

TEST(FullBoardDimmable, an_led_that_was_unplugged_answers_failures_and_takes_nothing_down) {
    collectReports();
    ZRDimmable& dimmable = *ZRDimmable::getInstance();
    turn("encoder/present", "0");
    unsigned int percent = 0;
    EXPECT_EQ(6U, dimmable.setIntensity(50, EncoderBacklight));
    EXPECT_EQ(5U, dimmable.getIntensity(&percent, EncoderBacklight));
    EXPECT_EQ(0U, dimmable.setIntensity(50, KeyBacklight));
    turn("encoder/present", "1");
}

TEST(FullBoardDimmable, number_and_newline_reach_the_driver_in_one_write) {
    ZRDimmable& dimmable = *ZRDimmable::getInstance();
    clearLog();
    EXPECT_EQ(0U, dimmable.setIntensity(33, Beeper));
    EXPECT_EQ(Lines{"beeper volume 33"}, logLines());
}

}  // namespace ZR::test
