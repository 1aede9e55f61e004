#include <gtest/gtest.h>
#include <linux/can/error.h>
#include <linux/can/raw.h>
#include <sys/socket.h>

#include <chrono>
#include <string>
#include <vector>

#include "hardware/can/zr_can.h"
#include "simcan_board.h"

namespace ZR::test {
namespace {

using Clock = std::chrono::steady_clock;
using Lines = std::vector<std::string>;

constexpr unsigned int restartMilliseconds = 1000;

class SimcanBoardErrors : public SimcanBoard {};

bool comesToState(unsigned int port, unsigned int state) {
    return eventually([&] { return ZRCAN::getState(port) == state; });
}

void askForErrorFrames(const ZRCANRaw& socket) {
    const can_err_mask_t all = CAN_ERR_MASK;
    ASSERT_EQ(0, ::setsockopt(socket.getReadEndPointID(), SOL_CAN_RAW, CAN_RAW_ERR_FILTER, &all,
                              sizeof all));
}

}  // namespace

TEST_F(SimcanBoardErrors, each_state_of_the_bus_has_its_code) {
    configure("can0", 250000);
    const std::vector<std::pair<std::string, unsigned int>> states{
        {"ERROR-WARNING", 2}, {"ERROR-PASSIVE", 3}, {"ERROR-ACTIVE", 1}, {"BUS-OFF", 4}};
    const Lines knobs{"warning", "passive", "active", "bus-off"};
    for (std::size_t i = 0; i < states.size(); ++i) {
        turn("simcan.0/state", knobs[i]);
        EXPECT_EQ(states[i].second, ZRCAN::getState(1)) << knobs[i];
        EXPECT_EQ(states[i].first, shownByIp("can0", "can state"));
    }
}

TEST_F(SimcanBoardErrors, the_state_follows_either_error_counter) {
    configure("can0", 250000);
    const std::vector<std::pair<std::string, unsigned int>> receiveErrors{
        {"95", 1}, {"96", 2}, {"127", 2}, {"128", 3}, {"0", 1}};
    for (const auto& [errors, state] : receiveErrors) {
        turn("simcan.0/rx_errors", errors);
        EXPECT_EQ(state, ZRCAN::getState(1)) << errors;
    }
    turn("simcan.0/tx_errors", "255");
    EXPECT_EQ(3U, ZRCAN::getState(1));
    turn("simcan.0/tx_errors", "256");
    EXPECT_EQ(4U, ZRCAN::getState(1));
}

TEST_F(SimcanBoardErrors, a_port_in_trouble_leaves_the_other_ports_state_alone) {
    joinBoth();
    turn("simcan.0/state", "bus-off");
    EXPECT_EQ(4U, ZRCAN::getState(1));
    EXPECT_EQ(1U, ZRCAN::getState(2));
}

TEST_F(SimcanBoardErrors, bus_off_ends_by_itself_a_second_after_it_came) {
    replug("simcan.0");
    ASSERT_EQ(0U, ZRCAN::create(0)->setBaudrate(1, 250000));
    const auto begin = Clock::now();
    turn("simcan.0/state", "bus-off");
    EXPECT_EQ(4U, ZRCAN::getState(1));
    EXPECT_TRUE(comesToState(1, 1));
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(restartMilliseconds - 5));
    EXPECT_EQ("1 0 0 0 0 1", errorsCountedByIp("can0"));
    EXPECT_EQ("1000", shownByIp("can0", "restart-ms"));
    EXPECT_TRUE(isLogged("can0 restart"));
}

TEST_F(SimcanBoardErrors, bus_off_ends_by_itself_also_after_a_stop_and_a_start) {
    configure("can0", 250000);
    ASSERT_EQ(0U, ZRCAN::setState(1, 0));
    ASSERT_EQ(0U, ZRCAN::setState(1, 1));
    clearLog();
    turn("simcan.0/state", "bus-off");
    EXPECT_TRUE(comesToState(1, 1));
    EXPECT_EQ((Lines{"can0 state bus-off", "can0 restart"}), logLines());
}

TEST_F(SimcanBoardErrors, frames_cross_again_after_the_restart) {
    ASSERT_EQ(0U, ZRCAN::create(0)->setBaudrate(1, 250000));
    ASSERT_EQ(0U, ZRCAN::create(0)->setBaudrate(2, 250000));
    const auto first = openPort(1);
    const auto second = openPort(2);
    turn("simcan.0/state", "bus-off");
    ASSERT_TRUE(comesToState(1, 1));
    // The kernel lets the first frames go nowhere until it has seen the carrier.
    EXPECT_TRUE(eventually([&] {
        (void)send(*first, message(0x123));
        ZRCANMessage received{};
        return second->receive(&received) == 0 && notation(received) == "123#";
    }));
}

TEST_F(SimcanBoardErrors, a_bus_off_without_restart_time_ends_by_a_stop_and_a_start) {
    replug("simcan.0");
    configure("can0", 250000);
    turn("simcan.0/state", "bus-off");
    EXPECT_EQ(0U, ZRCAN::setState(1, 1));
    EXPECT_EQ(4U, ZRCAN::getState(1));
    EXPECT_EQ(0U, ZRCAN::setState(1, 0));
    EXPECT_EQ(0U, ZRCAN::getState(1));
    EXPECT_EQ(0U, ZRCAN::setState(1, 1));
    EXPECT_EQ(1U, ZRCAN::getState(1));
    EXPECT_EQ("0 0 0 0 0 1", errorsCountedByIp("can0"));
}

TEST_F(SimcanBoardErrors, a_rate_set_in_bus_off_starts_the_controller_anew) {
    configure("can0", 250000);
    turn("simcan.0/state", "bus-off");
    clearLog();
    EXPECT_EQ(0U, ZRCAN::create(0)->setBaudrate(1, 125000));
    EXPECT_EQ((Lines{"can0 stop", "can0 bitrate 125000", "can0 open"}), logLines());
    EXPECT_EQ(1U, ZRCAN::getState(1));
}

TEST_F(SimcanBoardErrors, a_restart_that_the_controller_refuses_leaves_it_bus_off) {
    ASSERT_EQ(0U, ZRCAN::create(0)->setBaudrate(1, 250000));
    turn("simcan.0/fail_restart", "EIO");
    turn("simcan.0/state", "bus-off");
    EXPECT_TRUE(isLogged("can0 restart error EIO"));
    EXPECT_EQ(4U, ZRCAN::getState(1));
    EXPECT_EQ(0U, ZRCAN::setState(1, 0));
    EXPECT_EQ(0U, ZRCAN::setState(1, 1));
    EXPECT_EQ(1U, ZRCAN::getState(1));
}

TEST_F(SimcanBoardErrors, a_frame_sent_in_bus_off_is_taken_and_never_arrives) {
    joinBoth();
    const auto first = openPort(1);
    const auto second = openPort(2);
    const int before = counter("can0", "tx_packets");
    turn("simcan.0/state", "bus-off");
    EXPECT_EQ(0U, send(*first, message(0x666)));
    ASSERT_EQ(0U, ZRCAN::setState(1, 0));
    ASSERT_EQ(0U, ZRCAN::setState(1, 1));
    ZRCANMessage received{};
    EXPECT_EQ(5U, first->receive(&received));
    EXPECT_TRUE(eventually([&] { return send(*first, message(0x123)) == 0; }));
    EXPECT_EQ("123#", receivedSoon(*second));
    EXPECT_EQ(1, counter("can0", "tx_packets") - before);
}

TEST_F(SimcanBoardErrors, nothing_is_there_to_receive_in_bus_off) {
    joinBoth();
    const auto first = openPort(1);
    const auto second = openPort(2);
    turn("simcan.0/state", "bus-off");
    EXPECT_EQ(0U, send(*second, message(0x123)));
    ASSERT_TRUE(eventually([&] { return counter("can1", "tx_packets") > 0; }));
    testing::internal::CaptureStdout();
    ZRCANMessage received{};
    EXPECT_EQ(5U, first->receive(&received));
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_EQ(0, polled(*first));
}

TEST_F(SimcanBoardErrors, error_frames_come_as_candump_sees_them_to_who_asked) {
    configure("can0", 250000);
    const auto asked = openPort(1);
    const auto other = openPort(1);
    askForErrorFrames(*asked);
    Candump heard("can0,0:0,#FFFFFFFF", 3);
    turn("simcan.0/state", "warning");
    turn("simcan.0/state", "passive");
    turn("simcan.0/state", "bus-off");
    const Lines expected{receivedSoon(*asked), receivedSoon(*asked), receivedSoon(*asked)};
    EXPECT_EQ(expected, heard.frames());
    EXPECT_EQ("20000204#0008000000006000", expected[0]);
    EXPECT_EQ("20000040#0000000000000000", expected[2]);
    ZRCANMessage received{};
    EXPECT_EQ(5U, other->receive(&received));
}

TEST_F(SimcanBoardErrors, a_restart_is_an_error_frame_too) {
    ASSERT_EQ(0U, ZRCAN::create(0)->setBaudrate(1, 250000));
    const auto socket = openPort(1);
    askForErrorFrames(*socket);
    turn("simcan.0/state", "bus-off");
    EXPECT_EQ("20000040#0000000000000000", receivedSoon(*socket));
    EXPECT_EQ("20000100#0000000000000000", receivedSoon(*socket));
}

TEST_F(SimcanBoardErrors,
       a_sender_whom_nobody_acknowledges_gets_passive_and_recovers_with_a_partner) {
    configure("can0", 250000);
    configure("can1", 250000);
    setLink("can1", false);
    turn("simcan.0/ack", "0");
    const auto socket = openPort(1);
    const int before = counter("can1", "rx_packets");
    EXPECT_EQ(0U, send(*socket, message(0x123)));
    EXPECT_TRUE(comesToState(1, 3));
    EXPECT_EQ("128", shownByIp("can0", "(berr-counter tx"));
    EXPECT_EQ(0U, ZRCAN::setState(2, 1));
    EXPECT_TRUE(eventually([&] { return counter("can1", "rx_packets") == before + 1; }));
    EXPECT_TRUE(comesToState(1, 2));
}

}  // namespace ZR::test
