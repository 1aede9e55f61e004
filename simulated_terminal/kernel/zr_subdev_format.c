// SPDX-License-Identifier: GPL-2.0
/* Formats on the pads of sub-devices, as with the processor's own drivers. */
#include <linux/kernel.h>
#include <linux/media-bus-format.h>

#include "zr_graph.h"

#define ZR_WIDTH_DEFAULT 640
#define ZR_HEIGHT_DEFAULT 480
#define ZR_SIZE_MIN 16
#define ZR_SIZE_MAX 4096

/* What comes from outside; the first one is the default. */
static const u32 bus_codes[] = {
	MEDIA_BUS_FMT_UYVY8_2X8,
	MEDIA_BUS_FMT_YUYV8_2X8,
	MEDIA_BUS_FMT_UYVY8_1X16,
};

/* What the image processing unit works with. */
#define ZR_INTERNAL_CODE MEDIA_BUS_FMT_AYUV8_1X32

static bool is_source(const struct zr_subdev *subdev, unsigned int pad)
{
	return pad >= subdev->part->sinks;
}

/* The sink that a source's format comes from, or -1. */
static int sink_of_source(const struct zr_subdev *subdev)
{
	switch (subdev->part->kind) {
	case ZR_PART_DECODER:
		return -1;
	case ZR_PART_MUX:
		return READ_ONCE(subdev->active);
	default:
		return 0;
	}
}

/* --- What a pad makes of a format ---------------------------------------- */

static u32 known_code(u32 code)
{
	unsigned int i;

	for (i = 0; i < ARRAY_SIZE(bus_codes); i++)
		if (bus_codes[i] == code)
			return code;
	return bus_codes[0];
}

static void try_sink(struct v4l2_mbus_framefmt *format)
{
	format->code = known_code(format->code);
	format->width = clamp_t(u32, format->width, ZR_SIZE_MIN, ZR_SIZE_MAX);
	format->height = clamp_t(u32, format->height, ZR_SIZE_MIN, ZR_SIZE_MAX);
	if (format->field == V4L2_FIELD_ANY ||
	    format->field > V4L2_FIELD_INTERLACED_BT)
		format->field = V4L2_FIELD_NONE;
	if (format->colorspace == V4L2_COLORSPACE_DEFAULT ||
	    format->colorspace > V4L2_COLORSPACE_DCI_P3)
		format->colorspace = V4L2_COLORSPACE_SMPTE170M;
}

/*
 * The interface takes whole frames: two fields that come one after the other
 * leave it in one frame, in the order of their standard.
 */
static void join_fields(struct v4l2_mbus_framefmt *format)
{
	if (format->field != V4L2_FIELD_ALTERNATE)
		return;
	format->height *= 2;
	format->field = format->height == 480 ? V4L2_FIELD_SEQ_BT
					      : V4L2_FIELD_SEQ_TB;
}

static void try_source(const struct zr_subdev *subdev,
		       const struct v4l2_mbus_framefmt *sink,
		       struct v4l2_mbus_framefmt *format)
{
	u32 code = format->code;

	*format = *sink;
	if (subdev->part->kind != ZR_PART_INTERFACE)
		return;
	join_fields(format);
	if (code != sink->code)
		format->code = ZR_INTERNAL_CODE;
}

static void try_format(const struct zr_subdev *subdev,
		       struct v4l2_subdev_state *state, unsigned int pad,
		       struct v4l2_mbus_framefmt *format)
{
	int sink = sink_of_source(subdev);

	if (subdev->part->kind == ZR_PART_DECODER)
		zr_decoder_try_format(subdev->part->decoder, format);
	else if (is_source(subdev, pad) && sink >= 0)
		try_source(subdev, &state->pads[sink].try_fmt, format);
	else
		try_sink(format);
}

/* The state's lock is held. */
static void put_format(const struct zr_subdev *subdev,
		       struct v4l2_subdev_state *state, unsigned int pad,
		       const struct v4l2_mbus_framefmt *format)
{
	unsigned int i;

	state->pads[pad].try_fmt = *format;
	if (is_source(subdev, pad) || pad != sink_of_source(subdev))
		return;
	for (i = subdev->part->sinks; i < subdev->sd.entity.num_pads; i++) {
		state->pads[i].try_fmt.code = ZR_INTERNAL_CODE;
		try_source(subdev, format, &state->pads[i].try_fmt);
	}
}

/* --- Operations ---------------------------------------------------------- */

static int init_cfg(struct v4l2_subdev *sd, struct v4l2_subdev_state *state)
{
	const struct zr_subdev *subdev = zr_subdev_from(sd);
	const struct v4l2_mbus_framefmt start = {
		.width = ZR_WIDTH_DEFAULT,
		.height = ZR_HEIGHT_DEFAULT,
		.code = MEDIA_BUS_FMT_UYVY8_2X8,
	};
	unsigned int i;

	for (i = 0; i < sd->entity.num_pads; i++) {
		struct v4l2_mbus_framefmt format = start;

		/* It has got its format from the sink. */
		if (is_source(subdev, i) && sink_of_source(subdev) >= 0)
			continue;
		try_format(subdev, state, i, &format);
		put_format(subdev, state, i, &format);
	}
	return 0;
}

static void log_format(const struct zr_subdev *subdev,
		       const struct v4l2_subdev_format *format, int error)
{
	char text[64];
	int length = scnprintf(text, sizeof(text), "%u ", format->pad);

	zr_format_text(&format->format, text + length, sizeof(text) - length);
	zr_log_text(subdev->part->key, "format", text, strlen(text), error);
}

static int set_fmt(struct v4l2_subdev *sd, struct v4l2_subdev_state *state,
		   struct v4l2_subdev_format *format)
{
	const struct zr_subdev *subdev = zr_subdev_from(sd);
	bool active = format->which == V4L2_SUBDEV_FORMAT_ACTIVE;
	int ret = 0;

	if (active)
		ret = zr_fault_take(&subdev->part->fail_s_fmt);
	if (!ret && active && zr_subdev_is_streaming(subdev))
		ret = -EBUSY;
	if (!ret) {
		try_format(subdev, state, format->pad, &format->format);
		put_format(subdev, state, format->pad, &format->format);
	}
	if (active)
		log_format(subdev, format, ret);
	return ret;
}

static int get_fmt(struct v4l2_subdev *sd, struct v4l2_subdev_state *state,
		   struct v4l2_subdev_format *format)
{
	format->format = state->pads[format->pad].try_fmt;
	return 0;
}

/* Interfaces change the code behind their sink, the others pass it on. */
static u32 nth_code(const struct zr_subdev *subdev,
		    struct v4l2_subdev_state *state, unsigned int pad, u32 n)
{
	int sink = sink_of_source(subdev);

	if (subdev->part->kind == ZR_PART_DECODER)
		return n ? 0 : MEDIA_BUS_FMT_UYVY8_2X8;
	if (!is_source(subdev, pad) || sink < 0)
		return n < ARRAY_SIZE(bus_codes) ? bus_codes[n] : 0;
	if (subdev->part->kind == ZR_PART_INTERFACE && n == 0)
		return ZR_INTERNAL_CODE;
	if (n == (subdev->part->kind == ZR_PART_INTERFACE))
		return state->pads[sink].try_fmt.code;
	return 0;
}

static int enum_mbus_code(struct v4l2_subdev *sd,
			  struct v4l2_subdev_state *state,
			  struct v4l2_subdev_mbus_code_enum *code)
{
	code->code = nth_code(zr_subdev_from(sd), state, code->pad,
			      code->index);
	return code->code ? 0 : -EINVAL;
}

static bool has_code(const struct zr_subdev *subdev,
		     struct v4l2_subdev_state *state, unsigned int pad,
		     u32 code)
{
	u32 each;
	u32 n = 0;

	while ((each = nth_code(subdev, state, pad, n++)))
		if (each == code)
			return true;
	return false;
}

static int enum_frame_size(struct v4l2_subdev *sd,
			   struct v4l2_subdev_state *state,
			   struct v4l2_subdev_frame_size_enum *size)
{
	const struct zr_subdev *subdev = zr_subdev_from(sd);
	struct v4l2_mbus_framefmt format = { .code = size->code };

	if (size->index || !has_code(subdev, state, size->pad, size->code))
		return -EINVAL;
	/* The least and the greatest: what the pad makes of nonsense. */
	try_format(subdev, state, size->pad, &format);
	size->min_width = format.width;
	size->min_height = format.height;
	format.width = U32_MAX;
	format.height = U32_MAX;
	try_format(subdev, state, size->pad, &format);
	size->max_width = format.width;
	size->max_height = format.height;
	return 0;
}

/* The path must have a start: without one no link would be at fault. */
static int link_validate(struct v4l2_subdev *sd, struct media_link *link,
			 struct v4l2_subdev_format *source,
			 struct v4l2_subdev_format *sink)
{
	if (!zr_decoder_upstream_locked(&sd->entity))
		return -ENOLINK;
	return v4l2_subdev_link_validate_default(sd, link, source, sink);
}

const struct v4l2_subdev_pad_ops zr_interface_pad_ops = {
	.init_cfg = init_cfg,
	.enum_mbus_code = enum_mbus_code,
	.enum_frame_size = enum_frame_size,
	.get_fmt = get_fmt,
	.set_fmt = set_fmt,
	.link_validate = link_validate,
};

const struct v4l2_subdev_pad_ops zr_subdev_pad_ops = {
	.init_cfg = init_cfg,
	.enum_mbus_code = enum_mbus_code,
	.enum_frame_size = enum_frame_size,
	.get_fmt = get_fmt,
	.set_fmt = set_fmt,
};
