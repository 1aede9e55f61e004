#include <string>

#include "common/zrapi_common/zr_result.h"
#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"
#include "tools/zrctl/library_voice.h"
#include "tools/zrctl/video.h"

namespace zrctl {
namespace {

using Cameras = ZR::ZRGstreamerVideoInput;

// The library's codes; 2 stands for a detection that failed.
constexpr int standardPal = 0;
constexpr int standardNtsc = 1;

/// What came of asking a decoder.
struct Detection {
    int input;  ///< as the library counts, from 0
    int standard;
    std::string said;  ///< what the library printed meanwhile

    bool hasSucceeded() const { return standard == standardPal || standard == standardNtsc; }
    const char* standardText() const { return standard == standardNtsc ? "NTSC" : "PAL"; }
};

Detection detect(int input) {
    Cameras::doInitialSetup();
    const LibraryEar ear;
    const int standard = Cameras::detectVideoStandard(input);
    return {input, standard, ear.text()};
}

JsonObject detectionJson(const Detection& detection) {
    const std::string& decoder = Cameras::videoSubDevices[detection.input];
    JsonObject json;
    json.addNumber("camera", detection.input + 1);
    if (decoder.empty())
        json.addNull("decoder");
    else
        json.addText("decoder", decoder);
    if (detection.hasSucceeded())
        json.addText("standard", detection.standardText());
    else
        json.addNull("standard");
    json.addNumber("standardCode", detection.standard);
    if (detection.said.empty())
        json.addNull("said");
    else
        json.addText("said", detection.said);
    return json;
}

Report detectionReport(const Detection& detection) {
    Report report;
    report.thing = "camera " + std::to_string(detection.input + 1);
    report.json = detectionJson(detection);
    if (!detection.hasSucceeded()) {
        // The library answers with a standard, not with a result.
        const bool isOpen = Cameras::fileDescriptorsSub[detection.input] > 0;
        report.outcome = {isOpen ? ZR::ResultReadFailed : ZR::ResultOpenFailed,
                          "the library says \"" + detection.said +
                              "\"; 'zrctl video topology' shows the decoders and their nodes"};
        return report;
    }
    report.text = report.thing + " " + detection.standardText();
    if (!detection.said.empty())
        report.text += " (the library says \"" + detection.said + "\")";
    return report;
}

}  // namespace

int runVideoStandard(const Words& words, const CommonOptions& common) {
    const Arguments arguments(words, {});
    if (arguments.operands().size() != 1)
        throw UsageError("video standard needs one camera, as in 'zrctl video standard 1'");
    const auto camera = parseNumber(arguments.operands()[0], "camera", 1, Cameras::inputCount);
    return show(detectionReport(detect(static_cast<int>(camera) - 1)), common);
}

}  // namespace zrctl
