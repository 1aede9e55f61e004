#pragma once

#include <gst/gst.h>

#include <string>
#include <string_view>

#include "hardware/decimal_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/gst_handles_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

class QQuickItem;

namespace ZR {

/// Whether a 0-based number is that of a camera. Before a camera is chosen, and after a port was, it
/// is not.
constexpr bool isCameraInput(int input) {
    return input >= 0 && input < ZRGstreamerVideoInput::inputCount;
}

/// The 0-based number of an interface; that of no camera where it is not counted from 1.
constexpr int inputOf(int interfaceNumber) {
    return interfaceNumber > 0 ? interfaceNumber - 1 : -1;
}

constexpr const char* udpSourceName = "udp";
constexpr const char* rtspSourceName = "myRTSPSource";
constexpr const char* cameraSourceName = "v4l2VideoSource";

/// The launch text of a UDP stream. JPEG goes without a jitter buffer on purpose: each picture
/// stands for itself, and the next one is better than a late one.
inline std::string udpLaunchText(int streamType, int port) {
    constexpr std::string_view source =
        "udpsrc timeout=1000000000 buffer-size=2097152 name=udp port=";
    constexpr std::string_view h264 =
        " caps=\"application/x-rtp, media=(string)video, clock-rate=(int)90000, "
        "encoding-name=(string)H264, payload=(int)96\" ! rtpjitterbuffer do-lost=true ! "
        "rtph264depay ! h264parse ! v4l2h264dec ! glupload ! glcolorconvert ! "
        "qmlglsink name=videoSink sync=false";
    constexpr std::string_view jpeg =
        " caps=\"application/x-rtp, media=(string)video, clock-rate=(int)90000, "
        "encoding-name=(string)JPEG, payload=(int)26\" ! rtpjpegdepay ! jpegparse ! "
        "v4l2jpegdec ! glupload ! glcolorconvert ! qmlglsink name=videoSink sync=false";
    std::string text(source);
    text += Decimal(port).text();
    text += streamType == StreamUdpH264 ? h264 : jpeg;
    return text;
}

/// The launch text of an RTSP stream; 1 in the protocols is UDP unicast. The address stands in it
/// unquoted.
inline std::string rtspLaunchText(const std::string& url) {
    constexpr std::string_view source =
        "rtspsrc name=myRTSPSource udp-buffer-size=2000000 timeout=1000000 latency=0 "
        "drop-on-latency=true protocols=0x00000001 location=";
    constexpr std::string_view decoding =
        " ! rtph264depay ! h264parse ! v4l2h264dec ! glupload ! glcolorconvert ! "
        "qmlglsink name=videoSink sync=false";
    std::string text(source);
    text += url;
    text += decoding;
    return text;
}

/// What a build leaves in an input: an owned pipeline and elements that it keeps. Anything may be
/// missing.
struct StreamPipeline {
    GstOwned<GstElement> pipeline;
    GstElement* videoSink = nullptr;
    GstElement* glUpload = nullptr;
    GstElement* glColorConvert = nullptr;
    GstElement* videoSource = nullptr;
    GstElement* capsFilter = nullptr;
};

/// @param videoItem  null to leave the sink without one
StreamPipeline buildNetworkStream(const std::string& launchText, const char* sourceName,
                                  QQuickItem* videoItem);
/// @param device  path of the capture node
StreamPipeline buildCameraStream(const std::string& device, QQuickItem* videoItem);

/// The item that a sink draws into.
QQuickItem* shownWidget(GstElement* sink);

}  // namespace ZR
