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

TEST(PersistentError_pure, no_error_never_persists) {
    PersistentError error;
    for (int i = 0; i < 10; ++i)
        EXPECT_FALSE(error.persists(false, 0));
}

TEST(PersistentError_pure, an_error_that_stays_persists_the_second_time) {
    PersistentError error;
    EXPECT_FALSE(error.persists(true, 0));
    EXPECT_TRUE(error.persists(true, 0));
}

TEST(PersistentError_pure, an_error_that_cleared_between_is_a_new_one) {
    PersistentError error;
    for (int i = 0; i < 10; ++i) {
        EXPECT_FALSE(error.persists(true, 0));
        EXPECT_FALSE(error.persists(false, 0));
    }
}

TEST(PersistentError_pure, data_that_become_less_are_progress) {
    PersistentError error;
    for (int unread = 100; unread > 0; --unread)
        EXPECT_FALSE(error.persists(true, unread)) << unread;
    EXPECT_FALSE(error.persists(true, 0));
    EXPECT_TRUE(error.persists(true, 0));
}

TEST(PersistentError_pure, data_that_nobody_reads_are_none) {
    PersistentError error;
    EXPECT_FALSE(error.persists(true, 100));
    EXPECT_FALSE(error.persists(true, 100));
    EXPECT_TRUE(error.persists(true, 100));
}

}  // namespace ZR::test
