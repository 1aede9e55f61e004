#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "common/file_descriptor_internal.h"
#include "hardware/netlink/netlink_message_internal.h"
#include "hardware/netlink/zr_netlink.h"

namespace ZR::benchmarks {

/// A whole notification with its three attributes, as the digital inputs' driver sends it.
/// @return its length
std::size_t buildNotification(MessageBuffer& message, int familyId, std::uint32_t state);

/// An end point of the digital inputs and somebody who notifies it: the terminal's driver, made to
/// do so by a knob, or else another socket of this process.
class NotificationLine {
  public:
    /// More notifications than this may overrun the socket's buffer.
    static constexpr long longestQueue = 128;

    NotificationLine();

    const std::shared_ptr<ZRNetlinkEndPoint>& endPoint() const { return endPoint_; }
    int socket() const { return endPoint_->getReadEndPointID(); }

    /// Sends notifications; all of them are in the end point's queue when the call returns.
    bool send(long notifications);

    /// Who notifies, in words.
    const std::string& description() const { return description_; }

  private:
    void openDriver();
    void openSocket();
    bool turnKnob() const;
    bool sendMessage() const;

    FileDescriptor knob_;
    FileDescriptor sender_;
    std::shared_ptr<ZRNetlinkEndPoint> endPoint_;
    std::uint32_t state_ = 0;
    std::string description_;
};

/// The one line of the process: a knob notifies all who listen.
const std::shared_ptr<NotificationLine>& notificationLine();

/// A dispatcher of its own for one end point and one queue.
class Dispatcher : public ZRNetlink {
  public:
    Dispatcher(const std::shared_ptr<ZRNetlinkEndPoint>& endPoint, ZREventQueue* queue) {
        endPointSet.insert(endPoint);
        eventQueue = queue;
    }
};

}  // namespace ZR::benchmarks
