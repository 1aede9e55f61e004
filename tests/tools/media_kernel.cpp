#include "tests/tools/media_kernel.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdint>

namespace ZR::test {
namespace {

int refuse(int error) {
    errno = error;
    return -1;
}

const char* nameOf(unsigned long request) {
    switch (request) {
        case MEDIA_IOC_DEVICE_INFO:
            return "MEDIA_IOC_DEVICE_INFO ";
        case MEDIA_IOC_G_TOPOLOGY:
            return "MEDIA_IOC_G_TOPOLOGY ";
        case VIDIOC_SUBDEV_G_FMT:
            return "VIDIOC_SUBDEV_G_FMT ";
        case VIDIOC_SUBDEV_G_FRAME_INTERVAL:
            return "VIDIOC_SUBDEV_G_FRAME_INTERVAL ";
        case VIDIOC_G_FMT:
            return "VIDIOC_G_FMT ";
        default:
            return "something else ";
    }
}

std::string pathOf(int descriptor) {
    std::array<char, 256> path{};
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t size = ::readlink(link.c_str(), path.data(), path.size());
    return {path.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
}

/// Copies a list as the kernel does: as much as there is room for.
/// @return true when that is all
template <typename Record>
bool copyOut(const std::vector<Record>& records, __u64 pointer, std::size_t room) {
    if (pointer == 0)
        return true;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the kernel takes its pointers as numbers
    auto* const list = reinterpret_cast<Record*>(static_cast<std::uintptr_t>(pointer));
    std::copy_n(records.begin(), std::min(room, records.size()), list);
    return room >= records.size();
}

int giveTopology(const MediaKernel& kernel, media_v2_topology& lists) {
    const bool complete = copyOut(kernel.entities, lists.ptr_entities, lists.num_entities) &&
                          copyOut(kernel.interfaces, lists.ptr_interfaces, lists.num_interfaces) &&
                          copyOut(kernel.pads, lists.ptr_pads, lists.num_pads) &&
                          copyOut(kernel.links, lists.ptr_links, lists.num_links);
    lists.num_entities = static_cast<__u32>(kernel.entities.size());
    lists.num_interfaces = static_cast<__u32>(kernel.interfaces.size());
    lists.num_pads = static_cast<__u32>(kernel.pads.size());
    lists.num_links = static_cast<__u32>(kernel.links.size());
    return complete ? 0 : refuse(ENOSPC);
}

int givePadFormat(const MediaKernel& kernel, const std::string& path, v4l2_subdev_format& format) {
    const auto found = kernel.padFormats.find({path, format.pad});
    if (found == kernel.padFormats.end() || format.which != V4L2_SUBDEV_FORMAT_ACTIVE)
        return refuse(EINVAL);
    format.format = found->second;
    return 0;
}

int giveInterval(const MediaKernel& kernel, const std::string& path,
                 v4l2_subdev_frame_interval& interval) {
    const auto found = kernel.intervals.find({path, interval.pad});
    if (found == kernel.intervals.end())
        return refuse(ENOTTY);
    interval.interval = found->second;
    return 0;
}

int giveVideoFormat(const MediaKernel& kernel, const std::string& path, v4l2_format& format) {
    const auto found = kernel.videoFormats.find(path);
    if (found == kernel.videoFormats.end() || found->second.type != format.type)
        return refuse(EINVAL);
    format = found->second;
    return 0;
}

int answer(const MediaKernel& kernel, const std::string& path, unsigned long request,
           void* argument) {
    if (path == "/dev/media0" && request == MEDIA_IOC_DEVICE_INFO) {
        *static_cast<media_device_info*>(argument) = kernel.info;
        return 0;
    }
    if (path == "/dev/media0" && request == MEDIA_IOC_G_TOPOLOGY)
        return giveTopology(kernel, *static_cast<media_v2_topology*>(argument));
    switch (request) {
        case VIDIOC_SUBDEV_G_FMT:
            return givePadFormat(kernel, path, *static_cast<v4l2_subdev_format*>(argument));
        case VIDIOC_SUBDEV_G_FRAME_INTERVAL:
            return giveInterval(kernel, path, *static_cast<v4l2_subdev_frame_interval*>(argument));
        case VIDIOC_G_FMT:
            return giveVideoFormat(kernel, path, *static_cast<v4l2_format*>(argument));
        default:
            return refuse(ENOTTY);
    }
}

int call(int descriptor, unsigned long request, void* argument) {
    MediaKernel& kernel = mediaKernel();
    const std::string path = pathOf(descriptor);
    kernel.calls.push_back(nameOf(request) + path);
    kernel.allClosedOnExec &= (::fcntl(descriptor, F_GETFD) & FD_CLOEXEC) != 0;
    kernel.noneWritable &= (::fcntl(descriptor, F_GETFL) & O_ACCMODE) == O_RDONLY;
    if (kernel.beforeAnswer)
        kernel.beforeAnswer(request);
    std::vector<int>& errors = kernel.errors[request];
    if (errors.empty())
        return answer(kernel, path, request, argument);
    const int error = errors.front();
    errors.erase(errors.begin());
    return refuse(error);
}

}  // namespace

MediaKernel& mediaKernel() {
    static MediaKernel kernel;
    return kernel;
}

}  // namespace ZR::test

// In the place of the C library's.
extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    return ZR::test::call(descriptor, request, argument);
}
