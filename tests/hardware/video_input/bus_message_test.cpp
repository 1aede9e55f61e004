#include "tests/hardware/video_input/video_service.h"

// What an input makes of messages, made by hand: real elements never show some of them alone.

namespace ZR::test {
namespace {

using Signals = std::vector<std::string>;

GstMessage* elementMessage(const char* name) {
    return gst_message_new_element(nullptr, gst_structure_new_empty(name));
}

GstMessage* errorMessage(const char* text, const char* debug) {
    GError* const error = g_error_new_literal(GST_RESOURCE_ERROR, 7, text);
    GstMessage* const message = gst_message_new_error(nullptr, error, debug);
    g_error_free(error);
    return message;
}

GstMessage* warningMessage(int code, const char* text) {
    GError* const warning = g_error_new_literal(GST_STREAM_ERROR, code, text);
    GstMessage* const message = gst_message_new_warning(nullptr, warning, "not printed");
    g_error_free(warning);
    return message;
}

GstMessage* udpTimeout() {
    return elementMessage("GstUDPSrcTimeout");
}

GstMessage* sourceDescription() {
    return elementMessage("application/x-rtp-source-sdes");
}

class BusMessage : public PlacedVideoTest {
  protected:
    /// What the input prints about a message, which it must let go of.
    std::string handling(GstMessage* message) {
        gst_message_ref(message);
        const OutputCapture capture;
        input_.handleBusMessage(message);
        EXPECT_EQ(GST_MINI_OBJECT_REFCOUNT_VALUE(message), 1) << "still held";
        gst_message_unref(message);
        return capture.output();
    }

    void hideAll() {
        parent_->setVisible(false);
        wait_->setVisible(false);
    }

    /// The input's pipeline, in a state that GStreamer tells.
    void havePipelineIn(GstState state) {
        input_.pipeline = GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr)));
        GstCallSubstitute::states = {state};
    }

    SignalLog signals_{input_};
};

TEST_F(BusMessage, null_is_ignored) {
    input_.streaming = true;
    const OutputCapture capture;
    input_.handleBusMessage(nullptr);
    EXPECT_EQ(capture.output() + capture.errors(), "");
    EXPECT_EQ(signals_.take(), Signals{});
    EXPECT_TRUE(input_.streaming);
}

TEST_F(BusMessage, an_end_of_a_flowing_stream_asks_for_a_restart) {
    input_.streaming = true;
    input_.rtspStartTick = 5;
    EXPECT_EQ(handling(gst_message_new_eos(nullptr)), "STREAM TIMEOUT (EOS)!\n");
    EXPECT_FALSE(input_.streaming);
    EXPECT_EQ(input_.rtspStartTick, 5U);
    EXPECT_EQ(signals_.take(), Signals{"errorDetected 1000"});
    EXPECT_TRUE(input_.commandQueue.empty());
}

TEST_F(BusMessage, an_end_of_stream_before_any_data_causes_no_restart_and_no_line) {
    EXPECT_EQ(handling(gst_message_new_eos(nullptr)), "");
    EXPECT_EQ(signals_.take(), Signals{});
}

TEST_F(BusMessage, a_second_end_waits_for_data_again) {
    input_.streaming = true;
    (void)handling(gst_message_new_eos(nullptr));
    (void)signals_.take();
    EXPECT_EQ(handling(gst_message_new_eos(nullptr)), "");
    EXPECT_EQ(handling(udpTimeout()), "");
    EXPECT_EQ(signals_.take(), Signals{});
    (void)handling(gst_message_new_stream_start(nullptr));
    (void)handling(udpTimeout());
    EXPECT_EQ(signals_.take(), Signals{"errorDetected 1000"});
}

TEST_F(BusMessage, an_end_while_nothing_is_on_screen_is_printed_only) {
    hideAll();
    input_.streaming = true;
    EXPECT_EQ(handling(gst_message_new_eos(nullptr)), "STREAM TIMEOUT (EOS)!\n");
    EXPECT_FALSE(input_.streaming);
    EXPECT_EQ(signals_.take(), Signals{});
}

TEST_F(BusMessage, either_item_on_screen_is_enough_and_a_missing_one_is_not_there) {
    const auto restarts = [this](QQuickItem* parent, QQuickItem* wait) {
        input_.parentItem = parent;
        input_.waitItem = wait;
        input_.streaming = true;
        (void)handling(gst_message_new_eos(nullptr));
        return !signals_.take().empty();
    };
    QQuickItem hidden;
    hidden.setVisible(false);
    QQuickItem shown;
    EXPECT_FALSE(restarts(nullptr, nullptr));
    EXPECT_FALSE(restarts(&hidden, nullptr));
    EXPECT_FALSE(restarts(nullptr, &hidden));
    EXPECT_FALSE(restarts(&hidden, &hidden));
    EXPECT_TRUE(restarts(&shown, nullptr));
    EXPECT_TRUE(restarts(nullptr, &shown));
    EXPECT_TRUE(restarts(&shown, &hidden));
    EXPECT_TRUE(restarts(&hidden, &shown));
}

TEST_F(BusMessage, an_error_is_printed_queues_a_stop_and_asks_for_a_restart) {
    input_.start(0);
    EXPECT_EQ(handling(errorMessage("Could not open resource", "gstv4l2.c(12): device gone")),
              "GST Error : Could not open resource\n"
              "  Debugging information: gstv4l2.c(12): device gone\n");
    EXPECT_EQ(input_.commandQueue, std::list<int>{1});
    EXPECT_EQ(signals_.take(), Signals{"errorDetected 1000"});
}

TEST_F(BusMessage, an_error_without_debug_text_says_none) {
    EXPECT_EQ(handling(errorMessage("Gone", nullptr)),
              "GST Error : Gone\n  Debugging information: none\n");
}

TEST_F(BusMessage, an_error_leaves_the_flow_of_data_and_the_tick_alone) {
    for (const bool flowing : {false, true}) {
        input_.streaming = flowing;
        input_.rtspStartTick = 5;
        (void)handling(errorMessage("Gone", nullptr));
        EXPECT_EQ(input_.streaming, flowing);
        EXPECT_EQ(input_.rtspStartTick, 5U);
        EXPECT_EQ(signals_.take(), Signals{"errorDetected 1000"});
    }
}

TEST_F(BusMessage, an_error_while_nothing_is_on_screen_still_queues_a_stop) {
    hideAll();
    EXPECT_NE(handling(errorMessage("Gone", nullptr)), "");
    EXPECT_EQ(input_.commandQueue, std::list<int>{1});
    EXPECT_EQ(signals_.take(), Signals{});
}

TEST_F(BusMessage, a_warning_is_printed_with_its_code) {
    input_.streaming = true;
    EXPECT_EQ(handling(warningMessage(7, "No decoder")), "GST Warning : No decoder (7)\n");
    EXPECT_EQ(handling(warningMessage(-3, "")), "GST Warning :  (-3)\n");
    EXPECT_TRUE(input_.streaming);
    EXPECT_EQ(signals_.take(), Signals{});
    EXPECT_TRUE(input_.commandQueue.empty());
}

TEST_F(BusMessage, a_warning_with_code_13_prints_nothing) {
    EXPECT_EQ(handling(warningMessage(13, "Each packet")), "");
    EXPECT_EQ(handling(warningMessage(12, "a")) + handling(warningMessage(14, "b")),
              "GST Warning : a (12)\nGST Warning : b (14)\n");
    EXPECT_EQ(signals_.take(), Signals{});
}

TEST_F(BusMessage, a_udp_time_out_of_a_flowing_stream_asks_for_a_restart) {
    input_.streaming = true;
    EXPECT_EQ(handling(udpTimeout()), "STREAM TIMED OUT!\n");
    EXPECT_FALSE(input_.streaming);
    EXPECT_EQ(signals_.take(), Signals{"errorDetected 1000"});
    EXPECT_TRUE(input_.commandQueue.empty());
}

TEST_F(BusMessage, a_udp_time_out_of_a_sender_that_never_started_does_nothing) {
    EXPECT_EQ(handling(udpTimeout()), "");
    EXPECT_EQ(signals_.take(), Signals{});
}

TEST_F(BusMessage, a_udp_time_out_while_a_stop_waits_asks_for_no_restart) {
    input_.streaming = true;
    input_.stop(0);
    EXPECT_EQ(handling(udpTimeout()), "STREAM TIMED OUT!\n");
    EXPECT_FALSE(input_.streaming);
    EXPECT_EQ(signals_.take(), Signals{});
}

TEST_F(BusMessage, an_end_while_a_stop_waits_asks_for_a_restart_all_the_same) {
    input_.streaming = true;
    input_.stop(0);
    (void)handling(gst_message_new_eos(nullptr));
    EXPECT_EQ(signals_.take(), Signals{"errorDetected 1000"});
}

TEST_F(BusMessage, a_udp_time_out_while_nothing_is_on_screen_is_printed_only) {
    hideAll();
    input_.streaming = true;
    EXPECT_EQ(handling(udpTimeout()), "STREAM TIMED OUT!\n");
    EXPECT_EQ(signals_.take(), Signals{});
}

TEST_F(BusMessage, a_source_description_says_that_data_flows_once) {
    input_.rtspStartTick = 5;
    EXPECT_EQ(handling(sourceDescription()),
              "application/x-rtp-source-sdes => should be running\n");
    EXPECT_TRUE(input_.streaming);
    EXPECT_EQ(input_.rtspStartTick, 0U);
    input_.rtspStartTick = 6;
    EXPECT_EQ(handling(sourceDescription()), "");
    EXPECT_EQ(input_.rtspStartTick, 0U) << "cleared in both cases";
    EXPECT_EQ(signals_.take(), Signals{});
}

TEST_F(BusMessage, any_other_element_message_does_nothing) {
    input_.rtspStartTick = 5;
    for (const char* const name : {"GstMultiSink", "GstUDPSrcTimeouts", "application"})
        EXPECT_EQ(handling(elementMessage(name)), "");
    EXPECT_FALSE(input_.streaming);
    input_.streaming = true;
    EXPECT_EQ(handling(elementMessage("GstMultiSink")), "");
    EXPECT_TRUE(input_.streaming);
    EXPECT_EQ(input_.rtspStartTick, 5U);
    EXPECT_EQ(signals_.take(), Signals{});
}

TEST_F(BusMessage, an_element_message_without_a_structure_does_nothing) {
    EXPECT_EQ(handling(gst_message_new_custom(GST_MESSAGE_ELEMENT, nullptr, nullptr)), "");
    EXPECT_EQ(signals_.take(), Signals{});
}

TEST_F(BusMessage, a_completion_of_a_paused_or_playing_stream_shows_the_video) {
    for (const GstState state : {GST_STATE_PAUSED, GST_STATE_PLAYING}) {
        input_.streaming = false;
        input_.rtspStartTick = 5;
        havePipelineIn(state);
        EXPECT_EQ(handling(gst_message_new_async_done(nullptr, 0)), "");
        EXPECT_TRUE(input_.streaming);
        EXPECT_EQ(input_.rtspStartTick, 0U);
        EXPECT_EQ(signals_.take(), Signals{"showVideoItem 1"});
        input_.reset();
    }
}

TEST_F(BusMessage, a_completion_asks_for_the_state_for_10_ms) {
    havePipelineIn(GST_STATE_PLAYING);
    GstCallSubstitute::isLogging = true;
    (void)handling(gst_message_new_async_done(nullptr, 0));
    EXPECT_EQ(takeCalls(), Calls{"get_state 10000000"});
}

TEST_F(BusMessage, a_completion_in_any_other_state_is_printed_with_its_number) {
    for (const GstState state : {GST_STATE_VOID_PENDING, GST_STATE_NULL, GST_STATE_READY}) {
        input_.streaming = false;
        havePipelineIn(state);
        EXPECT_EQ(handling(gst_message_new_async_done(nullptr, 0)),
                  "ASYNC DONE BUT NOT PLAYING: " + std::to_string(state) + "\n");
        EXPECT_TRUE(input_.streaming);
        input_.reset();
    }
    EXPECT_EQ(signals_.take(), Signals{});
}

TEST_F(BusMessage, a_completion_without_a_pipeline_counts_as_null) {
    EXPECT_EQ(handling(gst_message_new_async_done(nullptr, 0)), "ASYNC DONE BUT NOT PLAYING: 1\n");
}

TEST_F(BusMessage, a_completion_of_a_flowing_stream_leaves_the_tick) {
    input_.streaming = true;
    input_.rtspStartTick = 5;
    havePipelineIn(GST_STATE_PLAYING);
    EXPECT_EQ(handling(gst_message_new_async_done(nullptr, 0)), "");
    EXPECT_EQ(input_.rtspStartTick, 5U);
    EXPECT_EQ(signals_.take(), Signals{"showVideoItem 1"});
}

TEST_F(BusMessage, a_quality_message_says_that_data_flows_and_leaves_the_tick) {
    input_.rtspStartTick = 5;
    EXPECT_EQ(handling(gst_message_new_qos(nullptr, TRUE, 0, 0, 0, 0)), "");
    EXPECT_TRUE(input_.streaming);
    EXPECT_EQ(input_.rtspStartTick, 5U);
    EXPECT_EQ(signals_.take(), Signals{});
}

TEST_F(BusMessage, a_start_of_a_stream_says_that_data_flows_and_clears_the_tick) {
    input_.rtspStartTick = 5;
    EXPECT_EQ(handling(gst_message_new_stream_start(nullptr)), "");
    EXPECT_TRUE(input_.streaming);
    EXPECT_EQ(input_.rtspStartTick, 0U);
    input_.rtspStartTick = 6;
    EXPECT_EQ(handling(gst_message_new_stream_start(nullptr)), "");
    EXPECT_EQ(input_.rtspStartTick, 6U);
    EXPECT_EQ(signals_.take(), Signals{});
}

TEST_F(BusMessage, any_other_type_is_named) {
    EXPECT_EQ(handling(gst_message_new_latency(nullptr)), "Received message:\n\tlatency\n");
    EXPECT_EQ(handling(gst_message_new_state_changed(nullptr, GST_STATE_NULL, GST_STATE_READY,
                                                     GST_STATE_PLAYING)),
              "Received message:\n\tstate-changed\n");
    EXPECT_EQ(handling(gst_message_new_buffering(nullptr, 50)), "Received message:\n\tbuffering\n");
    EXPECT_EQ(signals_.take(), Signals{});
}

}  // namespace
}  // namespace ZR::test
