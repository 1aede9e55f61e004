#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "simcan_board.h"

namespace ZR::test {
namespace {

using Lines = std::vector<std::string>;

const std::string noRoom =
    "CANSocket::send failed on port 1 even after 2 retries. Errno: 105 == No buffer space "
    "available\n";
const std::string invalid =
    "CANSocket::send failed on port 1 even after 2 retries. Errno: 22 == Invalid argument\n";
const std::string networkDown =
    "CANSocket::send failed on port 1 even after 2 retries. Errno: 100 == Network is down\n";

class SimcanBoardQueue : public SimcanBoard {};

/// Sends until the queue is full. Returns how many frames it took.
std::uint32_t fill(ZRCANRaw& socket) {
    constexpr std::uint32_t tooMany = 1000;
    std::uint32_t count = 0;
    while (count < tooMany && send(socket, message(count)) == 0)
        ++count;
    return count;
}

ZRCANMessage tooLong() {
    ZRCANMessage made = message(0x123);
    made.length = 9;
    return made;
}

}  // namespace

TEST_F(SimcanBoardQueue, a_full_queue_is_7_and_is_told_once) {
    joinBoth();
    const auto socket = openPort(1, 2);
    turn("simcan.0/stall", "1");
    testing::internal::CaptureStdout();
    EXPECT_EQ(11U, fill(*socket));
    EXPECT_EQ(7U, send(*socket, message(0x123)));
    EXPECT_EQ(noRoom, testing::internal::GetCapturedStdout());
}

TEST_F(SimcanBoardQueue, without_retries_a_full_queue_is_7_without_a_word) {
    joinBoth();
    const auto socket = openPort(1);
    turn("simcan.0/stall", "1");
    testing::internal::CaptureStdout();
    EXPECT_EQ(11U, fill(*socket));
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    // Only time helps: poll says that there is room.
    pollfd descriptor{socket->getWriteEndPointID(), POLLOUT, 0};
    EXPECT_EQ(1, ::poll(&descriptor, 1, 0));
}

TEST_F(SimcanBoardQueue, another_reason_is_told_again_and_so_is_the_first_one_after_it) {
    joinBoth();
    const auto socket = openPort(1, 2);
    turn("simcan.0/stall", "1");
    testing::internal::CaptureStdout();
    (void)fill(*socket);
    EXPECT_EQ(7U, send(*socket, tooLong()));
    EXPECT_EQ(7U, send(*socket, tooLong()));
    EXPECT_EQ(7U, send(*socket, message(0x123)));
    setLink("can0", false);
    EXPECT_EQ(7U, send(*socket, message(0x123)));
    EXPECT_EQ(noRoom + invalid + noRoom + networkDown, testing::internal::GetCapturedStdout());
}

TEST_F(SimcanBoardQueue, the_same_reason_stays_untold_also_after_frames_that_went) {
    joinBoth();
    const auto socket = openPort(1, 2);
    testing::internal::CaptureStdout();
    EXPECT_EQ(7U, send(*socket, tooLong()));
    EXPECT_EQ(0U, send(*socket, message(0x123)));
    EXPECT_EQ(7U, send(*socket, tooLong()));
    EXPECT_EQ(invalid, testing::internal::GetCapturedStdout());
}

TEST_F(SimcanBoardQueue, a_retry_succeeds_once_there_is_room) {
    joinBoth();
    const auto socket = openPort(1);
    turn("simcan.0/stall", "1");
    const std::uint32_t queued = fill(*socket);
    socket->setRetry(30000, 1000);
    testing::internal::CaptureStdout();
    std::thread relief([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        turn("simcan.0/stall", "0");
    });
    const int before = counter("can1", "rx_packets");
    EXPECT_EQ(0U, send(*socket, message(0x123)));
    relief.join();
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_TRUE(eventually(
        [&] { return counter("can1", "rx_packets") - before == static_cast<int>(queued) + 1; }));
}

TEST_F(SimcanBoardQueue, what_waited_in_a_full_queue_goes_out_in_order) {
    joinBoth();
    const auto first = openPort(1);
    const auto second = openPort(2);
    turn("simcan.0/stall", "1");
    const std::uint32_t queued = fill(*first);
    EXPECT_EQ(0, polled(*second));
    turn("simcan.0/stall", "0");
    for (std::uint32_t id = 0; id < queued; ++id)
        EXPECT_EQ(notation(message(id)), receivedSoon(*second));
}

TEST_F(SimcanBoardQueue, a_mute_controller_takes_frames_and_nobody_hears_them) {
    joinBoth();
    const auto first = openPort(1);
    const auto second = openPort(2);
    const int before = counter("can0", "tx_packets");
    turn("simcan.0/mute", "1");
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(0U, send(*first, message(0x666)));
    EXPECT_EQ(0U, send(*second, message(0x667)));
    turn("simcan.0/mute", "0");
    EXPECT_TRUE(eventually([&] { return send(*first, message(0x123)) == 0; }));
    EXPECT_EQ("123#", receivedSoon(*second));
    EXPECT_EQ(1, counter("can0", "tx_packets") - before);
}

TEST_F(SimcanBoardQueue, what_another_node_sends_is_received_as_it_was) {
    configure("can0", 250000);
    const auto socket = openPort(1);
    for (const std::string frame : {"123#1122", "12345678#0102030405060708", "7FF#", "123#R4"}) {
        turn("simcan.0/inject", frame);
        EXPECT_EQ(frame, receivedSoon(*socket));
    }
    int count = 0;
    EXPECT_EQ(0U, ZRCANRaw::getRxPackages(1, count));
    EXPECT_EQ(counter("can0", "rx_packets"), count);
}

TEST_F(SimcanBoardQueue, a_flood_is_received_in_order) {
    constexpr std::uint32_t frameCount = 2000;
    configure("can0", 250000);
    const auto socket = openPort(1);
    const int bytes = 4000000;
    ASSERT_EQ(0, ::setsockopt(socket->getReadEndPointID(), SOL_SOCKET, SO_RCVBUFFORCE, &bytes,
                              sizeof bytes));
    turn("simcan.0/flood", std::to_string(frameCount));
    for (std::uint32_t number = 0; number < frameCount; ++number) {
        ZRCANMessage received{};
        ASSERT_EQ(0U, receiveSoon(*socket, received));
        ASSERT_EQ(number & 0xFF, received.data[7]);
        ASSERT_EQ(number >> 8, received.data[6]);
    }
    ZRCANMessage received{};
    EXPECT_EQ(5U, socket->receive(&received));
}

}  // namespace ZR::test
