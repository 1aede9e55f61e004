#include <gtest/gtest.h>
#include <poll.h>

#include <filesystem>
#include <string>
#include <vector>

#include "can_witness.h"
#include "hardware/can/zr_can.h"

namespace ZR::test {
namespace {

using Lines = std::vector<std::string>;

class CanBoardTrouble : public CanPorts {};

const std::string down =
    "CANSocket::receive() on port 1: ERROR: read failed: -1, errno: 100 (Network is down).\n";
const std::string gone =
    "CANSocket::receive() on port 6: ERROR: read failed: -1, errno: 19 (No such device).\n";

std::size_t openDescriptors() {
    const std::filesystem::directory_iterator folder("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(folder), end(folder)));
}

}  // namespace

TEST_F(CanBoardTrouble, an_interface_taken_down_is_told_once_and_then_silent) {
    joinBoth();
    const auto socket = openPort(1);
    setLink("can0", false);
    testing::internal::CaptureStdout();
    ZRCANMessage received{};
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(5U, socket->receive(&received));
    EXPECT_EQ(down, testing::internal::GetCapturedStdout());
    EXPECT_TRUE(socket->isConnected());
}

TEST_F(CanBoardTrouble, a_socket_works_again_when_its_interface_is_up_again) {
    joinBoth();
    const auto first = openPort(1);
    const auto second = openPort(2);
    for (const int time : {1, 2}) {
        setLink("can0", false);
        ZRCANMessage received{};
        EXPECT_EQ(5U, first->receive(&received)) << time;
        setLink("can0", true);
        EXPECT_EQ(0U, send(*first, message(0x123)));
        EXPECT_EQ("123#", receivedSoon(*second));
        EXPECT_EQ(0U, send(*second, message(0x124)));
        EXPECT_EQ("124#", receivedSoon(*first));
    }
}

TEST_F(CanBoardTrouble, a_send_while_the_interface_is_down_is_7_without_a_word) {
    joinBoth();
    const auto socket = openPort(1);
    setLink("can0", false);
    testing::internal::CaptureStdout();
    EXPECT_EQ(7U, send(*socket, message(0x123)));
    EXPECT_EQ(7U, send(*socket, message(0x123)));
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
}

TEST_F(CanBoardTrouble, the_first_send_after_up_takes_the_error_that_nobody_read) {
    joinBoth();
    const auto socket = openPort(1);
    setLink("can0", false);
    setLink("can0", true);
    EXPECT_EQ(7U, send(*socket, message(0x123)));
    EXPECT_EQ(0U, send(*socket, message(0x123)));
}

TEST_F(CanBoardTrouble, one_retry_is_enough_for_the_error_that_nobody_read) {
    joinBoth();
    const auto socket = openPort(1, 1);
    setLink("can0", false);
    setLink("can0", true);
    testing::internal::CaptureStdout();
    EXPECT_EQ(0U, send(*socket, message(0x123)));
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
}

TEST_F(CanBoardTrouble, poll_reports_the_error_until_one_receive) {
    joinBoth();
    const auto socket = openPort(1);
    EXPECT_EQ(0, polled(*socket));
    setLink("can0", false);
    EXPECT_NE(0, polled(*socket) & POLLERR);
    ZRCANMessage received{};
    EXPECT_EQ(5U, socket->receive(&received));
    EXPECT_EQ(0, polled(*socket));
}

TEST_F(CanBoardTrouble, frames_that_waited_when_the_interface_went_down_are_still_there) {
    joinBoth();
    const auto first = openPort(1);
    const auto second = openPort(2);
    ASSERT_EQ(0U, send(*first, message(0x123)));
    ASSERT_TRUE(eventually([&] { return polled(*second) == POLLIN; }));
    setLink("can1", false);
    ZRCANMessage received{};
    EXPECT_EQ(5U, second->receive(&received));
    EXPECT_EQ("123#", receivedSoon(*second));
}

TEST_F(CanBoardTrouble, the_library_stops_an_interface_under_its_own_socket) {
    joinBoth();
    const auto socket = openPort(1);
    EXPECT_EQ(0U, ZRCAN::setState(1, 0));
    EXPECT_NE(0, polled(*socket) & POLLERR);
    ZRCANMessage received{};
    EXPECT_EQ(5U, socket->receive(&received));
    EXPECT_EQ(0U, ZRCAN::setState(1, 1));
    EXPECT_EQ(0U, send(*socket, message(0x123)));
}

TEST_F(CanBoardTrouble, a_removed_interface_is_told_once_and_its_socket_is_dead_for_good) {
    VirtualPort port("can5");
    const auto socket = openPort(6);
    ASSERT_EQ(0U, send(*socket, message(0x123)));
    port.remove();
    EXPECT_NE(0, polled(*socket) & POLLERR);
    testing::internal::CaptureStdout();
    ZRCANMessage received{};
    EXPECT_EQ(5U, socket->receive(&received));
    EXPECT_EQ(5U, socket->receive(&received));
    EXPECT_EQ(gone, testing::internal::GetCapturedStdout());
    EXPECT_EQ(0, polled(*socket) & POLLERR);
    EXPECT_EQ(7U, send(*socket, message(0x123)));
    EXPECT_TRUE(socket->isConnected());

    const VirtualPort again("can5");
    EXPECT_EQ(0U, send(*openPort(6), message(0x124)));
    EXPECT_EQ(5U, socket->receive(&received));
    EXPECT_EQ(7U, send(*socket, message(0x123)));
    EXPECT_EQ(3U, socket->reconnect());
    EXPECT_EQ(7U, send(*socket, message(0x123)));
}

TEST_F(CanBoardTrouble, a_send_to_a_removed_interface_names_its_error_once) {
    VirtualPort port("can5");
    const auto socket = openPort(6, 1);
    port.remove();
    ZRCANMessage received{};
    testing::internal::CaptureStdout();
    EXPECT_EQ(5U, socket->receive(&received));
    EXPECT_EQ(7U, send(*socket, message(0x123)));
    EXPECT_EQ(7U, send(*socket, message(0x123)));
    EXPECT_EQ(gone +
                  "CANSocket::send failed on port 6 even after 1 retries. Errno: 6 == No such "
                  "device or address\n",
              testing::internal::GetCapturedStdout());
}

TEST_F(CanBoardTrouble,
       an_unplugged_controller_leaves_its_socket_dead_and_comes_back_for_a_new_one) {
    joinBoth();
    const auto socket = openPort(1);
    UnpluggedController unplugged("can0");
    testing::internal::CaptureStdout();
    ZRCANMessage received{};
    // The kernel stops an interface before it removes it; the last of the two errors is kept.
    EXPECT_EQ(5U, socket->receive(&received));
    EXPECT_EQ(5U, socket->receive(&received));
    EXPECT_EQ(
        "CANSocket::receive() on port 1: ERROR: read failed: -1, errno: 19 (No such device).\n",
        testing::internal::GetCapturedStdout());
    unplugged.plugIn();
    EXPECT_EQ(7U, send(*socket, message(0x123)));
    const auto fresh = ZRCANRaw::create(1, 250000, "can0", 0, 0, 0);
    ASSERT_TRUE(fresh->isConnected());
    const auto partner = openPort(2);
    EXPECT_EQ(0U, send(*fresh, message(0x123)));
    EXPECT_EQ("123#", receivedSoon(*partner));
}

TEST_F(CanBoardTrouble, a_socket_of_an_interface_that_is_down_has_its_error_waiting) {
    joinBoth();
    setLink("can0", false);
    const auto socket = openPort(1);
    EXPECT_TRUE(socket->isConnected());
    EXPECT_NE(0, polled(*socket) & POLLERR);
    testing::internal::CaptureStdout();
    ZRCANMessage received{};
    EXPECT_EQ(5U, socket->receive(&received));
    EXPECT_EQ(5U, socket->receive(&received));
    EXPECT_EQ(down, testing::internal::GetCapturedStdout());
    EXPECT_EQ(7U, send(*socket, message(0x123)));
}

TEST_F(CanBoardTrouble, a_socket_of_an_interface_that_was_down_works_once_it_is_up) {
    joinBoth();
    setLink("can0", false);
    const auto socket = openPort(1);
    setLink("can0", true);
    const auto partner = openPort(2);
    EXPECT_EQ(7U, send(*socket, message(0x123)));
    EXPECT_EQ(0U, send(*socket, message(0x124)));
    EXPECT_EQ("124#", receivedSoon(*partner));
}

TEST_F(CanBoardTrouble, a_missing_interface_is_4_with_its_report) {
    CANSocket socket;
    EXPECT_EQ(4U, socket.initialize(8));
    EXPECT_FALSE(socket.isConnected());
    EXPECT_EQ(Lines{"zr_can_raw: ioctl sock"}, reports);
}

TEST_F(CanBoardTrouble, an_interface_of_another_kind_is_4_with_the_reason) {
    CANSocket socket;
    EXPECT_EQ(4U, socket.interfaceInit("lo"));
    EXPECT_FALSE(socket.isConnected());
    EXPECT_EQ(Lines{"zr_can_raw: bind sock error:  No such device"}, reports);
}

TEST_F(CanBoardTrouble, an_end_point_made_for_a_missing_interface_is_returned_unconnected) {
    const auto socket = ZRCANRaw::create(1, 250000, "can8", 0, 0, 0);
    ASSERT_NE(nullptr, socket);
    EXPECT_FALSE(socket->isConnected());
    EXPECT_EQ("250000", shownByIp("can0", "bitrate"));
    EXPECT_EQ("zr_can_raw: Error initializing the SocketCAN interface!!", reports.back());
}

TEST_F(CanBoardTrouble, an_end_point_made_for_a_port_without_a_controller_has_no_socket) {
    const auto socket = ZRCANRaw::create(3, 250000, "can2", 0, 0, 0);
    EXPECT_FALSE(socket->isConnected());
    EXPECT_EQ(-1, socket->getReadEndPointID());
    EXPECT_EQ(Lines{"zr_can_raw: Error setting the baudrate!"}, reports);
}

TEST_F(CanBoardTrouble, a_failed_set_up_is_made_good_by_a_reconnect_without_losing_a_descriptor) {
    CANSocket socket;
    EXPECT_EQ(4U, socket.initialize(6));
    const std::size_t before = openDescriptors();
    EXPECT_EQ(4U, socket.reconnect());
    const VirtualPort port("can5");
    EXPECT_EQ(0U, socket.reconnect());
    EXPECT_EQ(before, openDescriptors());
    EXPECT_TRUE(socket.isConnected());
    Candump heard("can5", 1);
    EXPECT_EQ(0U, send(socket, message(0x123)));
    EXPECT_EQ(Lines{"123#"}, heard.frames());
}

TEST_F(CanBoardTrouble, a_reconnect_of_an_open_socket_is_3_and_the_socket_keeps_working) {
    joinBoth();
    const auto socket = openPort(1);
    const int descriptor = socket->getReadEndPointID();
    EXPECT_EQ(3U, socket->reconnect());
    EXPECT_EQ(Lines{"zr_can_raw: interface has been initialized before!"}, reports);
    EXPECT_EQ(descriptor, socket->getReadEndPointID());
    EXPECT_EQ(0U, send(*socket, message(0x123)));
}

TEST_F(CanBoardTrouble, a_second_initialize_sets_the_rate_and_then_is_3) {
    const auto socket = ZRCANRaw::create(1, 250000, "can0", 0, 0, 0);
    ASSERT_TRUE(socket->isConnected());
    EXPECT_EQ(3U, socket->initialize(1, 500000, "can0"));
    EXPECT_EQ("500000", shownByIp("can0", "bitrate"));
    EXPECT_TRUE(socket->isConnected());
    // Setting the rate took the interface down under the socket.
    ZRCANMessage received{};
    EXPECT_EQ(5U, socket->receive(&received));
    EXPECT_EQ(0U, send(*socket, message(0x123)));
}

TEST_F(CanBoardTrouble, a_name_is_cut_at_15_characters) {
    const VirtualPort port("can_of_15_chars");
    CANSocket socket;
    EXPECT_EQ(0U, socket.interfaceInit("can_of_15_chars_and_more"));
    Candump heard("can_of_15_chars", 1);
    EXPECT_EQ(0U, send(socket, message(0x123)));
    EXPECT_EQ(Lines{"123#"}, heard.frames());
}

}  // namespace ZR::test
