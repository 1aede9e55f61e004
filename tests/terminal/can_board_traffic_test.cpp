#include <gtest/gtest.h>
#include <sys/socket.h>

#include <cstring>
#include <string>

#include "can_witness.h"

namespace ZR::test {
namespace {

class CanBoardTraffic : public CanPorts {};

ZRCANMessage numbered(std::uint32_t number) {
    ZRCANMessage made = message(0x123, {0, 0, 0, 0});
    std::memcpy(made.data, &number, sizeof number);
    return made;
}

std::uint32_t numberOf(const ZRCANMessage& received) {
    std::uint32_t number = 0;
    std::memcpy(&number, received.data, sizeof number);
    return number;
}

/// What the library says of a port.
struct Counts {
    int sent;
    int received;
};

Counts countsOf(unsigned int port) {
    Counts counts{-1, -1};
    EXPECT_EQ(0U, ZRCANRaw::getTxPackages(port, counts.sent));
    EXPECT_EQ(0U, ZRCANRaw::getRxPackages(port, counts.received));
    return counts;
}

/// Takes what is there. Adds to @p next for each frame that comes in its turn.
void receiveInOrder(ZRCANRaw& socket, std::uint32_t& next) {
    ZRCANMessage received{};
    while (socket.receive(&received) == 0) {
        ASSERT_EQ(next, numberOf(received));
        ++next;
    }
}

/// How many of the numbers from 0 on the socket holds; it must hold no others behind a gap.
std::uint32_t countInOrder(ZRCANRaw& socket) {
    std::uint32_t next = 0;
    receiveInOrder(socket, next);
    return next;
}

}  // namespace

TEST_F(CanBoardTraffic, ten_thousand_frames_cross_in_order_and_none_is_lost) {
    constexpr std::uint32_t frameCount = 10000;
    joinBoth(1000000);
    const auto first = openPort(1);
    const auto second = openPort(2);
    const int sentBefore = counter("can0", "tx_packets");
    const int receivedBefore = counter("can1", "rx_packets");
    std::uint32_t next = 0;
    for (std::uint32_t number = 0; number < frameCount; ++number) {
        ASSERT_TRUE(eventually([&] { return send(*first, numbered(number)) == 0; }));
        receiveInOrder(*second, next);
    }
    EXPECT_TRUE(eventually([&] {
        receiveInOrder(*second, next);
        return next == frameCount || HasFatalFailure();
    }));
    EXPECT_EQ(frameCount, next);
    EXPECT_EQ(10000, counter("can0", "tx_packets") - sentBefore);
    EXPECT_EQ(10000, counter("can1", "rx_packets") - receivedBefore);
    EXPECT_EQ(0, counter("can1", "rx_over_errors"));
}

TEST_F(CanBoardTraffic, both_directions_at_once_lose_nothing) {
    constexpr std::uint32_t frameCount = 1000;
    joinBoth(1000000);
    const auto first = openPort(1);
    const auto second = openPort(2);
    std::uint32_t there = 0;
    std::uint32_t back = 0;
    for (std::uint32_t number = 0; number < frameCount; ++number) {
        ASSERT_TRUE(eventually([&] { return send(*first, numbered(number)) == 0; }));
        ASSERT_TRUE(eventually([&] { return send(*second, numbered(number)) == 0; }));
        receiveInOrder(*second, there);
        receiveInOrder(*first, back);
    }
    EXPECT_TRUE(eventually([&] {
        receiveInOrder(*second, there);
        receiveInOrder(*first, back);
        return (there == frameCount && back == frameCount) || HasFatalFailure();
    }));
}

TEST_F(CanBoardTraffic, the_library_counts_what_sysfs_and_ip_count) {
    joinBoth();
    const auto first = openPort(1);
    const auto second = openPort(2);
    const int there = counter("can1", "rx_packets") + 5;
    const int back = counter("can0", "rx_packets") + 1;
    for (std::uint32_t number = 0; number < 5; ++number)
        ASSERT_EQ(0U, send(*first, numbered(number)));
    ASSERT_EQ(0U, send(*second, message(0x124)));
    ASSERT_TRUE(eventually([&] {
        return counter("can1", "rx_packets") == there && counter("can0", "rx_packets") == back;
    }));
    const Counts can0 = countsOf(1);
    EXPECT_EQ(back, can0.received);
    EXPECT_EQ(counter("can0", "tx_packets"), can0.sent);
    const Counts can1 = countsOf(2);
    EXPECT_EQ(there, can1.received);
    EXPECT_EQ(counter("can1", "tx_packets"), can1.sent);
    EXPECT_EQ(std::to_string(can0.received) + ' ' + std::to_string(can0.sent),
              saidBy("ip -j -s link show can0 | "
                     "jq -r '.[0].stats64 | \"\\(.rx.packets) \\(.tx.packets)\"'"));
}

TEST_F(CanBoardTraffic, a_frame_sent_is_one_more_sent_there_and_one_more_received_here) {
    joinBoth();
    const auto first = openPort(1);
    const auto second = openPort(2);
    const Counts firstBefore = countsOf(1);
    const Counts secondBefore = countsOf(2);
    ASSERT_EQ(0U, send(*first, numbered(0)));
    EXPECT_EQ("123#00000000", receivedSoon(*second));
    EXPECT_TRUE(eventually([&] { return countsOf(1).sent == firstBefore.sent + 1; }));
    EXPECT_EQ(firstBefore.received, countsOf(1).received);
    EXPECT_EQ(secondBefore.received + 1, countsOf(2).received);
    EXPECT_EQ(secondBefore.sent, countsOf(2).sent);
}

TEST_F(CanBoardTraffic, counters_of_missing_ports_are_2_and_beyond_4_are_20) {
    int count = -7;
    EXPECT_EQ(2U, ZRCANRaw::getRxPackages(0, count));
    EXPECT_EQ(2U, ZRCANRaw::getTxPackages(0, count));
    EXPECT_EQ(20U, ZRCANRaw::getRxPackages(5, count));
    EXPECT_EQ(20U, ZRCANRaw::getTxPackages(5, count));
    const UnpluggedController unplugged("can1");
    EXPECT_EQ(2U, ZRCANRaw::getRxPackages(2, count));
    EXPECT_EQ(2U, ZRCANRaw::getTxPackages(2, count));
    EXPECT_EQ(-7, count);
}

TEST_F(CanBoardTraffic, a_slow_consumer_keeps_the_first_278_frames_and_gets_new_ones_then) {
    const auto sender = openPort(3);
    const auto slow = openPort(3);
    for (std::uint32_t number = 0; number < 400; ++number)
        ASSERT_EQ(0U, send(*sender, numbered(number)));
    EXPECT_EQ(278U, countInOrder(*slow));
    ASSERT_EQ(0U, send(*sender, numbered(0)));
    EXPECT_EQ(1U, countInOrder(*slow));
}

TEST_F(CanBoardTraffic, a_larger_buffer_of_the_applications_keeps_them_all) {
    const auto sender = openPort(3);
    const auto slow = openPort(3);
    const int bytes = 4000000;
    ASSERT_EQ(0, ::setsockopt(slow->getReadEndPointID(), SOL_SOCKET, SO_RCVBUFFORCE, &bytes,
                              sizeof bytes));
    for (std::uint32_t number = 0; number < 1000; ++number)
        ASSERT_EQ(0U, send(*sender, numbered(number)));
    EXPECT_EQ(1000U, countInOrder(*slow));
}

TEST_F(CanBoardTraffic, a_socket_that_may_block_waits_for_the_frame) {
    const auto socket = openPort(3);
    EXPECT_EQ(0, socket->setPolling(false, 0));
    run("{ sleep 0.2; cansend can2 123#01; } &");
    ZRCANMessage received{};
    EXPECT_EQ(0U, socket->receive(&received));
    EXPECT_EQ("123#01", notation(received));
    EXPECT_EQ(0, socket->setPolling(true, 5));
    EXPECT_EQ(5U, socket->receive(&received));
}

}  // namespace ZR::test
