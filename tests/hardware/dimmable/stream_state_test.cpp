#include <clocale>
#include <iostream>
#include <locale>
#include <string>

#include "tests/hardware/dimmable/dimmable_board.h"
#include "tests/support/private_root.h"

// What an operation that failed leaves behind, and who takes it away.

namespace ZR::test {
namespace {

using DimmableStreamState = DimmableTest;

struct Device {
    ZRDimmableDevice number;
    const char* file;
};

constexpr Device intensityDevices[] = {{DisplayBacklight, platformDisplay},
                                       {KeyBacklight, keyFile},
                                       {EncoderBacklight, encoderFile},
                                       {Beeper, beeperFile}};

void failToSet(ZRDimmableDevice device) {
    const RefusedWrites refused;
    EXPECT_EQ(ZRDimmable::getInstance()->setIntensity(100, device), 6U);
}

void failToSetRgb() {
    const RefusedWrites refused;
    EXPECT_EQ(ZRDimmable::getInstance()->setColor(100, RGBLED), 6U);
}

TEST_F(DimmableStreamState, a_good_value_lands_after_a_refused_one_and_reads_back) {
    makeBoard();
    for (const Device& each : intensityDevices) {
        failToSet(each.number);
        EXPECT_EQ(readFile(each.file), "128\n");
        EXPECT_EQ(device().setIntensity(40, each.number), 0U);
        EXPECT_EQ(firstLine(each.file), each.number == Beeper ? "40\n" : "102\n");
        EXPECT_EQ(getIntensity(each.number).result, 0U);
    }
}

TEST_F(DimmableStreamState, a_refused_value_is_not_sent_by_a_later_read) {
    makeBoard();
    for (const Device& each : intensityDevices) {
        failToSet(each.number);
        EXPECT_EQ(getIntensity(each.number), (Reading{0, 50}));
        EXPECT_EQ(readFile(each.file), "128\n");
    }
}

TEST_F(DimmableStreamState, a_refused_value_is_not_sent_by_a_later_write) {
    makeBoard();
    failToSet(KeyBacklight);
    makeFile(keyFile, "");
    EXPECT_EQ(device().setIntensity(50, KeyBacklight), 0U);
    EXPECT_EQ(readFile(keyFile), "128\n");
}

TEST_F(DimmableStreamState, a_refused_colour_is_not_sent_again) {
    makeBoard();
    failToSetRgb();
    EXPECT_EQ(getColor(RGBLED), (Reading{0, 128}));
    EXPECT_EQ(readFile(rgbFile), "128\n");
    EXPECT_EQ(device().setColor(0xABCDEF, RGBLED), 0U);
    EXPECT_EQ(readFile(rgbFile), "11259375\n");
    EXPECT_EQ(getColor(RGBLED), (Reading{0, 0xABCDEF}));
}

TEST_F(DimmableStreamState, several_refused_values_in_a_row_each_answer_6) {
    makeBoard();
    for (int i = 0; i < 3; ++i)
        failToSet(DisplayBacklight);
    EXPECT_EQ(getIntensity(DisplayBacklight), (Reading{0, 50}));
}

TEST_F(DimmableStreamState, a_failed_set_leaves_the_stream_bad_until_the_next_intensity) {
    makeBoard();
    for (const Device& each : intensityDevices) {
        failToSet(each.number);
        EXPECT_FALSE(Inside::stream(each.number).good());
        EXPECT_EQ(getIntensity(each.number).result, 0U);
        EXPECT_TRUE(Inside::stream(each.number).good());
        failToSet(each.number);
        EXPECT_EQ(device().setIntensity(50, each.number), 0U);
        EXPECT_TRUE(Inside::stream(each.number).good());
    }
}

TEST_F(DimmableStreamState, getColor_answers_1_after_a_failed_set_and_an_intensity_cures_it) {
    makeColorBoard();
    for (const Device& each : {intensityDevices[1], intensityDevices[2]}) {
        failToSet(each.number);
        forgetReports();
        EXPECT_EQ(getColor(each.number), (Reading{1, untouched}));
        EXPECT_EQ(getColor(each.number), (Reading{1, untouched}));
        EXPECT_EQ(reports(), Reports{});
        EXPECT_EQ(getIntensity(each.number), (Reading{0, 128}));
        EXPECT_EQ(getColor(each.number), (Reading{0, 128}));
    }
}

TEST_F(DimmableStreamState, getColor_answers_1_after_a_failed_getIntensity) {
    makeColorBoard();
    (void)device();
    makeFile(keyFile, "");
    EXPECT_EQ(getIntensity(KeyBacklight), (Reading{5, untouched}));
    makeFile(keyFile, "7\n");
    EXPECT_EQ(getColor(KeyBacklight), (Reading{1, untouched}));
    EXPECT_EQ(device().setColor(7, KeyBacklight), 0U);
    EXPECT_EQ(getColor(KeyBacklight), (Reading{0, 7}));
}

TEST_F(DimmableStreamState, a_failed_getIntensity_clears_the_displays_stream) {
    makeBoard();
    (void)device();
    makeFile(platformDisplay, "");
    EXPECT_EQ(getIntensity(DisplayBacklight).result, 5U);
    EXPECT_TRUE(Inside::stream(DisplayBacklight).good());
}

TEST_F(DimmableStreamState, a_failed_getIntensity_of_another_device_clears_the_displays_stream) {
    makeBoard();
    for (const Device& each : {intensityDevices[1], intensityDevices[2], intensityDevices[3]}) {
        failToSet(DisplayBacklight);
        makeFile(each.file, "");
        EXPECT_EQ(getIntensity(each.number).result, 5U);
        EXPECT_TRUE(Inside::stream(DisplayBacklight).good());
        EXPECT_FALSE(Inside::stream(each.number).good());
    }
}

TEST_F(DimmableStreamState, a_device_that_is_not_open_does_not_clear_the_displays_stream) {
    makeBoard();
    removeFile(keyFile);
    failToSet(DisplayBacklight);
    EXPECT_EQ(getIntensity(KeyBacklight).result, 1U);
    EXPECT_FALSE(Inside::stream(DisplayBacklight).good());
    EXPECT_TRUE(Inside::stream(KeyBacklight).good());
}

TEST_F(DimmableStreamState, an_unopened_stream_is_bad_until_its_first_intensity) {
    (void)outputOfBuilding();
    EXPECT_FALSE(Inside::stream(Beeper).good());
    EXPECT_EQ(device().setIntensity(50, Beeper), 1U);
    EXPECT_TRUE(Inside::stream(Beeper).good());
    EXPECT_EQ(device().setIntensity(50, Beeper), 1U);
}

TEST_F(DimmableStreamState, each_intensity_works_again_after_a_failed_read) {
    makeBoard();
    (void)device();
    for (const Device& each : intensityDevices) {
        makeFile(each.file, "");
        EXPECT_EQ(getIntensity(each.number).result, 5U);
        makeFile(each.file, "255\n");
        EXPECT_EQ(getIntensity(each.number), (Reading{0, 100}));
        makeFile(each.file, "");
        EXPECT_EQ(getIntensity(each.number).result, 5U);
        EXPECT_EQ(device().setIntensity(50, each.number), 0U);
        EXPECT_EQ(readFile(each.file), each.number == Beeper ? "50\n" : "128\n");
    }
}

TEST_F(DimmableStreamState, a_failed_set_of_the_rgb_led_leaves_it_usable) {
    makeBoard();
    failToSetRgb();
    EXPECT_TRUE(Inside::stream(RGBLED).good());
}

TEST_F(DimmableStreamState, a_failed_getColor_clears_its_own_stream_only) {
    makeColorBoard();
    failToSet(DisplayBacklight);
    makeFile(rgbFile, "");
    EXPECT_EQ(getColor(RGBLED).result, 5U);
    EXPECT_TRUE(Inside::stream(RGBLED).good());
    EXPECT_FALSE(Inside::stream(DisplayBacklight).good());
}

TEST_F(DimmableStreamState, a_value_out_of_range_touches_nothing) {
    makeBoard();
    EXPECT_EQ(device().setIntensity(101, KeyBacklight), 24U);
    EXPECT_TRUE(Inside::stream(KeyBacklight).good());
    EXPECT_EQ(getIntensity(KeyBacklight), (Reading{0, 50}));
}

/// Separates thousands by dots, as the German locale does.
class Grouping : public std::numpunct<char> {
  protected:
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST_F(DimmableStreamState, a_locale_that_groups_digits_does_not_reach_the_driver) {
    std::locale::global(std::locale(std::locale::classic(), new Grouping));
    makeColorBoard();
    EXPECT_EQ(device().setColor(3430008, RGBLED), 0U);
    EXPECT_EQ(device().setColor(3430008, KeyBacklight), 0U);
    EXPECT_EQ(readFile(rgbFile), "3430008\n");
    EXPECT_EQ(readFile(keyFile), "3430008\n");
    EXPECT_EQ(getColor(RGBLED), (Reading{0, 3430008}));
}

TEST_F(DimmableStreamState, a_locale_set_after_building_does_not_reach_the_driver) {
    makeBoard();
    (void)device();
    std::locale::global(std::locale(std::locale::classic(), new Grouping));
    std::cout.imbue(std::locale());
    EXPECT_EQ(device().setColor(3430008, RGBLED), 0U);
    EXPECT_EQ(readFile(rgbFile), "3430008\n");
}

}  // namespace
}  // namespace ZR::test
