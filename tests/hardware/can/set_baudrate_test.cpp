#include "tests/hardware/can/controller_board.h"
#include "tests/support/output_capture.h"

namespace ZR::test {
namespace {

const Report unreadable = controllerReport("Error: unable to read current bitrate!");

/// can1 exists and runs at 250 kbit/s, set by somebody else, when the controller is made.
class SetBaudrate : public ControllerTest {
  protected:
    SetBaudrate() {
        SimulatedController& running = ControllerTest::controller("can1");
        running.state = CAN_STATE_ERROR_ACTIVE;
        running.bitrate = 250000;
        controller_ = std::make_unique<OpenController>();
        (void)takeCalls();
    }

    static SimulatedController& bus() { return ControllerTest::controller("can1"); }

    unsigned int set(unsigned int bitrate) { return controller_->setBaudrate(2, bitrate); }

    std::unique_ptr<OpenController> controller_;
};

/// The calls of a rate that is set, up to the answer of the kernel.
Calls settingUpTo(unsigned int bitrate, bool stops) {
    Calls calls{"can_get_state can1 4", "can_get_bittiming can1"};
    if (stops)
        calls.emplace_back("can_do_stop can1");
    calls.emplace_back("can_set_restart_ms can1 1000");
    calls.push_back("can_set_bitrate can1 " + std::to_string(bitrate));
    return calls;
}

Calls settingUpToReadBack(unsigned int bitrate, bool stops) {
    Calls calls = settingUpTo(bitrate, stops);
    calls.emplace_back("can_get_bittiming can1");
    return calls;
}

Calls setting(unsigned int bitrate, bool stops) {
    Calls calls = settingUpToReadBack(bitrate, stops);
    calls.emplace_back("can_do_start can1");
    return calls;
}

const Calls startingOnly{"can_get_state can1 4", "can_get_bittiming can1", "can_do_start can1"};

TEST_F(SetBaudrate, setBaudrate_returns_2_for_port_0) {
    EXPECT_EQ(controller_->setBaudrate(0, 250000), 2U);
    EXPECT_EQ(takeCalls(), Calls{});
}

TEST_F(SetBaudrate, a_port_above_4_is_answered_like_port_0) {
    for (const unsigned int port : {5U, 6U, 4711U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU})
        EXPECT_EQ(controller_->setBaudrate(port, 250000), 2U) << port;
    EXPECT_EQ(takeCalls(), Calls{});
}

TEST_F(SetBaudrate, a_port_that_was_absent_returns_2) {
    EXPECT_EQ(controller_->setBaudrate(1, 250000), 2U);
    EXPECT_EQ(controller_->setBaudrate(3, 250000), 2U);
    EXPECT_EQ(controller_->setBaudrate(4, 250000), 2U);
    EXPECT_EQ(takeCalls(), Calls{});
    EXPECT_EQ(log_.reports(), Reports{});
}

TEST_F(SetBaudrate, a_running_interface_is_stopped_configured_read_back_and_started) {
    EXPECT_EQ(set(500000), 0U);
    EXPECT_EQ(takeCalls(), setting(500000, true));
    EXPECT_EQ(bus().bitrate, 500000U);
    EXPECT_EQ(bus().restartMilliseconds, 1000U);
    EXPECT_EQ(bus().state, CAN_STATE_ERROR_ACTIVE);
    EXPECT_EQ(log_.reports(), Reports{});
}

TEST_F(SetBaudrate, a_stopped_interface_is_not_stopped_again) {
    bus().state = CAN_STATE_STOPPED;
    EXPECT_EQ(set(500000), 0U);
    EXPECT_EQ(takeCalls(), setting(500000, false));
}

TEST_F(SetBaudrate, an_interface_in_any_state_but_stopped_is_stopped) {
    for (const int state : {0, 1, 2, 3, 5, 6}) {
        bus().state = state;
        const unsigned int bitrate = 50000U * (static_cast<unsigned int>(state) + 1);
        EXPECT_EQ(set(bitrate), 0U) << state;
        EXPECT_EQ(takeCalls(), setting(bitrate, true)) << state;
    }
}

TEST_F(SetBaudrate, an_interface_whose_state_cannot_be_read_is_not_stopped) {
    LibsocketcanSubstitute::fail("can_get_state");
    EXPECT_EQ(set(500000), 6U);
    EXPECT_EQ(takeCalls(), settingUpTo(500000, false));
}

TEST_F(SetBaudrate, a_rate_that_is_right_but_was_not_set_by_this_object_is_set_again) {
    EXPECT_EQ(set(250000), 0U);
    EXPECT_EQ(takeCalls(), setting(250000, true));
    EXPECT_TRUE(controller_->baudrateSet[1]);
}

TEST_F(SetBaudrate, a_rate_that_this_object_has_set_is_not_set_again_but_started) {
    EXPECT_EQ(set(500000), 0U);
    (void)takeCalls();
    EXPECT_EQ(set(500000), 0U);
    EXPECT_EQ(takeCalls(), startingOnly);
    bus().state = CAN_STATE_STOPPED;
    EXPECT_EQ(set(500000), 0U);
    EXPECT_EQ(bus().state, CAN_STATE_ERROR_ACTIVE);
}

TEST_F(SetBaudrate, a_fresh_object_sets_the_rate_again) {
    EXPECT_EQ(set(500000), 0U);
    OpenController fresh;
    (void)takeCalls();
    EXPECT_EQ(fresh.setBaudrate(2, 500000), 0U);
    EXPECT_EQ(takeCalls(), setting(500000, true));
}

TEST_F(SetBaudrate, a_request_of_253000_counts_as_set_at_250000) {
    EXPECT_EQ(set(250000), 0U);
    (void)takeCalls();
    EXPECT_EQ(set(253000), 0U);
    EXPECT_EQ(takeCalls(), startingOnly);
    EXPECT_EQ(bus().bitrate, 250000U);
}

TEST_F(SetBaudrate, a_request_of_253750_does_not_count_as_set_at_250000) {
    EXPECT_EQ(set(250000), 0U);
    (void)takeCalls();
    EXPECT_EQ(set(253750), 0U);
    EXPECT_EQ(takeCalls(), setting(253750, true));
}

TEST_F(SetBaudrate, what_one_port_has_set_says_nothing_about_another) {
    ControllerTest::controller("can2").bitrate = 250000;
    OpenController both;
    EXPECT_EQ(both.setBaudrate(2, 250000), 0U);
    (void)takeCalls();
    EXPECT_EQ(both.setBaudrate(3, 250000), 0U);
    EXPECT_EQ(takeCalls(), (Calls{"can_get_state can2 4", "can_get_bittiming can2",
                                  "can_set_restart_ms can2 1000", "can_set_bitrate can2 250000",
                                  "can_get_bittiming can2", "can_do_start can2"}));
}

TEST_F(SetBaudrate, an_interface_that_never_had_a_rate_is_reported_once_and_set) {
    bus() = {};
    const OutputCapture capture;
    EXPECT_EQ(set(125000), 0U);
    EXPECT_EQ(takeCalls(), setting(125000, false));
    EXPECT_EQ(log_.reports(), Reports{unreadable});
    EXPECT_EQ(capture.output() + capture.errors(), "");
}

TEST_F(SetBaudrate, a_rate_set_before_that_cannot_be_read_now_is_set_again) {
    EXPECT_EQ(set(500000), 0U);
    (void)takeCalls();
    LibsocketcanSubstitute::fail("can_get_bittiming");
    EXPECT_EQ(set(500000), 0U);
    EXPECT_EQ(takeCalls(), setting(500000, true));
    EXPECT_EQ(log_.reports(), Reports{unreadable});
}

TEST_F(SetBaudrate, neither_a_failed_stop_nor_a_failed_restart_time_ends_it) {
    LibsocketcanSubstitute::fail("can_do_stop");
    EXPECT_EQ(set(500000), 6U);  // the kernel refuses a rate while the interface is up
    EXPECT_EQ(takeCalls(), settingUpTo(500000, true));
    log_.clear();
    LibsocketcanSubstitute::fail("can_set_restart_ms");
    EXPECT_EQ(set(500000), 0U);
    EXPECT_EQ(log_.reports(), Reports{});
}

TEST_F(SetBaudrate, a_refused_rate_returns_6_with_a_report_and_leaves_the_interface_stopped) {
    for (const int result : {-1, 1}) {
        log_.clear();
        bus().state = CAN_STATE_ERROR_ACTIVE;
        LibsocketcanSubstitute::fail("can_set_bitrate", result);
        EXPECT_EQ(set(1), 6U);
        EXPECT_EQ(takeCalls(), settingUpTo(1, true));
        EXPECT_EQ(log_.reports(), Reports{controllerReport("Error: unable to set bitrate 1!")});
        EXPECT_FALSE(controller_->baudrateSet[1]);
        EXPECT_EQ(bus().state, CAN_STATE_STOPPED);
    }
}

TEST_F(SetBaudrate, a_refused_rate_beyond_31_bits_is_reported_as_a_signed_number) {
    LibsocketcanSubstitute::fail("can_set_bitrate");
    EXPECT_EQ(set(0xFFFFFFFF), 6U);
    EXPECT_EQ(log_.reports(), Reports{controllerReport("Error: unable to set bitrate -1!")});
}

TEST_F(SetBaudrate, a_rate_read_back_out_of_tolerance_leaves_the_interface_stopped_with_0) {
    bus().takesBitrate = 250000;
    EXPECT_EQ(set(253750), 0U);
    EXPECT_EQ(takeCalls(), settingUpToReadBack(253750, true));
    EXPECT_EQ(bus().state, CAN_STATE_STOPPED);
    EXPECT_EQ(set(246250), 0U);
    EXPECT_EQ(takeCalls(), settingUpToReadBack(246250, false));
    EXPECT_EQ(bus().state, CAN_STATE_STOPPED);
    EXPECT_TRUE(controller_->baudrateSet[1]);
    EXPECT_EQ(log_.reports(), Reports{});
}

TEST_F(SetBaudrate, a_rate_read_back_within_tolerance_is_started) {
    bus().takesBitrate = 252000;
    EXPECT_EQ(set(250000), 0U);
    EXPECT_EQ(takeCalls(), setting(250000, true));
}

TEST_F(SetBaudrate, a_rate_that_cannot_be_read_back_returns_5_and_leaves_the_interface_stopped) {
    LibsocketcanSubstitute::fail("can_get_bittiming", -1, 2);
    EXPECT_EQ(set(500000), 5U);
    EXPECT_EQ(takeCalls(), settingUpToReadBack(500000, true));
    EXPECT_EQ(log_.reports(), Reports{unreadable});
    EXPECT_EQ(bus().state, CAN_STATE_STOPPED);
    EXPECT_TRUE(controller_->baudrateSet[1]);
}

TEST_F(SetBaudrate, a_failed_read_back_returns_5_also_when_the_rate_was_right_before) {
    LibsocketcanSubstitute::fail("can_get_bittiming", -1, 2);
    EXPECT_EQ(set(250000), 5U);
    EXPECT_EQ(bus().state, CAN_STATE_STOPPED);
}

TEST_F(SetBaudrate, what_libsocketcan_answered_to_the_start_passes_through) {
    LibsocketcanSubstitute::fail("can_do_start", -1);
    EXPECT_EQ(set(500000), 0xFFFFFFFFU);
    LibsocketcanSubstitute::fail("can_do_start", 42);
    EXPECT_EQ(set(500000), 42U);
    EXPECT_EQ(log_.reports(), Reports{});
}

}  // namespace
}  // namespace ZR::test
