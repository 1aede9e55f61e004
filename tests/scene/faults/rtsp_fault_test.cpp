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
                        line == endOfStream)
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
    EXPECT_LT(video.restarts(), 10U);
}

TEST_F(RtspFault, each_server_that_gives_no_picture_is_tried_again_until_it_does) {
    struct Failing {
        const char* mode;
        int noticedAfter;  // ms
        WatchedInput& input;
        int port;
        std::unique_ptr<ChildProcess> server;
        Clock::time_point started;
    };
    Failing failing[] = {{"refusing", 0, input("a"), freeTcpPort(), nullptr, {}},
                         {"tcp", 0, input("b"), freeTcpPort(), nullptr, {}},
                         {"silent", 1000, input("c"), freeTcpPort(), nullptr, {}}};
    for (Failing& one : failing)
        one.server = serveRtsp(one.mode, one.port);
    for (int i = 0; i < 3; ++i) {
        Failing& one = failing[i];
        one.started = start(one.input, areas[i], one.port);
        ASSERT_TRUE(scene_.waitUntil([&] { return one.input.failures() > 0; })) << one.mode;
        EXPECT_TRUE(isAfter(Clock::now(), one.started, one.noticedAfter));
    }
    for (Failing& one : failing) {
        EXPECT_TRUE(
            isAfter(waitForRestarts(one.input, 2), one.started, 2000 + 2 * one.noticedAfter));
        EXPECT_EQ(quartersOf(scene_.grab(), areas[&one - failing]), waiting) << one.mode;
    }
    expectOnlyFailureLines();
    for (Failing& one : failing) {
        one.server->kill();
        one.server = serveRtsp("good", one.port);
    }
    for (const QRect& where : areas) {
        EXPECT_TRUE(scene_.waitForQuarters(where, upright));
        EXPECT_TRUE(scene_.waitForPictures(where));
    }
}

TEST_F(RtspFault, a_server_that_hangs_is_given_5_seconds_and_tried_again_10_seconds_later) {
    const int port = freeTcpPort();
    auto server = serveRtsp("hanging", port);
    WatchedInput& video = input("video");
    WatchedInput& hidden = input("without anybody who looks");
    scene_.place(hidden, areas[0])->setVisible(false);
    hidden.setStreamType(StreamRtsp);
    hidden.setRTSPURL(rtspUrl(port));
    const auto started = start(video, areas[1], port);
    hidden.start(0);
    ASSERT_TRUE(waitForLines(restartIn10000));
    const auto noticed = output_.lines()[0].when;
    EXPECT_TRUE(isAfter(noticed, started, 5000));
    EXPECT_EQ(quartersOf(scene_.grab(), areas[1]), waiting);
    expectNoLineFor(8);
    EXPECT_EQ(texts(), std::vector<std::string>{restartIn10000});
    EXPECT_EQ(video.restarts(), 0U);
    EXPECT_EQ(hidden.failures(), 0);
    server->kill();
    server = serveRtsp("good", port);
    EXPECT_TRUE(isAfter(waitForRestarts(video, 1), noticed, 10000));
    EXPECT_TRUE(scene_.waitForQuarters(areas[1], upright));
    EXPECT_TRUE(scene_.waitForPictures(areas[1]));
    EXPECT_EQ(hidden.restarts(), 0U);
}

TEST_F(RtspFault, another_address_counts_from_the_next_build_on) {
    const int port = freeTcpPort();
    const int otherPort = freeTcpPort();
    const auto server = serveRtsp("good", port);
    const auto otherServer = serveRtsp("good", otherPort);
    WatchedInput& video = input();
    start(video, area, port);
    ASSERT_TRUE(scene_.waitForQuarters(area, upright));
    video.setRTSPURL(rtspUrl(otherPort));
    EXPECT_TRUE(scene_.waitForPictures(area));
    expectNoLineFor(1);
    server->kill();
    ASSERT_TRUE(waitForLines(restartIn1000));
    EXPECT_NE(waitForRestarts(video, 1), Clock::time_point());
    EXPECT_TRUE(scene_.waitForQuarters(area, upright));
    EXPECT_TRUE(scene_.waitForPictures(area));
    expectOnlyFailureLines();
}

}  // namespace
