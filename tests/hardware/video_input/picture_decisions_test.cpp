#include <gtest/gtest.h>

#include <limits>

#include "hardware/video_input/gstreamer_video_input/functional/picture_settings_internal.h"

namespace ZR {
namespace {

constexpr int lowest = std::numeric_limits<int>::min();
constexpr int highest = std::numeric_limits<int>::max();

TEST(PictureDecisions_pure, degrees_are_kept_in_0_to_359) {
    EXPECT_EQ(normalisedDegrees(0), 0);
    EXPECT_EQ(normalisedDegrees(359), 359);
    EXPECT_EQ(normalisedDegrees(360), 0);
    EXPECT_EQ(normalisedDegrees(450), 90);
    EXPECT_EQ(normalisedDegrees(-1), 359);
    EXPECT_EQ(normalisedDegrees(-90), 270);
    EXPECT_EQ(normalisedDegrees(-360), 0);
    EXPECT_EQ(normalisedDegrees(-450), 270);
}

TEST(PictureDecisions_pure, degrees_at_the_ends_of_their_type_are_normalised_too) {
    EXPECT_EQ(normalisedDegrees(highest), 127);
    EXPECT_EQ(normalisedDegrees(lowest), 232);
}

TEST(PictureDecisions_pure, pixels_are_cut_toward_zero) {
    EXPECT_EQ(wholePixels(0.0), 0);
    EXPECT_EQ(wholePixels(1.999), 1);
    EXPECT_EQ(wholePixels(-1.999), -1);
    EXPECT_EQ(wholePixels(-0.5), 0);
    EXPECT_EQ(wholePixels(800.0), 800);
}

TEST(PictureDecisions_pure, pixels_that_fit_are_cut_also_at_the_ends_of_their_type) {
    EXPECT_EQ(wholePixels(2147483646.9), highest - 1);
    EXPECT_EQ(wholePixels(-2147483647.9), lowest + 1);
}

TEST(PictureDecisions_pure, pixels_that_do_not_fit_become_the_nearest_that_do) {
    EXPECT_EQ(wholePixels(2147483647.0), highest);
    EXPECT_EQ(wholePixels(1e300), highest);
    EXPECT_EQ(wholePixels(std::numeric_limits<qreal>::infinity()), highest);
    EXPECT_EQ(wholePixels(-2147483648.0), lowest);
    EXPECT_EQ(wholePixels(-1e300), lowest);
    EXPECT_EQ(wholePixels(-std::numeric_limits<qreal>::infinity()), lowest);
}

TEST(PictureDecisions_pure, what_is_no_number_is_0_pixels) {
    EXPECT_EQ(wholePixels(std::numeric_limits<qreal>::quiet_NaN()), 0);
}

void expectSize(ItemSize size, int width, int height) {
    EXPECT_EQ(size.width, width);
    EXPECT_EQ(size.height, height);
}

TEST(PictureDecisions_pure, a_quarter_turn_swaps_width_and_height) {
    expectSize(fillingSize(800, 480, 90), 480, 800);
    expectSize(fillingSize(800, 480, 270), 480, 800);
}

TEST(PictureDecisions_pure, any_other_angle_keeps_them) {
    for (const int degrees : {0, 1, 89, 91, 180, 269, 271, 359, -90, 450})
        expectSize(fillingSize(800, 480, degrees), 800, 480);
}

TEST(PictureDecisions_pure, the_size_is_cut_toward_zero) {
    expectSize(fillingSize(800.9, 480.5, 0), 800, 480);
    expectSize(fillingSize(800.9, 480.5, 90), 480, 800);
}

}  // namespace
}  // namespace ZR
