#include <cerrno>

#include "mediactl/v4l2subdev.h"
#include "platform/media_controller/pad_format_internal.h"
#include "platform/media_controller/pad_text_internal.h"

namespace ZR::media_controller {
namespace {

/// The nodes stay open as long as the handle: a set-up touches each of them several times.
int openNode(const Pad& pad) {
    Node& node = pad.entity->node;
    return node.isOpen() ? 0 : node.open(pad.entity->devname.c_str());
}

int control(const Pad& pad, unsigned long request, void* argument) {
    const int result = openNode(pad);
    return result < 0 ? result : pad.entity->node.control(request, argument);
}

/// @p format becomes what the driver made of it.
int setFormat(const Pad& pad, v4l2_mbus_framefmt& format) {
    if (format.width == 0 || format.height == 0)
        return 0;
    v4l2_subdev_format wanted{};
    wanted.which = V4L2_SUBDEV_FORMAT_ACTIVE;
    wanted.pad = pad.index;
    wanted.format = format;
    const int result = control(pad, VIDIOC_SUBDEV_S_FMT, &wanted);
    if (result == 0)
        format = wanted.format;
    return result;
}

/// @p interval becomes what the driver made of it.
int setInterval(const Pad& pad, v4l2_fract& interval) {
    if (interval.numerator == 0)
        return 0;
    v4l2_subdev_frame_interval wanted{};
    wanted.pad = pad.index;
    wanted.interval = interval;
    const int result = control(pad, VIDIOC_SUBDEV_S_FRAME_INTERVAL, &wanted);
    if (result == 0)
        interval = wanted.interval;
    return result;
}

/// What drivers from before the selections know instead.
int setCrop(const Pad& pad, const v4l2_rect& rectangle) {
    v4l2_subdev_crop wanted{};
    wanted.which = V4L2_SUBDEV_FORMAT_ACTIVE;
    wanted.pad = pad.index;
    wanted.rect = rectangle;
    return control(pad, VIDIOC_SUBDEV_S_CROP, &wanted);
}

int setSelection(const Pad& pad, unsigned int target, const v4l2_rect& rectangle) {
    if (rectangle.left == -1 || rectangle.top == -1)
        return 0;
    // Not part of the call below: an error of the opening says nothing about selections.
    int result = openNode(pad);
    if (result < 0)
        return result;
    v4l2_subdev_selection wanted{};
    wanted.which = V4L2_SUBDEV_FORMAT_ACTIVE;
    wanted.pad = pad.index;
    wanted.target = target;
    wanted.r = rectangle;
    result = control(pad, VIDIOC_SUBDEV_S_SELECTION, &wanted);
    return result == -ENOTTY && target == V4L2_SEL_TGT_CROP ? setCrop(pad, rectangle) : result;
}

int setRectangles(const Pad& pad, const PadFormat& wanted) {
    const int result = setSelection(pad, V4L2_SEL_TGT_CROP, wanted.crop);
    return result < 0 ? result : setSelection(pad, V4L2_SEL_TGT_COMPOSE, wanted.compose);
}

/// Data flows from the format at a sink pad through the rectangles to the format at a source pad,
/// and a driver computes each from those before it.
int setUpPad(const Pad& pad, PadFormat& wanted) {
    int result = pad.isSource() ? setRectangles(pad, wanted) : setFormat(pad, wanted.format);
    if (result == 0)
        result = pad.isSource() ? setFormat(pad, wanted.format) : setRectangles(pad, wanted);
    return result < 0 ? result : setInterval(pad, wanted.interval);
}

/// Carries format and interval of a source pad on to the sub-devices behind it. One that takes
/// another format, or none, is for a later text or for the start of the stream to find.
int carryOn(media_device& media, const Pad& source, const PadFormat& set) {
    v4l2_fract interval = set.interval;
    for (const media_link_desc& link : source.entity->links) {
        if (link.source.index != source.index || (link.flags & MEDIA_LNK_FL_ENABLED) == 0)
            continue;
        const Pad sink = padOf(media, link.sink);
        if (!sink.entity->isSubdevice())
            continue;
        v4l2_mbus_framefmt format = set.format;
        (void)setFormat(sink, format);
        const int result = setInterval(sink, interval);
        if (result < 0 && result != -EINVAL && result != -ENOTTY)
            return result;
    }
    return 0;
}

int parseAndSetUp(media_device& media, Text& text) {
    const Pad pad = takePad(media, text);
    PadFormat wanted;
    if (!pad || !takePadFormat(text, wanted))
        return -EINVAL;
    const int result = setUpPad(pad, wanted);
    return result < 0 || !pad.isSource() ? result : carryOn(media, pad, wanted);
}

}  // namespace
}  // namespace ZR::media_controller

int v4l2_subdev_parse_setup_formats(media_device* media, const char* p) {
    if (media == nullptr || p == nullptr)
        return -EINVAL;
    ZR::media_controller::Text text(p);
    do {
        const int result = ZR::media_controller::parseAndSetUp(*media, text);
        if (result < 0)
            return result;
    } while (text.take(","));
    return text.front() == '\0' ? 0 : -EINVAL;
}
