#include <gst/gst.h>

#include <QMetaObject>
#include <QQuickItem>
#include <QVariant>

#include "common/zrapi_common/zr_result.h"
#include "hardware/video_input/gstreamer_video_input/functional/picture_settings_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/stream_pipelines_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

namespace ZR {
namespace {

constexpr int done = 0;
constexpr int notApplied = ResultFailure;

/// A camera's source takes the picture values; a network stream's has none of them.
void setPictureValue(GstElement* source, const char* property, int value) {
    if (source != nullptr && g_strcmp0(GST_OBJECT_NAME(source), cameraSourceName) == 0)
        g_object_set(source, property, value, nullptr);
}

/// The application's QML code turns and mirrors. Called from another thread it is queued.
void transform(QQuickItem& videoItem, const VideoSetting& setting) {
    (void)QMetaObject::invokeMethod(&videoItem, "setTransformation",
                                    Q_ARG(QVariant, QVariant(static_cast<int>(setting.mirror))),
                                    Q_ARG(QVariant, QVariant(setting.rotation.degrees)));
}

}  // namespace

int ZRGstreamerVideoInput::setBrightness(unsigned short input, int value) {
    if (streamType == StreamCamera && input == currentInput)
        setPictureValue(videoSource, "brightness", value);
    videoSettings[input].brightness = value;
    return done;
}

int ZRGstreamerVideoInput::setContrast(unsigned short input, int value) {
    if (streamType == StreamCamera && input == currentInput)
        setPictureValue(videoSource, "contrast", value);
    videoSettings[input].contrast = value;
    return done;
}

int ZRGstreamerVideoInput::setHue(unsigned short input, int value) {
    if (streamType == StreamCamera && input == currentInput)
        setPictureValue(videoSource, "hue", value);
    videoSettings[input].hue = value;
    return done;
}

int ZRGstreamerVideoInput::setSaturation(unsigned short input, int value) {
    // Kept: alone of the four it is lost while no camera is chosen.
    if (streamType != StreamCamera)
        return ResultNotSupported;
    if (input == currentInput)
        setPictureValue(videoSource, "saturation", value);
    videoSettings[input].saturation = value;
    return done;
}

int ZRGstreamerVideoInput::setMirror(unsigned short input, ZRVideoMirrorSetting setting) {
    VideoSetting& stored = videoSettings[input];
    stored.mirror = setting;
    if (streamType == StreamCamera && input != currentInput)
        return done;
    if (videoItem != nullptr && parentItem != nullptr)
        transform(*videoItem, stored);
    return done;
}

int ZRGstreamerVideoInput::setRotation(unsigned short input, ZRRotation rotation) {
    VideoSetting& stored = videoSettings[input];
    stored.rotation.degrees = normalisedDegrees(rotation.degrees);
    if (streamType == StreamCamera && input != currentInput)
        return notApplied;
    if (videoItem == nullptr || parentItem == nullptr)
        return notApplied;
    transform(*videoItem, stored);
    setSize(input, width, height);
    return done;
}

int ZRGstreamerVideoInput::setSize(unsigned short input, int newWidth, int newHeight) {
    width = newWidth;
    height = newHeight;
    if (parentItem == nullptr || videoItem == nullptr)
        return notApplied;
    const VideoSetting& stored = videoSettings[input];
    // The numbers asked for are only a fallback: a picture always fills its host.
    const ItemSize size =
        fillingSize(parentItem->width(), parentItem->height(), stored.rotation.degrees);
    width = size.width;
    height = size.height;
    videoItem->setWidth(width);
    videoItem->setHeight(height);
    setMirror(input, stored.mirror);
    return done;
}

int ZRGstreamerVideoInput::setPosition(unsigned short /*input*/, int x, int y) {
    xPosition = x;
    yPosition = y;
    if (videoItem != nullptr && parentItem != nullptr) {
        videoItem->setX(x);
        videoItem->setY(y);
    }
    return done;
}

ZRVideoMirrorSetting ZRGstreamerVideoInput::getMirrorSetting(unsigned short input) {
    return videoSettings[input].mirror;
}

ZRRotation ZRGstreamerVideoInput::getRotationSetting(unsigned short input) {
    return normalisedDegrees(videoSettings[input].rotation.degrees);
}

int ZRGstreamerVideoInput::getHeight(unsigned short /*input*/) {
    return videoItem != nullptr ? wholePixels(videoItem->height()) : 0;
}

int ZRGstreamerVideoInput::getWidth(unsigned short /*input*/) {
    return videoItem != nullptr ? wholePixels(videoItem->width()) : 0;
}

int ZRGstreamerVideoInput::getXPosition(unsigned short /*input*/) {
    return videoItem != nullptr ? wholePixels(videoItem->x()) : 0;
}

int ZRGstreamerVideoInput::getYPosition(unsigned short /*input*/) {
    return videoItem != nullptr ? wholePixels(videoItem->y()) : 0;
}

}  // namespace ZR
