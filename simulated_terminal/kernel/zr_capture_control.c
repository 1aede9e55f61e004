// SPDX-License-Identifier: GPL-2.0
/* Controls of the capture nodes. */
#include <linux/kernel.h>

#include "zr_capture.h"

/* The terminal's own, in no header of the kernel. */
#define ZR_CID_INPUT_SELECT 0x009819c2

static const struct {
	const char *name;	/* in the log */
	struct v4l2_ctrl_config config;
} controls[ZR_CAPTURE_CONTROLS] = {
	[ZR_CAPTURE_INPUT] = { "input_select", {
		.id = ZR_CID_INPUT_SELECT, .name = "Input Select",
		.type = V4L2_CTRL_TYPE_INTEGER, .max = 2,
	} },
	[ZR_CAPTURE_BRIGHTNESS] = { "brightness", {
		.id = V4L2_CID_BRIGHTNESS, .min = -128, .max = 127,
	} },
	[ZR_CAPTURE_CONTRAST] = { "contrast", {
		.id = V4L2_CID_CONTRAST, .max = 255,
		.def = ZR_CONTRAST_NEUTRAL,
	} },
	[ZR_CAPTURE_SATURATION] = { "saturation", {
		.id = V4L2_CID_SATURATION, .max = 255,
		.def = ZR_SATURATION_NEUTRAL,
	} },
	[ZR_CAPTURE_HUE] = { "hue", {
		.id = V4L2_CID_HUE, .min = -128, .max = 127,
	} },
};

const char *zr_capture_control_name(enum zr_capture_control control)
{
	return controls[control].name;
}

static int set_control(struct v4l2_ctrl *control)
{
	struct zr_capture *capture = container_of(
		control->handler, struct zr_capture, handler);
	int i;

	for (i = 0; i < ZR_CAPTURE_CONTROLS; i++)
		if (capture->controls[i] == control)
			zr_log_number(capture->board->folder,
				      controls[i].name, control->val, 0);
	return 0;
}

static const struct v4l2_ctrl_ops control_ops = {
	.s_ctrl = set_control,
};

int zr_capture_init_controls(struct zr_capture *capture)
{
	struct v4l2_ctrl_handler *handler = &capture->handler;
	int i;

	v4l2_ctrl_handler_init(handler, ZR_CAPTURE_CONTROLS);
	for (i = 0; i < ZR_CAPTURE_CONTROLS; i++) {
		struct v4l2_ctrl_config config = controls[i].config;
		struct v4l2_ctrl *control;

		config.ops = &control_ops;
		config.step = 1;
		control = v4l2_ctrl_new_custom(handler, &config, NULL);
		if (!control)
			return handler->error;
		/*
		 * Each setting reaches the log, also one of the value that is
		 * already there: who looks for needless ones sees them.
		 */
		control->flags |= V4L2_CTRL_FLAG_EXECUTE_ON_WRITE;
		capture->controls[i] = control;
	}
	return 0;
}

int zr_capture_control(const struct zr_capture *capture,
		       enum zr_capture_control control)
{
	return READ_ONCE(capture->controls[control]->cur.val);
}

void zr_capture_look(const struct zr_capture *capture, struct zr_look *look)
{
	v4l2_std_id standard = zr_decoder_standard(capture->decoder);

	*look = (struct zr_look){
		.camera = zr_decoder_camera(
			capture->decoder,
			zr_capture_control(capture, ZR_CAPTURE_INPUT)),
		.ntsc = !!(standard & V4L2_STD_525_60),
		.brightness =
			zr_capture_control(capture, ZR_CAPTURE_BRIGHTNESS),
		.contrast = zr_capture_control(capture, ZR_CAPTURE_CONTRAST),
		.saturation =
			zr_capture_control(capture, ZR_CAPTURE_SATURATION),
		.hue = zr_capture_control(capture, ZR_CAPTURE_HUE),
	};
}
