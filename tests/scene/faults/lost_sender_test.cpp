// The senders of UDP streams go, for good or for a while: one of each type, side by side.

#include <algorithm>

#include "tests/scene/faults/fault_test.h"
#include "tests/scene/faults/packet_watch.h"
#include "tests/scene/support/stream_source.h"
#include "tests/scene/support/streams.h"

namespace {

using namespace ZR;
using namespace ZR::test;

struct Played {
    WatchedInput& input;
    QRect area;
    StreamSource source;
    QQuickItem* item = nullptr;
};

class LostSender : public FaultTest {
  protected:
    void play() {
        for (Played& one : played_) {
            one.item = scene_.place(one.input, one.area);
            one.source.chooseFor(one.input);
            one.input.start(0);
        }
        ASSERT_NO_FATAL_FAILURE(expectPictures());
    }

    void expectPictures() {
        for (const Played& one : played_) {
            ASSERT_TRUE(scene_.waitForQuarters(one.area, upright));
            ASSERT_TRUE(scene_.waitForPictures(one.area));
        }
    }

    /// Both are noticed after a second, and restarted a second later.
    void expectRestarts(Clock::time_point lastPacket) {
        ASSERT_TRUE(waitForLines(restartIn1000, 2));
        ASSERT_EQ(output_.lines().size(), 4U);
        EXPECT_TRUE(isAfter(output_.lines()[0].when, lastPacket, 1000));
        const auto timeOuts = output_.linesOf(timedOut);
        const auto announced = output_.linesOf(restartIn1000);
        ASSERT_EQ(timeOuts.size(), 2U);
        for (std::size_t i = 0; i < 2; ++i)
            EXPECT_TRUE(isAfter(announced[i].when, timeOuts[i].when, 0));
    }

    Played played_[2] = {{input("h264"), areas[0], StreamSource(StreamUdpH264)},
                         {input("jpeg"), areas[1], StreamSource(StreamUdpJpeg)}};
    Played& h264_ = played_[0];
    Played& jpeg_ = played_[1];
};

TEST_F(LostSender, is_noticed_after_a_second_and_the_picture_is_back_with_a_new_sender) {
    ASSERT_NO_FATAL_FAILURE(play());
    const PacketWatch packets[] = {PacketWatch(h264_.input), PacketWatch(jpeg_.input)};
    h264_.source.process().kill();
    jpeg_.source.process().kill();
    ASSERT_NO_FATAL_FAILURE(expectRestarts(std::min(packets[0].last(), packets[1].last())));
    const auto announced = output_.linesOf(restartIn1000);
    EXPECT_TRUE(scene_.waitUntil(
        [&] { return h264_.input.restarts() == 1 || jpeg_.input.restarts() == 1; }));
    EXPECT_TRUE(isAfter(Clock::now(), announced[0].when, 1000));
    waitForRestarts(h264_.input, 1);
    EXPECT_TRUE(isAfter(waitForRestarts(jpeg_.input, 1), announced[1].when, 1000));
    for (const Played& one : played_)
        EXPECT_TRUE(scene_.waitForQuarters(one.area, waiting)) << "the last picture stays";
    // Still nobody sends: the next time-out begins with the new pipeline.
    ASSERT_TRUE(waitForLines(restartIn1000, 3));
    EXPECT_TRUE(isAfter(output_.linesOf(timedOut)[2].when, announced[0].when, 2000));
    const auto toH264 = sendH264(h264_.source.port());
    const auto toJpeg = sendJpeg(jpeg_.source.port());
    const auto restarting = [&] {
        return h264_.input.isRestartPending() || jpeg_.input.isRestartPending();
    };
    EXPECT_TRUE(scene_.waitUntil([&] { return !restarting(); }));
    expectPictures();
    EXPECT_EQ(output_.count(timedOut), output_.count(restartIn1000));
    EXPECT_EQ(output_.lines().size(), 2 * (h264_.input.restarts() + jpeg_.input.restarts()));
}

TEST_F(LostSender, that_is_back_before_the_restart_is_restarted_all_the_same) {
    ASSERT_NO_FATAL_FAILURE(play());
    const PacketWatch packets[] = {PacketWatch(h264_.input), PacketWatch(jpeg_.input)};
    h264_.source.process().pause();
    jpeg_.source.process().pause();
    const auto lastPacket = std::min(packets[0].last(), packets[1].last());
    for (Played& one : played_) {
        EXPECT_TRUE(scene_.waitUntil([&] { return one.input.isRestartPending(); }));
        EXPECT_TRUE(scene_.waitUntil([&] { return one.input.shownWaitItem()->isVisible(); }));
        one.source.process().resume();
    }
    ASSERT_NO_FATAL_FAILURE(expectRestarts(lastPacket));
    for (const Played& one : played_)
        EXPECT_TRUE(
            isAfter(waitForRestarts(one.input, 1), output_.linesOf(restartIn1000)[0].when, 1000));
    expectPictures();
    expectNoLineFor(1.2);
    for (const Played& one : played_)
        EXPECT_EQ(one.input.restarts(), 1U);
}

TEST_F(LostSender, that_is_back_within_a_second_is_not_noticed) {
    ASSERT_NO_FATAL_FAILURE(play());
    const PacketWatch packets[] = {PacketWatch(h264_.input), PacketWatch(jpeg_.input)};
    for (Played& one : played_)
        one.source.process().pause();
    scene_.waitUntil(
        [&] { return Clock::now() - packets[1].last() > std::chrono::milliseconds(500); });
    for (Played& one : played_)
        one.source.process().resume();
    expectPictures();
    for (const PacketWatch& seen : packets)
        if (seen.longestGap() > std::chrono::milliseconds(950))
            GTEST_SKIP() << "this machine is too busy: the pause became longer than a second";
    expectNoLineFor(0.6);
    EXPECT_EQ(texts(), std::vector<std::string>());
    for (const Played& one : played_)
        EXPECT_EQ(one.input.failures(), 0);
}

TEST_F(LostSender, of_a_hidden_item_is_reported_and_not_restarted) {
    ASSERT_NO_FATAL_FAILURE(play());
    for (Played& one : played_) {
        one.item->setVisible(false);
        one.source.process().pause();
    }
    ASSERT_TRUE(waitForLines(timedOut, 2));
    expectNoLineFor(1.2);
    for (Played& one : played_) {
        one.item->setVisible(true);
        one.source.process().resume();
    }
    // The same pipelines go on.
    expectPictures();
    EXPECT_EQ(texts(), (std::vector<std::string>{timedOut, timedOut}));
    for (const Played& one : played_) {
        EXPECT_EQ(one.input.failures(), 0);
        EXPECT_EQ(one.input.restarts(), 0U);
    }
}

}  // namespace
