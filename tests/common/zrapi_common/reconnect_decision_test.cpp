#include <gtest/gtest.h>

#include <vector>

#include "common/zrapi_common/zr_reconnect_internal.h"

namespace ZR::test {

TEST(ReconnectDelay_pure, doubles_from_one_second_up_to_thirty) {
    std::vector<int> delays;
    for (std::chrono::seconds delay = firstReconnectDelay; delays.size() < 8;
         delay = nextReconnectDelay(delay))
        delays.push_back(static_cast<int>(delay.count()));
    EXPECT_EQ(delays, (std::vector<int>{1, 2, 4, 8, 16, 30, 30, 30}));
}

TEST(PersistentFault_pure, no_fault_never_persists) {
    PersistentFault fault;
    for (int i = 0; i < 100; ++i)
        EXPECT_FALSE(fault.persists(Fault::None, 0));
}

TEST(PersistentFault_pure, a_hang_up_persists_the_second_time) {
    PersistentFault fault;
    EXPECT_FALSE(fault.persists(Fault::HangUp, 0));
    EXPECT_TRUE(fault.persists(Fault::HangUp, 0));
}

TEST(PersistentFault_pure, an_error_persists_the_sixteenth_time) {
    PersistentFault fault;
    for (int i = 1; i < 16; ++i)
        EXPECT_FALSE(fault.persists(Fault::Error, 0)) << i;
    EXPECT_TRUE(fault.persists(Fault::Error, 0));
}

TEST(PersistentFault_pure, an_error_that_cleared_between_is_a_new_one) {
    PersistentFault fault;
    for (int i = 0; i < 100; ++i) {
        EXPECT_FALSE(fault.persists(Fault::Error, 0));
        EXPECT_FALSE(fault.persists(Fault::None, 0));
    }
}

TEST(PersistentFault_pure, data_that_become_less_are_progress) {
    PersistentFault fault;
    for (int unread = 100; unread > 0; --unread)
        EXPECT_FALSE(fault.persists(Fault::HangUp, unread)) << unread;
    EXPECT_FALSE(fault.persists(Fault::HangUp, 0));
    EXPECT_TRUE(fault.persists(Fault::HangUp, 0));
}

TEST(PersistentFault_pure, data_that_nobody_reads_are_none) {
    PersistentFault fault;
    EXPECT_FALSE(fault.persists(Fault::HangUp, 100));
    EXPECT_FALSE(fault.persists(Fault::HangUp, 100));
    EXPECT_TRUE(fault.persists(Fault::HangUp, 100));
}

}  // namespace ZR::test
