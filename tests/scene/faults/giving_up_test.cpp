// Inputs that fail for ever are restarted ten times, and then left alone until the application acts.

#include "tests/scene/faults/fault_test.h"
#include "tests/scene/support/streams.h"

namespace {

using namespace ZR;
using namespace ZR::test;

constexpr QRect corners[] = {
    {10, 10, 380, 220}, {410, 10, 380, 220}, {10, 250, 380, 220}, {410, 250, 380, 220}};

class GivingUp : public FaultTest {
  protected:
    void start(WatchedInput& input, ZRVideoStreamType type, const QRect& where) {
        items_[&input] = scene_.place(input, where);
        input.setStreamType(type);
        if (type == StreamRtsp)
            input.setRTSPURL(rtspUrl(freeTcpPort()));
        else
            input.setCurrentInterface(ports_[&input] = freeUdpPort());
        input.start(0);
    }

    /// An eleventh failure, whose restart is refused.
    static bool isGivenUp(const WatchedInput& input) {
        return input.restarts() == 10 && input.failures() >= 11 && !input.isRestartPending();
    }

    /// Lets an input recover in between, and fail again.
    void recover(WatchedInput& input, const QRect& where) {
        ASSERT_NE(waitForRestarts(input, 3), Clock::time_point());
        const auto sender = sendJpeg(ports_[&input]);
        ASSERT_TRUE(scene_.waitUntil([&] {
            return quartersOf(scene_.grab(), where) == upright && !input.isRestartPending();
        }));
        EXPECT_TRUE(scene_.waitForPictures(where));
        EXPECT_GE(input.restarts(), 3U) << "a stream that recovers clears nothing";
    }

    /// Tries all that an application may do with inputs that were given up.
    void expectWhatClearsTheCount(WatchedInput& h264, WatchedInput& jpeg, WatchedInput& closed,
                                  WatchedInput& recovering) {
        // What does not clear the count: a stop and a start.
        closed.stop(0);
        closed.handleQueuedCommands();
        closed.start(0);
        // What does: the item set again, another port, the items taken off.
        h264.setVideoItem(items_[&h264], 0);
        EXPECT_EQ(h264.restarts(), 0U);
        h264.stop(0);
        h264.handleQueuedCommands();
        h264.start(0);
        const int port = freeUdpPort();
        jpeg.setCurrentInterface(port);
        jpeg.handleQueuedCommands();
        EXPECT_EQ(jpeg.restarts(), 0U);
        EXPECT_FALSE(jpeg.isInitialized());
        jpeg.start(0);
        recovering.removeVideoItem();
        EXPECT_EQ(recovering.restarts(), 0U);

        EXPECT_TRUE(waitForLines(gaveUp, 5)) << "the fifth is that of the input without a server";
        EXPECT_EQ(closed.restarts(), 10U);
        for (WatchedInput* const one : {&h264, &jpeg})
            EXPECT_NE(waitForRestarts(*one, 1), Clock::time_point());
        const auto sender = sendJpeg(port);
        EXPECT_TRUE(scene_.waitForQuarters(corners[1], upright));
        EXPECT_EQ(output_.count(gaveUp), 5);
    }

    std::map<const WatchedInput*, QQuickItem*> items_;
    std::map<const WatchedInput*, int> ports_;
};

TEST_F(GivingUp, follows_ten_restarts_whatever_happens_in_between) {
    WatchedInput& h264 = input("H.264 without a sender");
    WatchedInput& jpeg = input("JPEG without a sender");
    WatchedInput& closed = input("RTSP without a server");
    WatchedInput& recovering = input("recovering");
    const auto begin = Clock::now();
    start(h264, StreamUdpH264, corners[0]);
    start(jpeg, StreamUdpJpeg, corners[1]);
    start(closed, StreamRtsp, corners[2]);
    start(recovering, StreamUdpJpeg, corners[3]);
    recover(recovering, corners[3]);

    ASSERT_TRUE(scene_.waitUntil([&] { return isGivenUp(closed); }, 60));
    const int failuresOfClosed = closed.failures();
    for (const WatchedInput* const one : {&h264, &jpeg, &recovering})
        ASSERT_TRUE(scene_.waitUntil([&] { return isGivenUp(*one); }, 60));
    for (const auto& line : output_.linesOf(gaveUp))
        EXPECT_GE(line.when - begin, std::chrono::seconds(11));
    // Each restart and each refusal was announced, and nothing else was.
    EXPECT_EQ(output_.count(restartIn1000), 4 * 11);
    EXPECT_EQ(output_.count(gaveUp), 4);
    EXPECT_EQ(output_.count(timedOut), 3 * 11);
    EXPECT_EQ(closed.failures(), failuresOfClosed);
    expectNoLineFor(1.5);
    for (const QRect& corner : corners)
        EXPECT_EQ(quartersOf(scene_.grab(), corner), waiting);
    expectWhatClearsTheCount(h264, jpeg, closed, recovering);
}

}  // namespace
