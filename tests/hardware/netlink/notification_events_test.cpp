// From a readable end point to the event on the application's queue.

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "hardware/netlink/zr_netlink.h"
#include "tests/hardware/netlink/dispatcher.h"
#include "tests/hardware/netlink/message.h"
#include "tests/hardware/netlink/private_network.h"

namespace ZR::test {
namespace {

using namespace std::string_view_literals;

constexpr int family = 30;

std::string digitalMessage(std::uint32_t channel, std::uint32_t value) {
    return message(family, attribute(1, channel) + attribute(2, 0U) + attribute(3, value));
}

std::string analogMessage(std::string_view name, std::uint32_t value, std::uint32_t flags = 1) {
    return message(family, attribute(1, name) + attribute(2, flags) + attribute(3, value));
}

/// A queue that raises on demand.
class RaisingQueue : public EventLog {
  public:
    void postEvent(ZREvent& event) override {
        if (raises)
            throw std::runtime_error("full");
        EventLog::postEvent(event);
    }
    bool raises = true;
};

/// An end point of another kind, readable all the same.
class OtherEndPoint : public ZREndPoint {
  public:
    explicit OtherEndPoint(int socket) : socket_(socket) {}
    int getReadEndPointID() const override { return socket_; }
    int getWriteEndPointID() const override { return socket_; }
    bool isConnected() const override { return true; }
    unsigned int reconnect() override { return 0; }

  private:
    int socket_;
};

class NotificationEvents : public testing::Test {
  protected:
    void SetUp() override { dispatcher->addEventQueue(&queue); }

    void add(const std::string& name) {
        endPoint = makeEndPoint(name, family, sockets.reader());
        addTo(*dispatcher, endPoint);
    }

    void notify(const std::string& bytes) {
        ASSERT_TRUE(sockets.send(bytes));
        dispatcher->onEndPointReadable(endPoint, nullptr);
    }

    /// The one event of one notification, as "value1 value2"; none is "".
    std::string eventOf(const std::string& bytes) {
        queue.events.clear();
        notify(bytes);
        EXPECT_FALSE(sockets.holdsMessage());
        if (queue.events.empty())
            return "";
        EXPECT_EQ(queue.events.size(), 1U);
        return std::to_string(queue.events[0].value1) + ' ' +
               std::to_string(queue.events[0].value2);
    }

    SocketPair sockets;
    EventLog queue;
    ZRNetlink* dispatcher = ZRNetlink::instance();
    std::shared_ptr<ZRNetlinkEndPoint> endPoint;
};

TEST_F(NotificationEvents, are_signals_of_kind_6_and_code_900_with_all_else_zero) {
    add("ZR_DI");
    notify(digitalMessage(2, 1));
    ASSERT_EQ(queue.events.size(), 1U);
    EXPECT_EQ(queue.signals, 1);
    const ZREvent& event = queue.events[0];
    EXPECT_EQ(event.kind, 6);
    EXPECT_EQ(event.code, 900);
    EXPECT_EQ(event.reserved1, 0);
    EXPECT_EQ(event.reserved2, 0.0);
    EXPECT_EQ(event.reserved3, 0.0);
    EXPECT_EQ(event.value1, 2U);
    EXPECT_EQ(event.value2, 1U);
    EXPECT_EQ(event.name, "");
}

TEST_F(NotificationEvents, of_digital_inputs_hold_channel_and_state) {
    add("ZR_DI");
    EXPECT_EQ(eventOf(digitalMessage(0, 1)), "0 1");
    EXPECT_EQ(eventOf(digitalMessage(3, 0)), "3 0");
    EXPECT_EQ(eventOf(message(family, attribute(1, 5U) + attribute(2, 0U) + attribute(4, 1U))),
              "5 4294967295");
    EXPECT_EQ(eventOf(message(family, attribute(1, "\5"sv) + attribute(2, 0U) + attribute(3, 1U))),
              "4294967295 1");
}

TEST_F(NotificationEvents, of_digital_outputs_hold_the_channels_code) {
    add("ZR_DO");
    EXPECT_EQ(eventOf(digitalMessage(0, 1)), "16 1");
    EXPECT_EQ(eventOf(digitalMessage(1, 0)), "17 0");
    EXPECT_EQ(eventOf(digitalMessage(2, 1)), "18 1");
    EXPECT_EQ(eventOf(digitalMessage(3, 1)), "3 1");
}

TEST_F(NotificationEvents, of_analog_inputs_hold_the_channels_code_and_the_reading) {
    add("ANALOG");
    EXPECT_EQ(eventOf(analogMessage("ai.1\0"sv, 8525)), "65537 8525");
    EXPECT_EQ(eventOf(analogMessage("light", 1500)), "6 1000");
    EXPECT_EQ(eventOf(analogMessage("somewhere", 1500)), "4294967295 1500");
}

TEST_F(NotificationEvents, of_analog_inputs_need_flags_that_say_valid_and_a_value) {
    add("ANALOG");
    EXPECT_EQ(eventOf(analogMessage("ai.1", 8525, 0)), "");
    EXPECT_EQ(eventOf(message(family, attribute(1, "ai.1") + attribute(4, 1U) + attribute(3, 5U))),
              "");
    EXPECT_EQ(eventOf(message(family, attribute(1, "ai.1") + attribute(2, 1U) + attribute(4, 5U))),
              "");
}

TEST_F(NotificationEvents, are_not_made_of_malformed_messages) {
    add("ZR_DI");
    const std::string good = digitalMessage(2, 1);
    const std::string two = attribute(1, 2U) + attribute(3, 1U);
    for (const std::string& bad :
         {std::string("x"), good.substr(0, 15), good.substr(0, good.size() - 1),
          withLength(good, 8), withLength(good, 19), withLength(good, 0xFFFFFFFF),
          message(family, ""), message(family, two), message(family, two + two),
          message(family, two + attributeHeader(0, 2)),
          message(family, two + attributeHeader(9, 2)), message(family, two + "abc"),
          message(family + 1, two + attribute(2, 0U)),
          message(family, two + attribute(2, std::string(4096, 'x')))})
        EXPECT_EQ(eventOf(bad), "");
    EXPECT_EQ(eventOf(good), "2 1");
}

TEST_F(NotificationEvents, are_made_one_a_call) {
    add("ZR_DI");
    ASSERT_TRUE(sockets.send(digitalMessage(1, 1)));
    notify(digitalMessage(2, 0));
    ASSERT_EQ(queue.events.size(), 1U);
    EXPECT_EQ(queue.events[0].value1, 1U);
    dispatcher->onEndPointReadable(endPoint, nullptr);
    ASSERT_EQ(queue.events.size(), 2U);
    EXPECT_EQ(queue.events[1].value1, 2U);
}

TEST_F(NotificationEvents, are_not_waited_for_on_an_empty_socket) {
    for (const char* const name : {"ZR_DI", "ZR_DO", "ANALOG"}) {
        add(name);
        dispatcher->onEndPointReadable(endPoint, nullptr);
    }
    EXPECT_TRUE(queue.events.empty());
}

TEST_F(NotificationEvents, can_be_asked_for_by_the_familys_own_handler) {
    endPoint = makeEndPoint("any", family, sockets.reader());
    dispatcher->handleDigitalInputEndpoint(endPoint);
    ASSERT_TRUE(sockets.send(digitalMessage(1, 2)));
    dispatcher->handleDigitalInputEndpoint(endPoint);
    ASSERT_TRUE(sockets.send(digitalMessage(1, 2)));
    dispatcher->handleDigitalOutputEndpoint(endPoint);
    ASSERT_TRUE(sockets.send(analogMessage("ai.1", 2)));
    dispatcher->handleAnalogInputEndpoint(endPoint);
    ASSERT_EQ(queue.events.size(), 3U);
    EXPECT_EQ(queue.events[0].value1, 1U);
    EXPECT_EQ(queue.events[1].value1, 17U);
    EXPECT_EQ(queue.events[2].value1, 0x10001U);
}

TEST_F(NotificationEvents, are_not_made_for_null) {
    dispatcher->onEndPointReadable(nullptr, nullptr);
    EXPECT_TRUE(queue.events.empty());
}

TEST_F(NotificationEvents, are_not_made_for_end_points_of_another_kind) {
    ASSERT_TRUE(sockets.send(digitalMessage(1, 1)));
    dispatcher->onEndPointReadable(std::make_shared<OtherEndPoint>(sockets.reader()), nullptr);
    EXPECT_TRUE(sockets.holdsMessage());
    EXPECT_TRUE(queue.events.empty());
}

TEST_F(NotificationEvents, are_not_made_for_end_points_that_were_not_added) {
    add("ZR_DI");
    ASSERT_TRUE(sockets.send(digitalMessage(1, 1)));
    dispatcher->onEndPointReadable(makeEndPoint("ZR_DI", family, sockets.reader()), nullptr);
    EXPECT_TRUE(sockets.holdsMessage());
    EXPECT_TRUE(queue.events.empty());
}

TEST_F(NotificationEvents, are_not_made_for_other_families) {
    for (const char* const name : {"nlctrl", "", "ZR_D", "ZR_DIO", "zr_di", "analog"}) {
        add(name);
        ASSERT_TRUE(sockets.send(digitalMessage(1, 1)));
        dispatcher->onEndPointReadable(endPoint, nullptr);
    }
    EXPECT_TRUE(sockets.holdsMessage());
    EXPECT_TRUE(queue.events.empty());
}

TEST_F(NotificationEvents, are_not_made_when_end_points_come_and_go) {
    add("ZR_DI");
    ASSERT_TRUE(sockets.send(digitalMessage(1, 1)));
    dispatcher->onEndPointReconnected(endPoint);
    dispatcher->onEndPointDisconnected(endPoint);
    dispatcher->onEndPointReconnected(nullptr);
    dispatcher->onEndPointDisconnected(nullptr);
    EXPECT_TRUE(sockets.holdsMessage());
    EXPECT_TRUE(queue.events.empty());
    EXPECT_EQ(endPointsOf(*dispatcher).count(endPoint), 1U);
}

TEST_F(NotificationEvents, are_read_and_dropped_without_a_queue) {
    dispatcher->addEventQueue(nullptr);
    for (const char* const name : {"ZR_DI", "ZR_DO"}) {
        add(name);
        EXPECT_EQ(eventOf(digitalMessage(1, 1)), "");
    }
    add("ANALOG");
    EXPECT_EQ(eventOf(analogMessage("ai.0", 1)), "");
}

TEST_F(NotificationEvents, go_to_the_queue_that_was_set_last) {
    EventLog second;
    add("ZR_DI");
    dispatcher->addEventQueue(&second);
    notify(digitalMessage(1, 1));
    EXPECT_TRUE(queue.events.empty());
    EXPECT_EQ(second.events.size(), 1U);
    dispatcher->addEventQueue(&queue);
    notify(digitalMessage(2, 1));
    EXPECT_EQ(queue.events.size(), 1U);
    EXPECT_EQ(second.events.size(), 1U);
}

TEST_F(NotificationEvents, go_on_after_a_queue_that_raised) {
    RaisingQueue raising;
    add("ZR_DI");
    dispatcher->addEventQueue(&raising);
    EXPECT_NO_THROW(notify(digitalMessage(1, 1)));
    EXPECT_FALSE(sockets.holdsMessage());
    raising.raises = false;
    notify(digitalMessage(2, 1));
    ASSERT_EQ(raising.events.size(), 1U);
    EXPECT_EQ(raising.events[0].value1, 2U);
}

TEST_F(NotificationEvents, are_not_made_by_an_end_point_that_is_not_connected) {
    endPoint = makeEndPoint("ZR_DI", -1, -1);
    addTo(*dispatcher, endPoint);
    dispatcher->onEndPointReadable(endPoint, nullptr);
    EXPECT_TRUE(queue.events.empty());
}

}  // namespace
}  // namespace ZR::test
