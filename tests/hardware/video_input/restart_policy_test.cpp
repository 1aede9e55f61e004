#include <gtest/gtest.h>

#include <cstdint>

#include "hardware/video_input/gstreamer_video_input/functional/restart_policy_internal.h"

namespace ZR {
namespace {

TEST(RestartPolicy_pure, causes_have_their_delays) {
    EXPECT_EQ(failedStreamDelay, 1000);
    EXPECT_EQ(silentServerDelay, 10000);
    EXPECT_EQ(changedInterfaceDelay, 100);
    EXPECT_EQ(rtspPatience, 5000U);
}

TEST(RestartPolicy_pure, ten_restarts_are_granted_and_no_more) {
    for (unsigned int restarts = 0; restarts < 10; ++restarts)
        EXPECT_FALSE(isGivenUp(restarts)) << restarts;
    EXPECT_TRUE(isGivenUp(10));
    EXPECT_TRUE(isGivenUp(11));
    EXPECT_TRUE(isGivenUp(0xFFFFFFFF));
}

TEST(RestartPolicy_pure, data_is_overdue_after_more_than_5000_ms) {
    EXPECT_FALSE(isDataOverdue(StreamRtsp, 1000, 1000));
    EXPECT_FALSE(isDataOverdue(StreamRtsp, 1000, 6000));
    EXPECT_TRUE(isDataOverdue(StreamRtsp, 1000, 6001));
    EXPECT_TRUE(isDataOverdue(StreamRtsp, 1000, 100000));
}

TEST(RestartPolicy_pure, no_data_is_owed_without_a_start) {
    EXPECT_FALSE(isDataOverdue(StreamRtsp, 0, 5001));
    EXPECT_FALSE(isDataOverdue(StreamRtsp, 0, 0xFFFFFFFF));
}

TEST(RestartPolicy_pure, only_rtsp_streams_owe_data) {
    for (const int type : {0, 1, 3, 4, -1, 5})
        EXPECT_FALSE(isDataOverdue(type, 1000, 6001)) << type;
}

TEST(RestartPolicy_pure, patience_holds_while_the_clock_begins_anew) {
    constexpr std::uint32_t start = 0xFFFFFF00;
    EXPECT_FALSE(isDataOverdue(StreamRtsp, start, 0xFFFFFFFF));
    EXPECT_FALSE(isDataOverdue(StreamRtsp, start, 0));
    EXPECT_FALSE(isDataOverdue(StreamRtsp, start, start + 5000));
    EXPECT_TRUE(isDataOverdue(StreamRtsp, start, start + 5001));
}

}  // namespace
}  // namespace ZR
