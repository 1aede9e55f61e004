#include "camera_stream.h"

#include <fcntl.h>
#include <linux/videodev2.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace ZR::test {
namespace {

constexpr int limitMilliseconds = 30000;
constexpr unsigned int wantedBuffers = 3;

template <typename Description>
Description ofCapture() {
    Description description{};
    description.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    return description;
}

v4l2_buffer mappedBuffer(unsigned int index) {
    auto buffer = ofCapture<v4l2_buffer>();
    buffer.memory = V4L2_MEMORY_MMAP;
    buffer.index = index;
    return buffer;
}

}  // namespace

CameraStream::CameraStream(const std::string& node)
    : descriptor_(::open(node.c_str(), O_RDWR | O_CLOEXEC)) {
    if (descriptor_ < 0)
        error_ = errno;
    else if (takeFormat())
        (void)start();
}

CameraStream::~CameraStream() {
    for (const Buffer& buffer : buffers_)
        ::munmap(buffer.start, buffer.size);
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

bool CameraStream::ask(unsigned long request, void* argument) {
    if (::ioctl(descriptor_, request, argument) == 0)
        return true;
    error_ = errno;
    return false;
}

bool CameraStream::takeFormat() {
    auto format = ofCapture<v4l2_format>();
    format.fmt.pix.pixelformat = V4L2_PIX_FMT_UYVY;
    if (!ask(VIDIOC_S_FMT, &format))
        return false;
    shape_.width = format.fmt.pix.width;
    shape_.height = format.fmt.pix.height;
    return true;
}

bool CameraStream::start() {
    auto request = ofCapture<v4l2_requestbuffers>();
    request.memory = V4L2_MEMORY_MMAP;
    request.count = wantedBuffers;
    if (!ask(VIDIOC_REQBUFS, &request))
        return false;
    for (unsigned int index = 0; index < request.count; ++index) {
        v4l2_buffer buffer = mappedBuffer(index);
        if (!ask(VIDIOC_QUERYBUF, &buffer) || !ask(VIDIOC_QBUF, &buffer))
            return false;
        buffers_.push_back({::mmap(nullptr, buffer.length, PROT_READ, MAP_SHARED, descriptor_,
                                   static_cast<off_t>(buffer.m.offset)),
                            buffer.length});
    }
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    return ask(VIDIOC_STREAMON, &type);
}

Frame CameraStream::next() {
    pollfd state{descriptor_, POLLIN, 0};
    v4l2_buffer buffer = mappedBuffer(0);
    if (error_ != 0 || ::poll(&state, 1, limitMilliseconds) != 1 || !ask(VIDIOC_DQBUF, &buffer))
        return {};
    Frame frame = shape_;
    const auto* const bytes = static_cast<const std::uint8_t*>(buffers_.at(buffer.index).start);
    frame.bytes.assign(bytes, bytes + buffer.bytesused);
    (void)ask(VIDIOC_QBUF, &buffer);
    return frame;
}

std::string shownAt(const std::string& node) {
    CameraStream stream(node);
    return stream.error() == 0 ? shownBy(stream.next()) : ::strerrorname_np(stream.error());
}

}  // namespace ZR::test
