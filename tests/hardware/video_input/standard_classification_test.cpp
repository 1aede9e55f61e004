#include <gtest/gtest.h>

#include "hardware/video_input/gstreamer_video_input/functional/video_standard_internal.h"

namespace ZR::test {
namespace {

void expectSupported(v4l2_std_id mask, int standard) {
    EXPECT_EQ(classifyStandard(mask).standard, standard) << mask;
    EXPECT_TRUE(classifyStandard(mask).supported) << mask;
}

void expectUnsupported(v4l2_std_id mask) {
    EXPECT_EQ(classifyStandard(mask).standard, 0) << mask;
    EXPECT_FALSE(classifyStandard(mask).supported) << mask;
}

TEST(StandardClassification_pure, an_empty_mask_is_pal) {
    expectSupported(0, 0);
}

TEST(StandardClassification_pure, each_single_bit_of_ntsc_is_ntsc) {
    for (const v4l2_std_id mask : {0x1000U, 0x2000U, 0x8000U})
        expectSupported(mask, 1);
}

TEST(StandardClassification_pure, all_bits_of_ntsc_are_ntsc) {
    expectSupported(0xB000, 1);
}

TEST(StandardClassification_pure, each_single_bit_of_pal_is_pal) {
    for (const v4l2_std_id mask : {0x01U, 0x02U, 0x04U, 0x08U, 0x10U, 0x20U, 0x40U, 0x80U})
        expectSupported(mask, 0);
}

TEST(StandardClassification_pure, all_bits_of_pal_are_pal) {
    expectSupported(0xFF, 0);
}

TEST(StandardClassification_pure, ntsc_comes_before_pal) {
    expectSupported(0xB0FF, 1);
    expectSupported(0x1001, 1);
    expectSupported(0x8080, 1);
}

TEST(StandardClassification_pure, bits_of_both_and_others_are_what_is_supported_of_them) {
    expectSupported(0xFFFFFFFFFFFFFFFF, 1);
    expectSupported(0xFFFFFFFFFFFF4FFF, 0);
    expectSupported(0xFF00FF, 0);
}

TEST(StandardClassification_pure, secam_alone_is_an_unsupported_pal) {
    expectUnsupported(0xFF0000);
    expectUnsupported(0x10000);
}

TEST(StandardClassification_pure, pal_m_n_nc_and_60_alone_are_an_unsupported_pal) {
    for (const v4l2_std_id mask : {0x100U, 0x200U, 0x400U, 0x800U, 0xF00U})
        expectUnsupported(mask);
}

TEST(StandardClassification_pure, ntsc_443_alone_is_an_unsupported_pal) {
    expectUnsupported(0x4000);
}

TEST(StandardClassification_pure, a_bit_beyond_32_makes_a_mask_that_is_not_empty) {
    expectUnsupported(0x100000000);
    expectUnsupported(0x8000000000000000);
    expectUnsupported(0xFFFFFFFF00000000);
}

TEST(ForcedStandard_pure, of_1_is_ntsc) {
    EXPECT_EQ(forcedStandard(1), 0xB000U);
}

TEST(ForcedStandard_pure, of_everything_else_is_pal) {
    for (const int standard : {0, 2, 3, -1, 255, 0x7FFFFFFF, -0x7FFFFFFF - 1})
        EXPECT_EQ(forcedStandard(standard), 0xFFU) << standard;
}

TEST(StandardCode_pure, is_0_for_pal_1_for_ntsc_and_2_for_unknown) {
    EXPECT_EQ(standardPal, 0);
    EXPECT_EQ(standardNtsc, 1);
    EXPECT_EQ(standardUnknown, 2);
}

}  // namespace
}  // namespace ZR::test
