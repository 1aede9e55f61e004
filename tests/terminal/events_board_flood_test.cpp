#include <gtest/gtest.h>
#include <sys/socket.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "board.h"
#include "common/zrapi_common/zr_end_point_manager.h"
#include "events_application.h"
#include "hardware/netlink/event_interface.h"
#include "hardware/netlink/zr_netlink.h"
#include "tests/hardware/netlink/dispatcher.h"

namespace ZR::test {
namespace {

constexpr int flood = 2000;
constexpr std::size_t messageSize = 44;
constexpr std::size_t valueOffset = 40;

class EventsBoardFlood : public EventsBoard {};

/// A connection of event_if_connect().
struct Connection {
    explicit Connection(const char* family)
        : socket(event_if_connect(family, &familyId, groupName, &groupId)) {
        EXPECT_GE(socket, 0) << family;
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection() { event_if_disconnect(socket); }

    int familyId = -1;
    int groupId = -1;
    char groupName[16] = "";
    int socket;
};

/// Takes one message off a socket: its value, or minus errno.
int receivedValue(int socket) {
    std::array<char, 276> bytes{};
    const ssize_t size = ::recv(socket, bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (size < 0)
        return -errno;
    EXPECT_EQ(messageSize, static_cast<std::size_t>(size));
    std::uint32_t value = 0;
    std::memcpy(&value, bytes.data() + valueOffset, sizeof value);
    return static_cast<int>(value);
}

/// Counts how often the manager calls the dispatcher.
class CountingHandler : public ZREndPointHandler {
  public:
    void onEndPointReadable(std::shared_ptr<ZREndPoint> endPoint,
                            ZREndPointManager* manager) override {
        ++calls;
        ZRNetlink::instance()->onEndPointReadable(endPoint, manager);
    }
    void onEndPointReconnected(std::shared_ptr<ZREndPoint> /*endPoint*/) override { ++changes; }
    void onEndPointDisconnected(std::shared_ptr<ZREndPoint> /*endPoint*/) override { ++changes; }

    std::atomic<int> calls = 0;
    std::atomic<int> changes = 0;
};

}  // namespace

TEST_F(EventsBoardFlood, nobody_reads_and_one_enobufs_stands_before_the_first_ones) {
    const Connection connection(inputs);
    turn("notify/ZR_DI/flood", std::to_string(flood));
    const int lost = seenByKernel(connection.socket).lost;
    EXPECT_GT(lost, 0);
    EXPECT_EQ(-ENOBUFS, receivedValue(connection.socket));
    for (int value = 1; value <= flood - lost; ++value)
        ASSERT_EQ(value, receivedValue(connection.socket));
    EXPECT_EQ(-EAGAIN, receivedValue(connection.socket));
    turn("zr_di.0/state/value", "5");
    EXPECT_EQ(5, receivedValue(connection.socket));
}

TEST_F(EventsBoardFlood, waitevent_answers_0_once_and_then_gives_the_first_ones) {
    const Connection connection(inputs);
    turn("notify/ZR_DI/flood", std::to_string(flood));
    const int arrived = flood - seenByKernel(connection.socket).lost;
    std::uint32_t channel = 0;
    std::uint32_t flags = 0;
    std::uint32_t value = 0;
    const auto waited = [&] {
        return event_if_waitevent(connection.socket, connection.familyId, 1, 0, 3, &channel, &flags,
                                  &value);
    };
    EXPECT_EQ(0, waited());
    for (int expected = 1; expected <= arrived; ++expected) {
        ASSERT_EQ(1, waited());
        ASSERT_EQ(static_cast<std::uint32_t>(expected), value);
    }
    EXPECT_EQ(0, waited());
    turn("zr_di.2/state/value", "5");
    EXPECT_EQ(1, waited());
    EXPECT_EQ(2U, channel);
    EXPECT_EQ(1U, flags);
    EXPECT_EQ(5U, value);
}

TEST_F(EventsBoardFlood, a_manager_that_comes_late_calls_once_a_message_and_once_for_the_loss) {
    ZREventQueue queue;
    ZRNetlink& dispatcher = *ZRNetlink::instance();
    dispatcher.addEventQueue(&queue);
    ASSERT_EQ(0U, dispatcher.addFamily(analog));
    turn("notify/ANALOG/flood", std::to_string(flood));
    const int arrived = flood - seenByKernel(socketOf(analog)).lost;
    ASSERT_LT(arrived, flood);
    CountingHandler handler;
    ZREndPointManager manager;
    manager.addEndPoint(endPointOf(dispatcher, analog), &handler);
    ZREvent event;
    for (int value = 1; value <= arrived; ++value) {
        ASSERT_TRUE(queue.waitForEvent(event, longest));
        ASSERT_EQ((Told{0x10000, static_cast<std::uint32_t>(value)}), toldBy(event));
    }
    const Told later = sentinel(analog);
    ASSERT_TRUE(queue.waitForEvent(event, longest));
    EXPECT_EQ(later, toldBy(event));
    manager.removeEndPoint(endPointOf(dispatcher, analog));
    EXPECT_EQ(1 + arrived + 1, handler.calls);
    EXPECT_EQ(0, handler.changes);
}

TEST_F(EventsBoardFlood, what_a_reading_manager_does_not_deliver_the_kernel_counts_as_lost) {
    Application application;
    turn("notify/ZR_DI/flood", std::to_string(flood));
    const int socket = socketOf(inputs);
    awaitEmpty(socket);
    const Tale tale = application.heard();
    const int lost = seenByKernel(socket).lost;
    EXPECT_EQ(flood, static_cast<int>(tale.size()) + lost);
    std::uint32_t before = 0;
    for (const Told& told : tale) {
        ASSERT_EQ(0U, told.value1);
        ASSERT_LT(before, told.value2);
        before = told.value2;
    }
    std::cout << tale.size() << " of " << flood << " notifications arrived\n";
}

TEST_F(EventsBoardFlood, a_flood_that_fits_arrives_whole) {
    Application application;
    turn("notify/ZR_DO/flood", "200");
    Tale expected;
    for (std::uint32_t value = 1; value <= 200; ++value)
        expected.push_back({16, value});
    EXPECT_EQ(expected, application.heard());
}

TEST_F(EventsBoardFlood, another_family_loses_nothing) {
    Application application;
    turn("ai.1/value/value", "11");
    turn("notify/ZR_DI/flood", std::to_string(flood));
    turn("ai.1/value/value", "12");
    EXPECT_EQ((Tale{{0x10001, 11}, {0x10001, 12}}), [&] {
        awaitEmpty(socketOf(inputs));
        Tale tale;
        for (const Told& told : application.heard())
            if (told.value1 == 0x10001)
                tale.push_back(told);
        return tale;
    }());
}

TEST_F(EventsBoardFlood, after_a_flood_the_manager_s_thread_rests) {
    Application application;
    turn("notify/ZR_DI/flood", std::to_string(flood));
    awaitEmpty(socketOf(inputs));
    application.heard();
    EXPECT_TRUE(restsWhileIdle());
}

TEST_F(EventsBoardFlood, a_flood_of_malformed_ones_ends_with_the_next_good_one) {
    Application application;
    const OpenKnob malformed("notify/ZR_DO/malformed");
    for (int i = 0; i < flood; ++i)
        malformed.turn(i % 2 == 0 ? "past_end" : "empty");
    awaitEmpty(socketOf(outputs));
    EXPECT_EQ(Tale{}, application.heard());
}

TEST_F(EventsBoardFlood, floods_that_fit_arrive_whole_one_after_another) {
    Application application;
    constexpr int rounds = 5;
    for (int round = 0; round < rounds; ++round) {
        turn("notify/ANALOG/flood", "200");
        awaitEmpty(socketOf(analog));
    }
    EXPECT_EQ(rounds * 200, static_cast<int>(application.heardFrom(analog).size()));
}

}  // namespace ZR::test
