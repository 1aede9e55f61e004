#include <linux/videodev2.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <string>

#include "hardware/decimal_internal.h"
#include "hardware/print_line_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/capture_routing_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/media_controller_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/video_device_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/video_standard_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

namespace ZR {
namespace {

constexpr bool sharesDecoder(int input) {
    return input == 0 || input == 2;
}

/// The key of an input's settings: the application's number of it.
constexpr unsigned short interfaceNumber(int input) {
    return static_cast<unsigned short>(input + 1);
}

void selectInput(int input) {
    const int descriptor = ZRGstreamerVideoInput::fileDescriptors[input];
    if (descriptor < firstVideoDescriptor) {
        const char* const reason = std::strerror(errno);
        printLine({"ERROR OPENING VIDEO DEVICE ", ZRGstreamerVideoInput::videoDevices[input], ": ",
                   reason});
        return;
    }
    v4l2_control control{};
    control.id = inputSelectControl;
    const InputSelection selection = inputSelection(input);
    if (!askVideoDriver(descriptor, VIDIOC_G_CTRL, control) || control.value != selection.wrong)
        return;
    control.value = selection.wanted;
    if (!tellVideoDriver(descriptor, VIDIOC_S_CTRL, control))
        printLine({Decimal(input).text(), ": FAIL: SET INPUT ", Decimal(selection.wanted).text()});
}

void setFormats(const std::string& text) {
    // The system's library takes no null device.
    if (ZRGstreamerVideoInput::mediaDevice != nullptr)
        (void)setPadFormats(ZRGstreamerVideoInput::mediaDevice, text.c_str());
}

}  // namespace

void ZRGstreamerVideoInput::setupCameraInput(int input) {
    if (sharesDecoder(input))
        selectInput(input);
    applyDetectedVideoStandard(input);
}

void ZRGstreamerVideoInput::applyDetectedVideoStandard(int input) try {
    int& standard = videoSettings[interfaceNumber(input)].videoStandard;
    const bool wasKnown = standard != standardUnknown;
    if (!wasKnown)
        standard = detectVideoStandard(input);
    if (sharesDecoder(input)) {
        const bool haveOneStandard = videoSettings[interfaceNumber(0)].videoStandard ==
                                     videoSettings[interfaceNumber(2)].videoStandard;
        // The decoder already runs with it.
        if (wasKnown && haveOneStandard)
            return;
    } else if (wasKnown) {
        return;  // kept: the path of input 1 is its own, and stays as it was set
    }
    setVideoStandard(input, standard);
    lastSetStandard[input] = standard;
    const std::string& size = standard == standardNtsc ? ntscSize : palSize;
    setFormats(sharesDecoder(input) ? sharedPathFormats(twName, runningOnQuadCore, size)
                                    : secondPathFormats(advName, runningOnQuadCore, size));
} catch (const std::exception&) {
    // No memory for a record or a text. What was not set up is not known: the next call tries again.
    const auto setting = videoSettings.find(interfaceNumber(input));
    if (setting != videoSettings.end())
        setting->second.videoStandard = standardUnknown;
}

}  // namespace ZR
