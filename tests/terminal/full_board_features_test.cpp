#include <gtest/gtest.h>

#include <fstream>

#include "board.h"
#include "hardware/feature_detection/zr_feature_detection.h"

namespace ZR::test {

TEST(FullBoardFeatures, every_input_device_is_found_through_the_link_to_its_node) {
    EXPECT_TRUE(ZRFeatureDetection::hasEncoder());
    EXPECT_TRUE(ZRFeatureDetection::hasTouchscreen());
    EXPECT_TRUE(ZRFeatureDetection::hasKeyboard());
}

TEST(FullBoardFeatures, an_unplugged_encoder_is_missing_and_back_when_plugged_in) {
    ASSERT_TRUE(ZRFeatureDetection::hasEncoder());
    turn("input_encoder/present", "0");
    EXPECT_FALSE(ZRFeatureDetection::hasEncoder());
    turn("input_encoder/present", "1");
}

TEST(FullBoardFeatures, the_dual_variant_counts_as_single_core) {
    EXPECT_TRUE(ZRFeatureDetection::isRunningOnSingleCore());
}

TEST(FullBoardFeatures, the_answer_about_the_processor_stays_when_the_device_tree_changes) {
    ASSERT_TRUE(ZRFeatureDetection::isRunningOnSingleCore());
    const std::string before = seenByCat("/proc/device-tree/compatible");
    turn("device_tree/compatible/value", "fsl,imx6q");
    EXPECT_TRUE(ZRFeatureDetection::isRunningOnSingleCore());
    std::ofstream("/sys/kernel/debug/zr_terminal/device_tree/compatible/value") << before;
}

}  // namespace ZR::test
