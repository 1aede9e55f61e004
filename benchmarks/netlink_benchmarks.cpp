#include <netlink/genl/genl.h>
#include <sys/socket.h>

#include <array>
#include <memory>
#include <utility>

#include "benchmarks/comparison.h"
#include "benchmarks/notification_latency.h"
#include "benchmarks/notification_line.h"
#include "benchmarks/operations.h"
#include "hardware/netlink/notification_internal.h"

namespace ZR::benchmarks {
namespace {

/// Keeps no events: what a queue does with them is its own price.
class CountingQueue : public ZREventQueue {
  public:
    void postEvent(ZREvent& /*event*/) override { ++posted_; }

    /// Tells whether exactly one event came since it was asked last.
    bool gotOne() { return std::exchange(posted_, 0) == 1; }

  private:
    int posted_ = 0;
};

bool receiveBare(int socket) {
    std::array<unsigned char, MessageBuffer::size> bytes;  // NOLINT(*-init): filled by the call
    return ::recv(socket, bytes.data(), bytes.size(), MSG_DONTWAIT) > 0;
}

void compareDispatching() {
    const std::shared_ptr<NotificationLine>& line = notificationLine();
    const auto queue = std::make_shared<CountingQueue>();
    const auto dispatcher = std::make_shared<Dispatcher>(line->endPoint(), queue.get());
    Comparison posting;
    posting.operation = "notification to postEvent";
    posting.longestBatch = NotificationLine::longestQueue;
    posting.before = [line](long notifications) { return line->send(notifications); };
    compare(
        std::move(posting), [socket = line->socket()] { return receiveBare(socket); },
        [line, queue, dispatcher] {
            dispatcher->onEndPointReadable(line->endPoint(), nullptr);
            return queue->gotOne();
        });
}

void compareParsing() {
    constexpr int familyId = 0x1c;
    constexpr int lastType = 3;
    const auto message = std::make_shared<MessageBuffer>();
    const auto length = static_cast<std::int64_t>(buildNotification(*message, familyId, 1));
    compare(
        "notification parsed",
        [message] {
            std::array<nlattr*, lastType + 1> attributes;  // NOLINT(*-init): filled by the call
            auto* const header = reinterpret_cast<nlmsghdr*>(message->bytes.data());
            return ::genlmsg_parse(header, 0, attributes.data(), lastType, nullptr) == 0 &&
                   attributes[lastType] != nullptr;
        },
        [message, length] {
            Notification notification;
            return parseNotification(*message, length, familyId, notification) &&
                   notification.value.isPresent();
        });
}

void compareLatency() {
    Comparison latency;
    latency.operation = "notification latency";
    latency.longestBatch = 1;
    latency.samples = 1000;
    latency.showsTail = true;
    latency.floor = bareLatency();
    latency.library = managedLatency();
    registerComparison(std::move(latency));
}

}  // namespace

void compareNotifications() {
    compareDispatching();
    compareParsing();
    compareLatency();
}

}  // namespace ZR::benchmarks
