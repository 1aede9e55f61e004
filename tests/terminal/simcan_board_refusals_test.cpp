#include <gtest/gtest.h>
#include <poll.h>

#include <string>
#include <vector>

#include "hardware/can/can_libsocketcan.h"
#include "simcan_board.h"

namespace ZR::test {
namespace {

using Lines = std::vector<std::string>;

/// What libsocketcan answers to a start that failed.
constexpr unsigned int startRefused = 0xFFFFFFFF;

const std::string unreadable = "zr_can: Error: unable to read current bitrate!";

class SimcanBoardRefusals : public SimcanBoard {};

}  // namespace

TEST_F(SimcanBoardRefusals, a_right_rate_that_another_set_is_set_again) {
    configure("can0", 250000);
    clearLog();
    EXPECT_EQ(0U, ZRCAN::create(0)->setBaudrate(1, 250000));
    EXPECT_EQ((Lines{"can0 stop", "can0 bitrate 250000", "can0 open"}), logLines());
}

TEST_F(SimcanBoardRefusals, a_rate_that_this_object_set_is_only_started) {
    CANLibsocketcan controller;
    ASSERT_EQ(0U, controller.setBaudrate(1, 250000));
    clearLog();
    EXPECT_EQ(0U, controller.setBaudrate(1, 250000));
    EXPECT_EQ(Lines{}, logLines());
    setLink("can0", false);
    clearLog();
    EXPECT_EQ(0U, controller.setBaudrate(1, 250000));
    EXPECT_EQ(Lines{"can0 open"}, logLines());
}

TEST_F(SimcanBoardRefusals, each_end_point_made_for_a_port_sets_its_rate_again) {
    const auto first = ZRCANRaw::create(1, 250000, "can0", 0, 0, 0);
    clearLog();
    const auto second = ZRCANRaw::create(1, 250000, "can0", 0, 0, 0);
    EXPECT_TRUE(second->isConnected());
    EXPECT_EQ((Lines{"can0 stop", "can0 bitrate 250000", "can0 open"}), logLines());
    EXPECT_NE(0, polled(*first) & POLLERR);
}

TEST_F(SimcanBoardRefusals, an_end_point_opened_without_a_rate_leaves_the_controller_alone) {
    configure("can0", 250000);
    clearLog();
    EXPECT_TRUE(openPort(1)->isConnected());
    EXPECT_EQ(Lines{}, logLines());
}

TEST_F(SimcanBoardRefusals, a_rate_out_of_tolerance_is_set_and_not_started) {
    configure("can0", 250000);
    clearLog();
    EXPECT_EQ(0U, ZRCAN::create(0)->setBaudrate(1, 850000));
    EXPECT_EQ((Lines{"can0 stop", "can0 bitrate 888888"}), logLines());
    EXPECT_EQ(0U, ZRCAN::getState(1));
}

TEST_F(SimcanBoardRefusals, a_refused_start_is_1_and_the_next_one_succeeds) {
    configure("can0", 250000);
    setLink("can0", false);
    turn("simcan.0/fail_open", "EIO");
    EXPECT_EQ(1U, ZRCAN::setState(1, 1));
    EXPECT_EQ(0U, ZRCAN::getState(1));
    EXPECT_FALSE(isUp("can0"));
    EXPECT_EQ(0U, ZRCAN::setState(1, 1));
    EXPECT_EQ(1U, ZRCAN::getState(1));
}

TEST_F(SimcanBoardRefusals, a_refused_start_passes_through_from_setting_a_rate) {
    CANLibsocketcan controller;
    turn("simcan.0/fail_open", "EIO 2");
    EXPECT_EQ(startRefused, controller.setBaudrate(1, 125000));
    EXPECT_EQ("125000", shownByIp("can0", "bitrate"));
    EXPECT_FALSE(isUp("can0"));
    // The rate counts as set: only the start is tried again.
    clearLog();
    EXPECT_EQ(startRefused, controller.setBaudrate(1, 125000));
    EXPECT_EQ(0U, controller.setBaudrate(1, 125000));
    EXPECT_EQ((Lines{"can0 open error EIO", "can0 open"}), logLines());
}

TEST_F(SimcanBoardRefusals, a_refused_start_leaves_an_end_point_unconnected) {
    configure("can0", 250000);
    turn("simcan.0/fail_open", "EIO");
    const auto socket = ZRCANRaw::create(1, 250000, "can0", 0, 0, 0);
    EXPECT_FALSE(socket->isConnected());
    EXPECT_EQ(-1, socket->getReadEndPointID());
    EXPECT_EQ(Lines{"zr_can_raw: Error setting the baudrate!"}, reports);
    EXPECT_EQ(0U, socket->initialize(1, 250000, "can0"));
    EXPECT_TRUE(socket->isConnected());
}

TEST_F(SimcanBoardRefusals, a_refused_rate_is_6_and_is_tried_again_by_the_next_call) {
    configure("can0", 250000);
    CANLibsocketcan controller;
    turn("simcan.0/fail_bitrate", "EIO");
    clearLog();
    EXPECT_EQ(6U, controller.setBaudrate(1, 500000));
    EXPECT_EQ(Lines{"zr_can: Error: unable to set bitrate 500000!"}, reports);
    EXPECT_FALSE(isUp("can0"));
    EXPECT_EQ(0U, controller.setBaudrate(1, 500000));
    EXPECT_EQ(
        (Lines{"can0 stop", "can0 bitrate 500000 error EIO", "can0 bitrate 500000", "can0 open"}),
        logLines());
}

TEST_F(SimcanBoardRefusals, a_refused_rate_that_the_kernel_remembers_counts_as_set) {
    CANLibsocketcan controller;
    ASSERT_EQ(0U, controller.setBaudrate(1, 250000));
    turn("simcan.0/fail_bitrate", "EIO");
    ASSERT_EQ(6U, controller.setBaudrate(1, 500000));
    clearLog();
    // The kernel names the rate that it was asked for, whatever its driver answered.
    EXPECT_EQ("500000", shownByIp("can0", "bitrate"));
    EXPECT_EQ(0U, controller.setBaudrate(1, 500000));
    EXPECT_EQ(Lines{"can0 open"}, logLines());
}

TEST_F(SimcanBoardRefusals, an_unplugged_controller_is_255_and_6_and_has_no_rate) {
    configure("can0", 250000);
    CANLibsocketcan controller;
    turn("simcan.0/present", "0");
    EXPECT_EQ(255U, ZRCAN::getState(1));
    EXPECT_EQ(startRefused, controller.getBaudrate(1));
    EXPECT_EQ(6U, controller.setBaudrate(1, 250000));
    EXPECT_EQ((Lines{unreadable, "zr_can: Error: unable to set bitrate 250000!"}), reports);
    EXPECT_EQ(1U, ZRCAN::setState(1, 0));
    EXPECT_EQ(1U, ZRCAN::setState(1, 1));
}

TEST_F(SimcanBoardRefusals, a_controller_that_is_back_is_set_again_by_the_object_that_knew_it) {
    CANLibsocketcan controller;
    ASSERT_EQ(0U, controller.setBaudrate(1, 250000));
    replug("simcan.0");
    clearLog();
    EXPECT_EQ(0U, controller.setBaudrate(1, 250000));
    EXPECT_EQ(unreadable, reports.back());
    EXPECT_EQ((Lines{"can0 bitrate 250000", "can0 open"}), logLines());
    EXPECT_EQ("250000", shownByIp("can0", "bitrate"));
    EXPECT_EQ("1000", shownByIp("can0", "restart-ms"));
}

TEST_F(SimcanBoardRefusals, a_socket_of_an_unplugged_controller_is_dead_and_a_new_one_lives) {
    joinBoth();
    const auto dead = openPort(1);
    const auto partner = openPort(2);
    turn("simcan.0/present", "0");
    testing::internal::CaptureStdout();
    ZRCANMessage received{};
    EXPECT_EQ(5U, dead->receive(&received));
    EXPECT_EQ(5U, dead->receive(&received));
    EXPECT_EQ(
        "CANSocket::receive() on port 1: ERROR: read failed: -1, errno: 19 (No such device).\n",
        testing::internal::GetCapturedStdout());
    turn("simcan.0/present", "1");
    EXPECT_EQ(7U, send(*dead, message(0x123)));
    const auto fresh = ZRCANRaw::create(1, 250000, "can0", 0, 0, 0);
    EXPECT_TRUE(eventually([&] { return send(*fresh, message(0x124)) == 0; }));
    EXPECT_EQ("124#", receivedSoon(*partner));
}

}  // namespace ZR::test
