// Shows which input devices the terminal has: find_features

#include <iostream>

#include <hardware/feature_detection/zr_feature_detection.h>

namespace {

const char* answer(bool present) {
    return present ? "yes" : "no";
}

}  // namespace

int main() {
    using ZR::ZRFeatureDetection;
    std::cout << "Rotary encoder: " << answer(ZRFeatureDetection::hasEncoder()) << '\n';
    std::cout << "Touch screen: " << answer(ZRFeatureDetection::hasTouchscreen()) << '\n';
    std::cout << "Keyboard: " << answer(ZRFeatureDetection::hasKeyboard()) << '\n';
    // Decided once per process; a system without a device tree counts as the small processor.
    std::cout << "Single-core processor: " << answer(ZRFeatureDetection::isRunningOnSingleCore())
              << '\n';
    return 0;
}
