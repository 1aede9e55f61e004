#include <gtest/gtest.h>

#include <array>
#include <string>

#include "hardware/video_input/gstreamer_video_input/functional/capture_discovery_internal.h"

namespace ZR::test {
namespace {

using Links = std::array<std::string, 7>;

TEST(CaptureLinks_pure, of_the_dual_lite_lead_over_ipu1_csi1_and_ipu1_csi0) {
    EXPECT_EQ(
        captureLinks("tw9912 1-0044", "adv7180 2-0021", false),
        (Links{"'tw9912 1-0044':0 -> 'ipu1_csi1_mux':4[1]", "'ipu1_csi1_mux':5 -> 'ipu1_csi1':0[1]",
               "'ipu1_csi1':2 -> 'ipu1_csi1 capture':0[1]",
               "'adv7180 2-0021':0 -> 'imx6-mipi-csi2':0[1]",
               "'imx6-mipi-csi2':1 -> 'ipu1_csi0_mux':0[1]",
               "'ipu1_csi0_mux':5 -> 'ipu1_csi0':0[1]",
               "'ipu1_csi0':2 -> 'ipu1_csi0 capture':0[1]"}));
}

TEST(CaptureLinks_pure, of_the_quad_lead_over_ipu2_csi1_and_ipu1_csi0) {
    EXPECT_EQ(
        captureLinks("tw9912 1-0044", "adv7180 2-0021", true),
        (Links{"'tw9912 1-0044':0 -> 'ipu2_csi1_mux':1[1]", "'ipu2_csi1_mux':2 -> 'ipu2_csi1':0[1]",
               "'ipu2_csi1':2 -> 'ipu2_csi1 capture':0[1]",
               "'adv7180 2-0021':0 -> 'imx6-mipi-csi2':0[1]",
               "'imx6-mipi-csi2':1 -> 'ipu1_csi0_mux':0[1]",
               "'ipu1_csi0_mux':2 -> 'ipu1_csi0':0[1]",
               "'ipu1_csi0':2 -> 'ipu1_csi0 capture':0[1]"}));
}

TEST(CaptureLinks_pure, of_decoders_that_were_not_found_have_empty_names) {
    const Links dualLite = captureLinks("", "", false);
    EXPECT_EQ(dualLite[0], "'':0 -> 'ipu1_csi1_mux':4[1]");
    EXPECT_EQ(dualLite[3], "'':0 -> 'imx6-mipi-csi2':0[1]");
    const Links quad = captureLinks("", "", true);
    EXPECT_EQ(quad[0], "'':0 -> 'ipu2_csi1_mux':1[1]");
    EXPECT_EQ(quad[3], "'':0 -> 'imx6-mipi-csi2':0[1]");
}

TEST(CaptureLinks_pure, take_names_whole_with_blanks_and_brackets) {
    const Links links = captureLinks("tw9912 [left] {1}", "adv7180 (2-0021) [x]:3", false);
    EXPECT_EQ(links[0], "'tw9912 [left] {1}':0 -> 'ipu1_csi1_mux':4[1]");
    EXPECT_EQ(links[3], "'adv7180 (2-0021) [x]:3':0 -> 'imx6-mipi-csi2':0[1]");
}

TEST(CaptureLinks_pure, escape_nothing_in_names) {
    const Links links = captureLinks("tw9912's", "adv7180\"", true);
    EXPECT_EQ(links[0], "'tw9912's':0 -> 'ipu2_csi1_mux':1[1]");
    EXPECT_EQ(links[3], "'adv7180\"':0 -> 'imx6-mipi-csi2':0[1]");
}

}  // namespace
}  // namespace ZR::test
