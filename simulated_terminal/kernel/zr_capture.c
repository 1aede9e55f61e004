// SPDX-License-Identifier: GPL-2.0
/* Capture nodes: the video devices at the lower ends of the media graph. */
#include <linux/err.h>
#include <linux/module.h>
#include <linux/slab.h>
#include <media/v4l2-fh.h>
#include <media/v4l2-ioctl.h>

#include "zr_capture.h"

static struct zr_capture_board boards[ZR_CAPTURE_MAX];
static DEFINE_MUTEX(boards_lock);

static void init_board(struct zr_capture_board *board, const char *name)
{
	strscpy(board->name, name, sizeof(board->name));
	strscpy(board->folder, name, sizeof(board->folder));
	strreplace(board->folder, ' ', '_');
	board->every = 1;
	mutex_init(&board->lock);
	zr_fault_init(&board->fail_open);
	zr_fault_init(&board->fail_streamon);
	zr_fault_init(&board->fail_s_ctrl);
	zr_fault_init(&board->fail_g_ctrl);
}

struct zr_capture_board *zr_capture_board(const char *name)
{
	struct zr_capture_board *board = NULL;
	int i;

	mutex_lock(&boards_lock);
	for (i = 0; i < ZR_CAPTURE_MAX && !board; i++) {
		if (!*boards[i].name)
			init_board(&boards[i], name);
		if (!strcmp(boards[i].name, name))
			board = &boards[i];
	}
	mutex_unlock(&boards_lock);
	return board;
}

/* --- File operations ----------------------------------------------------- */

static int capture_open(struct file *file)
{
	struct zr_capture *capture = video_drvdata(file);
	int ret = zr_fault_take(&capture->board->fail_open);

	if (!ret)
		return v4l2_fh_open(file);
	zr_log_text(capture->board->folder, "open", "", 0, ret);
	return ret;
}

static ssize_t capture_read(struct file *file, char __user *to, size_t size,
			    loff_t *pos)
{
	ssize_t ret = vb2_fop_read(file, to, size, pos);

	/* Who waits for a frame while the node goes hears that it is gone. */
	return ret < 0 && !video_is_registered(video_devdata(file)) ? -ENODEV :
								       ret;
}

/* The framework answers these without asking the driver, where it can. */
static int fault_of(struct zr_capture_board *board, unsigned int command)
{
	switch (command) {
	case VIDIOC_S_CTRL:
	case VIDIOC_S_EXT_CTRLS:
		return zr_fault_take(&board->fail_s_ctrl);
	case VIDIOC_G_CTRL:
	case VIDIOC_G_EXT_CTRLS:
		return zr_fault_take(&board->fail_g_ctrl);
	default:
		return 0;
	}
}

static long capture_ioctl(struct file *file, unsigned int command,
			  unsigned long argument)
{
	struct zr_capture *capture = video_drvdata(file);
	int ret = fault_of(capture->board, command);

	if (!ret)
		return video_ioctl2(file, command, argument);
	zr_log_text(capture->board->folder,
		    command == VIDIOC_S_CTRL || command == VIDIOC_S_EXT_CTRLS ?
			    "s_ctrl" : "g_ctrl", "", 0, ret);
	return ret;
}

static const struct v4l2_file_operations file_operations = {
	.owner = THIS_MODULE,
	.open = capture_open,
	.release = vb2_fop_release,
	.read = capture_read,
	.poll = vb2_fop_poll,
	.mmap = vb2_fop_mmap,
	.unlocked_ioctl = capture_ioctl,
};

static const struct media_entity_operations entity_operations = {
	.link_validate = zr_capture_validate,
};

/* --- The node ------------------------------------------------------------ */

static void free_capture(struct zr_capture *capture)
{
	media_entity_cleanup(&capture->video.entity);
	v4l2_ctrl_handler_free(&capture->handler);
	mutex_destroy(&capture->lock);
	kfree(capture);
}

static void release_video(struct video_device *video)
{
	free_capture(video_get_drvdata(video));
}

static int register_video(struct zr_capture *capture,
			  struct v4l2_device *v4l2)
{
	struct video_device *video = &capture->video;
	int ret;

	strscpy(video->name, capture->board->name, sizeof(video->name));
	video->v4l2_dev = v4l2;
	video->fops = &file_operations;
	video->ioctl_ops = &zr_capture_ioctl_ops;
	video->release = release_video;
	video->lock = &capture->lock;
	video->queue = &capture->queue;
	video->ctrl_handler = &capture->handler;
	video->tvnorms = V4L2_STD_525_60 | V4L2_STD_625_50;
	video->device_caps = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING |
			     V4L2_CAP_READWRITE;
	video_set_drvdata(video, capture);

	capture->pad.flags = MEDIA_PAD_FL_SINK | MEDIA_PAD_FL_MUST_CONNECT;
	video->entity.ops = &entity_operations;
	ret = media_entity_pads_init(&video->entity, 1, &capture->pad);
	if (ret)
		return ret;
	return video_register_device(video, VFL_TYPE_VIDEO, -1);
}

static void show_on_board(struct zr_capture_board *board,
			  struct zr_capture *capture)
{
	mutex_lock(&board->lock);
	board->capture = capture;
	mutex_unlock(&board->lock);
}

struct zr_capture *zr_capture_add(struct v4l2_device *v4l2, const char *name)
{
	struct zr_capture *capture;
	int ret;

	capture = kzalloc(sizeof(*capture), GFP_KERNEL);
	if (!capture)
		return ERR_PTR(-ENOMEM);
	mutex_init(&capture->lock);
	capture->board = zr_capture_board(name);
	zr_capture_init_format(capture);
	ret = capture->board ? zr_capture_init_controls(capture) : -ENOSPC;
	if (!ret)
		ret = zr_capture_init_queue(capture, v4l2->dev);
	if (!ret)
		ret = register_video(capture, v4l2);
	if (ret) {
		free_capture(capture);
		return ERR_PTR(ret);
	}
	show_on_board(capture->board, capture);
	return capture;
}

void zr_capture_remove(struct zr_capture *capture)
{
	struct video_device *video = &capture->video;

	show_on_board(capture->board, NULL);
	get_device(&video->dev);
	vb2_video_unregister_device(video);
	/*
	 * The framework would leave the entity in the graph for as long as
	 * somebody has the node open. And it overlooks a stream that read or
	 * poll has just begun, which needs the graph to end; none begins now.
	 */
	mutex_lock(&capture->lock);
	vb2_queue_release(&capture->queue);
	media_device_unregister_entity(&video->entity);
	mutex_unlock(&capture->lock);
	put_device(&video->dev);
}

struct media_entity *zr_capture_entity(struct zr_capture *capture)
{
	return &capture->video.entity;
}

unsigned int zr_capture_input(struct zr_capture *capture)
{
	return zr_capture_control(capture, ZR_CAPTURE_INPUT);
}
