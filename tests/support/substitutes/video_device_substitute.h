#pragma once

#include <linux/videodev2.h>

#include <functional>
#include <map>
#include <string>

/// Takes the place of open and ioctl for video nodes and sub-devices; link
/// `zrapi_substitute_video_device`. Logs to CaptureCallLog: "open '/dev/video0' 524290",
/// "VIDIOC_S_CTRL 5 9968066 1" with the descriptor first.

namespace ZR::test {

/// What is behind a descriptor.
struct SimulatedVideoDevice {
    int selection = 0;            ///< value of the control that selects the input
    v4l2_std_id signal = 0;       ///< what VIDIOC_QUERYSTD finds
    v4l2_std_id standard = 0;     ///< what VIDIOC_S_STD has set
    unsigned int controlSet = 0;  ///< identity of the control that VIDIOC_S_CTRL has set
};

struct VideoDeviceSubstitute {
    /// The descriptor that each path opens as; other paths are missing. Used from the first reset()
    /// on, before that every open goes to the kernel.
    static std::map<std::string, int, std::less<>> paths;

    /// By descriptor; an ioctl on any other goes to the kernel.
    static std::map<int, SimulatedVideoDevice> devices;

    /// Whether each answered ioctl is also made on the real descriptor of the number, with its
    /// result thrown away, for whoever counts system calls.
    static bool asksKernelToo;

    /// Makes the next calls of @p function, "open" or "VIDIOC_...", fail with @p error.
    static void fail(const std::string& function, int error, int times = 1);

    /// Neither paths nor devices nor failures.
    static void reset();

    /// Leaves every open to the kernel again.
    static void leaveOpenToKernel();
};

}  // namespace ZR::test
