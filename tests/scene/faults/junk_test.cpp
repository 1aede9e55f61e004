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

    /// Nothing but warnings was printed.
    void expectOnlyWarnings() {
        for (const std::string& line : texts())
            EXPECT_EQ(line.rfind("GST Warning : ", 0), 0U) << line;
    }
};

TEST_F(Junk, is_no_reason_for_a_restart_as_long_as_it_comes_and_gives_way_to_a_picture) {
    WatchedInput& h264 = input("h264");
    WatchedInput& jpeg = input("jpeg");
    const int ports[] = {freeUdpPort(), freeUdpPort()};
    auto toH264 = sendJunk(ports[0]);
    auto toJpeg = sendJunk(ports[1]);
    start(h264, StreamUdpH264, ports[0], areas[0]);
    start(jpeg, StreamUdpJpeg, ports[1], areas[1]);
    scene_.runFor(2.5);
    expectOnlyWarnings();
    EXPECT_EQ(quartersOf(scene_.grab(), areas[1]), waiting);
    toH264->kill();
    toJpeg->kill();
    toH264 = sendH264(ports[0]);
    toJpeg = sendJpeg(ports[1]);
    for (const QRect& where : {areas[0], areas[1]}) {
        EXPECT_TRUE(scene_.waitForQuarters(where, upright));
        EXPECT_TRUE(scene_.waitForPictures(where));
    }
}

TEST_F(Junk, of_another_stream_type_shows_nothing_and_restarts_nothing) {
    WatchedInput& h264 = input("h264");
    WatchedInput& jpeg = input("jpeg");
    const int ports[] = {freeUdpPort(), freeUdpPort()};
    const auto toH264 = sendJpeg(ports[0]);
    const auto toJpeg = sendH264(ports[1]);
    start(h264, StreamUdpH264, ports[0], areas[0]);
    start(jpeg, StreamUdpJpeg, ports[1], areas[1]);
    scene_.runFor(2.5);
    expectOnlyWarnings();
    EXPECT_EQ(quartersOf(scene_.grab(), areas[0]), waiting);
    EXPECT_EQ(quartersOf(scene_.grab(), areas[1]), waiting);
}

TEST_F(Junk, into_a_picture_that_plays_leaves_it_playing_when_it_ends) {
    WatchedInput& h264 = input("h264");
    WatchedInput& jpeg = input("jpeg");
    const int ports[] = {freeUdpPort(), freeUdpPort()};
    const auto toH264 = sendH264(ports[0]);
    const auto toJpeg = sendJpeg(ports[1]);
    start(h264, StreamUdpH264, ports[0], areas[0]);
    start(jpeg, StreamUdpJpeg, ports[1], areas[1]);
    ASSERT_TRUE(scene_.waitForQuarters(areas[0], upright));
    ASSERT_TRUE(scene_.waitForQuarters(areas[1], upright));
    const auto junkToH264 = sendJunk(ports[0]);
    const auto junkToJpeg = sendJunk(ports[1]);
    scene_.runFor(1.5);
    junkToH264->kill();
    junkToJpeg->kill();
    EXPECT_TRUE(scene_.waitForQuarters(areas[0], upright));
    EXPECT_TRUE(scene_.waitForPictures(areas[0]));
    EXPECT_TRUE(scene_.waitForQuarters(areas[1], upright));
    EXPECT_TRUE(scene_.waitForPictures(areas[1]));
    EXPECT_EQ(output_.count(timedOut), 0);
}

TEST_F(Junk, flooding_one_input_keeps_no_other_from_being_restarted) {
    // The bus thread looks after the inputs by their names.
    WatchedInput& flooded = input("a");
    WatchedInput& failing = input("b");
    const int floodedPort = freeUdpPort();
    const int failingPort = freeUdpPort();
    const auto sender = sendJpeg(failingPort);
    const auto junk = sendJunk(floodedPort);
    start(flooded, StreamUdpJpeg, floodedPort, areas[0]);
    start(failing, StreamUdpJpeg, failingPort, areas[1]);
    ASSERT_TRUE(scene_.waitForQuarters(areas[1], upright));
    const auto failed = Clock::now();
    sender->pause();
    const bool inTime = waitForLines(restartIn1000, 1, 8);
    std::printf("noticed in time: %d\n", inTime);
    junk->pause();
    ASSERT_TRUE(waitForLines(restartIn1000));
    std::printf("after %d ms\n",
                int((output_.linesOf(restartIn1000)[0].when - failed).count() / 1000000));
    std::printf("warnings %d\n", int(texts().size()));
    junk->resume();
    sender->resume();
    EXPECT_NE(waitForRestarts(failing, 1), Clock::time_point());
    EXPECT_TRUE(scene_.waitForQuarters(areas[1], upright));
    EXPECT_TRUE(scene_.waitForPictures(areas[1]));
    EXPECT_EQ(flooded.restarts(), 0U);
}

}  // namespace
