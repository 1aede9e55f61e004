#include "tests/hardware/video_input/video_service.h"

// The stream that is put together element by element.

namespace ZR::test {
namespace {

class CameraStream : public PlacedVideoTest {
  protected:
    CameraStream() {
        input_.setStreamType(StreamCamera);
        Input::videoDevices[0] = Input::videoDevices[2] = "/dev/video1";
        Input::videoDevices[1] = "/dev/video0";
    }

    Calls building(int camera) {
        input_.currentInput = camera;
        (void)takeCalls();
        EXPECT_EQ(input_.init(), 0);
        EXPECT_TRUE(input_.isInitialized());
        return takeCalls();
    }

    /// What an element's output leads to.
    static GstElement* behind(GstElement* element) {
        GstPad* const pad = gst_element_get_static_pad(element, "src");
        GstPad* const peer = gst_pad_get_peer(pad);
        GstElement* const next = peer != nullptr ? GST_PAD_PARENT(peer) : nullptr;
        if (peer != nullptr)
            gst_object_unref(peer);
        gst_object_unref(pad);
        return next;
    }

    /// The calls of a build on elements alone.
    static Calls buildCalls(const std::string& device) {
        return {"v4l2src device=" + device,
                "v4l2src min-buffers=7",
                "capsfilter caps=video/x-raw, framerate=(fraction)25/1",
                "qmlglsink widget=videoItem",
                "qmlglsink sync=false",
                "qmlglsink force-aspect-ratio=false"};
    }
};

TEST_F(CameraStream, is_built_on_the_capture_node_of_its_input) {
    const char* const devices[] = {"/dev/video1", "/dev/video0", "/dev/video1"};
    for (const int camera : {1, 2, 3}) {
        const OutputCapture quiet;
        (void)building(camera);
        EXPECT_EQ(RecordingElements::valueOf(input_.videoSource, "device"), devices[camera - 1]);
        input_.reset();
    }
}

TEST_F(CameraStream, routes_its_input_first_and_then_sets_its_elements_in_order) {
    Input::fileDescriptors[0] = Input::fileDescriptors[2] = 10;
    Input::fileDescriptorsSub[0] = Input::fileDescriptorsSub[2] = 12;
    Devices::devices[12].signal = V4L2_STD_PAL;
    Calls calls = building(3);
    const Calls elements = buildCalls("/dev/video1");
    ASSERT_GT(calls.size(), elements.size() + 2);
    EXPECT_EQ(calls[0], "VIDIOC_G_CTRL 10 9968066 0");
    EXPECT_EQ(calls[1], "VIDIOC_S_CTRL 10 9968066 1");
    calls.erase(calls.begin(), calls.end() - static_cast<std::ptrdiff_t>(elements.size()));
    EXPECT_EQ(calls, elements);
}

TEST_F(CameraStream, keeps_its_six_elements) {
    const OutputCapture quiet;
    (void)building(1);
    EXPECT_TRUE(GST_IS_PIPELINE(input_.pipeline));
    EXPECT_STREQ(GST_OBJECT_NAME(input_.videoSource), "v4l2VideoSource");
    const auto factory = [](GstElement* element) {
        return std::string(GST_OBJECT_NAME(gst_element_get_factory(element)));
    };
    EXPECT_EQ(factory(input_.videoSource), "v4l2src");
    EXPECT_EQ(factory(input_.glUpload), "glupload");
    EXPECT_EQ(factory(input_.glColorConvert), "glcolorconvert");
    EXPECT_EQ(factory(input_.capsFilter), "capsfilter");
    EXPECT_EQ(factory(input_.videoSink), "qmlglsink");
    EXPECT_EQ(GST_BIN_NUMCHILDREN(input_.pipeline), 5);
}

TEST_F(CameraStream, links_source_caps_filter_upload_conversion_and_sink) {
    const OutputCapture quiet;
    (void)building(1);
    EXPECT_EQ(behind(input_.videoSource), input_.capsFilter);
    EXPECT_EQ(behind(input_.capsFilter), input_.glUpload);
    EXPECT_EQ(behind(input_.glUpload), input_.glColorConvert);
    EXPECT_EQ(behind(input_.glColorConvert), input_.videoSink);
}

TEST_F(CameraStream, owns_its_elements_and_is_owned_by_the_input) {
    const OutputCapture quiet;
    (void)building(1);
    for (GstElement* const element : {input_.pipeline, input_.videoSource, input_.glUpload,
                                      input_.glColorConvert, input_.capsFilter, input_.videoSink})
        EXPECT_EQ(GST_OBJECT_REFCOUNT_VALUE(element), 1) << GST_OBJECT_NAME(element);
    GstCaps* caps = nullptr;
    g_object_get(input_.capsFilter, "caps", &caps, nullptr);
    EXPECT_EQ(GST_CAPS_REFCOUNT_VALUE(caps), 2) << "the element's and this test's";
    gst_caps_unref(caps);
    input_.reset();
    EXPECT_EQ(RecordingElements::alive(), 0);
}

TEST_F(CameraStream, without_a_number_of_a_camera_routes_nothing_and_has_no_device) {
    for (const int number : {0, 4, -1, 5, 2147483647, -2147483647 - 1}) {
        const OutputCapture capture;
        EXPECT_EQ(building(number), buildCalls("")) << number;
        EXPECT_EQ(capture.output(), "");
        input_.reset();
    }
}

TEST_F(CameraStream, without_an_item_says_so_and_goes_on) {
    input_.videoItem = nullptr;
    input_.fileDescriptors[0] = 10;
    const OutputCapture capture;
    (void)building(0);
    EXPECT_EQ(capture.output(), "SETTING WIDGET PROPERTY 0FAIL!!!!\n");
    EXPECT_NE(input_.videoSink, nullptr);
    EXPECT_EQ(RecordingElements::valueOf(input_.videoSink, "widget"), "unset");
    EXPECT_EQ(RecordingElements::valueOf(input_.videoSink, "sync"), "unset");
    EXPECT_EQ(behind(input_.glColorConvert), input_.videoSink);
}

TEST_F(CameraStream, init_twice_builds_once_and_after_reset_with_the_current_input) {
    const OutputCapture quiet;
    (void)building(1);
    EXPECT_EQ(building(2), Calls{});
    EXPECT_EQ(RecordingElements::valueOf(input_.videoSource, "device"), "/dev/video1");
    input_.reset();
    (void)building(2);
    EXPECT_EQ(RecordingElements::valueOf(input_.videoSource, "device"), "/dev/video0");
}

TEST_F(CameraStream, without_any_of_its_elements_does_not_end_the_process) {
    const OutputCapture quiet;
    for (const char* const missing :
         {"v4l2src", "capsfilter", "glupload", "glcolorconvert", "qmlglsink"}) {
        RecordingElements::remove(missing);
        (void)building(1);
        EXPECT_NE(input_.pipeline, nullptr);
        input_.startSlot();
        input_.setBrightness(1, 100);
        input_.stopSlot();
        input_.changeInterfaceSlot();
        EXPECT_EQ(input_.pipeline, nullptr);
    }
}

TEST_F(CameraStream, without_one_of_its_elements_links_the_others) {
    const OutputCapture quiet;
    RecordingElements::remove("glupload");
    (void)building(1);
    EXPECT_EQ(input_.glUpload, nullptr);
    EXPECT_EQ(behind(input_.videoSource), input_.capsFilter);
    EXPECT_EQ(behind(input_.glColorConvert), input_.videoSink);
    EXPECT_EQ(GST_BIN_NUMCHILDREN(input_.pipeline), 4);
}

}  // namespace
}  // namespace ZR::test
