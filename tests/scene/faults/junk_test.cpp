// Packets that are no stream, or not the expected one.

#include "tests/scene/faults/fault_test.h"
#include "tests/scene/support/streams.h"

namespace {

using namespace ZR;
using namespace ZR::test;

class Junk : public FaultTest {
  protected:
    void start(WatchedInput& input, ZRVideoStreamType type, int port, const QRect& where) {
        scene_.place(input, where);
        input.setStreamType(type);
        input.setCurrentInterface(port);
        input.start(0);
    }

    /// Junk gives warnings, and an error where it looks like a stream; the stream is restarted then.
    void expectOnlyWarningsAndErrors() {
        EXPECT_EQ(output_.count(timedOut), 0);
        EXPECT_EQ(output_.count(gaveUp), 0);
        int errors = 0;
        for (const std::string& line : texts())
            errors += line.rfind("GST Error : ", 0) == 0 ? 1 : 0;
        EXPECT_LE(output_.count(restartIn1000), errors);
    }

    void expectPictures() {
        for (const QRect& where : {areas[0], areas[1]}) {
            EXPECT_TRUE(scene_.waitForQuarters(where, upright));
            EXPECT_TRUE(scene_.waitForPictures(where));
        }
    }

    WatchedInput& first_ = input("a");
    WatchedInput& second_ = input("b");
    const int ports_[2] = {freeUdpPort(), freeUdpPort()};
};

TEST_F(Junk, is_no_time_out_and_gives_way_to_pictures_before_them_and_among_them) {
    auto junkToH264 = sendJunk(ports_[0]);
    auto junkToJpeg = sendJunk(ports_[1]);
    start(first_, StreamUdpH264, ports_[0], areas[0]);
    start(second_, StreamUdpJpeg, ports_[1], areas[1]);
    scene_.runFor(2);
    expectOnlyWarningsAndErrors();
    EXPECT_EQ(second_.restarts(), 0U);
    EXPECT_EQ(quartersOf(scene_.grab(), areas[0]), waiting);
    EXPECT_EQ(quartersOf(scene_.grab(), areas[1]), waiting);
    const auto toH264 = sendH264(ports_[0]);
    const auto toJpeg = sendJpeg(ports_[1]);
    junkToH264->kill();
    junkToJpeg->kill();
    expectPictures();
    junkToH264 = sendJunk(ports_[0]);
    junkToJpeg = sendJunk(ports_[1]);
    scene_.runFor(1);
    junkToH264->kill();
    junkToJpeg->kill();
    expectPictures();
    expectOnlyWarningsAndErrors();
}

TEST_F(Junk, of_another_stream_type_shows_nothing_and_restarts_nothing) {
    const auto toH264 = sendJpeg(ports_[0]);
    const auto toJpeg = sendH264(ports_[1]);
    start(first_, StreamUdpH264, ports_[0], areas[0]);
    start(second_, StreamUdpJpeg, ports_[1], areas[1]);
    scene_.runFor(2.2);
    for (const std::string& line : texts())
        EXPECT_EQ(line.rfind("GST Warning : ", 0), 0U) << line;
    EXPECT_EQ(quartersOf(scene_.grab(), areas[0]), waiting);
    EXPECT_EQ(quartersOf(scene_.grab(), areas[1]), waiting);
}

TEST_F(Junk, flooding_one_input_loses_no_failure_of_another) {
    const auto sender = sendJpeg(ports_[1]);
    start(second_, StreamUdpJpeg, ports_[1], areas[1]);
    ASSERT_TRUE(scene_.waitForQuarters(areas[1], upright));
    const auto junk = sendJunk(ports_[0]);
    start(first_, StreamUdpJpeg, ports_[0], areas[0]);
    scene_.runFor(0.5);
    const auto paused = Clock::now();
    sender->pause();
    // One bus is read until it is empty: the other's failure may have to wait for that.
    scene_.runFor(2);
    junk->pause();
    ASSERT_TRUE(scene_.waitUntil([&] { return second_.isRestartPending(); }));
    junk->resume();
    sender->resume();
    EXPECT_TRUE(scene_.waitUntil([&] { return second_.failures() == 1; }));
    EXPECT_GE(output_.linesOf(timedOut)[0].when - paused, std::chrono::milliseconds(900));
    EXPECT_NE(waitForRestarts(second_, 1), Clock::time_point());
    junk->pause();
    EXPECT_TRUE(scene_.waitForQuarters(areas[1], upright));
    EXPECT_TRUE(scene_.waitForPictures(areas[1]));
}

}  // namespace
