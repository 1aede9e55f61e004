#include "tests/hardware/can/controller_board.h"

// Asking for the rate of a port, and whether an interface has a rate.

namespace ZR::test {
namespace {

constexpr unsigned int noRate = 0xFFFFFFFF;

class GetBaudrate : public ControllerTest {
  protected:
    /// A controller that has found can0.
    static OpenController withController(int state, unsigned int bitrate) {
        ControllerTest::controller("can0").state = state;
        ControllerTest::controller("can0").bitrate = bitrate;
        return {};
    }
};

using IsBaudrateSet = ControllerTest;

TEST_F(GetBaudrate, port_0_and_ports_above_4_have_no_rate) {
    for (const char* const name : {"can-1", "can0", "can1", "can2", "can3", "can4"})
        controller(name).bitrate = 250000;
    const OpenController made;
    (void)takeCalls();
    for (const unsigned int port : {0U, 5U, 6U, 0x80000000U, 0xFFFFFFFFU})
        EXPECT_EQ(made.getBaudrate(port), noRate) << port;
    EXPECT_EQ(takeCalls(), Calls{});
}

TEST_F(GetBaudrate, a_port_that_was_absent_has_no_rate) {
    const OpenController made = withController(CAN_STATE_ERROR_ACTIVE, 250000);
    (void)takeCalls();
    EXPECT_EQ(made.getBaudrate(2), noRate);
    EXPECT_EQ(takeCalls(), Calls{});
    EXPECT_EQ(log_.reports(), Reports{});
}

TEST_F(GetBaudrate, getBaudrate_of_a_stopped_never_configured_interface_returns_0) {
    const OpenController made = withController(CAN_STATE_STOPPED, 250000);
    (void)takeCalls();
    EXPECT_EQ(made.getBaudrate(1), 0U);
    EXPECT_EQ(takeCalls(), Calls{"can_get_state can0 4"});
}

TEST_F(GetBaudrate, a_running_interface_has_the_rate_that_somebody_else_has_set) {
    for (const int state : {0, 1, 2, 3, 5}) {
        const OpenController made = withController(state, 125000);
        (void)takeCalls();
        EXPECT_EQ(made.getBaudrate(1), 125000U) << state;
        EXPECT_EQ(takeCalls(), (Calls{"can_get_state can0 4", "can_get_bittiming can0"}));
    }
}

TEST_F(GetBaudrate, an_interface_whose_state_cannot_be_read_has_its_rate) {
    const OpenController made = withController(CAN_STATE_STOPPED, 125000);
    LibsocketcanSubstitute::fail("can_get_state");
    EXPECT_EQ(made.getBaudrate(1), 125000U);
}

TEST_F(GetBaudrate, an_interface_that_this_object_has_set_is_not_asked_for_its_state) {
    OpenController made = withController(CAN_STATE_STOPPED, 0);
    ASSERT_EQ(made.setBaudrate(1, 500000), 0U);
    controller("can0").state = CAN_STATE_STOPPED;
    (void)takeCalls();
    EXPECT_EQ(made.getBaudrate(1), 500000U);
    EXPECT_EQ(takeCalls(), Calls{"can_get_bittiming can0"});
}

TEST_F(GetBaudrate, a_rate_that_cannot_be_read_is_none_and_not_reported) {
    const OpenController made = withController(CAN_STATE_ERROR_ACTIVE, 125000);
    for (const int result : {-1, 1}) {
        LibsocketcanSubstitute::fail("can_get_bittiming", result);
        EXPECT_EQ(made.getBaudrate(1), noRate) << result;
    }
    EXPECT_EQ(log_.reports(), Reports{});
}

TEST_F(GetBaudrate, each_port_asks_its_own_interface) {
    for (const char* const name : {"can0", "can1", "can2", "can3"}) {
        controller(name).state = CAN_STATE_ERROR_ACTIVE;
        controller(name).bitrate = 100000U * static_cast<unsigned int>(name[3] - '0' + 1);
    }
    const OpenController made;
    for (const unsigned int port : {1U, 2U, 3U, 4U})
        EXPECT_EQ(made.getBaudrate(port), port * 100000);
}

TEST_F(IsBaudrateSet, a_rate_that_cannot_be_read_returns_5_reports_and_leaves_the_answer) {
    controller("can0").bitrate = 250000;
    for (const int result : {-1, 1})
        for (const bool before : {false, true}) {
            log_.clear();
            bool isSet = before;
            LibsocketcanSubstitute::fail("can_get_bittiming", result);
            EXPECT_EQ(CANLibsocketcan::isBaudrateSet("can0", before ? 125000 : 250000, isSet), 5U);
            EXPECT_EQ(isSet, before);
            EXPECT_EQ(log_.reports(),
                      Reports{controllerReport("Error: unable to read current bitrate!")});
        }
}

TEST_F(IsBaudrateSet, the_answer_is_stored_in_both_directions) {
    controller("can0").bitrate = 250000;
    bool isSet = false;
    EXPECT_EQ(CANLibsocketcan::isBaudrateSet("can0", 250000, isSet), 0U);
    EXPECT_TRUE(isSet);
    EXPECT_EQ(CANLibsocketcan::isBaudrateSet("can0", 125000, isSet), 0U);
    EXPECT_FALSE(isSet);
    EXPECT_EQ(CANLibsocketcan::isBaudrateSet("can0", 253000, isSet), 0U);
    EXPECT_TRUE(isSet);
    EXPECT_EQ(CANLibsocketcan::isBaudrateSet("can0", 246250, isSet), 0U);
    EXPECT_FALSE(isSet);
    EXPECT_EQ(log_.reports(), Reports{});
}

TEST_F(IsBaudrateSet, any_name_is_asked_with_a_record_of_zeros) {
    controller("vcan7").bitrate = 250000;
    bool isSet = false;
    EXPECT_EQ(CANLibsocketcan::isBaudrateSet("vcan7", 250000, isSet), 0U);
    EXPECT_TRUE(isSet);
    EXPECT_EQ(takeCalls(), Calls{"can_get_bittiming vcan7"});
}

}  // namespace
}  // namespace ZR::test
