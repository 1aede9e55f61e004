#include <climits>
#include <string>

#include "tests/hardware/dimmable/dimmable_board.h"
#include "tests/support/private_root.h"

namespace ZR::test {
namespace {

using DimmableMinimum = DimmableTest;

TEST_F(DimmableMinimum, reading_a_display_that_is_too_dark_gives_and_writes_the_minimum) {
    makeBoard();
    makeFile(platformDisplay, "3\n");
    EXPECT_EQ(getIntensity(DisplayBacklight), (Reading{0, 5}));
    EXPECT_EQ(readFile(platformDisplay), "13\n");
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableMinimum, reading_a_display_at_its_minimum_writes_nothing) {
    makeBoard();
    makeFile(platformDisplay, "13 \n");
    EXPECT_EQ(getIntensity(DisplayBacklight), (Reading{0, 5}));
    EXPECT_EQ(readFile(platformDisplay), "13 \n");
}

TEST_F(DimmableMinimum, a_failed_raise_shows_the_value_read_and_only_the_writes_own_report) {
    makeBoard();
    makeFile(platformDisplay, "3\n");
    (void)device();
    const RefusedWrites refused;
    EXPECT_EQ(getIntensity(DisplayBacklight), (Reading{0, 1}));
    EXPECT_EQ(reports(), Reports{report("Writing intensity to device file 0")});
}

TEST_F(DimmableMinimum, an_impossible_minimum_makes_the_raise_fail_with_its_range_report) {
    makeBoard();
    EXPECT_EQ(device().setMinDisplayBacklightIntensity(150), 24U);
    forgetReports();
    EXPECT_EQ(getIntensity(DisplayBacklight), (Reading{0, 50}));
    EXPECT_EQ(reports(), Reports{report("Intensity out of range for device 0, requested: 150")});
    EXPECT_EQ(readFile(platformDisplay), "128\n");
}

TEST_F(DimmableMinimum, setting_raises_a_darker_display) {
    makeBoard();
    EXPECT_EQ(device().setMinDisplayBacklightIntensity(60), 0U);
    EXPECT_EQ(readFile(platformDisplay), "153\n");
    EXPECT_EQ(getIntensity(DisplayBacklight), (Reading{0, 60}));
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableMinimum, setting_leaves_a_brighter_display_alone) {
    makeBoard();
    EXPECT_EQ(device().setMinDisplayBacklightIntensity(20), 0U);
    EXPECT_EQ(readFile(platformDisplay), "128\n");
    EXPECT_EQ(getMinimum(), (Reading{0, 20}));
}

TEST_F(DimmableMinimum, setting_moves_the_range_of_the_display) {
    makeBoard();
    EXPECT_EQ(device().setMinDisplayBacklightIntensity(20), 0U);
    EXPECT_EQ(device().setIntensity(19, DisplayBacklight), 24U);
    EXPECT_EQ(device().setIntensity(20, DisplayBacklight), 0U);
    EXPECT_EQ(device().setMinDisplayBacklightIntensity(0), 0U);
    EXPECT_EQ(device().setIntensity(0, DisplayBacklight), 0U);
    EXPECT_EQ(firstLine(platformDisplay), "0\n");
}

TEST_F(DimmableMinimum, setting_does_not_touch_the_other_devices) {
    makeBoard();
    EXPECT_EQ(device().setMinDisplayBacklightIntensity(60), 0U);
    EXPECT_EQ(device().setIntensity(0, KeyBacklight), 0U);
    EXPECT_EQ(device().setIntensity(0, Beeper), 0U);
    EXPECT_EQ(getIntensity(KeyBacklight), (Reading{0, 0}));
    EXPECT_EQ(getIntensity(Beeper), (Reading{0, 0}));
}

TEST_F(DimmableMinimum, of_150_is_stored_and_all_display_values_fail_with_24) {
    makeBoard();
    EXPECT_EQ(device().setMinDisplayBacklightIntensity(150), 24U);
    EXPECT_EQ(Inside::minimum(), 150U);
    for (unsigned int value = 0; value <= 100; ++value)
        EXPECT_EQ(device().setIntensity(value, DisplayBacklight), 24U);
    EXPECT_EQ(device().setIntensity(150, DisplayBacklight), 24U);
    EXPECT_EQ(readFile(platformDisplay), "128\n");
}

TEST_F(DimmableMinimum, of_150_reports_the_raise_and_the_write_that_follows_it) {
    makeBoard();
    EXPECT_EQ(device().setMinDisplayBacklightIntensity(150), 24U);
    const Report expected = report("Intensity out of range for device 0, requested: 150");
    EXPECT_EQ(reports(), (Reports{expected, expected}));
}

TEST_F(DimmableMinimum, of_150_reads_back_as_150_with_24) {
    makeBoard();
    EXPECT_EQ(device().setMinDisplayBacklightIntensity(150), 24U);
    EXPECT_EQ(getMinimum(), (Reading{24, 150}));
}

TEST_F(DimmableMinimum, of_150_can_be_lowered_again) {
    makeBoard();
    EXPECT_EQ(device().setMinDisplayBacklightIntensity(150), 24U);
    EXPECT_EQ(device().setMinDisplayBacklightIntensity(10), 0U);
    EXPECT_EQ(device().setIntensity(10, DisplayBacklight), 0U);
    EXPECT_EQ(firstLine(platformDisplay), "26\n");
}

TEST_F(DimmableMinimum, of_the_largest_number_is_stored_unchecked) {
    makeBoard();
    EXPECT_EQ(device().setMinDisplayBacklightIntensity(UINT_MAX), 24U);
    EXPECT_EQ(getMinimum(), (Reading{24, UINT_MAX}));
}

TEST_F(DimmableMinimum, reading_it_raises_a_darker_display) {
    makeBoard();
    makeFile(platformDisplay, "3\n");
    EXPECT_EQ(getMinimum(), (Reading{0, 5}));
    EXPECT_EQ(readFile(platformDisplay), "13\n");
}

TEST_F(DimmableMinimum, setting_it_answers_1_and_still_stores_when_the_display_is_missing) {
    (void)outputOfBuilding();
    EXPECT_EQ(device().setMinDisplayBacklightIntensity(30), 1U);
    EXPECT_EQ(Inside::minimum(), 30U);
    EXPECT_EQ(reports(), Reports{report("Reading from display backlight device file "
                                        "(file != good()) 0")});
}

TEST_F(DimmableMinimum, reading_it_answers_1_and_still_gives_it_when_the_display_is_missing) {
    (void)outputOfBuilding();
    EXPECT_EQ(getMinimum(), (Reading{1, 5}));
    EXPECT_EQ(reports(), Reports{report("Reading from display backlight device file "
                                        "(file != good()) 0")});
}

TEST_F(DimmableMinimum, a_display_that_does_not_read_answers_1_too) {
    makeBoard();
    (void)device();
    makeFile(platformDisplay, "");
    EXPECT_EQ(device().setMinDisplayBacklightIntensity(30), 1U);
    EXPECT_EQ(getMinimum(), (Reading{1, 30}));
    const Report expected =
        report("Reading from display backlight device file (std::ifstream::failure) 0");
    EXPECT_EQ(reports(), (Reports{expected, expected}));
}

TEST_F(DimmableMinimum, a_display_that_refuses_the_raise_answers_6_and_is_tried_twice) {
    makeBoard();
    (void)device();
    const RefusedWrites refused;
    EXPECT_EQ(device().setMinDisplayBacklightIntensity(60), 6U);
    const Report expected = report("Writing intensity to device file 0");
    EXPECT_EQ(reports(), (Reports{expected, expected}));
}

}  // namespace
}  // namespace ZR::test
