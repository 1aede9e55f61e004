#include <gtest/gtest.h>
#include <linux/can.h>
#include <poll.h>

#include <ctime>
#include <string>
#include <vector>

#include "can_witness.h"

namespace ZR::test {
namespace {

using Lines = std::vector<std::string>;

class CanBoardFrames : public CanPorts {};

void cansend(const std::string& interface, const std::string& frame) {
    run("cansend " + interface + ' ' + frame);
}

/// The clock itself, asked without the library.
std::uint64_t monotonicMilliseconds() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1000 +
           static_cast<std::uint64_t>(now.tv_nsec) / 1000000;
}

}  // namespace

TEST_F(CanBoardFrames, candump_sees_identifiers_below_2048_as_standard_and_others_as_extended) {
    joinBoth();
    const auto socket = openPort(1);
    Candump heard("can1", 6);
    for (const std::uint32_t id : {0U, 2047U, 2048U, 0x1FFFFFFFU, 0x80000123U, 0x7FFFFU})
        EXPECT_EQ(0U, send(*socket, message(id, {0xAB}))) << id;
    EXPECT_EQ(
        (Lines{"000#AB", "7FF#AB", "00000800#AB", "1FFFFFFF#AB", "00000123#AB", "0007FFFF#AB"}),
        heard.frames());
}

TEST_F(CanBoardFrames, candump_sees_each_length) {
    joinBoth();
    const auto socket = openPort(1);
    Candump heard("can1", 9);
    ZRCANMessage sent = message(0x123, {1, 2, 3, 4, 5, 6, 7, 8});
    for (sent.length = 0; sent.length <= 8; ++sent.length)
        EXPECT_EQ(0U, socket->send(&sent)) << sent.length;
    EXPECT_EQ((Lines{"123#", "123#01", "123#0102", "123#010203", "123#01020304", "123#0102030405",
                     "123#010203040506", "123#01020304050607", "123#0102030405060708"}),
              heard.frames());
}

TEST_F(CanBoardFrames, the_low_byte_of_the_length_counts_and_9_is_refused) {
    joinBoth();
    const auto socket = openPort(1);
    Candump heard("can1", 1);
    ZRCANMessage sent = message(0x123, {1, 2});
    sent.length = 9;
    EXPECT_EQ(7U, socket->send(&sent));
    sent.length = 0x100 + 2;
    EXPECT_EQ(0U, socket->send(&sent));
    EXPECT_EQ(Lines{"123#0102"}, heard.frames());
}

TEST_F(CanBoardFrames, what_cansend_sends_is_received_as_it_was_sent) {
    joinBoth();
    const auto socket = openPort(2);
    for (const std::string frame : {"000#", "7FF#11", "12345678#0102030405060708", "00000001#AA"}) {
        cansend("can0", frame);
        EXPECT_EQ(frame, receivedSoon(*socket));
    }
}

TEST_F(CanBoardFrames, a_received_extended_identifier_has_bit_31_and_a_standard_one_has_not) {
    joinBoth();
    const auto socket = openPort(2);
    ZRCANMessage received{};
    cansend("can0", "00000123#");
    EXPECT_EQ(0U, receiveSoon(*socket, received));
    EXPECT_EQ(0x80000123U, received.id);
    cansend("can0", "123#");
    EXPECT_EQ(0U, receiveSoon(*socket, received));
    EXPECT_EQ(0x123U, received.id);
}

TEST_F(CanBoardFrames, a_received_extended_frame_can_be_sent_back_as_it_is) {
    joinBoth();
    const auto first = openPort(1);
    const auto second = openPort(2);
    EXPECT_EQ(0U, send(*first, message(0x18FEF100, {1, 2, 3})));
    ZRCANMessage received{};
    EXPECT_EQ(0U, receiveSoon(*second, received));
    EXPECT_EQ(0U, second->send(&received));
    EXPECT_EQ("18FEF100#010203", receivedSoon(*first));
}

TEST_F(CanBoardFrames, a_remote_frame_has_bit_30) {
    const auto socket = openPort(3);
    ZRCANMessage received{};
    cansend("can2", "7FF#R3");
    EXPECT_EQ(0U, receiveSoon(*socket, received));
    EXPECT_EQ(0x400007FFU, received.id);
    EXPECT_EQ(3U, received.length);
}

TEST_F(CanBoardFrames, data_beyond_the_length_and_the_first_word_stay_as_they_were) {
    joinBoth();
    const auto socket = openPort(2);
    cansend("can0", "123#0102");
    ZRCANMessage received = message(0);
    received.reserved = 4711;
    EXPECT_EQ(0U, receiveSoon(*socket, received));
    EXPECT_EQ(2U, received.length);
    EXPECT_EQ(2, received.data[1]);
    EXPECT_EQ(0xEE, received.data[2]);
    EXPECT_EQ(0xEE, received.data[7]);
    EXPECT_EQ(4711U, received.reserved);
}

TEST_F(CanBoardFrames, the_time_stamp_is_the_clock_of_the_receive) {
    joinBoth();
    const auto socket = openPort(2);
    EXPECT_EQ(0U, send(*openPort(1), message(0x123)));
    ASSERT_TRUE(eventually([&] { return polled(*socket) != 0; }));
    const auto before = static_cast<std::uint32_t>(monotonicMilliseconds());
    ZRCANMessage received{};
    EXPECT_EQ(0U, socket->receive(&received));
    const auto after = static_cast<std::uint32_t>(monotonicMilliseconds());
    EXPECT_LE(received.timeStamp - before, after - before);
}

TEST_F(CanBoardFrames, nothing_there_is_5_without_a_word) {
    joinBoth();
    const auto socket = openPort(1);
    testing::internal::CaptureStdout();
    ZRCANMessage received{};
    EXPECT_EQ(5U, socket->receive(&received));
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
}

TEST_F(CanBoardFrames, only_the_last_of_three_filters_is_in_effect) {
    joinBoth();
    const auto socket = openPort(2);
    for (const unsigned int id : {0x100U, 0x200U, 0x300U})
        EXPECT_EQ(0U, socket->addIDFilter(id, CAN_SFF_MASK));
    const auto sender = openPort(1);
    for (const unsigned int number : {1U, 2U, 3U, 4U, 3U})
        EXPECT_EQ(0U, send(*sender, message(number * 0x100)));
    EXPECT_EQ("300#", receivedSoon(*socket));
    EXPECT_EQ("300#", receivedSoon(*socket));
    ZRCANMessage received{};
    EXPECT_EQ(5U, socket->receive(&received));
}

TEST_F(CanBoardFrames, a_filter_can_tell_extended_frames_from_standard_ones) {
    joinBoth();
    const auto socket = openPort(2);
    EXPECT_EQ(0U, socket->addIDFilter(CAN_EFF_FLAG | 0x123, CAN_EFF_FLAG | CAN_EFF_MASK));
    const auto sender = openPort(1);
    EXPECT_EQ(0U, send(*sender, message(0x123, {1})));
    EXPECT_EQ(0U, send(*sender, message(CAN_EFF_FLAG | 0x123, {2})));
    EXPECT_EQ("00000123#02", receivedSoon(*socket));
}

TEST_F(CanBoardFrames, a_filter_given_before_the_socket_is_open_has_no_effect) {
    joinBoth();
    CANSocket socket;
    EXPECT_EQ(0U, socket.addIDFilter(0x300, CAN_SFF_MASK));
    ASSERT_EQ(0U, socket.initialize(2));
    EXPECT_EQ(0U, send(*openPort(1), message(0x100)));
    EXPECT_EQ("100#", receivedSoon(socket));
}

TEST_F(CanBoardFrames, another_socket_on_the_port_hears_what_is_sent_and_the_sender_does_not) {
    joinBoth();
    const auto sender = openPort(1);
    const auto other = openPort(1);
    EXPECT_EQ(0U, send(*sender, message(0x123, {9})));
    EXPECT_EQ("123#09", receivedSoon(*other));
    EXPECT_EQ(0, polled(*sender) & POLLIN);
}

TEST_F(CanBoardFrames, port_3_is_can2_and_port_4_can3) {
    for (const unsigned int port : {3U, 4U}) {
        Candump heard("can" + std::to_string(port - 1), 1);
        const auto socket = openPort(port);
        EXPECT_EQ(0U, send(*socket, message(port)));
        EXPECT_EQ(Lines{notation(message(port))}, heard.frames());
    }
}

TEST_F(CanBoardFrames, a_socket_of_its_own_name_is_bound_there_whatever_the_port) {
    const auto socket = ZRCANRaw::create(1, 250000, "can3", 0, 0, 0);
    ASSERT_TRUE(socket->isConnected());
    EXPECT_EQ("250000", shownByIp("can0", "bitrate"));
    Candump heard("can3", 1);
    EXPECT_EQ(0U, send(*socket, message(0x55)));
    EXPECT_EQ(Lines{"055#"}, heard.frames());
}

TEST_F(CanBoardFrames, a_made_end_point_has_its_rate_and_is_connected) {
    const auto first = ZRCANRaw::create(1, 500000, "can0", 0, 0, 0);
    const auto second = ZRCANRaw::create(2, 500000, "can1", 0, 0, 0);
    ASSERT_TRUE(first->isConnected());
    ASSERT_TRUE(second->isConnected());
    EXPECT_EQ("500000", shownByIp("can0", "bitrate"));
    EXPECT_EQ("500000", shownByIp("can1", "bitrate"));
    EXPECT_EQ(0U, send(*first, message(0x123, {1})));
    EXPECT_EQ("123#01", receivedSoon(*second));
}

TEST_F(CanBoardFrames, without_a_capability_a_socket_opens_and_talks_but_sets_no_rate) {
    joinBoth();
    const Unprivileged nobody;
    const auto first = openPort(1);
    const auto second = openPort(2);
    EXPECT_EQ(0U, send(*first, message(0x123, {1})));
    EXPECT_EQ("123#01", receivedSoon(*second));
    CANSocket third;
    EXPECT_EQ(6U, third.initialize(1, 125000, "can0"));
    EXPECT_FALSE(third.isConnected());
    EXPECT_EQ((Lines{"zr_can: Error: unable to set bitrate 125000!",
                     "zr_can_raw: Error setting the baudrate!"}),
              reports);
}

}  // namespace ZR::test
