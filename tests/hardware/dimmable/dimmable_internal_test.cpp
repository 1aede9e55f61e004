#include <gtest/gtest.h>

#include <climits>

#include "hardware/dimmable/dimmable_internal.h"

namespace ZR::test {
namespace {

TEST(DimmableArithmetic_pure, percent_becomes_raw_rounded) {
    EXPECT_EQ(percentToRaw(0), 0U);
    EXPECT_EQ(percentToRaw(1), 3U);
    EXPECT_EQ(percentToRaw(5), 13U);
    EXPECT_EQ(percentToRaw(10), 26U);
    EXPECT_EQ(percentToRaw(50), 128U);
    EXPECT_EQ(percentToRaw(99), 252U);
    EXPECT_EQ(percentToRaw(100), 255U);
}

TEST(DimmableArithmetic_pure, raw_becomes_percent_rounded) {
    EXPECT_EQ(rawToPercent(255), 100);
    EXPECT_EQ(rawToPercent(128), 50);
    EXPECT_EQ(rawToPercent(50), 20);
    EXPECT_EQ(rawToPercent(3), 1);
    EXPECT_EQ(rawToPercent(2), 1);
    EXPECT_EQ(rawToPercent(1), 0);
    EXPECT_EQ(rawToPercent(0), 0);
}

TEST(DimmableArithmetic_pure, raw_becomes_percent_truncated_toward_zero_when_negative) {
    EXPECT_EQ(rawToPercent(-1), 0);
    EXPECT_EQ(rawToPercent(-3), 0);
    EXPECT_EQ(rawToPercent(-4), -1);
}

TEST(DimmableArithmetic_pure, every_percentage_survives_the_way_there_and_back) {
    for (unsigned int percent = 0; percent <= 100; ++percent)
        EXPECT_EQ(rawToPercent(static_cast<int>(percentToRaw(percent))), static_cast<int>(percent));
}

TEST(DimmableArithmetic_pure, a_text_is_decimal_hexadecimal_or_octal) {
    EXPECT_EQ(parseRaw("128"), 128);
    EXPECT_EQ(parseRaw("0x80"), 128);
    EXPECT_EQ(parseRaw("0X80"), 128);
    EXPECT_EQ(parseRaw("0200"), 128);
    EXPECT_EQ(parseRaw("  7"), 7);
    EXPECT_EQ(parseRaw("-1"), -1);
}

TEST(DimmableArithmetic_pure, a_text_counts_up_to_its_first_foreign_character) {
    EXPECT_EQ(parseRaw("12 rest"), 12);
    EXPECT_EQ(parseRaw("08"), 0);
    EXPECT_EQ(parseRaw("none"), 0);
    EXPECT_EQ(parseRaw(""), 0);
}

TEST(DimmableArithmetic_pure, a_number_too_large_saturates_at_32_bits) {
    EXPECT_EQ(parseRaw("99999999999999999999"), INT_MAX);
    EXPECT_EQ(parseRaw("4294967295"), INT_MAX);
    EXPECT_EQ(parseRaw("-99999999999999999999"), INT_MIN);
}

void expectRule(const IntensityRule& rule, const IntensityRule& expected) {
    EXPECT_EQ(rule.lowest, expected.lowest);
    EXPECT_EQ(rule.highest, expected.highest);
    EXPECT_EQ(rule.writesPercent, expected.writesPercent);
    EXPECT_EQ(rule.readsPercent, expected.readsPercent);
}

TEST(DimmableRule_pure, the_display_takes_percent_from_its_minimum_on) {
    expectRule(intensityRule(DisplayBacklight, false, 5), {5, 100, true, true});
    expectRule(intensityRule(DisplayBacklight, false, 150), {150, 100, true, true});
}

TEST(DimmableRule_pure, plain_illuminations_take_percent) {
    expectRule(intensityRule(KeyBacklight, false, 5), {0, 100, true, true});
    expectRule(intensityRule(EncoderBacklight, false, 5), {0, 100, true, true});
}

TEST(DimmableRule_pure, colour_illuminations_take_24_bits_raw) {
    expectRule(intensityRule(KeyBacklight, true, 5), {0, 0xFFFFFF, false, false});
    expectRule(intensityRule(EncoderBacklight, true, 5), {0, 0xFFFFFF, false, false});
}

TEST(DimmableRule_pure, the_beeper_is_written_raw_and_read_as_percent) {
    expectRule(intensityRule(Beeper, false, 5), {0, 100, false, true});
}

}  // namespace
}  // namespace ZR::test
