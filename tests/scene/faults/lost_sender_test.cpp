// The sender of a UDP stream goes, for good or for a while.

#include "tests/scene/faults/fault_test.h"
#include "tests/scene/faults/packet_watch.h"
#include "tests/scene/support/stream_source.h"
#include "tests/scene/support/streams.h"

namespace {

using namespace ZR;
using namespace ZR::test;

class LostSender : public FaultTest, public testing::WithParamInterface<ZRVideoStreamType> {
  protected:
    void play() {
        item_ = scene_.place(input_, area);
        source_.chooseFor(input_);
        input_.start(0);
        ASSERT_TRUE(scene_.waitForQuarters(area, upright));
    }

    /// One time-out, and the restart that it leads to.
    void expectFirstRestart(Clock::time_point lastPacket) {
        ASSERT_TRUE(waitForLines(restartIn1000));
        ASSERT_EQ(texts(), (std::vector<std::string>{timedOut, restartIn1000}));
        EXPECT_TRUE(isAfter(output_.lines()[0].when, lastPacket, 1000));
        EXPECT_TRUE(isAfter(output_.lines()[1].when, output_.lines()[0].when, 0));
    }

    StreamSource source_{GetParam()};
    WatchedInput& input_ = input();
    QQuickItem* item_ = nullptr;
};

INSTANTIATE_TEST_SUITE_P(Stream, LostSender, testing::Values(StreamUdpH264, StreamUdpJpeg),
                         streamName);

TEST_P(LostSender, is_noticed_after_a_second_and_the_picture_is_back_with_a_new_sender) {
    ASSERT_NO_FATAL_FAILURE(play());
    const PacketWatch packets(input_);
    source_.process().kill();
    ASSERT_NO_FATAL_FAILURE(expectFirstRestart(packets.last()));
    EXPECT_TRUE(scene_.waitForQuarters(area, waiting)) << "the last picture stays";
    const auto restarted = waitForRestarts(input_, 1);
    EXPECT_TRUE(isAfter(restarted, output_.lines()[1].when, 1000));
    // Still nobody sends: the next time-out begins with the new pipeline.
    ASSERT_TRUE(waitForLines(restartIn1000, 2));
    EXPECT_TRUE(isAfter(output_.linesOf(timedOut)[1].when, output_.lines()[1].when, 2000));
    const auto sender =
        GetParam() == StreamUdpH264 ? sendH264(source_.port()) : sendJpeg(source_.port());
    EXPECT_TRUE(scene_.waitForQuarters(area, upright));
    ASSERT_NE(waitForRestarts(input_, 2), Clock::time_point());
    EXPECT_TRUE(scene_.waitForQuarters(area, upright));
    EXPECT_TRUE(scene_.waitForPictures(area));
    EXPECT_EQ(output_.count(timedOut), output_.count(restartIn1000));
    EXPECT_EQ(static_cast<unsigned int>(output_.count(restartIn1000)), input_.restarts());
}

TEST_P(LostSender, that_is_back_before_the_restart_is_shown_and_restarted_all_the_same) {
    ASSERT_NO_FATAL_FAILURE(play());
    const PacketWatch packets(input_);
    source_.process().pause();
    ASSERT_NO_FATAL_FAILURE(expectFirstRestart(packets.last()));
    EXPECT_TRUE(scene_.waitUntil([&] { return input_.shownWaitItem()->isVisible(); }));
    source_.process().resume();
    const auto restarted = waitForRestarts(input_, 1);
    EXPECT_TRUE(isAfter(restarted, output_.lines()[1].when, 1000));
    EXPECT_TRUE(scene_.waitForQuarters(area, upright));
    EXPECT_TRUE(scene_.waitForPictures(area));
    expectNoLineFor(1.5);
    EXPECT_EQ(input_.restarts(), 1U);
}

TEST_P(LostSender, that_is_back_within_a_second_is_not_noticed) {
    ASSERT_NO_FATAL_FAILURE(play());
    const PacketWatch packets(input_);
    source_.process().pause();
    const auto lastPacket = packets.last();
    scene_.waitUntil([&] { return Clock::now() - lastPacket > std::chrono::milliseconds(500); });
    source_.process().resume();
    EXPECT_TRUE(scene_.waitForPictures(area));
    if (packets.longestGap() > std::chrono::milliseconds(950))
        GTEST_SKIP() << "this machine is too busy: the pause became longer than a second";
    expectNoLineFor(1);
    EXPECT_EQ(texts(), std::vector<std::string>());
    EXPECT_EQ(input_.failures(), 0);
    EXPECT_EQ(quartersOf(scene_.grab(), area), upright);
}

TEST_P(LostSender, of_a_hidden_item_is_reported_and_not_restarted) {
    ASSERT_NO_FATAL_FAILURE(play());
    item_->setVisible(false);
    source_.process().pause();
    ASSERT_TRUE(waitForLines(timedOut));
    expectNoLineFor(1.5);
    item_->setVisible(true);
    source_.process().resume();
    EXPECT_TRUE(scene_.waitForPictures(area)) << "the same pipeline goes on";
    EXPECT_EQ(texts(), (std::vector<std::string>{timedOut}));
    EXPECT_EQ(input_.failures(), 0);
    EXPECT_EQ(input_.restarts(), 0U);
}

}  // namespace
