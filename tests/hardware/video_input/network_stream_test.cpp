#include <algorithm>

#include "tests/hardware/video_input/video_service.h"

// Streams that are described by a launch text.

namespace ZR::test {
namespace {

class NetworkStream : public PlacedVideoTest {
  protected:
    /// Builds a stream of this type; the calls that it took.
    Calls building(int type) {
        input_.setStreamType(type);
        (void)takeCalls();
        EXPECT_EQ(input_.init(), 0);
        EXPECT_TRUE(input_.isInitialized());
        return takeCalls();
    }

    /// The factories of a built stream from its source to its sink.
    std::string chain() const {
        std::string text;
        GstElement* element = input_.videoSource;
        while (element != nullptr) {
            text += GST_OBJECT_NAME(gst_element_get_factory(element));
            GstPad* const pad = gst_element_get_static_pad(element, "src");
            GstPad* const peer = pad != nullptr ? gst_pad_get_peer(pad) : nullptr;
            element = peer != nullptr ? GST_PAD_PARENT(peer) : nullptr;
            for (GstPad* const each : {pad, peer})
                if (each != nullptr)
                    gst_object_unref(each);
            text += element != nullptr ? " " : "";
        }
        return text;
    }

    void expectNothingKept() const {
        EXPECT_EQ(input_.pipeline, nullptr);
        EXPECT_EQ(input_.videoSink, nullptr);
        EXPECT_EQ(input_.videoSource, nullptr);
    }
};

const Calls sinkCalls{"qmlglsink sync=false", "qmlglsink widget=videoItem", "qmlglsink sync=false",
                      "qmlglsink force-aspect-ratio=false"};

/// @p calls, and then those on the sink.
Calls withSink(Calls calls) {
    calls.insert(calls.end(), sinkCalls.begin(), sinkCalls.end());
    return calls;
}

TEST_F(NetworkStream, of_h264_over_udp_is_built_from_its_text) {
    const std::string caps =
        "udpsrc caps=application/x-rtp, media=(string)video, clock-rate=(int)90000, "
        "encoding-name=(string)H264, payload=(int)96";
    EXPECT_EQ(building(StreamUdpH264),
              withSink({"udpsrc timeout=1000000000", "udpsrc buffer-size=2097152",
                        "udpsrc port=5004", caps, "rtpjitterbuffer do-lost=true"}));
    EXPECT_EQ(chain(),
              "udpsrc rtpjitterbuffer rtph264depay h264parse v4l2h264dec glupload glcolorconvert "
              "qmlglsink");
}

TEST_F(NetworkStream, of_jpeg_over_udp_is_built_from_its_text) {
    EXPECT_EQ(
        building(StreamUdpJpeg),
        withSink({"udpsrc timeout=1000000000", "udpsrc buffer-size=2097152", "udpsrc port=5004",
                  "udpsrc caps=application/x-rtp, media=(string)video, clock-rate=(int)90000, "
                  "encoding-name=(string)JPEG, payload=(int)26"}));
    EXPECT_EQ(chain(),
              "udpsrc rtpjpegdepay jpegparse v4l2jpegdec glupload glcolorconvert qmlglsink");
}

TEST_F(NetworkStream, of_rtsp_is_built_from_its_text) {
    input_.setRTSPURL("rtsp://192.168.1.20:554/stream");
    EXPECT_EQ(building(StreamRtsp),
              withSink({"rtspsrc udp-buffer-size=2000000", "rtspsrc timeout=1000000",
                        "rtspsrc latency=0", "rtspsrc drop-on-latency=true", "rtspsrc protocols=1",
                        "rtspsrc location=rtsp://192.168.1.20:554/stream"}));
    EXPECT_EQ(chain(),
              "rtspsrc rtph264depay h264parse v4l2h264dec glupload glcolorconvert qmlglsink");
}

TEST_F(NetworkStream, keeps_its_pipeline_its_sink_and_its_source_and_no_camera_element) {
    for (const int type : {0, 1, 2}) {
        (void)building(type);
        EXPECT_TRUE(GST_IS_PIPELINE(input_.pipeline));
        EXPECT_STREQ(GST_OBJECT_NAME(input_.videoSink), "videoSink");
        EXPECT_STREQ(GST_OBJECT_NAME(input_.videoSource), type == 2 ? "myRTSPSource" : "udp");
        EXPECT_EQ(input_.glUpload, nullptr);
        EXPECT_EQ(input_.glColorConvert, nullptr);
        EXPECT_EQ(input_.capsFilter, nullptr);
        EXPECT_EQ(input_.getPipeline(), input_.pipeline);
        input_.reset();
    }
}

TEST_F(NetworkStream, is_owned_by_the_input_and_owns_its_elements) {
    for (const int type : {0, 1, 2}) {
        (void)building(type);
        EXPECT_EQ(GST_OBJECT_REFCOUNT_VALUE(input_.pipeline), 1);
        EXPECT_EQ(GST_OBJECT_REFCOUNT_VALUE(input_.videoSink), 1);
        EXPECT_EQ(GST_OBJECT_REFCOUNT_VALUE(input_.videoSource), 1);
        EXPECT_FALSE(g_object_is_floating(input_.pipeline));
        input_.reset();
        EXPECT_EQ(RecordingElements::alive(), 0);
    }
}

TEST_F(NetworkStream, without_an_item_leaves_its_sink_without_a_widget) {
    input_.videoItem = nullptr;
    const OutputCapture capture;
    for (const int type : {0, 1, 2}) {
        const Calls calls = building(type);
        EXPECT_EQ(calls.back(), "qmlglsink sync=false");
        EXPECT_EQ(RecordingElements::valueOf(input_.videoSink, "widget"), "unset");
        EXPECT_EQ(RecordingElements::valueOf(input_.videoSink, "force-aspect-ratio"), "unset");
        input_.reset();
    }
    EXPECT_EQ(capture.output(), "");
}

TEST_F(NetworkStream, init_twice_builds_once) {
    (void)building(StreamUdpH264);
    const GstElement* const built = input_.pipeline;
    EXPECT_EQ(building(StreamUdpJpeg), Calls{});
    EXPECT_EQ(input_.pipeline, built);
}

TEST_F(NetworkStream, init_builds_nothing_over_a_pipeline_that_is_there) {
    (void)building(StreamUdpH264);
    input_.initialized = false;
    EXPECT_EQ(input_.init(), 0);
    EXPECT_FALSE(input_.isInitialized());
    EXPECT_EQ(takeCalls(), Calls{});
}

TEST_F(NetworkStream, init_builds_nothing_where_the_built_flag_is_set) {
    input_.setStreamType(StreamUdpH264);
    input_.initialized = true;
    EXPECT_EQ(input_.init(), 0);
    expectNothingKept();
}

TEST_F(NetworkStream, after_reset_it_builds_again_with_the_current_port) {
    (void)building(StreamUdpH264);
    input_.setCurrentInterface(6000);
    EXPECT_EQ(RecordingElements::valueOf(input_.videoSource, "port"), "5004");
    input_.reset();
    (void)building(StreamUdpH264);
    EXPECT_EQ(RecordingElements::valueOf(input_.videoSource, "port"), "6000");
}

TEST_F(NetworkStream,
       a_port_change_on_a_UDP_input_is_used_by_the_launch_text_of_the_next_build_only) {
    (void)building(StreamUdpJpeg);
    input_.setCurrentInterface(6000);
    EXPECT_EQ(input_.init(), 0);
    EXPECT_EQ(RecordingElements::valueOf(input_.videoSource, "port"), "5004");
    input_.handleQueuedCommands();
    (void)building(StreamUdpJpeg);
    EXPECT_EQ(RecordingElements::valueOf(input_.videoSource, "port"), "6000");
}

TEST_F(NetworkStream, after_reset_it_builds_again_with_the_current_url) {
    input_.setRTSPURL("rtsp://first");
    (void)building(StreamRtsp);
    input_.setRTSPURL("rtsp://second");
    EXPECT_EQ(RecordingElements::valueOf(input_.videoSource, "location"), "rtsp://first");
    input_.reset();
    (void)building(StreamRtsp);
    EXPECT_EQ(RecordingElements::valueOf(input_.videoSource, "location"), "rtsp://second");
}

TEST_F(NetworkStream,
       type_4_prints_the_unknown_type_line_and_leaves_initialized_without_a_pipeline) {
    const OutputCapture capture;
    EXPECT_EQ(building(StreamNone), Calls{});
    EXPECT_EQ(capture.output(), "UNKNOWN STREAM TYPE OPTION: 4\n");
    expectNothingKept();
    EXPECT_EQ(input_.init(), 0);
    EXPECT_EQ(capture.output(), "UNKNOWN STREAM TYPE OPTION: 4\n") << "said twice";
}

TEST_F(NetworkStream, any_other_type_is_unknown_too) {
    for (const int type : {5, -1, 2147483647}) {
        const OutputCapture capture;
        EXPECT_EQ(building(type), Calls{});
        EXPECT_EQ(capture.output(), "UNKNOWN STREAM TYPE OPTION: " + std::to_string(type) + "\n");
        input_.reset();
    }
}

/// The words behind the blank are read as settings of the source.
TEST_F(NetworkStream, of_an_address_with_a_blank_does_not_end_the_process) {
    input_.setRTSPURL("rtsp://host/a b");
    (void)building(StreamRtsp);
    input_.startSlot();
    input_.stopSlot();
    input_.reset();
    expectNothingKept();
}

TEST_F(NetworkStream, of_an_address_with_an_exclamation_mark_does_not_end_the_process) {
    input_.setRTSPURL("rtsp://host ! nothing");
    (void)building(StreamRtsp);
    input_.startSlot();
    input_.stopSlot();
    input_.reset();
    expectNothingKept();
}

TEST_F(NetworkStream, of_an_empty_address_does_not_end_the_process) {
    (void)building(StreamRtsp);
    input_.startSlot();
    input_.stopSlot();
    input_.reset();
    expectNothingKept();
}

TEST_F(NetworkStream, of_an_address_that_ends_the_text_is_given_up_quietly) {
    input_.setRTSPURL("\"");
    (void)building(StreamRtsp);
    input_.startSlot();
    input_.stopSlot();
    input_.reset();
    expectNothingKept();
}

TEST_F(NetworkStream, without_any_of_its_elements_does_not_end_the_process) {
    for (const char* const missing :
         {"v4l2h264dec", "glupload", "rtph264depay", "rtpjitterbuffer", "qmlglsink", "udpsrc"}) {
        RecordingElements::remove(missing);
        (void)building(StreamUdpH264);
        EXPECT_EQ(input_.videoSource == nullptr, std::string(missing) == "udpsrc") << missing;
        input_.startSlot();
        input_.doShowVideoItem(true);
        input_.setBrightness(4, 1);
        input_.stopSlot();
        input_.changeInterfaceSlot();
        expectNothingKept();
    }
}

TEST_F(NetworkStream, without_its_sink_keeps_the_other_elements) {
    RecordingElements::remove("qmlglsink");
    (void)building(StreamUdpH264);
    EXPECT_NE(input_.pipeline, nullptr);
    EXPECT_EQ(input_.videoSink, nullptr);
    EXPECT_NE(input_.videoSource, nullptr);
}

}  // namespace
}  // namespace ZR::test
