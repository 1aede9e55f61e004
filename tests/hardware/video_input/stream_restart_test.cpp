#include <chrono>

#include "tests/hardware/video_input/video_service.h"

// Restarts on the Qt thread.

namespace ZR::test {
namespace {

using Signals = std::vector<std::string>;

class StreamRestart : public PlacedVideoTest {
  protected:
    StreamRestart() { input_.setStreamType(StreamUdpH264); }

    /// What one restart prints.
    std::string restarting() {
        const OutputCapture capture;
        input_.restartStream();
        return capture.output();
    }

    SignalLog signals_{input_};
};

constexpr char gaveUpAfter10[] =
    "Video: Gave up after 10 automatic restarts. Please restart video manually...\n";

TEST_F(StreamRestart, two_errorDetected_emissions_in_quick_succession_schedule_one_restart) {
    const OutputCapture capture;
    Q_EMIT input_.errorDetected(1000);
    Q_EMIT input_.errorDetected(2000);
    EXPECT_EQ(capture.output(), "") << "queued";
    deliverSignals();
    EXPECT_EQ(capture.output(), "Trigger stream restart in 1000 milliseconds.\n");
    EXPECT_TRUE(input_.restartPending);
}

TEST_F(StreamRestart, triggerTimedRestart_schedules_one_too) {
    const OutputCapture capture;
    Q_EMIT input_.triggerTimedRestart(100);
    EXPECT_EQ(capture.output(), "");
    deliverSignals();
    EXPECT_EQ(capture.output(), "Trigger stream restart in 100 milliseconds.\n");
}

TEST_F(StreamRestart, that_is_scheduled_shows_the_wait_item_by_a_queued_signal) {
    wait_->setVisible(false);
    const OutputCapture quiet;
    input_.timedRestartStream(100000);
    EXPECT_EQ(signals_.take(), Signals{"showVideoItem 0"});
    EXPECT_TRUE(video_->isVisible());
    deliverSignals();
    EXPECT_FALSE(video_->isVisible());
    EXPECT_TRUE(wait_->isVisible());
}

TEST_F(StreamRestart, that_is_pending_drops_later_requests_whole) {
    input_.restartPending = true;
    const OutputCapture capture;
    input_.timedRestartStream(1);
    EXPECT_EQ(capture.output(), "");
    EXPECT_EQ(signals_.take(), Signals{});
}

TEST_F(StreamRestart, comes_after_its_time_and_queues_a_start) {
    using Clock = std::chrono::steady_clock;
    const OutputCapture quiet;
    const auto begin = Clock::now();
    input_.timedRestartStream(200);
    EXPECT_TRUE(waitFor([this] { return !input_.restartPending; }));
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(200));
    EXPECT_EQ(input_.restartCount, 1U);
    EXPECT_NE(input_.pipeline, nullptr);
    EXPECT_EQ(input_.commandQueue, std::list<int>{0});
    input_.handleQueuedCommands();
    EXPECT_TRUE(input_.isPlaying());
}

TEST_F(StreamRestart, rebuilds_the_pipeline_and_sets_it_to_null) {
    (void)input_.startSlot();
    input_.udpPort = 6000;
    (void)takeCalls();
    GstCallSubstitute::isLogging = true;
    input_.restartPending = true;
    EXPECT_EQ(restarting(), "");
    EXPECT_EQ(
        takeCallsOf({"set_state", "get_state", "udpsrc port"}),
        (Calls{"set_state NULL", "get_state 10000000", "udpsrc port=6000", "set_state NULL"}));
    EXPECT_EQ(input_.commandQueue, std::list<int>{0});
    EXPECT_EQ(input_.restartCount, 1U);
    EXPECT_FALSE(input_.restartPending);
    EXPECT_EQ(GST_STATE(input_.pipeline), GST_STATE_NULL);
}

TEST_F(StreamRestart, ten_are_made_and_the_eleventh_automatic_restart_is_refused) {
    for (unsigned int count = 1; count <= 10; ++count) {
        EXPECT_EQ(restarting(), "");
        EXPECT_EQ(input_.restartCount, count);
        EXPECT_NE(input_.pipeline, nullptr);
    }
    const GstElement* const last = input_.pipeline;
    input_.commandQueue.clear();
    input_.restartPending = true;
    EXPECT_EQ(restarting(), gaveUpAfter10);
    EXPECT_EQ(input_.restartCount, 10U);
    EXPECT_EQ(input_.pipeline, last);
    EXPECT_TRUE(input_.commandQueue.empty());
    EXPECT_FALSE(input_.restartPending);
}

TEST_F(StreamRestart, prints_the_count_that_it_gave_up_after) {
    input_.restartCount = 4000000000U;
    EXPECT_EQ(restarting(),
              "Video: Gave up after 4000000000 automatic restarts. Please restart video "
              "manually...\n");
}

TEST_F(StreamRestart, that_was_given_up_is_scheduled_and_refused_again) {
    input_.restartCount = 10;
    const OutputCapture capture;
    input_.timedRestartStream(0);
    EXPECT_TRUE(waitFor([this] { return !input_.restartPending; }));
    EXPECT_EQ(capture.output(),
              std::string("Trigger stream restart in 0 milliseconds.\n") + gaveUpAfter10);
}

TEST_F(StreamRestart, with_the_parent_item_hidden_clears_restartPending_and_does_nothing_else) {
    (void)input_.startSlot();
    const GstElement* const built = input_.pipeline;
    parent_->setVisible(false);
    input_.restartPending = true;
    (void)signals_.take();
    EXPECT_EQ(restarting(), "");
    EXPECT_FALSE(input_.restartPending);
    EXPECT_EQ(input_.pipeline, built);
    EXPECT_TRUE(input_.isPlaying());
    EXPECT_EQ(input_.restartCount, 0U);
    EXPECT_TRUE(input_.commandQueue.empty());
    EXPECT_EQ(signals_.take(), Signals{});
}

TEST_F(StreamRestart, without_one_of_the_items_does_nothing) {
    (void)input_.startSlot();
    const auto expectLeft = [this](const char* what) {
        const GstElement* const built = input_.pipeline;
        input_.restartPending = true;
        EXPECT_EQ(restarting(), "");
        EXPECT_EQ(input_.pipeline, built) << what;
        EXPECT_EQ(input_.restartCount, 0U) << what;
        EXPECT_FALSE(input_.restartPending) << what;
    };
    input_.parentItem = nullptr;
    expectLeft("no parent");
    input_.parentItem = parent_.get();
    input_.videoItem = nullptr;
    expectLeft("no video item");
    input_.videoItem = video_.get();
    video_->setParentItem(nullptr);
    expectLeft("a video item without a parent");
}

TEST_F(StreamRestart, that_builds_no_pipeline_counts_nothing_and_queues_nothing) {
    input_.setStreamType(StreamNone);
    input_.restartPending = true;
    EXPECT_EQ(restarting(), "UNKNOWN STREAM TYPE OPTION: 4\n");
    EXPECT_EQ(input_.restartCount, 0U);
    EXPECT_TRUE(input_.commandQueue.empty());
    EXPECT_FALSE(input_.restartPending);
    EXPECT_TRUE(input_.isInitialized());
}

TEST_F(StreamRestart, goes_through_the_virtual_init) {
    struct Refusing : TestInput {
        int init() override { return 0; }
    } refusing;
    refusing.setStreamType(StreamUdpH264);
    refusing.videoItem = video_.get();
    refusing.parentItem = parent_.get();
    refusing.restartStream();
    EXPECT_EQ(refusing.pipeline, nullptr);
    EXPECT_EQ(refusing.restartCount, 0U);
}

TEST_F(StreamRestart, count_is_cleared_by_nothing_but_a_change_and_the_items) {
    const OutputCapture quiet;
    const auto keeps = [this](const char* what, auto operation) {
        input_.restartCount = 5;
        operation();
        EXPECT_EQ(input_.restartCount, 5U) << what;
    };
    const auto clears = [this](const char* what, auto operation) {
        input_.restartCount = 5;
        operation();
        EXPECT_EQ(input_.restartCount, 0U) << what;
    };
    keeps("start", [this] { (void)input_.startSlot(); });
    keeps("stop", [this] { input_.stopSlot(); });
    keeps("reset", [this] { input_.reset(); });
    keeps("init", [this] { (void)input_.init(); });
    keeps("queued commands", [this] {
        input_.start(0);
        input_.handleQueuedCommands();
        input_.stop(0);
        input_.handleQueuedCommands();
    });
    keeps("setCurrentInterface", [this] { input_.setCurrentInterface(6000); });
    keeps("recovered stream",
          [this] { input_.handleBusMessage(gst_message_new_stream_start(nullptr)); });
    keeps("schedule", [this] { input_.timedRestartStream(100000); });
    clears("the change carried out", [this] { input_.handleQueuedCommands(); });
    clears("the same item placed", [this] { input_.setVideoItem(parent_.get(), 0); });
    clears("no item placed", [this] { input_.setVideoItem(nullptr, 0); });
    clears("items removed", [this] { input_.removeVideoItem(); });
}

TEST_F(StreamRestart, that_is_pending_undoes_a_later_stop) {
    (void)input_.startSlot();
    const OutputCapture quiet;
    input_.timedRestartStream(0);
    input_.stop(0);
    input_.handleQueuedCommands();
    EXPECT_TRUE(waitFor([this] { return !input_.restartPending; }));
    input_.handleQueuedCommands();
    EXPECT_TRUE(input_.isPlaying());
}

TEST_F(StreamRestart, follows_a_changed_port_of_a_playing_input_by_100_ms) {
    (void)input_.startSlot();
    const OutputCapture capture;
    input_.setCurrentInterface(6000);
    input_.handleQueuedCommands();
    EXPECT_TRUE(waitFor([this] { return input_.restartCount == 1; }));
    EXPECT_EQ(capture.output(), "Trigger stream restart in 100 milliseconds.\n");
    input_.handleQueuedCommands();
    EXPECT_TRUE(input_.isPlaying());
    EXPECT_EQ(RecordingElements::valueOf(input_.videoSource, "port"), "6000");
}

TEST_F(StreamRestart, that_is_pending_when_its_input_goes_is_never_made) {
    const OutputCapture quiet;
    input_.timedRestartStream(0);
    made_.reset();
    deliverSignals();
    QCoreApplication::processEvents();
    EXPECT_EQ(RecordingElements::alive(), 0);
    made_ = std::make_unique<TestInput>();
}

}  // namespace
}  // namespace ZR::test
