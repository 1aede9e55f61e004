#include <gtest/gtest.h>

#include <string>

#include "hardware/video_input/gstreamer_video_input/functional/capture_routing_internal.h"
#include "tests/hardware/video_input/capture_texts.h"

namespace ZR::test {
namespace {

constexpr bool dualLite = false;
constexpr bool quad = true;
const std::string tw = "tw9912 1-0044";
const std::string adv = "adv7180 2-0021";
const std::string pal = "720x576";
const std::string ntsc = "720x480";

TEST(CaptureFormats_pure, of_inputs_0_and_2_on_the_dual_lite_have_no_field) {
    EXPECT_EQ(sharedPathFormats(tw, dualLite, pal), sharedPalDualLite);
    EXPECT_EQ(sharedPathFormats(tw, dualLite, ntsc), sharedNtscDualLite);
    EXPECT_EQ(sharedPathFormats(tw, dualLite, pal).find("field"), std::string::npos);
}

TEST(CaptureFormats_pure, of_inputs_0_and_2_on_the_quad_have_field_none_on_every_pad) {
    EXPECT_EQ(sharedPathFormats(tw, quad, pal), sharedPalQuad);
    EXPECT_EQ(sharedPathFormats(tw, quad, ntsc), sharedNtscQuad);
}

TEST(CaptureFormats_pure, of_input_1_on_the_dual_lite_use_pad_5_and_end_with_a_comma) {
    EXPECT_EQ(secondPathFormats(adv, dualLite, pal), secondPalDualLite);
    EXPECT_EQ(secondPathFormats(adv, dualLite, ntsc), secondNtscDualLite);
}

TEST(CaptureFormats_pure, of_input_1_on_the_quad_use_pad_2_and_end_with_a_comma) {
    EXPECT_EQ(secondPathFormats(adv, quad, pal), secondPalQuad);
    EXPECT_EQ(secondPathFormats(adv, quad, ntsc), secondNtscQuad);
}

TEST(CaptureFormats_pure, of_a_decoder_that_was_not_found_begin_with_an_empty_name) {
    EXPECT_EQ(sharedPathFormats("", dualLite, pal),
              "'':0 [fmt:UYVY2X8/720x576],'ipu1_csi1_mux':5 [fmt:UYVY2X8/720x576],"
              "'ipu1_csi1':0 [fmt:UYVY2X8/720x576@1/50],'ipu1_csi1':2 [fmt:AYUV32/720x576@1/50]");
    EXPECT_EQ(secondPathFormats("", quad, ntsc).substr(0, 47),
              "'':0 [fmt:UYVY2X8/720x480 field:none],'imx6-mip");
}

TEST(CaptureFormats_pure, take_names_whole_with_blanks_brackets_and_quotes) {
    EXPECT_EQ(sharedPathFormats("tw9912 [a] 's", quad, ntsc),
              "'tw9912 [a] 's':0 [fmt:UYVY2X8/720x480 field:none],'ipu2_csi1_mux':2 "
              "[fmt:UYVY2X8/720x480 field:none],'ipu2_csi1':0 [fmt:UYVY2X8/720x480@1/50 "
              "field:none],'ipu2_csi1':2 [fmt:AYUV32/720x480@1/50 field:none]");
    EXPECT_EQ(secondPathFormats("adv7180 ], [", dualLite, pal).substr(0, 51),
              "'adv7180 ], [':0 [fmt:UYVY2X8/720x576 field:none],'");
}

TEST(CaptureFormats_pure, take_the_size_as_it_is) {
    EXPECT_EQ(sharedPathFormats("t", dualLite, "1x2"),
              "'t':0 [fmt:UYVY2X8/1x2],'ipu1_csi1_mux':5 [fmt:UYVY2X8/1x2],'ipu1_csi1':0 "
              "[fmt:UYVY2X8/1x2@1/50],'ipu1_csi1':2 [fmt:AYUV32/1x2@1/50]");
}

TEST(InputSelection_pure, of_input_0_is_0_where_it_was_1) {
    EXPECT_EQ(inputSelection(0).wanted, 0);
    EXPECT_EQ(inputSelection(0).wrong, 1);
}

TEST(InputSelection_pure, of_input_2_is_1_where_it_was_0) {
    EXPECT_EQ(inputSelection(2).wanted, 1);
    EXPECT_EQ(inputSelection(2).wrong, 0);
}

TEST(InputSelection_pure, is_control_9968066) {
    EXPECT_EQ(inputSelectControl, 9968066U);
}

}  // namespace
}  // namespace ZR::test
