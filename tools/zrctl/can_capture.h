#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "hardware/can/zr_can_raw.h"
#include "tools/zrctl/can_frame.h"
#include "tools/zrctl/can_port.h"

namespace zrctl {

/// A frame and when it reached the kernel, in microseconds since 1970.
struct CapturedFrame {
    ZR::ZRCANMessage message;
    std::int64_t time;
};

/// The frames of one port, as the library's socket receives them.
class CanCapture {
  public:
    explicit CanCapture(const CanPort& port);

    const CanPort& port() const { return port_; }

    /// Opens the socket.
    Outcome open(const std::optional<CanFilter>& filter);

    int descriptor() const { return socket_->getReadEndPointID(); }

    /// Takes one frame that has come.
    /// @return 0 with a frame, EAGAIN without one, else the `errno` of the failed read: ENETDOWN
    ///         once for an interface that is down, ENODEV once for one that was removed
    int take(CapturedFrame& frame);

    /// How many frames the kernel had no room for in this socket.
    unsigned int lost() const;

  private:
    void enlargeBuffer() const;
    std::int64_t timeOfLastFrame() const;

    CanPort port_;
    std::unique_ptr<ZR::ZRCANRaw> socket_;
    std::optional<CanFilter> filter_;
};

}  // namespace zrctl
