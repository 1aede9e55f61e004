#include <gst/gst.h>
#include <linux/videodev2.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include <QQuickItem>

#include "common/zrapi_os_abs/zr_tick.h"
#include "hardware/print_line_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/capture_routing_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/gst_handles_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/picture_settings_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/restart_policy_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/retired_pipelines_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/stream_pipelines_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/video_device_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

namespace ZR {
namespace {

constexpr GstClockTime playingWait = 100 * GST_MSECOND;
constexpr GstClockTime changeWait = GST_SECOND;
constexpr GstClockTime stopWait = 10 * GST_MSECOND;
constexpr int stopAttempts = 10;
constexpr int resetAttempts = 100;
constexpr useconds_t resetPause = 10000;  // us

/// Selects a camera on the capture node; the driver's answer does not matter, as a node without the
/// control has one camera only.
void selectCamera(int input, const std::string& inputName) {
    const bool exists = isCameraInput(input);
    const int descriptor = exists ? ZRGstreamerVideoInput::fileDescriptors[input] : -1;
    if (descriptor < firstVideoDescriptor) {
        const char* const reason = std::strerror(errno);
        printLine({"ERROR OPENING VIDEO DEVICE ", inputName, ": ", reason});
        return;
    }
    v4l2_control control{};
    control.id = inputSelectControl;
    control.value = input;
    (void)tellVideoDriver(descriptor, VIDIOC_S_CTRL, control);
}

}  // namespace

void ZRGstreamerVideoInput::handleQueuedCommands() {
    { const std::lock_guard<std::mutex> lock(commandMutex); }
    while (!commandQueue.empty()) {
        switch (commandQueue.front()) {
            case CommandStart:
                startSlot();
                break;
            case CommandStop:
                stopSlot();
                break;
            case CommandChangeInterface:
                changeInterfaceSlot();
                break;
            default:
                break;
        }
        // Kept: what is first now goes, also when the command has changed the queue; a command that
        // emptied it leaves nothing to remove.
        if (!commandQueue.empty())
            commandQueue.pop_front();
    }
}

bool ZRGstreamerVideoInput::startSlot() {
    waitForGstReady();
    init();
    const auto input = static_cast<unsigned short>(currentInput);
    setPosition(input, xPosition, yPosition);
    setSize(input, width, height);
    setRotation(input, normalisedDegrees(videoSettings[input].rotation.degrees));
    bool nothingToStart = true;
    if (pipeline != nullptr && stateWithin(pipeline, playingWait) != GST_STATE_PLAYING) {
        if (videoItem != nullptr && videoSink != nullptr && shownWidget(videoSink) != videoItem) {
            videoItem->setVisible(true);
            if (waitItem != nullptr)
                waitItem->setVisible(true);
            g_object_set(videoSink, "widget", static_cast<void*>(videoItem), "sync", FALSE,
                         nullptr);
        }
        (void)gst_element_set_state(pipeline, GST_STATE_PLAYING);
        rtspStartTick =
            streamType == StreamRtsp ? static_cast<std::uint32_t>(ZRTick::getTickCount()) : 0;
        nothingToStart = false;
    }
    // The mirroring is left to setSize(): kept.
    const VideoSetting& setting = videoSettings[input];
    setBrightness(input, setting.brightness);
    setContrast(input, setting.contrast);
    setHue(input, setting.hue);
    setSaturation(input, setting.saturation);
    return nothingToStart;
}

void ZRGstreamerVideoInput::stopSlot() {
    waitForGstReady();
    if (pipeline == nullptr || stateWithin(pipeline, playingWait) == GST_STATE_NULL)
        return;
    (void)gst_element_set_state(pipeline, GST_STATE_NULL);
    rtspStartTick = 0;
    for (int attempt = 0; attempt < stopAttempts; ++attempt) {
        if (stateWithin(pipeline, stopWait) == GST_STATE_NULL)
            break;
    }
    doShowVideoItem(false);
}

void ZRGstreamerVideoInput::changeInterfaceSlot() {
    waitForGstReady();
    restartCount = 0;
    const GstState state = pipeline != nullptr ? stateWithin(pipeline, changeWait) : GST_STATE_NULL;
    if (streamType == StreamCamera)
        selectCamera(inputOf(currentInput), name);
    if (state == GST_STATE_PLAYING)
        Q_EMIT triggerTimedRestart(changedInterfaceDelay);
    else
        reset();
}

void ZRGstreamerVideoInput::reset() {
    GstElement* const replaced = pipeline;
    if (replaced != nullptr) {
        (void)gst_element_set_state(replaced, GST_STATE_NULL);
        for (int attempt = 0;
             stateWithin(replaced, stopWait) != GST_STATE_NULL && attempt < resetAttempts;
             ++attempt) {
            (void)::usleep(resetPause);
            (void)gst_element_set_state(replaced, GST_STATE_NULL);
        }
        writePipeline(pipeline, nullptr);
        videoSink = nullptr;
        glUpload = nullptr;
        glColorConvert = nullptr;
        videoSource = nullptr;
        capsFilter = nullptr;
        RetiredPipelines::get().retire(replaced);
    }
    initialized = false;
}

}  // namespace ZR
