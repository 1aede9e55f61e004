// Real notifications: group, socket, manager's thread, dispatcher, queue.

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string>

#include "common/zrapi_common/zr_end_point_manager.h"
#include "common/zrapi_common/zr_event_queue.h"
#include "hardware/netlink/event_interface.h"
#include "hardware/netlink/zr_netlink.h"
#include "tests/hardware/netlink/dispatcher.h"
#include "tests/hardware/netlink/message.h"
#include "tests/hardware/netlink/private_network.h"
#include "tests/support/output_capture.h"

namespace ZR::test {
namespace {

constexpr int longest = 30000;  // milliseconds; reached only when nothing comes
constexpr int smallest = 1;     // the kernel makes the smallest receive buffer of it

std::string stateMessage(std::uint32_t value) {
    return message(controllerFamily, attribute(1, 2U) + attribute(2, 0U) + attribute(3, value));
}

/// The controller's group plays the driver's.
class NetlinkDelivery : public testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = enterPrivateNetwork(); !reason.empty())
            GTEST_SKIP() << "[  SKIPPED ] " << reason;
        int groupId = 0;
        char groupName[MessageBuffer::size];
        socket = event_if_connect(controllerName, &familyId, groupName, &groupId);
        ASSERT_GE(socket, 0);
        driver = std::make_unique<GroupSender>(groupId);
        endPoint = makeEndPoint("ZR_DI", familyId, socket);
        addTo(*dispatcher, endPoint);
    }

    void TearDown() override { ::close(socket); }

    /// Sends more than the socket holds.
    void flood() const {
        ASSERT_EQ(::setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &smallest, sizeof smallest), 0);
        for (std::uint32_t i = 0; i < 1000; ++i)
            ASSERT_TRUE(driver->send(stateMessage(i)));
    }

    int socket = -1;
    int familyId = 0;
    std::unique_ptr<GroupSender> driver;
    std::shared_ptr<ZRNetlinkEndPoint> endPoint;
    ZRNetlink* dispatcher = ZRNetlink::instance();
};

TEST_F(NetlinkDelivery, brings_notifications_in_order_from_the_driver_to_the_queue) {
    ZREventQueue queue;
    ZREndPointManager manager;
    dispatcher->setEndPointManager(&manager);
    dispatcher->addEventQueue(&queue);
    dispatcher->addAllEndpointsToEndpointManager();
    constexpr std::uint32_t count = 100;
    ZREvent event;
    for (std::uint32_t i = 0; i < count; ++i) {
        ASSERT_TRUE(driver->send(stateMessage(i)));
        ASSERT_TRUE(driver->send(message(controllerFamily + 1, "")));
        ASSERT_TRUE(queue.waitForEvent(event, longest));
        EXPECT_EQ(event.kind, 6);
        EXPECT_EQ(event.value1, 2U);
        EXPECT_EQ(event.value2, i);
    }
    EXPECT_FALSE(queue.waitForEvent(event, 0));
}

TEST_F(NetlinkDelivery, goes_on_after_a_flood_with_the_manager) {
    ZREventQueue queue;
    dispatcher->addEventQueue(&queue);
    flood();
    ZREndPointManager manager;
    dispatcher->setEndPointManager(&manager);
    dispatcher->addAllEndpointsToEndpointManager();
    ZREvent event;
    ASSERT_TRUE(queue.waitForEvent(event, longest));
    EXPECT_EQ(event.value2, 0U);
    // What came before the flood ended is there, and then what comes after it.
    constexpr std::uint32_t later = 4711;
    while (event.value2 != later) {
        ASSERT_TRUE(driver->send(stateMessage(later)));
        ASSERT_TRUE(queue.waitForEvent(event, longest));
    }
    EXPECT_TRUE(endPoint->isConnected());
}

TEST_F(NetlinkDelivery, loses_what_a_flood_brought_too_much_with_one_error) {
    EventLog queue;
    dispatcher->addEventQueue(&queue);
    flood();
    dispatcher->onEndPointReadable(endPoint, nullptr);
    EXPECT_TRUE(queue.events.empty());
    do {
        const std::size_t before = queue.events.size();
        dispatcher->onEndPointReadable(endPoint, nullptr);
        if (queue.events.size() == before)
            break;
        EXPECT_EQ(queue.events.back().value2, before);
    } while (queue.events.size() < 1000);
    EXPECT_GT(queue.events.size(), 0U);
    EXPECT_LT(queue.events.size(), 1000U);
    queue.events.clear();
    ASSERT_TRUE(driver->send(stateMessage(7)));
    dispatcher->onEndPointReadable(endPoint, nullptr);
    ASSERT_EQ(queue.events.size(), 1U);
    EXPECT_EQ(queue.events[0].value2, 7U);
}

TEST_F(NetlinkDelivery, of_a_flood_answers_a_waiting_caller_0_once) {
    flood();
    std::uint32_t channel = 0;
    std::uint32_t flags = 0;
    std::uint32_t state = 0;
    const auto wait = [&] {
        return event_if_waitevent(socket, familyId, 1, 0, 3, &channel, &flags, &state);
    };
    EXPECT_EQ(wait(), 0);
    EXPECT_EQ(wait(), 1);
    EXPECT_EQ(state, 0U);
    EXPECT_EQ(wait(), 1);
    EXPECT_EQ(state, 1U);
}

TEST_F(NetlinkDelivery, of_a_long_notification_is_dropped_and_the_next_one_comes) {
    EventLog queue;
    dispatcher->addEventQueue(&queue);
    ASSERT_TRUE(driver->send(message(controllerFamily, attribute(1, 2U) + attribute(3, 1U) +
                                                           attribute(2, std::string(4096, 'x')))));
    ASSERT_TRUE(driver->send(stateMessage(1)));
    dispatcher->onEndPointReadable(endPoint, nullptr);
    EXPECT_TRUE(queue.events.empty());
    dispatcher->onEndPointReadable(endPoint, nullptr);
    EXPECT_EQ(queue.events.size(), 1U);
}

TEST_F(NetlinkDelivery, ends_two_lines_for_a_driver_that_is_missing) {
    OutputCapture capture;
    errno = 0;
    EXPECT_EQ(dispatcher->addFamily("ZR_DO"), 0U);
    capture.release();
    EXPECT_EQ(capture.output(),
              "Retrieving family and multicast ID from driver failed with error 0 (Success)\n"
              "Connecting to generic netlink event interface ZR_DO failed, disabling event "
              "handling\n");
    EXPECT_FALSE(endPointOf(*dispatcher, "ZR_DO")->isConnected());
    EXPECT_EQ(familyIdOf(*endPointOf(*dispatcher, "ZR_DO")), -1);
}

TEST_F(NetlinkDelivery, stays_open_when_the_end_point_is_gone) {
    OutputCapture capture;
    auto other = std::make_unique<ZRNetlinkEndPoint>(controllerName);
    capture.release();
    ASSERT_TRUE(other->isConnected());
    EXPECT_EQ(familyIdOf(*other), controllerFamily);
    const int fd = other->getReadEndPointID();
    other.reset();
    ASSERT_TRUE(driver->send(message(controllerFamily, "")));
    EXPECT_EQ(event_if_waitevent(fd, controllerFamily, 1, 999999, 0), 1);
    event_if_disconnect(fd);
}

}  // namespace
}  // namespace ZR::test
