#include "common/zrapi_os_abs/zr_tick.h"
#include "tests/hardware/video_input/video_service.h"

namespace ZR::test {
namespace {

/// An input that notes which of its virtual operations are called.
struct NotingInput : TestInput {
    static void note(const std::string& text) {
        CaptureCallLog::add([&] { return text; });
    }
    static std::string numbers(const char* operation, unsigned short input, int first) {
        return std::string(operation) + ' ' + std::to_string(input) + ' ' + std::to_string(first);
    }

    int init() override {
        note("init");
        return TestInput::init();
    }
    int setPosition(unsigned short input, int x, int y) override {
        note(numbers("setPosition", input, x) + ' ' + std::to_string(y));
        return TestInput::setPosition(input, x, y);
    }
    int setSize(unsigned short input, int newWidth, int newHeight) override {
        note(numbers("setSize", input, newWidth) + ' ' + std::to_string(newHeight));
        return TestInput::setSize(input, newWidth, newHeight);
    }
    int setMirror(unsigned short input, ZRVideoMirrorSetting setting) override {
        note(numbers("setMirror", input, static_cast<int>(setting)));
        return TestInput::setMirror(input, setting);
    }
    int setRotation(unsigned short input, ZRRotation rotation) override {
        note(numbers("setRotation", input, rotation.degrees));
        return TestInput::setRotation(input, rotation);
    }
    int setBrightness(unsigned short input, int value) override {
        note(numbers("setBrightness", input, value));
        return TestInput::setBrightness(input, value);
    }
    int setContrast(unsigned short input, int value) override {
        note(numbers("setContrast", input, value));
        return TestInput::setContrast(input, value);
    }
    int setHue(unsigned short input, int value) override {
        note(numbers("setHue", input, value));
        return TestInput::setHue(input, value);
    }
    int setSaturation(unsigned short input, int value) override {
        note(numbers("setSaturation", input, value));
        return TestInput::setSaturation(input, value);
    }
};

class StartSlot : public PlacedVideoTest {
  protected:
    StartSlot() { input_.setStreamType(StreamUdpH264); }

    /// What a start does, from the end of the build on.
    Calls starting() {
        (void)takeCalls();
        GstCallSubstitute::isLogging = true;
        input_.startSlot();
        GstCallSubstitute::isLogging = false;
        return takeCalls();
    }
};

TEST_F(StartSlot, builds_sets_the_pipeline_to_playing_and_returns_false) {
    EXPECT_FALSE(input_.startSlot());
    EXPECT_TRUE(input_.isInitialized());
    EXPECT_TRUE(input_.isPlaying());
    EXPECT_TRUE(input_.isRunning(0));
}

TEST_F(StartSlot, returns_true_when_it_plays_already) {
    (void)input_.startSlot();
    GstElement* const built = input_.pipeline;
    GstCallSubstitute::isLogging = true;
    (void)takeCalls();
    EXPECT_TRUE(input_.startSlot());
    EXPECT_EQ(takeCalls(), Calls{"get_state 100000000"});
    EXPECT_EQ(input_.pipeline, built);
}

TEST_F(StartSlot, returns_true_when_no_pipeline_could_be_built) {
    input_.setStreamType(StreamNone);
    const OutputCapture quiet;
    EXPECT_TRUE(input_.startSlot());
    EXPECT_TRUE(input_.isInitialized());
}

TEST_F(StartSlot, plays_a_stopped_pipeline_again_without_rebuilding_it) {
    (void)input_.startSlot();
    GstElement* const built = input_.pipeline;
    input_.stopSlot();
    EXPECT_FALSE(input_.startSlot());
    EXPECT_EQ(input_.pipeline, built);
    EXPECT_TRUE(input_.isPlaying());
}

TEST_F(StartSlot, asks_for_the_state_for_100_ms_and_does_not_wait_for_playing) {
    EXPECT_EQ(takeCallsOf({"get_state"}), Calls{});
    (void)starting();
    input_.stopSlot();
    EXPECT_EQ(starting(), (Calls{"get_state 100000000", "set_state PLAYING"}));
}

TEST_F(StartSlot, sets_every_state_but_playing_to_playing) {
    ASSERT_EQ(input_.init(), 0);
    for (const GstState state :
         {GST_STATE_VOID_PENDING, GST_STATE_NULL, GST_STATE_READY, GST_STATE_PAUSED}) {
        GstCallSubstitute::states = {state};
        EXPECT_EQ(starting(), (Calls{"get_state 100000000", "set_state PLAYING"})) << state;
    }
}

TEST_F(StartSlot, applies_what_is_stored_through_the_virtual_operations_in_their_order) {
    NotingInput noting;
    noting.setStreamType(StreamCamera);
    noting.currentInput = 2;
    noting.videoItem = video_.get();
    noting.parentItem = parent_.get();
    VideoSetting& stored = noting.videoSettings[2];
    stored.mirror = static_cast<ZRVideoMirrorSetting>(3);
    stored.rotation.degrees = -90;
    stored.brightness = 11;
    stored.contrast = 12;
    stored.hue = 13;
    stored.saturation = 14;
    noting.xPosition = 5;
    noting.yPosition = 6;
    const OutputCapture quiet;
    noting.initialized = true;
    GstCallSubstitute::isLogging = true;
    EXPECT_TRUE(noting.startSlot());
    EXPECT_EQ(takeCalls(), (Calls{"init", "setPosition 2 5 6", "setSize 2 200 100", "setMirror 2 3",
                                  "setRotation 2 270", "setSize 2 800 480", "setMirror 2 3",
                                  "setBrightness 2 11", "setContrast 2 12", "setHue 2 13",
                                  "setSaturation 2 14"}));
}

TEST_F(StartSlot, applies_the_geometry_before_it_plays_and_the_picture_values_after) {
    NotingInput noting;
    noting.setStreamType(StreamUdpH264);
    noting.currentInput = 4;
    GstCallSubstitute::isLogging = true;
    (void)takeCalls();
    EXPECT_FALSE(noting.startSlot());
    const Calls calls = takeCallsOf({"init", "set", "get_state"});
    EXPECT_EQ(calls, (Calls{"init", "setPosition 4 0 0", "setSize 4 200 100", "setRotation 4 0",
                            "get_state 100000000", "set_state PLAYING", "setBrightness 4 0",
                            "setContrast 4 127", "setHue 4 0", "setSaturation 4 127"}));
}

TEST_F(StartSlot, makes_the_record_of_its_input_with_the_defaults) {
    input_.currentInput = 4;
    (void)input_.startSlot();
    ASSERT_EQ(input_.videoSettings.count(4), 1U);
    EXPECT_EQ(input_.videoSettings[4].contrast, 127);
}

TEST_F(StartSlot, gives_the_sink_an_item_that_it_has_not_and_shows_both_items) {
    ASSERT_EQ(input_.init(), 0);
    g_object_set(input_.videoSink, "widget", nullptr, "sync", TRUE, nullptr);
    video_->setVisible(false);
    wait_->setVisible(false);
    EXPECT_EQ(starting(), (Calls{"get_state 100000000", "qmlglsink widget=videoItem",
                                 "qmlglsink sync=false", "set_state PLAYING"}));
    EXPECT_TRUE(video_->isVisible());
    EXPECT_TRUE(wait_->isVisible());
}

TEST_F(StartSlot, leaves_the_items_as_they_are_when_the_sink_has_the_item) {
    ASSERT_EQ(input_.init(), 0);
    video_->setVisible(false);
    wait_->setVisible(false);
    EXPECT_EQ(starting(), (Calls{"get_state 100000000", "set_state PLAYING"}));
    EXPECT_FALSE(video_->isVisible());
    EXPECT_FALSE(wait_->isVisible());
}

TEST_F(StartSlot, gives_a_playing_sink_no_item) {
    ASSERT_EQ(input_.init(), 0);
    g_object_set(input_.videoSink, "widget", nullptr, nullptr);
    GstCallSubstitute::states = {GST_STATE_PLAYING};
    EXPECT_EQ(starting(), Calls{"get_state 100000000"});
}

TEST_F(StartSlot, without_an_item_leaves_the_sink_alone) {
    ASSERT_EQ(input_.init(), 0);
    input_.videoItem = nullptr;
    EXPECT_EQ(starting(), (Calls{"get_state 100000000", "set_state PLAYING"}));
}

TEST_F(StartSlot, without_a_wait_item_shows_the_video_item) {
    ASSERT_EQ(input_.init(), 0);
    g_object_set(input_.videoSink, "widget", nullptr, nullptr);
    input_.waitItem = nullptr;
    video_->setVisible(false);
    EXPECT_FALSE(input_.startSlot());
    EXPECT_TRUE(video_->isVisible());
}

TEST_F(StartSlot, of_rtsp_notes_the_tick) {
    input_.setStreamType(StreamRtsp);
    input_.setRTSPURL("rtsp://host");
    const auto before = static_cast<std::uint32_t>(ZRTick::getTickCount());
    (void)input_.startSlot();
    EXPECT_GE(input_.rtspStartTick, before);
    EXPECT_LE(input_.rtspStartTick, static_cast<std::uint32_t>(ZRTick::getTickCount()));
}

TEST_F(StartSlot, of_any_other_stream_clears_the_tick) {
    for (const int type : {StreamUdpH264, StreamUdpJpeg, StreamCamera}) {
        const OutputCapture quiet;
        input_.setStreamType(type);
        input_.rtspStartTick = 5;
        EXPECT_FALSE(input_.startSlot());
        EXPECT_EQ(input_.rtspStartTick, 0U) << type;
        input_.reset();
    }
}

TEST_F(StartSlot, that_starts_nothing_leaves_the_tick) {
    input_.setStreamType(StreamRtsp);
    ASSERT_EQ(input_.init(), 0);
    GstCallSubstitute::states = {GST_STATE_PLAYING};
    input_.rtspStartTick = 5;
    EXPECT_TRUE(input_.startSlot());
    EXPECT_EQ(input_.rtspStartTick, 5U);
}

TEST_F(StartSlot, leaves_the_count_of_restarts_and_the_flow_of_data_alone) {
    input_.restartCount = 7;
    input_.streaming = true;
    (void)input_.startSlot();
    EXPECT_EQ(input_.restartCount, 7U);
    EXPECT_TRUE(input_.streaming);
}

TEST_F(StartSlot, returns_false_also_when_playing_is_refused) {
    RecordingElements::answer("udpsrc", GST_STATE_CHANGE_READY_TO_PAUSED, GST_STATE_CHANGE_FAILURE);
    EXPECT_FALSE(input_.startSlot());
    EXPECT_FALSE(input_.isPlaying());
    EXPECT_NE(input_.pipeline, nullptr);
}

TEST_F(StartSlot, does_not_wait_for_a_stream_that_takes_its_time) {
    RecordingElements::answer("qmlglsink", GST_STATE_CHANGE_READY_TO_PAUSED,
                              GST_STATE_CHANGE_ASYNC);
    EXPECT_EQ(starting().back(), "set_state PLAYING");
    EXPECT_FALSE(input_.isPlaying());
}

}  // namespace
}  // namespace ZR::test
