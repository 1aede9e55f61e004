#include <string>

#include "hardware/feature_detection/zr_feature_detection.h"
#include "tests/hardware/fault_injection/fault_case.h"
#include "tests/support/private_root.h"

namespace ZR::test {
namespace {

std::string word(bool value) {
    return value ? "true" : "false";
}

void makeInputs() {
    for (const char* const path : {"/dev/input/encoder0", "/dev/input/ts0", "/dev/input/keyboard0"})
        makeFile(path, "");
    removeFile("/dev/input/touchscreen0");
}

void makeBothTouchscreens() {
    makeInputs();
    makeFile("/dev/input/touchscreen0", "");
}

void makeQuadCore() {
    makeFile("/proc/device-tree/compatible", std::string("fsl,imx6q\0fsl,imx6\0", 19));
}

/// The answer is kept for good, the one after a failure too.
CallRule decides(const std::string& call) {
    CallRule rule = repeats(call, "true");
    rule.afterwards = "true";
    return rule;
}

}  // namespace

std::vector<FaultCase> featureDetectionCases() {
    return {{"hasEncoder",
             makeInputs,
             nullptr,
             [] { return word(ZRFeatureDetection::hasEncoder()); },
             nullptr,
             "true",
             {fails("stat", "false")}},
            {"hasKeyboard",
             makeInputs,
             nullptr,
             [] { return word(ZRFeatureDetection::hasKeyboard()); },
             nullptr,
             "true",
             {fails("stat", "false")}},
            {"hasTouchscreen_with_the_first_name",
             makeInputs,
             nullptr,
             [] { return word(ZRFeatureDetection::hasTouchscreen()); },
             nullptr,
             "true",
             {fails("stat", "false")}},
            {"hasTouchscreen_with_both_names",
             makeBothTouchscreens,
             nullptr,
             [] { return word(ZRFeatureDetection::hasTouchscreen()); },
             nullptr,
             "true",
             {hides("stat", "the second name answers")}},
            {"isRunningOnSingleCore",
             makeQuadCore,
             nullptr,
             [] { return word(ZRFeatureDetection::isRunningOnSingleCore()); },
             nullptr,
             "false",
             {decides("openat"), decides("read"), decides("read"),
              hides("close", "the text is complete before the file is closed")}}};
}

}  // namespace ZR::test
