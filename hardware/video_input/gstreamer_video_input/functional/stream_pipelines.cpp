#include "hardware/video_input/gstreamer_video_input/functional/stream_pipelines_internal.h"

#include <exception>
#include <initializer_list>
#include <utility>

#include "hardware/print_line_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/retired_pipelines_internal.h"

namespace ZR {
namespace {

constexpr int cameraBuffers = 7;
constexpr int cameraFrameRate = 25;

/// Gives the sink the item, if there is one, and stretches the picture over it.
void configureSink(GstElement* sink, QQuickItem* videoItem) {
    g_object_set(sink, "widget", static_cast<void*>(videoItem), "sync", FALSE, "force-aspect-ratio",
                 FALSE, nullptr);
}

void configureCameraSink(GstElement* sink, QQuickItem* videoItem) {
    if (videoItem == nullptr) {
        printLine({"SETTING WIDGET PROPERTY ", "0", "FAIL!!!!"});
        return;
    }
    if (sink == nullptr)
        return;
    if (shownWidget(sink) != videoItem)
        g_object_set(sink, "widget", static_cast<void*>(videoItem), nullptr);
    g_object_set(sink, "sync", FALSE, "force-aspect-ratio", FALSE, nullptr);
}

void setCameraDevice(GstElement* source, const std::string& device) {
    if (source != nullptr)
        g_object_set(source, "device", device.c_str(), nullptr);
}

void setCameraBuffers(GstElement* source) {
    // The board's element has it. Elsewhere GLib warns, and the driver's own minimum serves.
    if (source != nullptr)
        g_object_set(source, "min-buffers", cameraBuffers, nullptr);
}

void configureFrameRate(GstElement* filter) {
    if (filter == nullptr)
        return;
    GstCaps* const caps = gst_caps_new_simple("video/x-raw", "framerate", GST_TYPE_FRACTION,
                                              cameraFrameRate, 1, nullptr);
    g_object_set(filter, "caps", caps, nullptr);
    gst_caps_unref(caps);
}

/// Adds each element that could be made, and links it to the one before.
void assemble(GstElement* pipeline, std::initializer_list<GstElement*> elements) {
    GstElement* previous = nullptr;
    for (GstElement* const element : elements) {
        if (element != nullptr)
            (void)gst_bin_add(GST_BIN(pipeline), element);
    }
    for (GstElement* const element : elements) {
        if (previous != nullptr && element != nullptr)
            (void)gst_element_link(previous, element);
        previous = element;
    }
}

}  // namespace

QQuickItem* shownWidget(GstElement* sink) {
    void* widget = nullptr;
    g_object_get(sink, "widget", &widget, nullptr);
    return static_cast<QQuickItem*>(widget);
}

StreamPipeline buildNetworkStream(const std::string& launchText, const char* sourceName,
                                  QQuickItem* videoItem) {
    StreamPipeline built;
    // A text with a fault gives a part of a pipeline, an element or nothing.
    built.pipeline = takeFloating(gst_parse_launch(launchText.c_str(), nullptr));
    built.videoSink = borrowByName(built.pipeline.get(), "videoSink");
    if (videoItem != nullptr && built.videoSink != nullptr)
        configureSink(built.videoSink, videoItem);
    built.videoSource = borrowByName(built.pipeline.get(), sourceName);
    return built;
}

StreamPipeline buildCameraStream(const std::string& device, QQuickItem* videoItem) {
    StreamPipeline built;
    built.pipeline = takeFloating(gst_pipeline_new(nullptr));
    built.videoSource = gst_element_factory_make("v4l2src", cameraSourceName);
    setCameraDevice(built.videoSource, device);
    built.glUpload = gst_element_factory_make("glupload", nullptr);
    built.glColorConvert = gst_element_factory_make("glcolorconvert", nullptr);
    setCameraBuffers(built.videoSource);
    built.capsFilter = gst_element_factory_make("capsfilter", nullptr);
    configureFrameRate(built.capsFilter);
    built.videoSink = gst_element_factory_make("qmlglsink", nullptr);
    configureCameraSink(built.videoSink, videoItem);
    assemble(built.pipeline.get(), {built.videoSource, built.capsFilter, built.glUpload,
                                    built.glColorConvert, built.videoSink});
    return built;
}

int ZRGstreamerVideoInput::init() try {
    if (initialized || pipeline != nullptr)
        return 0;
    // Still being initialised on its own thread, or not even begun: this waits for it, or does it.
    if (gst_is_initialized() == FALSE)
        gst_init(nullptr, nullptr);
    StreamPipeline built;
    switch (streamType) {
        case StreamUdpH264:
        case StreamUdpJpeg:
            built =
                buildNetworkStream(udpLaunchText(streamType, udpPort), udpSourceName, videoItem);
            break;
        case StreamRtsp:
            built = buildNetworkStream(rtspLaunchText(rtspURL), rtspSourceName, videoItem);
            break;
        case StreamCamera: {
            const int input = inputOf(currentInput);
            if (isCameraInput(input))
                setupCameraInput(input);
            built = buildCameraStream(isCameraInput(input) ? videoDevices[input] : std::string(),
                                      videoItem);
            break;
        }
        default:
            printLine({"UNKNOWN STREAM TYPE OPTION: ", Decimal(streamType).text()});
            break;
    }
    videoSink = built.videoSink;
    glUpload = built.glUpload;
    glColorConvert = built.glColorConvert;
    videoSource = built.videoSource;
    capsFilter = built.capsFilter;
    writePipeline(pipeline, built.pipeline.release());
    initialized = true;
    return 0;
} catch (const std::exception&) {
    return 0;  // no memory for a text: nothing is built, the next start tries again
}

}  // namespace ZR
