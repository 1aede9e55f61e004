/* SPDX-License-Identifier: GPL-2.0 */
/*
 * Capture nodes, from the inside; zr_media.h has what others see of them.
 *
 * A node's own lock comes after zr_media_lock and before graph_mutex.
 */
#ifndef ZR_CAPTURE_H
#define ZR_CAPTURE_H

#include <linux/ktime.h>
#include <linux/list.h>
#include <linux/mutex.h>
#include <linux/spinlock.h>
#include <media/v4l2-ctrls.h>
#include <media/v4l2-dev.h>
#include <media/videobuf2-v4l2.h>

#include "zr_media.h"
#include "zr_picture.h"

#define ZR_CAPTURE_MAX 4
#define ZR_CAPTURE_NAME_SIZE 32
#define ZR_CAPTURE_FORMATS 3

/* Those that shape the picture, after the input-select control. */
enum zr_capture_control {
	ZR_CAPTURE_INPUT,
	ZR_CAPTURE_BRIGHTNESS,
	ZR_CAPTURE_CONTRAST,
	ZR_CAPTURE_SATURATION,
	ZR_CAPTURE_HUE,
	ZR_CAPTURE_CONTROLS
};

/* What is behind a node stays when the node goes. */
struct zr_capture_board {
	char name[ZR_CAPTURE_NAME_SIZE];	/* of the entity */
	char folder[ZR_CAPTURE_NAME_SIZE];	/* of the knobs */

	bool stall;
	unsigned int every;	/* of so many frames one is delivered */
	struct zr_fault fail_open;
	struct zr_fault fail_streamon;
	struct zr_fault fail_s_ctrl;
	struct zr_fault fail_g_ctrl;

	struct mutex lock;		/* capture */
	struct zr_capture *capture;	/* the node, while it is there */
};

/* Gone with the last one who has the node open. */
struct zr_capture {
	struct zr_capture_board *board;
	struct video_device video;
	struct media_pad pad;
	struct vb2_queue queue;
	struct mutex lock;	/* of the node and its queue */
	struct v4l2_pix_format format;

	struct v4l2_ctrl_handler handler;
	struct v4l2_ctrl *controls[ZR_CAPTURE_CONTROLS];

	/* While it streams. */
	struct zr_decoder *decoder;
	struct task_struct *thread;
	struct zr_picture picture;
	u64 period_ns;
	unsigned int frames;	/* delivered since STREAMON */
	bool failed;		/* no frame came in time */

	spinlock_t buffers_lock;	/* buffers */
	struct list_head buffers;	/* queued, the oldest first */
};

/* The one of that name, or a new one; NULL when there are too many. */
struct zr_capture_board *zr_capture_board(const char *name);

/* --- Queue and stream ---------------------------------------------------- */

int zr_capture_init_queue(struct zr_capture *capture, struct device *dev);

/* --- Formats and the like ------------------------------------------------ */

extern const struct v4l2_ioctl_ops zr_capture_ioctl_ops;

extern const u32 zr_capture_formats[ZR_CAPTURE_FORMATS];

void zr_capture_init_format(struct zr_capture *capture);
/* To what the pad that feeds the node delivers now. */
void zr_capture_adjust(struct zr_capture *capture,
		       struct v4l2_pix_format *format);
/* The time from one frame to the next. */
struct v4l2_fract zr_capture_interval(bool ntsc);
/* Whether the node's format is what the pad delivers: 0, or -EPIPE. */
int zr_capture_validate(struct media_link *link);

/* --- Controls ------------------------------------------------------------ */

int zr_capture_init_controls(struct zr_capture *capture);
int zr_capture_control(const struct zr_capture *capture,
		       enum zr_capture_control control);
const char *zr_capture_control_name(enum zr_capture_control control);
/* The picture that the controls and the decoder ask for. */
void zr_capture_look(const struct zr_capture *capture, struct zr_look *look);

#endif
