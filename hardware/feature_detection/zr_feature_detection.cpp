#include "hardware/feature_detection/zr_feature_detection.h"

#include <string>

#include "common/zrapi_utility/zr_files_and_folders.h"
#include "hardware/guarded_services_internal.h"

namespace ZR {
namespace {

constexpr char encoderDevice[] = "/dev/input/encoder0";
constexpr char touchscreenDevice[] = "/dev/input/ts0";
constexpr char otherTouchscreenDevice[] = "/dev/input/touchscreen0";
constexpr char keyboardDevice[] = "/dev/input/keyboard0";
constexpr char compatibleFile[] = "/proc/device-tree/compatible";

bool contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

bool detectSingleCore() {
    std::string compatible;
    // A system without a device tree is treated as the small variant.
    if (readText(compatibleFile, &compatible) != 0)
        return true;
    return contains(compatible, "imx6dl") || contains(compatible, "imx6ull");
}

}  // namespace

// The paths are kept as texts from the first call on, so that a probe costs its stat and no heap.
// They are never destroyed: a static object of the application may still ask when it ends.

bool ZRFeatureDetection::hasEncoder() {
    static const auto& path = *new std::string(encoderDevice);
    return ZRFilesAndFolders::isFile(path);
}

bool ZRFeatureDetection::hasTouchscreen() {
    static const auto& path = *new std::string(touchscreenDevice);
    static const auto& otherPath = *new std::string(otherTouchscreenDevice);
    return ZRFilesAndFolders::isFile(path) || ZRFilesAndFolders::isFile(otherPath);
}

bool ZRFeatureDetection::hasKeyboard() {
    static const auto& path = *new std::string(keyboardDevice);
    return ZRFilesAndFolders::isFile(path);
}

bool ZRFeatureDetection::isRunningOnSingleCore() {
    static const bool singleCore = detectSingleCore();
    return singleCore;
}

}  // namespace ZR
