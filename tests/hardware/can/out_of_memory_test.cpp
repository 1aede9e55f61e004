#include <gtest/gtest.h>

#include <new>

#include "hardware/can/can_socket.h"
#include "tests/support/private_root.h"
#include "tests/support/substitutes/can_socket_substitute.h"
#include "tests/support/substitutes/operator_new_substitute.h"

// Where there is no memory.

namespace ZR::test {
namespace {

struct OpenSocket : CANSocket {
    using CANSocket::filters;
};

class CanOutOfMemory : public testing::Test {
  protected:
    CanOutOfMemory() { CanSocketSubstitute::reset(); }
    ~CanOutOfMemory() override { OperatorNewSubstitute::failNext = false; }
};

TEST_F(CanOutOfMemory, create_lets_the_exception_of_its_construction_pass) {
    OperatorNewSubstitute::failNext = true;
    EXPECT_THROW((void)ZRCANRaw::create(0, 0, 0), std::bad_alloc);
    OperatorNewSubstitute::failNext = true;
    EXPECT_THROW((void)ZRCANRaw::create(1, 250000, "can0", 0, 0, 0), std::bad_alloc);
}

TEST_F(CanOutOfMemory, a_filter_that_cannot_be_kept_still_reaches_the_kernel) {
    OpenSocket socket;
    OperatorNewSubstitute::failNext = true;
    EXPECT_EQ(socket.addIDFilter(1, 2), 0U);
    EXPECT_FALSE(OperatorNewSubstitute::failNext) << "no memory was needed";
    EXPECT_TRUE(socket.filters.empty());
    EXPECT_EQ(CanSocketSubstitute::calls.size(), 1U);
    EXPECT_EQ(socket.addIDFilter(3, 4), 0U);
    EXPECT_EQ(socket.filters.size(), 1U);
}

TEST_F(CanOutOfMemory, a_counter_whose_path_cannot_be_made_returns_2_and_leaves_the_count) {
    makeFile("/sys/class/net/can0/statistics/rx_packets", "12\n");
    int count = 4711;
    OperatorNewSubstitute::failNext = true;
    EXPECT_EQ(ZRCANRaw::getRxPackages(1, count), 2U);
    EXPECT_FALSE(OperatorNewSubstitute::failNext) << "no memory was needed";
    EXPECT_EQ(count, 4711);
    EXPECT_EQ(ZRCANRaw::getRxPackages(1, count), 0U);
    EXPECT_EQ(count, 12);
}

}  // namespace
}  // namespace ZR::test
