#pragma once

#include <linux/media.h>
#include <linux/v4l2-subdev.h>
#include <linux/videodev2.h>

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace ZR::test {

/// What the kernel answers to the ioctls of this program. A device is a file of the private machine.
struct MediaKernel {
    media_device_info info{};
    std::vector<media_v2_entity> entities;
    std::vector<media_v2_interface> interfaces;
    std::vector<media_v2_pad> pads;
    std::vector<media_v2_link> links;

    /// By path of the node and index of the pad.
    std::map<std::pair<std::string, unsigned int>, v4l2_mbus_framefmt> padFormats;
    std::map<std::pair<std::string, unsigned int>, v4l2_fract> intervals;
    /// By path of the node; the type says which buffers have it.
    std::map<std::string, v4l2_format> videoFormats;

    /// Called before each answer, with the request.
    std::function<void(unsigned long)> beforeAnswer;
    /// Errors of the next calls, by request.
    std::map<unsigned long, std::vector<int>> errors;

    std::vector<std::string> calls;  ///< "MEDIA_IOC_G_TOPOLOGY /dev/media0"
    bool allClosedOnExec = true;     ///< whether all descriptors were
    bool noneWritable = true;        ///< whether all descriptors were for reading only
};

MediaKernel& mediaKernel();

}  // namespace ZR::test
