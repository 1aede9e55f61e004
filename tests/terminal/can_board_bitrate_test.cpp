#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "can_witness.h"
#include "hardware/can/can_libsocketcan.h"

namespace ZR::test {
namespace {

using Lines = std::vector<std::string>;

constexpr unsigned int noBaudrate = 0xFFFFFFFF;
const std::string unreadable = "zr_can: Error: unable to read current bitrate!";

class CanBoardBitrate : public CanPorts {};

/// The mark of a port that was not set again since: the kernel takes another restart time only while
/// the port is down, and setting a rate gives it one.
constexpr unsigned int mark = 7;

}  // namespace

TEST_F(CanBoardBitrate, each_usual_rate_is_what_ip_shows_and_starts_the_interface) {
    CANLibsocketcan controller;
    for (const unsigned int rate :
         {10000U, 20000U, 50000U, 100000U, 125000U, 250000U, 500000U, 800000U, 1000000U}) {
        EXPECT_EQ(0U, controller.setBaudrate(1, rate)) << rate;
        EXPECT_EQ(std::to_string(rate), shownByIp("can0", "bitrate"));
        EXPECT_TRUE(isUp("can0")) << rate;
        EXPECT_EQ(rate, controller.getBaudrate(1));
    }
}

TEST_F(CanBoardBitrate, a_rate_that_the_clock_can_only_miss_is_success_but_stays_stopped) {
    joinBoth();
    CANLibsocketcan controller;
    EXPECT_EQ(0U, controller.setBaudrate(1, 850000));
    EXPECT_EQ("888888", shownByIp("can0", "bitrate"));
    EXPECT_EQ("STOPPED", shownByIp("can0", "can state"));
    EXPECT_FALSE(isUp("can0"));
    EXPECT_EQ(888888U, controller.getBaudrate(1));
}

TEST_F(CanBoardBitrate, a_rate_that_the_clock_nearly_meets_starts) {
    CANLibsocketcan controller;
    EXPECT_EQ(0U, controller.setBaudrate(1, 333333));
    EXPECT_EQ("333333", shownByIp("can0", "bitrate"));
    EXPECT_TRUE(isUp("can0"));
    // 8 MHz divided by 9; less than 1.5 % above.
    EXPECT_EQ(0U, controller.setBaudrate(1, 880000));
    EXPECT_EQ("888888", shownByIp("can0", "bitrate"));
    EXPECT_TRUE(isUp("can0"));
}

TEST_F(CanBoardBitrate, one_bit_per_second_is_6_with_its_report_and_leaves_the_port_stopped) {
    joinBoth();
    CANLibsocketcan controller;
    EXPECT_EQ(6U, controller.setBaudrate(1, 1));
    EXPECT_EQ(Lines{"zr_can: Error: unable to set bitrate 1!"}, reports);
    EXPECT_FALSE(isUp("can0"));
    EXPECT_EQ("250000", shownByIp("can0", "bitrate"));
}

TEST_F(CanBoardBitrate, a_refused_rate_is_followed_by_a_good_one) {
    CANLibsocketcan controller;
    EXPECT_EQ(6U, controller.setBaudrate(1, 1));
    EXPECT_EQ(0U, controller.setBaudrate(1, 125000));
    EXPECT_EQ("125000", shownByIp("can0", "bitrate"));
    EXPECT_TRUE(isUp("can0"));
}

TEST_F(CanBoardBitrate, a_port_that_never_had_a_rate_is_reported_once_and_succeeds) {
    UnpluggedController("can0").plugIn();
    ASSERT_EQ("", shownByIp("can0", "bitrate"));
    CANLibsocketcan controller;
    EXPECT_EQ(0U, controller.getBaudrate(1));
    EXPECT_EQ(0U, controller.setBaudrate(1, 250000));
    EXPECT_EQ(Lines{unreadable}, reports);
    EXPECT_EQ("250000", shownByIp("can0", "bitrate"));
    EXPECT_TRUE(isUp("can0"));
    EXPECT_EQ(0U, controller.setBaudrate(1, 500000));
    EXPECT_EQ(Lines{unreadable}, reports);
}

TEST_F(CanBoardBitrate, a_right_rate_that_another_set_is_set_again) {
    configure("can0", 250000, mark);
    CANLibsocketcan controller;
    EXPECT_EQ(0U, controller.setBaudrate(1, 250000));
    EXPECT_EQ("1000", shownByIp("can0", "restart-ms"));
    EXPECT_TRUE(isUp("can0"));
    EXPECT_EQ(Lines{}, reports);
}

TEST_F(CanBoardBitrate, a_right_rate_that_this_object_set_is_left_alone) {
    CANLibsocketcan controller;
    ASSERT_EQ(0U, controller.setBaudrate(1, 250000));
    configure("can0", 250000, mark);
    EXPECT_EQ(0U, controller.setBaudrate(1, 250000));
    EXPECT_EQ(0U, controller.setBaudrate(1, 253000));
    EXPECT_EQ("7", shownByIp("can0", "restart-ms"));
}

TEST_F(CanBoardBitrate, a_rate_one_and_a_half_percent_away_is_another_one) {
    CANLibsocketcan controller;
    ASSERT_EQ(0U, controller.setBaudrate(1, 250000));
    configure("can0", 250000, mark);
    // 253750 is exactly the border. The controller cannot do it and stays where it was: stopped.
    EXPECT_EQ(0U, controller.setBaudrate(1, 253750));
    EXPECT_EQ("1000", shownByIp("can0", "restart-ms"));
}

TEST_F(CanBoardBitrate, a_stopped_port_whose_rate_this_object_set_is_started_again) {
    CANLibsocketcan controller;
    ASSERT_EQ(0U, controller.setBaudrate(1, 250000));
    setLink("can0", false);
    EXPECT_EQ(250000U, controller.getBaudrate(1));
    EXPECT_EQ(0U, controller.setBaudrate(1, 250000));
    EXPECT_TRUE(isUp("can0"));
}

TEST_F(CanBoardBitrate, a_rate_that_ip_changed_is_set_back) {
    CANLibsocketcan controller;
    ASSERT_EQ(0U, controller.setBaudrate(1, 250000));
    configure("can0", 500000, mark);
    EXPECT_EQ(500000U, controller.getBaudrate(1));
    EXPECT_EQ(0U, controller.setBaudrate(1, 250000));
    EXPECT_EQ("250000", shownByIp("can0", "bitrate"));
    EXPECT_EQ("1000", shownByIp("can0", "restart-ms"));
}

TEST_F(CanBoardBitrate, a_fresh_object_knows_the_rate_of_a_running_port_only) {
    joinBoth(125000);
    const CANLibsocketcan controller;
    EXPECT_EQ(125000U, controller.getBaudrate(1));
    setLink("can0", false);
    EXPECT_EQ(0U, controller.getBaudrate(1));
    EXPECT_EQ(125000U, controller.getBaudrate(2));
}

TEST_F(CanBoardBitrate, the_ports_are_set_one_by_one) {
    joinBoth(125000);
    CANLibsocketcan controller;
    EXPECT_EQ(0U, controller.setBaudrate(2, 500000));
    EXPECT_EQ("125000", shownByIp("can0", "bitrate"));
    EXPECT_EQ("500000", shownByIp("can1", "bitrate"));
}

TEST_F(CanBoardBitrate, the_static_question_answers_within_the_tolerance) {
    joinBoth();
    for (const auto& [rate, expected] : std::vector<std::pair<unsigned int, bool>>{
             {250000, true}, {253000, true}, {253750, false}, {246250, false}, {246251, true}}) {
        bool isSet = !expected;
        EXPECT_EQ(0U, CANLibsocketcan::isBaudrateSet("can0", rate, isSet)) << rate;
        EXPECT_EQ(expected, isSet) << rate;
    }
}

TEST_F(CanBoardBitrate, a_missing_interface_has_no_rate_to_ask_for) {
    bool isSet = true;
    EXPECT_EQ(5U, CANLibsocketcan::isBaudrateSet("can9", 250000, isSet));
    EXPECT_TRUE(isSet);
    EXPECT_EQ(Lines{unreadable}, reports);
}

TEST_F(CanBoardBitrate, a_virtual_port_is_up_and_yet_never_present) {
    CANLibsocketcan controller;
    for (const unsigned int port : {3U, 4U}) {
        EXPECT_EQ(2U, controller.setBaudrate(port, 250000)) << port;
        EXPECT_EQ(noBaudrate, controller.getBaudrate(port)) << port;
        EXPECT_EQ(255U, ZRCAN::getState(port)) << port;
    }
    EXPECT_TRUE(isUp("can2"));
    EXPECT_EQ(Lines{}, reports);
}

TEST_F(CanBoardBitrate, a_controller_counts_as_absent_for_who_looked_while_it_was_unplugged) {
    UnpluggedController unplugged("can1");
    CANLibsocketcan early;
    EXPECT_EQ(255U, ZRCAN::getState(2));
    EXPECT_EQ(2U, early.setBaudrate(2, 250000));
    EXPECT_EQ(noBaudrate, early.getBaudrate(2));
    unplugged.plugIn();
    EXPECT_EQ(2U, early.setBaudrate(2, 250000));
    EXPECT_EQ(noBaudrate, early.getBaudrate(2));
    EXPECT_EQ(0U, ZRCAN::getState(2));
    EXPECT_EQ(0U, ZRCAN::create(0)->setBaudrate(2, 250000));
    EXPECT_TRUE(isUp("can1"));
}

TEST_F(CanBoardBitrate, ports_that_no_board_has_are_absent) {
    CANLibsocketcan controller;
    for (const unsigned int port : {0U, 5U}) {
        EXPECT_EQ(2U, controller.setBaudrate(port, 250000)) << port;
        EXPECT_EQ(noBaudrate, controller.getBaudrate(port)) << port;
        EXPECT_EQ(255U, ZRCAN::getState(port)) << port;
        EXPECT_EQ(1U, ZRCAN::setState(port, 1)) << port;
        EXPECT_EQ(1U, ZRCAN::setState(port, 0)) << port;
    }
}

TEST_F(CanBoardBitrate, without_a_capability_setting_is_6_and_changes_nothing) {
    joinBoth();
    CANLibsocketcan controller;
    {
        const Unprivileged nobody;
        EXPECT_EQ(6U, controller.setBaudrate(1, 125000));
        EXPECT_EQ(250000U, controller.getBaudrate(1));
    }
    EXPECT_EQ(Lines{"zr_can: Error: unable to set bitrate 125000!"}, reports);
    EXPECT_EQ("250000", shownByIp("can0", "bitrate"));
    EXPECT_EQ("0", shownByIp("can0", "restart-ms"));
    EXPECT_TRUE(isUp("can0"));
}

}  // namespace ZR::test
