#include "tools/zrctl/can_capture.h"

#include <linux/can/error.h>
#include <linux/can/raw.h>
#include <linux/sock_diag.h>
#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <array>
#include <cerrno>

#include "common/zrapi_common/zr_result.h"

namespace zrctl {
namespace {

// The kernel doubles it: room for 20000 frames, about a second of a bus that is full of the
// shortest ones at 1 Mbit/s.
constexpr int bufferSize = 8 * 1024 * 1024;
// What changes on the bus under a capture.
constexpr can_err_mask_t wantedErrors = CAN_ERR_BUSOFF | CAN_ERR_RESTARTED | CAN_ERR_CRTL;

}  // namespace

CanCapture::CanCapture(const CanPort& port) : port_(port), socket_(ZR::ZRCANRaw::create(0, 0, 0)) {}

Outcome CanCapture::open(const std::optional<CanFilter>& filter) {
    filter_ = filter;
    const unsigned int result = socket_->initialize(port_.number);
    if (result != ZR::ResultSuccess)
        return {result, adviseOnCanSocket(port_)};
    enlargeBuffer();
    if (filter)
        (void)socket_->addIDFilter(filter->id, filter->mask);
    (void)::setsockopt(descriptor(), SOL_CAN_RAW, CAN_RAW_ERR_FILTER, &wantedErrors,
                       sizeof wantedErrors);
    // The first question makes the kernel note the times from now on.
    (void)timeOfLastFrame();
    return {};
}

void CanCapture::enlargeBuffer() const {
    // Beyond the system's limit where that is allowed, else up to it.
    if (::setsockopt(descriptor(), SOL_SOCKET, SO_RCVBUFFORCE, &bufferSize, sizeof bufferSize) != 0)
        (void)::setsockopt(descriptor(), SOL_SOCKET, SO_RCVBUF, &bufferSize, sizeof bufferSize);
}

int CanCapture::take(CapturedFrame& frame) {
    for (;;) {
        // The result is the same for a failure and for nothing there; the read's errno is not.
        errno = 0;
        if (socket_->receive(&frame.message) != ZR::ResultSuccess)
            return errno == 0 ? EAGAIN : errno;
        const bool isError = (frame.message.id & CAN_ERR_FLAG) != 0;
        // The socket was open for a moment before it had its filter.
        if (!isError && filter_ && !filter_->lets(frame.message.id))
            continue;
        frame.time = timeOfLastFrame();
        return 0;
    }
}

std::int64_t CanCapture::timeOfLastFrame() const {
    constexpr std::int64_t microseconds = 1000000;
    timeval time{};
    (void)::ioctl(descriptor(), SIOCGSTAMP, &time);
    return time.tv_sec * microseconds + time.tv_usec;
}

unsigned int CanCapture::lost() const {
    std::array<std::uint32_t, SK_MEMINFO_VARS> memory{};
    socklen_t size = sizeof memory;
    (void)::getsockopt(descriptor(), SOL_SOCKET, SO_MEMINFO, memory.data(), &size);
    return memory[SK_MEMINFO_DROPS];
}

}  // namespace zrctl
