#include <gtest/gtest.h>

#include "hardware/video_input/gstreamer_video_input/functional/capture_discovery_internal.h"

namespace ZR::test {
namespace {

constexpr bool dualLite = false;
constexpr bool quad = true;

void expectOnBoth(const char* name, CaptureEntity expected) {
    EXPECT_EQ(captureEntity(name, dualLite), expected) << name;
    EXPECT_EQ(captureEntity(name, quad), expected) << name;
}

TEST(CaptureEntity_pure, a_name_that_begins_with_tw9912_is_the_decoder_of_inputs_0_and_2) {
    for (const char* const name : {"tw9912", "tw9912 1-0044", "tw9912x", "tw99123"})
        expectOnBoth(name, CaptureEntity::SharedDecoder);
}

TEST(CaptureEntity_pure, a_name_that_begins_with_adv7180_is_the_decoder_of_input_1) {
    for (const char* const name : {"adv7180", "adv7180 2-0021", "adv7180x", "adv71802"})
        expectOnBoth(name, CaptureEntity::SecondDecoder);
}

TEST(CaptureEntity_pure, a_part_of_a_decoders_name_is_nothing) {
    for (const char* const name : {"tw991", "tw991x", "adv718", "adv718x 2-0021", "t", "a", ""})
        expectOnBoth(name, CaptureEntity::None);
}

TEST(CaptureEntity_pure, a_decoders_name_that_stands_further_on_is_nothing) {
    for (const char* const name : {" tw9912", "video tw9912", "xadv7180", "TW9912", "ADV7180"})
        expectOnBoth(name, CaptureEntity::None);
}

TEST(CaptureEntity_pure, ipu1_csi0_capture_is_the_node_of_input_1_on_both_variants) {
    expectOnBoth("ipu1_csi0 capture", CaptureEntity::SecondNode);
}

TEST(CaptureEntity_pure, ipu1_csi1_capture_is_the_shared_node_on_the_dual_lite_only) {
    EXPECT_EQ(captureEntity("ipu1_csi1 capture", dualLite), CaptureEntity::SharedNode);
    EXPECT_EQ(captureEntity("ipu1_csi1 capture", quad), CaptureEntity::None);
}

TEST(CaptureEntity_pure, ipu2_csi1_capture_is_the_shared_node_on_the_quad_only) {
    EXPECT_EQ(captureEntity("ipu2_csi1 capture", quad), CaptureEntity::SharedNode);
    EXPECT_EQ(captureEntity("ipu2_csi1 capture", dualLite), CaptureEntity::None);
}

TEST(CaptureEntity_pure, a_capture_node_is_known_by_its_whole_name) {
    for (const char* const name :
         {"ipu1_csi0", "ipu1_csi0 captur", "ipu1_csi0 capture ", "ipu1_csi0 capture2",
          " ipu1_csi0 capture", "ipu1_csi1", "ipu1_csi1 capture2", "ipu2_csi1 captur",
          "ipu2_csi1 capture ", "IPU1_CSI0 capture"})
        expectOnBoth(name, CaptureEntity::None);
}

TEST(CaptureEntity_pure, the_other_entities_of_the_media_controller_are_nothing) {
    for (const char* const name :
         {"ipu2_csi0 capture", "ipu1_csi0", "ipu1_csi0_mux", "ipu1_csi1_mux", "ipu2_csi1_mux",
          "imx6-mipi-csi2", "ipu1_vdic", "ipu1_ic_prp", "ipu1_ic_prpenc capture"})
        expectOnBoth(name, CaptureEntity::None);
}

TEST(CaptureEntity_pure, the_first_test_that_matches_wins) {
    expectOnBoth("tw9912 adv7180 capture", CaptureEntity::SharedDecoder);
    expectOnBoth("adv7180 ipu1_csi0 capture", CaptureEntity::SecondDecoder);
}

}  // namespace
}  // namespace ZR::test
