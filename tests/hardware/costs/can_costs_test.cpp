#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <memory>
#include <string>

#include "hardware/can/can_socket.h"
#include "hardware/can/zr_can.h"
#include "tests/hardware/costs/operation_cost.h"
#include "tests/support/output_capture.h"
#include "tests/support/private_root.h"

namespace ZR::test {
namespace {

/// A socket that a test can connect by hand.
struct Connectable : CANSocket {
    using CANSocket::socketDescriptor;
};

/// An end point on one end of a connected pair: a kernel need not have CAN.
class CanCost : public CostTest {
  protected:
    void SetUp() override {
        CostTest::SetUp();
        std::array<int, 2> ends{};
        ASSERT_EQ(
            ::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()),
            0);
        socket_.socketDescriptor = ends[0];
        peer_ = ends[1];
    }

    void TearDown() override { ::close(peer_); }

    /// Lets as many frames wait as all runs of an operation take.
    void fill() const {
        can_frame frame{};
        frame.can_id = 0x80000123;
        frame.can_dlc = 8;
        for (int i = 0; i < 8; ++i)
            ASSERT_EQ(::write(peer_, &frame, sizeof frame), 16);
    }

    Operation receiving() {
        return [this] {
            ZRCANMessage message{};
            return socket_.receive(&message);
        };
    }

    Operation sending() {
        return [this] {
            ZRCANMessage message{0, 0x12345, 8, {1, 2, 3, 4, 5, 6, 7, 8}, 0};
            return socket_.send(&message);
        };
    }

    Connectable socket_;
    int peer_ = -1;
};

void expectCost(const OperationCost& cost, const std::string& result, const std::string& calls,
                std::size_t allocations) {
    EXPECT_EQ(cost.result, result);
    EXPECT_EQ(cost.calls(), calls);
    EXPECT_EQ(cost.allocations, allocations);
}

TEST_F(CanCost, receive_takes_one_call_and_no_heap) {
    fill();
    const OperationCost cost = costOf(receiving());
    expectCost(cost, "0", "read", 0);
    EXPECT_EQ(cost.trace.calls.at(0).arguments[2], 16U);
}

TEST_F(CanCost, receive_with_nothing_waiting_takes_one_call_and_no_heap) {
    expectCost(costOf(receiving()), "5", "read", 0);
}

TEST_F(CanCost, a_failed_receive_takes_one_more_call_for_its_line_and_no_heap) {
    ASSERT_EQ(::shutdown(socket_.socketDescriptor, SHUT_RDWR), 0);
    OutputCapture capture;
    const OperationCost cost = costOf(receiving());
    capture.release();
    expectCost(cost, "1", "read write", 0);
}

TEST_F(CanCost, send_takes_one_call_and_no_heap) {
    const OperationCost cost = costOf(sending());
    expectCost(cost, "0", "write", 0);
    EXPECT_EQ(cost.trace.calls.at(0).arguments[2], 16U);
}

TEST_F(CanCost, a_failed_send_without_retries_takes_one_call_and_no_heap) {
    ASSERT_EQ(::close(socket_.socketDescriptor), 0);
    socket_.socketDescriptor = -1;
    expectCost(costOf(sending()), "7", "write", 0);
}

TEST_F(CanCost, a_send_that_keeps_failing_takes_a_sleep_and_a_write_each_and_no_heap) {
    ASSERT_EQ(::close(socket_.socketDescriptor), 0);
    socket_.socketDescriptor = -1;
    socket_.setRetry(2, 1);
    OutputCapture capture;
    const OperationCost first = costOfFirst(sending());
    const OperationCost later = costOf(sending());
    capture.release();
    const std::string attempts = "write clock_nanosleep write clock_nanosleep write";
    EXPECT_EQ(first.calls(), attempts + " write");
    expectCost(later, "7", attempts, 0);
}

TEST_F(CanCost, questions_to_the_end_point_take_no_call) {
    const Operation asking = [this] {
        return socket_.getReadEndPointID() == socket_.getWriteEndPointID() && !socket_.isConnected()
                   ? 0U
                   : 1U;
    };
    expectCost(costOf(asking), "0", "", 0);
}

TEST_F(CanCost, setPolling_takes_one_call_and_no_heap) {
    expectCost(costOf([this] { return static_cast<unsigned int>(socket_.setPolling(true, 1)); }),
               "0", "fcntl", 0);
    expectCost(
        costOf([this] { return static_cast<unsigned int>(socket_.setPolling(false, O_NONBLOCK)); }),
        "0", "fcntl", 0);
}

TEST_F(CanCost, addIDFilter_takes_one_call_and_at_most_one_allocation) {
    const OperationCost cost = costOf([this] { return socket_.addIDFilter(1, 2); });
    EXPECT_EQ(cost.result, "0");
    EXPECT_EQ(cost.calls(), "setsockopt");
    EXPECT_LE(cost.allocations, 1U);
}

TEST_F(CanCost, making_and_destroying_an_end_point_takes_one_close_and_one_allocation) {
    const Operation making = [] { return ZRCANRaw::create(0, 0, 0)->isConnected() ? 1U : 0U; };
    expectCost(costOf(making), "0", "close", 1);
}

TEST_F(CanCost, a_counter_takes_open_read_close_and_its_path_of_the_heap) {
    const std::string counters = "/sys/class/net/can0/statistics/";
    makeFile(counters + "rx_packets", "4294967295\n");
    makeFile(counters + "tx_packets", "0\n");
    for (auto* const operation : {&ZRCANRaw::getRxPackages, &ZRCANRaw::getTxPackages}) {
        const OperationCost cost = costOf([operation] {
            int count = 0;
            return operation(1, count);
        });
        expectCost(cost, "0", "openat read close", 2);
        EXPECT_NE(cost.trace.calls.at(0).arguments[2] & O_CLOEXEC, 0U);
    }
}

TEST_F(CanCost, a_counter_out_of_range_takes_no_call) {
    expectCost(costOf([] {
                   int count = 0;
                   return ZRCANRaw::getRxPackages(5, count);
               }),
               "20", "", 0);
}

TEST_F(CanCost, an_unknown_state_takes_no_call) {
    expectCost(costOf([] { return ZRCAN::setState(1, 2); }), "24", "", 0);
}

/// libsocketcan's own share: 11 calls when this was written, two of them lines on standard error.
TEST_F(CanCost, the_state_of_a_missing_interface_takes_a_conversation_and_leaves_nothing_open) {
    constexpr unsigned int missing = 4000;
    OutputCapture capture;
    const OperationCost cost = costOf([] { return ZRCAN::getState(missing); });
    capture.release();
    EXPECT_EQ(cost.result, "255");
    EXPECT_EQ(cost.trace.count("write"), 2U);
    EXPECT_EQ(cost.trace.count("close"), cost.trace.count("socket"));
    EXPECT_LE(cost.trace.calls.size(), 16U) << cost.calls();
}

}  // namespace
}  // namespace ZR::test
