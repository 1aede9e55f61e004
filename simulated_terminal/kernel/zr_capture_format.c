// SPDX-License-Identifier: GPL-2.0
/* Formats of a capture node, and how they follow the media graph. */
#include <linux/kernel.h>

#include "zr_capture.h"

const u32 zr_capture_formats[ZR_CAPTURE_FORMATS] = {
	V4L2_PIX_FMT_UYVY, V4L2_PIX_FMT_YUYV, V4L2_PIX_FMT_NV12,
};

/* graph_mutex is held. */
static int pad_format(struct media_pad *pad,
		      struct v4l2_mbus_framefmt *format)
{
	struct v4l2_subdev_format active = {
		.which = V4L2_SUBDEV_FORMAT_ACTIVE,
		.pad = pad->index,
	};
	int ret;

	if (!is_media_entity_v4l2_subdev(pad->entity))
		return -EPIPE;
	ret = v4l2_subdev_call_state_active(
		media_entity_to_v4l2_subdev(pad->entity), pad, get_fmt,
		&active);
	*format = active.format;
	return ret;
}

/* One pad alone can feed the node: it does so without an enabled link too. */
static int source_format(struct zr_capture *capture,
			 struct v4l2_mbus_framefmt *format)
{
	struct media_device *media = capture->video.entity.graph_obj.mdev;
	struct media_link *link;
	int ret = -ENOLINK;

	mutex_lock(&media->graph_mutex);
	list_for_each_entry(link, &capture->video.entity.links, list) {
		if (link->sink != &capture->pad)
			continue;
		ret = pad_format(link->source, format);
		break;
	}
	mutex_unlock(&media->graph_mutex);
	return ret;
}

/* The field order of the pads, which user space may leave open. */
static enum v4l2_field field_of(const struct v4l2_mbus_framefmt *format)
{
	return format->field == V4L2_FIELD_ANY ? V4L2_FIELD_NONE :
						 format->field;
}

static u32 known_format(u32 format)
{
	int i;

	for (i = 0; i < ZR_CAPTURE_FORMATS; i++)
		if (zr_capture_formats[i] == format)
			return format;
	return zr_capture_formats[0];
}

void zr_capture_adjust(struct zr_capture *capture,
		       struct v4l2_pix_format *format)
{
	struct v4l2_mbus_framefmt source;
	u32 wanted = known_format(format->pixelformat);

	*format = capture->format;
	if (!source_format(capture, &source)) {
		/* Two pixels share a colour, and two lines do. */
		format->width = source.width & ~1U;
		format->height = source.height & ~1U;
		format->field = field_of(&source);
	}
	format->pixelformat = wanted;
	format->bytesperline = zr_picture_line_size(wanted, format->width);
	format->sizeimage = zr_picture_size(wanted, format->width,
					    format->height);
}

void zr_capture_init_format(struct zr_capture *capture)
{
	struct v4l2_pix_format *format = &capture->format;

	format->width = 720;
	format->height = 576;
	format->pixelformat = zr_capture_formats[0];
	format->field = V4L2_FIELD_NONE;
	format->colorspace = V4L2_COLORSPACE_SMPTE170M;
	format->bytesperline = zr_picture_line_size(format->pixelformat,
						    format->width);
	format->sizeimage = zr_picture_size(format->pixelformat, format->width,
					    format->height);
}

/* Called by the graph with graph_mutex held, while the node starts. */
int zr_capture_validate(struct media_link *link)
{
	struct video_device *video =
		media_entity_to_video_device(link->sink->entity);
	struct zr_capture *capture = video_get_drvdata(video);
	struct v4l2_mbus_framefmt source;

	if (pad_format(link->source, &source) ||
	    source.code != MEDIA_BUS_FMT_AYUV8_1X32 ||
	    source.width != capture->format.width ||
	    source.height != capture->format.height ||
	    field_of(&source) != capture->format.field)
		return -EPIPE;
	return 0;
}
