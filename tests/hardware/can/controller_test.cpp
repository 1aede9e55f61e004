#include "tests/hardware/can/controller_board.h"
#include "tests/support/output_capture.h"

namespace ZR::test {
namespace {

using CanController = ControllerTest;
using CanSetState = ControllerTest;
using CanGetState = ControllerTest;

TEST_F(CanController, looks_for_can0_to_can3_in_order_from_the_stopped_state_on) {
    const OpenController controller;
    EXPECT_EQ(takeCalls(), (Calls{"can_get_state can0 4", "can_get_state can1 4",
                                  "can_get_state can2 4", "can_get_state can3 4"}));
}

TEST_F(CanController, an_interface_is_present_when_its_state_can_be_read) {
    controller("can0");
    controller("can2").state = CAN_STATE_BUS_OFF;
    const OpenController made;
    EXPECT_TRUE(made.present[0]);
    EXPECT_FALSE(made.present[1]);
    EXPECT_TRUE(made.present[2]);
    EXPECT_FALSE(made.present[3]);
}

TEST_F(CanController, no_rate_is_set_at_first_and_the_name_is_empty) {
    for (const char* const name : {"can0", "can1", "can2", "can3"})
        controller(name);
    const OpenController made;
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(made.present[i]) << i;
        EXPECT_FALSE(made.baudrateSet[i]) << i;
    }
    EXPECT_EQ(made.name, "");
}

TEST_F(CanController, an_interface_that_appears_later_is_not_seen) {
    OpenController made;
    controller("can0").bitrate = 250000;
    EXPECT_EQ(made.setBaudrate(1, 250000), 2U);
    EXPECT_EQ(made.getBaudrate(1), 0xFFFFFFFFU);
    OpenController next;
    EXPECT_EQ(next.setBaudrate(1, 250000), 0U);
}

TEST_F(CanController, create_makes_the_same_controller_whatever_the_number) {
    for (const int number : {0, 1, -1, 4711}) {
        const std::unique_ptr<ZRCAN> made = ZRCAN::create(number);
        EXPECT_NE(dynamic_cast<CANLibsocketcan*>(made.get()), nullptr) << number;
    }
    EXPECT_EQ(log_.reports(), Reports{});
}

TEST_F(CanController, making_one_reports_and_prints_nothing) {
    const OutputCapture capture;
    const OpenController made;
    EXPECT_EQ(capture.output() + capture.errors(), "");
    EXPECT_EQ(log_.reports(), Reports{});
}

TEST_F(CanSetState, setState_0_stops_and_then_asks_for_a_restart_after_1000_ms) {
    controller("can1").state = CAN_STATE_ERROR_ACTIVE;
    EXPECT_EQ(ZRCAN::setState(2, 0), 0U);
    EXPECT_EQ(takeCalls(), (Calls{"can_do_stop can1", "can_set_restart_ms can1 1000"}));
    EXPECT_EQ(controller("can1").state, CAN_STATE_STOPPED);
    EXPECT_EQ(controller("can1").restartMilliseconds, 1000U);
}

TEST_F(CanSetState, a_refused_restart_time_does_not_show) {
    controller("can0");
    LibsocketcanSubstitute::fail("can_set_restart_ms");
    EXPECT_EQ(ZRCAN::setState(1, 0), 0U);
    EXPECT_EQ(log_.reports(), Reports{});
}

TEST_F(CanSetState, a_failed_stop_returns_1_and_sets_no_restart_time) {
    for (const int result : {-1, 1, -16}) {
        LibsocketcanSubstitute::reset();
        controller("can0");
        LibsocketcanSubstitute::fail("can_do_stop", result);
        EXPECT_EQ(ZRCAN::setState(1, 0), 1U) << result;
        EXPECT_EQ(takeCalls(), Calls{"can_do_stop can0"});
    }
    EXPECT_EQ(log_.reports(), Reports{});
}

TEST_F(CanSetState, setState_1_starts_and_nothing_else) {
    controller("can3");
    EXPECT_EQ(ZRCAN::setState(4, 1), 0U);
    EXPECT_EQ(takeCalls(), Calls{"can_do_start can3"});
    EXPECT_EQ(controller("can3").state, CAN_STATE_ERROR_ACTIVE);
}

TEST_F(CanSetState, a_failed_start_returns_1_whatever_libsocketcan_answered) {
    controller("can0");
    for (const int result : {-1, 1, 7}) {
        LibsocketcanSubstitute::fail("can_do_start", result);
        EXPECT_EQ(ZRCAN::setState(1, 1), 1U) << result;
    }
    EXPECT_EQ(log_.reports(), Reports{});
}

TEST_F(CanSetState, setState_1_2_returns_24_and_asks_nobody) {
    controller("can0");
    for (const int state : {2, 3, 4, 255, -1, -2147483647 - 1, 2147483647})
        EXPECT_EQ(ZRCAN::setState(1, state), 24U) << state;
    EXPECT_EQ(takeCalls(), Calls{});
    EXPECT_EQ(log_.reports(), Reports{});
}

TEST_F(CanSetState, any_port_is_tried) {
    EXPECT_EQ(ZRCAN::setState(0, 1), 1U);
    EXPECT_EQ(ZRCAN::setState(5, 0), 1U);
    EXPECT_EQ(takeCalls(), (Calls{"can_do_start can-1", "can_do_stop can4"}));
    controller("can4");
    EXPECT_EQ(ZRCAN::setState(5, 1), 0U);
}

TEST_F(CanGetState, each_state_has_its_code) {
    const std::vector<std::pair<int, unsigned int>> codes{{0, 1}, {1, 2}, {2, 3},  {3, 4},
                                                          {4, 0}, {5, 0}, {6, 255}};
    for (const auto& [state, code] : codes) {
        controller("can0").state = state;
        EXPECT_EQ(ZRCAN::getState(1), code) << state;
    }
}

TEST_F(CanGetState, getState_of_an_interface_in_bus_off_returns_4) {
    controller("can1").state = CAN_STATE_BUS_OFF;
    EXPECT_EQ(ZRCAN::getState(2), 4U);
    EXPECT_EQ(takeCalls(), Calls{"can_get_state can1 255"});
}

TEST_F(CanGetState, getState_of_a_missing_interface_returns_255) {
    EXPECT_EQ(ZRCAN::getState(1), 255U);
    EXPECT_EQ(ZRCAN::getState(0), 255U);
    EXPECT_EQ(takeCalls(), (Calls{"can_get_state can0 255", "can_get_state can-1 255"}));
    EXPECT_EQ(log_.reports(), Reports{});
}

TEST_F(CanGetState, a_state_that_came_with_a_failure_is_not_used) {
    controller("can0").state = CAN_STATE_ERROR_ACTIVE;
    for (const int result : {-1, 1}) {
        LibsocketcanSubstitute::fail("can_get_state", result);
        EXPECT_EQ(ZRCAN::getState(1), 255U) << result;
    }
}

}  // namespace
}  // namespace ZR::test
