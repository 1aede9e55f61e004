#include <gtest/gtest.h>

#include <string>

#include "can_witness.h"
#include "hardware/can/zr_can.h"

namespace ZR::test {
namespace {

class CanBoardState : public CanPorts {};

}  // namespace

TEST_F(CanBoardState, a_start_is_1_and_a_stop_is_0_as_ip_sees_it) {
    joinBoth();
    setLink("can0", false);
    EXPECT_EQ(0U, ZRCAN::getState(1));
    EXPECT_EQ(0U, ZRCAN::setState(1, 1));
    EXPECT_EQ(1U, ZRCAN::getState(1));
    EXPECT_EQ("ERROR-ACTIVE", shownByIp("can0", "can state"));
    EXPECT_TRUE(isUp("can0"));
    EXPECT_EQ(0U, ZRCAN::setState(1, 0));
    EXPECT_EQ(0U, ZRCAN::getState(1));
    EXPECT_EQ("STOPPED", shownByIp("can0", "can state"));
    EXPECT_FALSE(isUp("can0"));
}

TEST_F(CanBoardState, a_stop_sets_the_restart_time) {
    joinBoth();
    ASSERT_EQ("0", shownByIp("can0", "restart-ms"));
    EXPECT_EQ(0U, ZRCAN::setState(1, 0));
    EXPECT_EQ("1000", shownByIp("can0", "restart-ms"));
    EXPECT_EQ("0", shownByIp("can1", "restart-ms"));
}

TEST_F(CanBoardState, a_start_leaves_the_restart_time) {
    run("ip link set can0 type can restart-ms 7 bitrate 250000");
    EXPECT_EQ(0U, ZRCAN::setState(1, 1));
    EXPECT_EQ("7", shownByIp("can0", "restart-ms"));
}

TEST_F(CanBoardState, a_set_rate_sets_the_restart_time) {
    run("ip link set can0 type can restart-ms 7");
    EXPECT_EQ(0U, ZRCAN::create(0)->setBaudrate(1, 250000));
    EXPECT_EQ("1000", shownByIp("can0", "restart-ms"));
}

TEST_F(CanBoardState, starting_a_running_and_stopping_a_stopped_port_succeeds) {
    joinBoth();
    EXPECT_EQ(0U, ZRCAN::setState(1, 1));
    EXPECT_EQ(1U, ZRCAN::getState(1));
    EXPECT_EQ(0U, ZRCAN::setState(1, 0));
    EXPECT_EQ(0U, ZRCAN::setState(1, 0));
    EXPECT_EQ(0U, ZRCAN::getState(1));
}

TEST_F(CanBoardState, a_port_that_never_had_a_rate_does_not_start) {
    UnpluggedController("can0").plugIn();
    EXPECT_EQ(0U, ZRCAN::getState(1));
    EXPECT_EQ(1U, ZRCAN::setState(1, 1));
    EXPECT_EQ(0U, ZRCAN::getState(1));
    EXPECT_FALSE(isUp("can0"));
}

TEST_F(CanBoardState, any_other_state_is_24_and_touches_nothing) {
    joinBoth();
    for (const int state : {2, -1, 255})
        EXPECT_EQ(24U, ZRCAN::setState(1, state)) << state;
    EXPECT_TRUE(isUp("can0"));
    EXPECT_EQ("0", shownByIp("can0", "restart-ms"));
}

TEST_F(CanBoardState, a_virtual_port_starts_and_stops_but_has_no_state) {
    const VirtualPort port("can5");
    EXPECT_EQ(0U, ZRCAN::setState(6, 0));
    EXPECT_FALSE(isUp("can5"));
    EXPECT_EQ(0U, ZRCAN::setState(6, 1));
    EXPECT_TRUE(isUp("can5"));
    EXPECT_EQ(255U, ZRCAN::getState(6));
}

TEST_F(CanBoardState, without_a_capability_start_and_stop_are_1_and_the_state_is_readable) {
    joinBoth();
    setLink("can1", false);
    {
        const Unprivileged nobody;
        EXPECT_EQ(1U, ZRCAN::setState(1, 0));
        EXPECT_EQ(1U, ZRCAN::setState(2, 1));
        EXPECT_EQ(1U, ZRCAN::getState(1));
        EXPECT_EQ(0U, ZRCAN::getState(2));
    }
    EXPECT_TRUE(isUp("can0"));
    EXPECT_FALSE(isUp("can1"));
    EXPECT_EQ("0", shownByIp("can0", "restart-ms"));
}

TEST_F(CanBoardState, no_report_is_made_of_a_state) {
    (void)ZRCAN::getState(1);
    (void)ZRCAN::setState(1, 7);
    (void)ZRCAN::setState(9, 1);
    EXPECT_TRUE(reports.empty());
}

}  // namespace ZR::test
