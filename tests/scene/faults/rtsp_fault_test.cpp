// What RTSP servers do instead of sending pictures. To repair one, it is ended and a good one is
// started on its port.

#include "tests/scene/faults/fault_test.h"
#include "tests/scene/support/streams.h"

namespace {

using namespace ZR;
using namespace ZR::test;

bool startsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

class RtspFault : public FaultTest {
  protected:
    /// Places an input and starts it. All inputs are made before the first is started.
    Clock::time_point start(WatchedInput& input, const QRect& where, int port) {
        scene_.place(input, where);
        input.setStreamType(StreamRtsp);
        input.setRTSPURL(rtspUrl(port));
        const auto begin = Clock::now();
        input.start(0);
        input.handleQueuedCommands();
        return begin;
    }

    /// Every line is one of those that a failed RTSP stream is allowed, and an error has two.
    void expectOnlyFailureLines() {
        const std::vector<std::string> lines = texts();
        for (std::size_t i = 0; i < lines.size(); ++i) {
            const std::string& line = lines[i];
            if (startsWith(line, "GST Error : ")) {
                ASSERT_LT(i + 1, lines.size());
                EXPECT_TRUE(startsWith(lines[i + 1], "  Debugging information: ")) << lines[i + 1];
                continue;
            }
            // Debugging texts of GStreamer have several lines.
            const bool detail = i > 0 && !startsWith(line, "GST ") &&
                                !startsWith(line, "Trigger ") && !startsWith(line, "STREAM ");
            EXPECT_TRUE(detail || startsWith(line, "GST Warning : ") || line == restartIn1000 ||
                        line == restartIn10000 || line == endOfStream)
                << line;
        }
    }
};

TEST_F(RtspFault, a_killed_server_is_noticed_at_once_and_its_picture_is_back_with_it) {
    const int port = freeTcpPort();
    auto server = serveRtsp("good", port);
    WatchedInput& video = input();
    start(video, area, port);
    ASSERT_TRUE(scene_.waitForQuarters(area, upright));
    const auto killed = Clock::now();
    server->kill();
    ASSERT_TRUE(waitForLines(restartIn1000));
    const auto noticed = output_.linesOf(restartIn1000)[0].when;
    EXPECT_TRUE(isAfter(noticed, killed, 0));
    EXPECT_TRUE(scene_.waitForQuarters(area, waiting));
    EXPECT_TRUE(isAfter(waitForRestarts(video, 1), noticed, 1000));
    // Nobody listens: the restart fails, and the next follows a second later.
    ASSERT_TRUE(waitForLines(restartIn1000, 2));
    EXPECT_TRUE(isAfter(output_.linesOf(restartIn1000)[1].when, noticed, 1000));
    server = serveRtsp("good", port);
    EXPECT_TRUE(scene_.waitForQuarters(area, upright));
    EXPECT_TRUE(scene_.waitForPictures(area));
    expectOnlyFailureLines();

    // Another address counts from the next build on, and a failure brings one.
    const int otherPort = freeTcpPort();
    const auto otherServer = serveRtsp("good", otherPort);
    video.setRTSPURL(rtspUrl(otherPort));
    EXPECT_TRUE(scene_.waitForPictures(area));
    expectNoLineFor(0.5);
    const unsigned int restarts = video.restarts();
    server->kill();
    ASSERT_NE(waitForRestarts(video, restarts + 1), Clock::time_point());
    EXPECT_TRUE(scene_.waitForQuarters(area, upright));
    EXPECT_TRUE(scene_.waitForPictures(area));
    expectOnlyFailureLines();
    EXPECT_LT(video.restarts(), 10U);
}

struct Failing {
    const char* mode;
    int noticedAfter;  // ms
    QRect area;
    WatchedInput& input;
    int port = freeTcpPort();
    std::unique_ptr<ChildProcess> server = serveRtsp(mode, port);
    Clock::time_point started = {};
};

TEST_F(RtspFault, each_server_that_gives_no_picture_is_tried_again_until_it_does) {
    Failing failing[] = {{"refusing", 0, areas[0], input("a")},
                         {"tcp", 0, areas[1], input("b")},
                         {"silent", 1000, areas[2], input("c")}};
    Failing hanging = {"hanging", 5000, {410, 250, 380, 220}, input("d")};
    WatchedInput& hidden = input("nobody looks");
    hanging.started = start(hanging.input, hanging.area, hanging.port);
    start(hidden, {0, 0, 0, 0}, hanging.port);
    hidden.parent()->setVisible(false);
    for (Failing& one : failing) {
        one.started = start(one.input, one.area, one.port);
        ASSERT_TRUE(scene_.waitUntil([&] { return one.input.failures() > 0; })) << one.mode;
        EXPECT_TRUE(isAfter(Clock::now(), one.started, one.noticedAfter)) << one.mode;
    }
    for (const Failing& one : failing) {
        EXPECT_TRUE(
            isAfter(waitForRestarts(one.input, 2), one.started, 2000 + 2 * one.noticedAfter))
            << one.mode;
        EXPECT_EQ(quartersOf(scene_.grab(), one.area), waiting) << one.mode;
    }

    ASSERT_TRUE(waitForLines(restartIn10000));
    const auto noticed = output_.linesOf(restartIn10000)[0].when;
    EXPECT_TRUE(isAfter(noticed, hanging.started, hanging.noticedAfter));
    EXPECT_EQ(quartersOf(scene_.grab(), hanging.area), waiting);
    for (Failing& one : failing) {
        one.server->kill();
        one.server = serveRtsp("good", one.port);
    }
    for (const Failing& one : failing) {
        EXPECT_TRUE(scene_.waitForQuarters(one.area, upright)) << one.mode;
        EXPECT_TRUE(scene_.waitForPictures(one.area)) << one.mode;
    }
    expectOnlyFailureLines();
    // On a busy machine the fourth may have been restarted meanwhile; sooner it may not.
    const unsigned int restartsOfHanging = hanging.input.restarts();
    if (restartsOfHanging == 0)
        EXPECT_EQ(output_.count(restartIn10000), 1);
    else
        EXPECT_GE(Clock::now() - noticed, std::chrono::seconds(10));
    EXPECT_EQ(hidden.failures(), 0);
    hanging.server->kill();
    hanging.server = serveRtsp("good", hanging.port);
    const auto restarted = waitForRestarts(hanging.input, restartsOfHanging + 1, 40);
    EXPECT_GE(restarted - noticed, std::chrono::seconds(10));
    EXPECT_TRUE(scene_.waitForQuarters(hanging.area, upright));
    EXPECT_TRUE(scene_.waitForPictures(hanging.area));
}

}  // namespace
