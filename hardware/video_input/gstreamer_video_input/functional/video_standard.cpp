#include <cerrno>
#include <cstring>
#include <string>

#include "hardware/decimal_internal.h"
#include "hardware/print_line_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/video_device_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/video_standard_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

namespace ZR {

static_assert(V4L2_STD_PAL == 0xFF && V4L2_STD_NTSC == 0xB000);

int ZRGstreamerVideoInput::detectVideoStandard(int input) {
    const int descriptor = fileDescriptorsSub[input];
    const std::string& path = videoSubDevices[input];
    if (descriptor < firstVideoDescriptor) {
        const char* const reason = std::strerror(errno);
        printLine({"ERROR OPENING VIDEO SUB DEVICE", path, ": ", reason});
        return standardUnknown;
    }
    v4l2_std_id mask = 0;
    if (!askVideoDriver(descriptor, VIDIOC_QUERYSTD, mask)) {
        const char* const reason = std::strerror(errno);
        printLine({"ERROR QUERY VIDEO STANDARD FOR ", path, ": ", reason});
        return standardUnknown;
    }
    const DetectedStandard detected = classifyStandard(mask);
    // The inputs are counted from 1 here and from 0 in the other messages, and this one has no line
    // end; both kept: logs are searched for these texts.
    if (!detected.supported)
        printUnended({"CAM ", Decimal(input + 1).text(),
                      ": UNSUPPORTED video standard detected: ", Decimal(mask).text()});
    return detected.standard;
}

void ZRGstreamerVideoInput::setVideoStandard(int input, int standard) {
    const int descriptor = fileDescriptorsSub[input];
    if (descriptor < firstVideoDescriptor)
        return;
    v4l2_std_id mask = forcedStandard(standard);
    if (!tellVideoDriver(descriptor, VIDIOC_S_STD, mask))
        printLine({Decimal(input).text(), ": FAILED to set STD to ", Decimal(standard).text()});
}

}  // namespace ZR
