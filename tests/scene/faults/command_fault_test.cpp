// Commands at the wrong time: while a restart is pending, in great numbers, at the end.

#include <cstdlib>
#include <thread>

#include "tests/scene/faults/fault_test.h"
#include "tests/scene/support/stream_source.h"
#include "tests/scene/support/streams.h"

namespace {

using namespace ZR;
using namespace ZR::test;

class CommandFault : public FaultTest {
  protected:
    void play() {
        scene_.place(input_, area);
        source_.chooseFor(input_);
        input_.start(0);
        ASSERT_TRUE(scene_.waitForQuarters(area, upright));
    }

    void stopNow() {
        input_.stop(0);
        input_.handleQueuedCommands();
    }

    StreamSource source_{StreamUdpJpeg};
    WatchedInput& input_ = input();
};

TEST_F(CommandFault, a_stop_while_a_restart_is_pending_is_undone_by_the_restart) {
    ASSERT_NO_FATAL_FAILURE(play());
    source_.process().pause();
    ASSERT_TRUE(waitForLines(restartIn1000));
    ASSERT_TRUE(input_.isRestartPending());
    stopNow();
    EXPECT_FALSE(input_.isRunning(0));
    source_.process().resume();
    EXPECT_TRUE(isAfter(waitForRestarts(input_, 1), output_.lines()[1].when, 1000));
    EXPECT_TRUE(scene_.waitForQuarters(area, upright));
    EXPECT_TRUE(scene_.waitForPictures(area));
    EXPECT_EQ(texts(), (std::vector<std::string>{timedOut, restartIn1000}));
}

TEST_F(CommandFault, a_stop_that_waits_keeps_a_time_out_from_restarting) {
    ASSERT_NO_FATAL_FAILURE(play());
    source_.process().pause();
    // Nobody drains the queue until the time-out was reported.
    input_.stop(0);
    const auto deadline = Clock::now() + std::chrono::seconds(20);
    while (output_.count(timedOut) == 0 && Clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(output_.count(timedOut), 1);
    expectNoLineFor(1.5);
    EXPECT_EQ(quartersOf(scene_.grab(), area), waiting);
    EXPECT_EQ(input_.failures(), 0);
    EXPECT_FALSE(input_.isRunning(0));
}

TEST_F(CommandFault, storms_of_starts_and_stops_end_as_their_last_command_says) {
    scene_.place(input_, area);
    source_.chooseFor(input_);
    for (int i = 0; i < 40; ++i) {
        input_.start(0);
        if (i % 3 != 0)
            input_.handleQueuedCommands();
        if (i % 4 == 0)
            scene_.runFor(0.02);
        input_.stop(0);
        if (i % 5 == 0)
            input_.start(0);
        input_.handleQueuedCommands();
    }
    input_.stop(0);
    EXPECT_TRUE(scene_.waitUntil([&] { return !input_.isRunning(0); }));
    scene_.runFor(0.3);
    EXPECT_EQ(input_.getPipeline() != nullptr && input_.isRunning(0), false);
    input_.start(0);
    EXPECT_TRUE(scene_.waitForQuarters(area, upright));
    EXPECT_TRUE(scene_.waitForPictures(area));
    stopNow();
    EXPECT_TRUE(scene_.waitForQuarters(area, waiting));
    // A first picture may have come when the next stop was already carried out.
    for (const std::string& line : texts())
        EXPECT_EQ(line.rfind("ASYNC DONE BUT NOT PLAYING: ", 0), 0U) << line;
}

/// Of a child that did not come as far as it should.
constexpr int tooEarly = 3;

void playOrExit(VideoScene& scene, const StreamSource& source) {
    ZRGstreamerVideoInput& input = scene.input();
    scene.place(input, {100, 60, 600, 360});
    source.chooseFor(input);
    input.start(0);
    if (!scene.waitForQuarters({100, 60, 600, 360}, upright))
        std::_Exit(tooEarly);
}

/// @param runOn  seconds that the application runs on after the service has ended
[[noreturn]] void leaveWithRestartPending(double runOn) {
    {
        TimedOutput output;
        VideoScene scene;
        StreamSource source(StreamUdpJpeg);
        playOrExit(scene, source);
        source.process().kill();
        if (!scene.waitUntil([&] { return output.count(restartIn1000) == 1; }))
            std::_Exit(tooEarly);
        scene.stopInputs();
        scene.quit();
        scene.runFor(runOn);
    }
    std::exit(0);
}

[[noreturn]] void leaveWhileServerHangs() {
    {
        VideoScene scene;
        const int port = freeTcpPort();
        const auto server = serveRtsp("hanging", port);
        ZRGstreamerVideoInput& input = scene.input();
        scene.place(input, {100, 60, 600, 360});
        input.setStreamType(StreamRtsp);
        input.setRTSPURL(rtspUrl(port));
        input.start(0);
        scene.runFor(0.5);
        scene.stopInputs();
        scene.quit();
    }
    std::exit(0);
}

TEST(LeavingInTrouble, with_a_restart_pending_ends_with_status_0) {
    EXPECT_EXIT(leaveWithRestartPending(0), testing::ExitedWithCode(0), "");
}

TEST(LeavingInTrouble, with_a_restart_that_comes_due_after_the_end_ends_with_status_0) {
    EXPECT_EXIT(leaveWithRestartPending(1.1), testing::ExitedWithCode(0), "");
}

TEST(LeavingInTrouble, while_an_rtsp_server_hangs_ends_with_status_0) {
    EXPECT_EXIT(leaveWhileServerHangs(), testing::ExitedWithCode(0), "");
}

}  // namespace
