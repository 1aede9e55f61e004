#include "hardware/feature_detection/zr_feature_detection.h"

#include "tools/zrctl/command.h"
#include "tools/zrctl/output.h"

namespace zrctl {

const char* const featuresHelp = R"(Usage: zrctl features [--json]

Shows which input devices the terminal has and whether its processor is one of
the small variants. No device is opened. A system without a readable device tree
counts as a small variant.

JSON: {"encoder": BOOL, "touchscreen": BOOL, "keyboard": BOOL, "singleCore": BOOL}
)";

int runFeatures(const Words& words, const CommonOptions& common) {
    if (!Arguments(words, {}).operands().empty())
        throw UsageError("features takes no arguments");
    struct Feature {
        const char* label;
        const char* key;
        bool present;
    };
    const Feature features[] = {
        {"encoder      ", "encoder", ZR::ZRFeatureDetection::hasEncoder()},
        {"touchscreen  ", "touchscreen", ZR::ZRFeatureDetection::hasTouchscreen()},
        {"keyboard     ", "keyboard", ZR::ZRFeatureDetection::hasKeyboard()},
        {"single core  ", "singleCore", ZR::ZRFeatureDetection::isRunningOnSingleCore()},
    };
    JsonObject json;
    std::string text;
    for (const Feature& feature : features) {
        json.addBool(feature.key, feature.present);
        text += std::string(feature.label) + (feature.present ? "yes\n" : "no\n");
    }
    print(common.json ? json.text() + '\n' : text);
    return statusSuccess;
}

}  // namespace zrctl
