#include <string>

#include "hardware/feature_detection/zr_feature_detection.h"
#include "tests/hardware/costs/operation_cost.h"
#include "tests/support/private_root.h"

namespace ZR::test {
namespace {

using FeatureDetectionCost = CostTest;

/// A probe as an operation; its answer is the result.
Operation probe(bool (*question)()) {
    return [question] { return question() ? 1U : 0U; };
}

void expectOneLook(const SystemCall& call, const std::string& path) {
    EXPECT_NE(call.name.find("stat"), std::string::npos) << call.name;
    EXPECT_EQ(call.text, path);
}

void expectOneLook(const OperationCost& cost, const std::string& path) {
    ASSERT_EQ(cost.trace.calls.size(), 1U) << cost.calls();
    expectOneLook(cost.trace.calls[0], path);
    EXPECT_EQ(cost.allocations, 0U);
}

TEST_F(FeatureDetectionCost, hasEncoder_takes_one_look_and_no_heap) {
    makeDeviceNode("/dev/input/encoder0");
    const OperationCost cost = costOf(probe(&ZRFeatureDetection::hasEncoder));
    EXPECT_EQ(cost.result, "1");
    expectOneLook(cost, "/dev/input/encoder0");
}

TEST_F(FeatureDetectionCost, hasKeyboard_takes_one_look_also_when_there_is_none) {
    const OperationCost cost = costOf(probe(&ZRFeatureDetection::hasKeyboard));
    EXPECT_EQ(cost.result, "0");
    expectOneLook(cost, "/dev/input/keyboard0");
}

TEST_F(FeatureDetectionCost, hasTouchscreen_takes_one_look_when_the_first_name_is_there) {
    makeDeviceNode("/dev/input/ts0");
    const OperationCost cost = costOf(probe(&ZRFeatureDetection::hasTouchscreen));
    EXPECT_EQ(cost.result, "1");
    expectOneLook(cost, "/dev/input/ts0");
}

TEST_F(FeatureDetectionCost, hasTouchscreen_takes_a_second_look_only_for_the_second_name) {
    makeDeviceNode("/dev/input/touchscreen0");
    const OperationCost cost = costOf(probe(&ZRFeatureDetection::hasTouchscreen));
    EXPECT_EQ(cost.result, "1");
    ASSERT_EQ(cost.trace.calls.size(), 2U) << cost.calls();
    expectOneLook(cost.trace.calls[0], "/dev/input/ts0");
    expectOneLook(cost.trace.calls[1], "/dev/input/touchscreen0");
    EXPECT_EQ(cost.allocations, 0U);
}

TEST_F(FeatureDetectionCost, isRunningOnSingleCore_reads_the_device_tree_once) {
    makeFile("/proc/device-tree/compatible", std::string("fsl,imx6dl-board\0fsl,imx6dl\0", 28));
    const Operation question = probe(&ZRFeatureDetection::isRunningOnSingleCore);
    const OperationCost first = costOfFirst(question);
    EXPECT_EQ(first.result, "1");
    // A device tree ends no text with a line end: the second read sees that it is over.
    EXPECT_EQ(first.calls(), "openat read read close");
    const OperationCost later = costOf(question);
    EXPECT_EQ(later.result, "1");
    EXPECT_EQ(later.calls(), "");
    EXPECT_EQ(later.allocations, 0U);
}

}  // namespace
}  // namespace ZR::test
