#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "common/zrapi_common/zr_end_point_manager.h"
#include "events_application.h"
#include "hardware/netlink/event_interface.h"
#include "hardware/netlink/zr_netlink.h"
#include "tests/hardware/netlink/dispatcher.h"
#include "tests/support/output_capture.h"

namespace ZR::test {
namespace {

/// Counts how often a manager asks for a reconnect.
class CountingEndPoint : public ZRNetlinkEndPoint {
  public:
    using ZRNetlinkEndPoint::ZRNetlinkEndPoint;
    unsigned int reconnect() override {
        ++tries;
        return ZRNetlinkEndPoint::reconnect();
    }

    std::atomic<int> tries = 0;
};

/// Never connects, and never says that it cannot.
class StubbornEndPoint : public ZREndPoint {
  public:
    int getReadEndPointID() const override { return -1; }
    int getWriteEndPointID() const override { return -1; }
    bool isConnected() const override { return false; }
    unsigned int reconnect() override {
        ++tries;
        return 4;
    }

    std::atomic<int> tries = 0;
};

}  // namespace

TEST(EmptyBoardEvents, a_driver_that_is_not_there_is_told_and_its_family_is_inert) {
    for (const char* family : {inputs, outputs, analog}) {
        EXPECT_EQ(connectionFailureOf(family), printedByAdding(family));
        const auto endPoint = endPointOf(*ZRNetlink::instance(), family);
        ASSERT_NE(nullptr, endPoint);
        EXPECT_FALSE(endPoint->isConnected());
        EXPECT_EQ(-1, endPoint->getReadEndPointID());
        EXPECT_EQ(-1, endPoint->getWriteEndPointID());
        EXPECT_EQ(-1, familyIdOf(*endPoint));
        EXPECT_EQ(11U, endPoint->reconnect());
        EXPECT_EQ(25U, ZRNetlink::instance()->addFamily(family));
    }
}

TEST(EmptyBoardEvents, nothing_stays_open_after_a_failed_connection) {
    ZRNetlink::instance();
    const int before = openDescriptors();
    for (const char* family : {inputs, outputs, analog})
        printedByAdding(family);
    EXPECT_EQ(before, openDescriptors());
}

TEST(EmptyBoardEvents, a_manager_with_inert_families_rests_and_ends) {
    for (const char* family : {inputs, outputs, analog})
        printedByAdding(family);
    ZREventQueue queue;
    ZREndPointManager manager;
    ZRNetlink& dispatcher = *ZRNetlink::instance();
    dispatcher.setEndPointManager(&manager);
    dispatcher.addEventQueue(&queue);
    dispatcher.addAllEndpointsToEndpointManager();
    EXPECT_TRUE(restsWhileIdle());
    // By now the manager has tried once to reconnect.
    EXPECT_TRUE(restsWhileIdle());
    ZREvent event;
    EXPECT_FALSE(queue.waitForEvent(event, 0));
    dispatcher.setEndPointManager(nullptr);
    dispatcher.addEventQueue(nullptr);
}

TEST(EmptyBoardEvents, an_end_point_that_cannot_reconnect_is_asked_once) {
    ZREndPointManager manager;
    OutputCapture capture;
    const auto endPoint = std::make_shared<CountingEndPoint>(inputs);
    capture.release();
    manager.addEndPoint(endPoint, ZRNetlink::instance());
    const auto later = std::make_shared<StubbornEndPoint>();
    manager.addEndPoint(later, ZRNetlink::instance());
    // Whoever was added earlier would have had its second try earlier too.
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(longest);
    while (later->tries < 2 && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_LE(2, later->tries);
    manager.removeEndPoint(endPoint);
    EXPECT_EQ(1, endPoint->tries);
}

TEST(EmptyBoardEvents, the_functions_in_c_answer_as_without_a_driver) {
    int familyId = -7;
    int groupId = -7;
    char groupName[16] = "untouched";
    const OutputCapture capture;
    EXPECT_EQ(-1, event_if_connect(inputs, &familyId, groupName, &groupId));
    EXPECT_EQ(-1, familyId);
    EXPECT_EQ(-7, groupId);
    EXPECT_STREQ("untouched", groupName);
}

}  // namespace ZR::test
