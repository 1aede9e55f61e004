#include "hardware/feature_detection/zr_feature_detection.h"

#include <string>

#include "common/zrapi_utility/zr_file_access.h"
#include "tools/zrctl/command.h"
#include "tools/zrctl/output.h"

namespace zrctl {

const char* const featuresHelp = R"(Usage: zrctl features [--json]

Shows which input devices the terminal has and whether its processor is one of
the small variants. No device is opened. A system without a readable device tree
counts as a small variant, and the text says so.

JSON: {"encoder": BOOL, "touchscreen": BOOL, "keyboard": BOOL, "singleCore": BOOL}
)";

namespace {

constexpr char compatibleFile[] = "/proc/device-tree/compatible";

/// Why the processor counts as a small variant when nothing told so; empty otherwise.
const char* reasonWithoutDeviceTree() {
    std::string compatible;
    return ZR::readStringFromFile(compatibleFile, &compatible) == 0 ? ""
                                                                    : " (no readable device tree)";
}

}  // namespace

int runFeatures(const Words& words, const CommonOptions& common) {
    if (!Arguments(words, {}).operands().empty())
        throw UsageError("features takes no arguments");
    struct Feature {
        const char* label;
        const char* key;
        bool present;
        const char* reason = "";
    };
    const Feature features[] = {
        {"encoder      ", "encoder", ZR::ZRFeatureDetection::hasEncoder()},
        {"touchscreen  ", "touchscreen", ZR::ZRFeatureDetection::hasTouchscreen()},
        {"keyboard     ", "keyboard", ZR::ZRFeatureDetection::hasKeyboard()},
        {"single core  ", "singleCore", ZR::ZRFeatureDetection::isRunningOnSingleCore(),
         reasonWithoutDeviceTree()},
    };
    JsonObject json;
    std::string text;
    for (const Feature& feature : features) {
        json.addBool(feature.key, feature.present);
        text +=
            std::string(feature.label) + (feature.present ? "yes" : "no") + feature.reason + '\n';
    }
    print(common.json ? json.text() + '\n' : text);
    return statusSuccess;
}

}  // namespace zrctl
