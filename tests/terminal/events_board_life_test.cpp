#include <grp.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <thread>

#include "board.h"
#include "events_application.h"
#include "hardware/netlink/event_interface.h"
#include "hardware/netlink/zr_netlink.h"
#include "tests/hardware/netlink/dispatcher.h"

namespace ZR::test {
namespace {

constexpr uid_t nobody = 65534;

class EventsBoardLife : public EventsBoard {};
using EventsBoardLifeDeathTest = EventsBoardLife;

std::shared_ptr<ZRNetlinkEndPoint> connectionOf(const std::string& family) {
    return endPointOf(*ZRNetlink::instance(), family);
}

/// What a whole application does, from its first line to its exit.
[[noreturn]] void runApplication(bool destroysQueueLast) {
    {
        ZREventQueue first;
        ZREndPointManager manager;
        ZREventQueue second;
        ZRNetlink* const dispatcher = ZRNetlink::instance();
        dispatcher->setEndPointManager(&manager);
        dispatcher->addEventQueue(destroysQueueLast ? &first : &second);
        for (const char* family : {inputs, outputs, analog})
            dispatcher->addFamily(family);
        dispatcher->addAllEndpointsToEndpointManager();
        turn("zr_di.0/state/value", "1");
        ZREvent event;
        if (!(destroysQueueLast ? first : second).waitForEvent(event, longest))
            std::_Exit(1);
        // Stopped, or out of reach, before the queue ends.
        for (const char* family : {inputs, outputs, analog})
            manager.removeEndPoint(connectionOf(family));
    }
    turn("zr_di.0/state/value", "0");
    std::exit(0);
}

}  // namespace

TEST_F(EventsBoardLife, a_family_s_return_is_not_heard_on_the_old_connection) {
    Application application;
    const std::shared_ptr<ZRNetlinkEndPoint> endPoint = connectionOf(inputs);
    const int before = familyIdOf(*endPoint);
    turn("notify/ZR_DI/registered", "0");
    turn("notify/ZR_DI/registered", "1");
    EXPECT_NE(before, seenByGenl(inputs).id);
    turn("zr_di.0/state/value", "1");
    turn("notify/ZR_DI/flood", "100");
    EXPECT_EQ(Tale{}, application.heardFrom(outputs));
    EXPECT_EQ(Tale{}, application.heardFrom(analog));
    EXPECT_EQ(0, seenByKernel(endPoint->getReadEndPointID()).unread);
    EXPECT_TRUE(endPoint->isConnected());
    EXPECT_EQ(11U, endPoint->reconnect());
    EXPECT_EQ(before, familyIdOf(*endPoint));
    EXPECT_EQ(25U, ZRNetlink::instance()->addFamily(inputs));
}

TEST_F(EventsBoardLife, a_lost_group_is_no_reason_to_spin) {
    Application application;
    for (const char* family : {inputs, outputs, analog})
        turn(std::string("notify/") + family + "/registered", "0");
    EXPECT_TRUE(restsWhileIdle());
    for (const char* family : {inputs, outputs, analog})
        turn(std::string("notify/") + family + "/registered", "1");
    EXPECT_TRUE(restsWhileIdle());
}

TEST_F(EventsBoardLife, a_new_connection_hears_the_family_that_came_back) {
    Application application;
    turn("notify/ZR_DO/registered", "0");
    turn("notify/ZR_DO/registered", "1");
    int familyId = 0;
    int groupId = 0;
    char groupName[16];
    const int socket = event_if_connect(outputs, &familyId, groupName, &groupId);
    ASSERT_GE(socket, 0);
    EXPECT_EQ(seenByGenl(outputs).id, familyId);
    const Told told = sentinel(outputs);
    std::uint32_t channel = 0;
    std::uint32_t flags = 0;
    std::uint32_t value = 0;
    EXPECT_EQ(1,
              event_if_waitevent(socket, familyId, 1, longest * 1000, 3, &channel, &flags, &value));
    EXPECT_EQ(told.value2, value);
    event_if_disconnect(socket);
}

TEST_F(EventsBoardLife, notices_of_other_families_are_no_events) {
    Application application;
    for (int round = 0; round < 20; ++round) {
        turn("notify/ZR_QUIET/registered", "1");
        turn("notify/ZR_QUIET/registered", "0");
    }
    EXPECT_EQ(Tale{}, application.heard());
}

TEST_F(EventsBoardLife, families_that_come_and_go_during_a_flood_disturb_nobody) {
    Application application({inputs});
    std::thread trouble([] {
        for (int round = 0; round < 20; ++round) {
            turn("notify/ZR_DO/registered", "0");
            turn("notify/ZR_DO/registered", "1");
        }
    });
    for (int round = 0; round < 10; ++round) {
        turn("notify/ZR_DI/flood", "20");
        // Together with the controller's notices all of them would not fit the socket.
        awaitEmpty(socketOf(inputs));
    }
    trouble.join();
    awaitEmpty(socketOf(inputs));
    Tale expected;
    for (int round = 0; round < 10; ++round)
        for (std::uint32_t value = 1; value <= 20; ++value)
            expected.push_back({0, value});
    EXPECT_EQ(expected, application.heardFrom(inputs));
}

TEST_F(EventsBoardLife, a_family_is_added_once) {
    ZRNetlink& dispatcher = *ZRNetlink::instance();
    EXPECT_EQ(0U, dispatcher.addFamily(inputs));
    const int before = openDescriptors();
    EXPECT_EQ(25U, dispatcher.addFamily(inputs));
    EXPECT_EQ(before, openDescriptors());
    EXPECT_EQ(familyIdOf(*connectionOf(inputs)), seenByGenl(inputs).id);
}

TEST_F(EventsBoardLife, anybody_may_connect_and_hear) {
    const OpenKnob knob("zr_di.2/state/value");
    const OpenKnob channel("light/value/value");
    ASSERT_EQ(0, ::setgroups(0, nullptr));
    ASSERT_EQ(0, ::setresgid(nobody, nobody, nobody));
    ASSERT_EQ(0, ::setresuid(nobody, nobody, nobody));
    ASSERT_NE(0, ::access("/sys/kernel/debug/zr_terminal", X_OK));
    Application application;
    knob.turn("1\n");
    EXPECT_EQ((Told{2, 1}), application.next());
    channel.turn("1500\n");
    EXPECT_EQ((Told{6, 1000}), application.next());
}

TEST_F(EventsBoardLife, a_manager_that_ends_leaves_the_sockets_to_the_next_one) {
    {
        Application application;
        turn("zr_di.0/state/value", "1");
        EXPECT_EQ((Told{0, 1}), application.next());
    }
    turn("zr_di.0/state/value", "0");
    ZREventQueue queue;
    ZREndPointManager manager;
    ZRNetlink& dispatcher = *ZRNetlink::instance();
    dispatcher.setEndPointManager(&manager);
    dispatcher.addEventQueue(&queue);
    dispatcher.addAllEndpointsToEndpointManager();
    ZREvent event;
    ASSERT_TRUE(queue.waitForEvent(event, longest));
    EXPECT_EQ((Told{0, 0}), toldBy(event));
    dispatcher.setEndPointManager(nullptr);
    for (const char* family : {inputs, outputs, analog})
        manager.removeEndPoint(connectionOf(family));
}

TEST_F(EventsBoardLifeDeathTest, an_application_whose_manager_ended_leaves_cleanly) {
    EXPECT_EXIT(runApplication(true), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(runApplication(false), testing::ExitedWithCode(0), "");
}

}  // namespace ZR::test
