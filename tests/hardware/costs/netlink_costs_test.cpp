#include <sys/syscall.h>

#include <memory>
#include <string>

#include "hardware/netlink/zr_netlink.h"
#include "tests/hardware/costs/operation_cost.h"
#include "tests/hardware/netlink/dispatcher.h"
#include "tests/hardware/netlink/message.h"
#include "tests/hardware/netlink/private_network.h"

namespace ZR::test {
namespace {

constexpr int family = 30;

/// A queue that only counts: what the application's queue keeps is its own cost.
class CountingQueue : public ZREventQueue {
  public:
    void postEvent(ZREvent& /*event*/) override { ++posted; }
    unsigned int posted = 0;
};

class NotificationCost : public CostTest {
  protected:
    void SetUp() override {
        CostTest::SetUp();
        dispatcher->addEventQueue(&queue);
    }

    /// From a readable end point to postEvent. The result is the number of events.
    OperationCost costOfNotification(const std::string& name, const std::string& message) {
        const auto endPoint = makeEndPoint(name, family, sockets.reader());
        addTo(*dispatcher, endPoint);
        // Two for the traced process, two for this one.
        for (int i = 0; i < 4; ++i)
            EXPECT_TRUE(sockets.send(message));
        OperationCost cost = costOf([this, endPoint] {
            const unsigned int before = queue.posted;
            dispatcher->onEndPointReadable(endPoint, nullptr);
            return queue.posted - before;
        });
        EXPECT_FALSE(sockets.holdsMessage());
        return cost;
    }

    static void expectOneReception(const OperationCost& cost, const std::string& events) {
        EXPECT_EQ(cost.result, events);
        ASSERT_EQ(cost.trace.calls.size(), 1U) << cost.calls();
        EXPECT_EQ(cost.trace.calls[0].number, SYS_recvfrom);
        EXPECT_EQ(cost.allocations, 0U);
    }

    SocketPair sockets;
    CountingQueue queue;
    ZRNetlink* dispatcher = ZRNetlink::instance();
};

std::string digital() {
    return message(family, attribute(1, 1U) + attribute(2, 1U) + attribute(3, 1U));
}

std::string analog(const std::string& name) {
    return message(family, attribute(1, name + '\0') + attribute(2, 1U) + attribute(3, 8525U));
}

TEST_F(NotificationCost, a_digital_notification_takes_one_call_and_no_heap_to_the_queue) {
    expectOneReception(costOfNotification("ZR_DI", digital()), "1");
    expectOneReception(costOfNotification("ZR_DO", digital()), "1");
}

TEST_F(NotificationCost, an_analog_notification_takes_one_call_and_no_heap_to_the_queue) {
    expectOneReception(costOfNotification("ANALOG", analog("ai.0")), "1");
    expectOneReception(costOfNotification("ANALOG", analog("the longest name of no channel")), "1");
}

TEST_F(NotificationCost, a_message_that_is_dropped_takes_one_call_and_no_heap) {
    expectOneReception(costOfNotification("ZR_DI", message(family, "")), "0");
}

}  // namespace
}  // namespace ZR::test
