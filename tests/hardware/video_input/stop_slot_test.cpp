#include "tests/hardware/video_input/video_service.h"

// Ending a stream, and taking another input into use.

namespace ZR::test {
namespace {

class StopSlot : public PlacedVideoTest {
  protected:
    StopSlot() { input_.setStreamType(StreamUdpH264); }

    void play() {
        (void)input_.startSlot();
        video_->setVisible(true);
        wait_->setVisible(false);
        GstCallSubstitute::isLogging = true;
        (void)takeCalls();
    }
};

TEST_F(StopSlot, on_an_input_without_a_pipeline_does_nothing) {
    wait_->setVisible(false);
    input_.rtspStartTick = 5;
    GstCallSubstitute::isLogging = true;
    input_.stopSlot();
    EXPECT_EQ(takeCalls(), Calls{});
    EXPECT_EQ(input_.rtspStartTick, 5U);
    EXPECT_TRUE(video_->isVisible());
    EXPECT_FALSE(wait_->isVisible());
}

TEST_F(StopSlot, on_a_pipeline_already_in_null_does_nothing_not_even_hiding_the_video_item) {
    ASSERT_EQ(input_.init(), 0);
    wait_->setVisible(false);
    input_.rtspStartTick = 5;
    (void)takeCalls();
    GstCallSubstitute::isLogging = true;
    input_.stopSlot();
    EXPECT_EQ(takeCalls(), Calls{"get_state 100000000"});
    EXPECT_EQ(input_.rtspStartTick, 5U);
    EXPECT_TRUE(video_->isVisible());
    EXPECT_FALSE(wait_->isVisible());
}

TEST_F(StopSlot, sets_the_pipeline_to_null_keeps_it_and_shows_the_wait_item) {
    play();
    GstElement* const built = input_.pipeline;
    input_.rtspStartTick = 5;
    input_.streaming = true;
    input_.restartCount = 3;
    input_.stopSlot();
    EXPECT_EQ(takeCalls(), (Calls{"get_state 100000000", "set_state NULL", "get_state 10000000"}));
    EXPECT_EQ(input_.pipeline, built);
    EXPECT_EQ(GST_STATE(built), GST_STATE_NULL);
    EXPECT_EQ(input_.rtspStartTick, 0U);
    EXPECT_TRUE(input_.isInitialized());
    EXPECT_FALSE(video_->isVisible());
    EXPECT_TRUE(wait_->isVisible());
    EXPECT_TRUE(input_.streaming) << "outlives a stop";
    EXPECT_EQ(input_.restartCount, 3U);
}

TEST_F(StopSlot, asks_ten_times_for_a_pipeline_that_does_not_stop) {
    play();
    GstCallSubstitute::leavesStates = true;
    input_.stopSlot();
    Calls expected(10, "get_state 10000000");
    expected.insert(expected.begin(), {"get_state 100000000", "set_state NULL"});
    EXPECT_EQ(takeCalls(), expected);
    EXPECT_FALSE(video_->isVisible());
    EXPECT_TRUE(wait_->isVisible());
    GstCallSubstitute::leavesStates = false;
}

TEST_F(StopSlot, stops_asking_once_the_pipeline_has_stopped) {
    play();
    GstCallSubstitute::states = {GST_STATE_PLAYING, GST_STATE_PAUSED, GST_STATE_READY,
                                 GST_STATE_NULL};
    input_.stopSlot();
    EXPECT_EQ(takeCalls(), (Calls{"get_state 100000000", "set_state NULL", "get_state 10000000",
                                  "get_state 10000000", "get_state 10000000"}));
}

TEST_F(StopSlot, that_could_not_stop_it_leaves_the_pipeline_as_it_is) {
    play();
    GstCallSubstitute::leavesStates = true;
    input_.stopSlot();
    GstCallSubstitute::leavesStates = false;
    EXPECT_TRUE(input_.isPlaying());
    EXPECT_TRUE(input_.isInitialized());
}

class ChangeInterfaceSlot : public PlacedVideoTest {
  protected:
    ChangeInterfaceSlot() {
        input_.setStreamType(StreamUdpH264);
        // Nobody may ask them; whoever does is logged.
        Devices::devices[-1] = Devices::devices[0] = {};
        Input::fileDescriptors[0] = Input::fileDescriptors[2] = 10;
        Input::fileDescriptors[1] = 11;
    }

    /// What the slot asks of kernel and GStreamer.
    Calls changing() {
        (void)takeCalls();
        GstCallSubstitute::isLogging = true;
        input_.changeInterfaceSlot();
        GstCallSubstitute::isLogging = false;
        return takeCalls();
    }

    SignalLog signals_{input_};
};

TEST_F(ChangeInterfaceSlot, on_a_stopped_input_resets_it) {
    (void)input_.startSlot();
    input_.stopSlot();
    (void)signals_.take();
    EXPECT_EQ(changing(), (Calls{"get_state 1000000000", "set_state NULL", "get_state 10000000"}));
    EXPECT_EQ(input_.pipeline, nullptr);
    EXPECT_FALSE(input_.isInitialized());
    EXPECT_EQ(signals_.take(), std::vector<std::string>{});
}

TEST_F(ChangeInterfaceSlot, on_a_playing_one_only_emits_triggerTimedRestart_100) {
    (void)input_.startSlot();
    GstElement* const built = input_.pipeline;
    EXPECT_EQ(changing(), Calls{"get_state 1000000000"});
    EXPECT_EQ(input_.pipeline, built);
    EXPECT_TRUE(input_.isPlaying());
    EXPECT_TRUE(input_.isInitialized());
    EXPECT_EQ(signals_.take(), std::vector<std::string>{"triggerTimedRestart 100"});
    EXPECT_FALSE(input_.restartPending) << "queued";
}

TEST_F(ChangeInterfaceSlot, on_an_input_without_a_pipeline_clears_the_built_flag) {
    input_.initialized = true;
    EXPECT_EQ(changing(), Calls{});
    EXPECT_FALSE(input_.isInitialized());
}

TEST_F(ChangeInterfaceSlot, on_a_paused_one_resets_it) {
    ASSERT_EQ(input_.init(), 0);
    GstCallSubstitute::states = {GST_STATE_PAUSED};
    (void)changing();
    EXPECT_EQ(input_.pipeline, nullptr);
    EXPECT_EQ(signals_.take(), std::vector<std::string>{});
}

TEST_F(ChangeInterfaceSlot, clears_the_count_of_restarts) {
    input_.restartCount = 9;
    (void)changing();
    EXPECT_EQ(input_.restartCount, 0U);
}

TEST_F(ChangeInterfaceSlot, selects_the_camera_on_its_capture_node) {
    input_.setStreamType(StreamCamera);
    const OutputCapture capture;
    const char* const wanted[] = {"VIDIOC_S_CTRL 10 9968066 0", "VIDIOC_S_CTRL 11 9968066 1",
                                  "VIDIOC_S_CTRL 10 9968066 2"};
    for (const int camera : {1, 2, 3}) {
        input_.currentInput = camera;
        EXPECT_EQ(changing(), Calls{wanted[camera - 1]});
    }
    EXPECT_EQ(capture.output(), "");
}

TEST_F(ChangeInterfaceSlot, asks_for_the_state_before_it_selects_the_camera) {
    input_.setStreamType(StreamCamera);
    input_.currentInput = 2;
    const OutputCapture quiet;
    ASSERT_EQ(input_.init(), 0);
    GstCallSubstitute::states = {GST_STATE_PLAYING};
    EXPECT_EQ(changing(), (Calls{"get_state 1000000000", "VIDIOC_S_CTRL 11 9968066 1"}));
    EXPECT_EQ(signals_.take(), std::vector<std::string>{"triggerTimedRestart 100"});
}

TEST_F(ChangeInterfaceSlot, ignores_what_the_driver_answers) {
    input_.setStreamType(StreamCamera);
    input_.currentInput = 1;
    const OutputCapture capture;
    for (const int error : {EINVAL, EBUSY, EINTR}) {
        Devices::fail("VIDIOC_S_CTRL", error);
        EXPECT_EQ(changing(), Calls{"VIDIOC_S_CTRL 10 9968066 0"}) << "asked again";
    }
    EXPECT_EQ(capture.output(), "");
}

TEST_F(ChangeInterfaceSlot, selects_nothing_for_a_network_stream) {
    input_.currentInput = 1;
    for (const int type : {0, 1, 2, 4}) {
        input_.setStreamType(type);
        EXPECT_EQ(changing(), Calls{});
    }
}

TEST_F(ChangeInterfaceSlot, reports_a_capture_node_that_is_not_open) {
    TestInput input("rear camera");
    input.setStreamType(StreamCamera);
    for (const int descriptor : {-1, 0}) {
        Input::fileDescriptors[1] = descriptor;
        input.currentInput = 2;
        const OutputCapture capture;
        errno = ENODEV;
        input.changeInterfaceSlot();
        EXPECT_EQ(capture.output(), "ERROR OPENING VIDEO DEVICE rear camera: No such device\n");
        EXPECT_EQ(takeCalls(), Calls{});
    }
}

TEST_F(ChangeInterfaceSlot, reports_a_number_without_a_camera_as_not_open) {
    input_.setStreamType(StreamCamera);
    for (const int number : {0, 4, -1, 2147483647, -2147483647 - 1}) {
        input_.currentInput = number;
        const OutputCapture capture;
        errno = EIO;
        EXPECT_EQ(changing(), Calls{}) << number;
        EXPECT_EQ(capture.output(), "ERROR OPENING VIDEO DEVICE input: Input/output error\n");
    }
}

TEST_F(ChangeInterfaceSlot, that_reports_still_restarts_what_plays) {
    (void)input_.startSlot();
    input_.setStreamType(StreamCamera);
    input_.currentInput = 4;
    const OutputCapture quiet;
    (void)changing();
    EXPECT_EQ(signals_.take(), std::vector<std::string>{"triggerTimedRestart 100"});
}

class Reset : public PlacedVideoTest {
  protected:
    Reset() { input_.setStreamType(StreamUdpH264); }
};

TEST_F(Reset, drops_the_pipeline_and_forgets_its_elements) {
    input_.setStreamType(StreamCamera);
    const OutputCapture quiet;
    (void)input_.startSlot();
    input_.reset();
    for (GstElement* const member : {input_.pipeline, input_.videoSink, input_.glUpload,
                                     input_.glColorConvert, input_.videoSource, input_.capsFilter})
        EXPECT_EQ(member, nullptr);
    EXPECT_FALSE(input_.isInitialized());
    EXPECT_EQ(RecordingElements::alive(), 0);
}

TEST_F(Reset, sets_null_and_asks_once_for_a_pipeline_that_stops_at_once) {
    (void)input_.startSlot();
    (void)takeCalls();
    GstCallSubstitute::isLogging = true;
    input_.reset();
    EXPECT_EQ(takeCalls(), (Calls{"set_state NULL", "get_state 10000000"}));
}

TEST_F(Reset, without_a_pipeline_clears_the_built_flag_alone) {
    input_.initialized = true;
    GstCallSubstitute::isLogging = true;
    input_.reset();
    EXPECT_FALSE(input_.isInitialized());
    EXPECT_EQ(takeCalls(), Calls{});
}

TEST_F(Reset, tries_a_hundred_times_and_destroys_the_pipeline_anyway) {
    ASSERT_EQ(input_.init(), 0);
    (void)takeCalls();
    GstCallSubstitute::isLogging = true;
    GstCallSubstitute::insteadOfSleep = [] {};
    GstCallSubstitute::states.assign(200, GST_STATE_PAUSED);
    input_.reset();
    Calls expected{"set_state NULL", "get_state 10000000"};
    for (int i = 0; i < 100; ++i)
        expected.insert(expected.end(), {"usleep 10000", "set_state NULL", "get_state 10000000"});
    EXPECT_EQ(takeCalls(), expected);
    EXPECT_EQ(input_.pipeline, nullptr);
    EXPECT_EQ(RecordingElements::alive(), 0);
}

TEST_F(Reset, stops_trying_once_the_pipeline_has_stopped) {
    ASSERT_EQ(input_.init(), 0);
    (void)takeCalls();
    GstCallSubstitute::isLogging = true;
    GstCallSubstitute::states = {GST_STATE_PLAYING, GST_STATE_NULL};
    input_.reset();
    EXPECT_EQ(takeCalls(), (Calls{"set_state NULL", "get_state 10000000", "usleep 10000",
                                  "set_state NULL", "get_state 10000000"}));
}

TEST_F(Reset, leaves_counters_settings_and_queue_alone) {
    (void)input_.startSlot();
    input_.restartCount = 4;
    input_.streaming = true;
    input_.rtspStartTick = 9;
    input_.start(0);
    input_.reset();
    EXPECT_EQ(input_.restartCount, 4U);
    EXPECT_TRUE(input_.streaming);
    EXPECT_EQ(input_.rtspStartTick, 9U);
    EXPECT_EQ(input_.commandQueue, std::list<int>{0});
}

TEST_F(Reset, of_the_destructor_ends_the_stream) {
    (void)input_.startSlot();
    EXPECT_GT(RecordingElements::alive(), 0);
    made_.reset();
    EXPECT_EQ(RecordingElements::alive(), 0);
    made_ = std::make_unique<TestInput>();
}

TEST_F(Reset, leaves_no_element_behind_after_many_builds) {
    for (int i = 0; i < 200; ++i) {
        (void)input_.startSlot();
        input_.reset();
    }
    EXPECT_EQ(RecordingElements::alive(), 0);
}

}  // namespace
}  // namespace ZR::test
