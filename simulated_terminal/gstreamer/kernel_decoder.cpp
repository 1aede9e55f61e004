#include "kernel_decoder.h"

#include <fcntl.h>
#include <glob.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>

namespace {

constexpr char videoNodes[] = "/dev/video*";

std::uint32_t capabilitiesOf(int node) {
    v4l2_capability capability{};
    if (::ioctl(node, VIDIOC_QUERYCAP, &capability) != 0)
        return 0;
    const bool ofNode = (capability.capabilities & V4L2_CAP_DEVICE_CAPS) != 0;
    return ofNode ? capability.device_caps : capability.capabilities;
}

/// A decoder takes compressed pictures on its output queue.
bool takes(int node, std::uint32_t queue, std::initializer_list<std::uint32_t> formats) {
    v4l2_fmtdesc format{};
    format.type = queue;
    for (; ::ioctl(node, VIDIOC_ENUM_FMT, &format) == 0; ++format.index)
        if (std::find(formats.begin(), formats.end(), format.pixelformat) != formats.end())
            return true;
    return false;
}

bool decodes(const char* path, std::initializer_list<std::uint32_t> formats) {
    const int node = ::open(path, O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (node < 0)
        return false;
    const bool found =
        (capabilitiesOf(node) & (V4L2_CAP_VIDEO_M2M | V4L2_CAP_VIDEO_M2M_MPLANE)) != 0 &&
        (takes(node, V4L2_BUF_TYPE_VIDEO_OUTPUT, formats) ||
         takes(node, V4L2_BUF_TYPE_VIDEO_OUTPUT_MPLANE, formats));
    ::close(node);
    return found;
}

}  // namespace

bool hasKernelDecoder(std::initializer_list<std::uint32_t> formats) {
    glob_t nodes{};
    bool found = false;
    if (::glob(videoNodes, 0, nullptr, &nodes) == 0)
        found = std::any_of(nodes.gl_pathv, nodes.gl_pathv + nodes.gl_pathc,
                            [&](const char* path) { return decodes(path, formats); });
    ::globfree(&nodes);
    return found;
}
