// SPDX-License-Identifier: GPL-2.0
/* Knobs of the capture nodes. */
#include <linux/debugfs.h>
#include <linux/err.h>
#include <linux/module.h>
#include <linux/seq_file.h>

#include "zr_capture.h"

/* One frame in about 17 minutes. */
#define MOST_LEFT_OUT 25000

static const char *state_of(struct zr_capture *capture)
{
	if (!vb2_is_streaming(&capture->queue))
		return "stopped";
	return READ_ONCE(capture->failed) ? "failed" : "streaming";
}

static void show_standard(struct seq_file *file, struct zr_capture *capture)
{
	struct zr_decoder *decoder =
		zr_decoder_upstream(&capture->video.entity);

	if (decoder)
		seq_printf(file, "standard 0x%llx\n",
			   zr_decoder_standard(decoder));
}

static void show_capture(struct seq_file *file, struct zr_capture *capture)
{
	const struct v4l2_pix_format *format = &capture->format;
	int i;

	seq_printf(file, "node /dev/video%d\n", capture->video.num);
	seq_printf(file, "stream %s\n", state_of(capture));
	seq_printf(file, "frames %u\n", READ_ONCE(capture->frames));
	seq_printf(file, "format %.4s %ux%u\n",
		   (const char *)&format->pixelformat, format->width,
		   format->height);
	show_standard(file, capture);
	for (i = 0; i < ZR_CAPTURE_CONTROLS; i++)
		seq_printf(file, "%s %d\n", zr_capture_control_name(i),
			   zr_capture_control(capture, i));
}

static int state_show(struct seq_file *file, void *v)
{
	struct zr_capture_board *board = file->private;

	mutex_lock(&board->lock);
	if (board->capture)
		show_capture(file, board->capture);
	mutex_unlock(&board->lock);
	return 0;
}
DEFINE_SHOW_ATTRIBUTE(state);

static int stall_get(void *data, u64 *on)
{
	struct zr_capture_board *board = data;

	*on = READ_ONCE(board->stall);
	return 0;
}

static int stall_set(void *data, u64 on)
{
	struct zr_capture_board *board = data;

	if (on > 1)
		return -EINVAL;
	WRITE_ONCE(board->stall, on);
	return 0;
}
DEFINE_DEBUGFS_ATTRIBUTE(stall_operations, stall_get, stall_set, "%llu\n");

static int every_get(void *data, u64 *count)
{
	struct zr_capture_board *board = data;

	*count = READ_ONCE(board->every);
	return 0;
}

static int every_set(void *data, u64 count)
{
	struct zr_capture_board *board = data;

	if (count < 1 || count > MOST_LEFT_OUT)
		return -EINVAL;
	WRITE_ONCE(board->every, count);
	return 0;
}
DEFINE_DEBUGFS_ATTRIBUTE(every_operations, every_get, every_set, "%llu\n");

void zr_capture_create_knobs(const char *name, struct dentry *folder)
{
	struct zr_capture_board *board = zr_capture_board(name);

	if (!board || IS_ERR(folder))
		return;
	/* The log calls the node as its folder is called. */
	strscpy(board->folder, folder->d_name.name, sizeof(board->folder));
	debugfs_create_file("state", 0400, folder, board, &state_fops);
	debugfs_create_file_unsafe("stall", 0600, folder, board,
				   &stall_operations);
	debugfs_create_file_unsafe("every", 0600, folder, board,
				   &every_operations);
	zr_fault_create_knob(&board->fail_open, "fail_open", folder);
	zr_fault_create_knob(&board->fail_streamon, "fail_streamon", folder);
	zr_fault_create_knob(&board->fail_s_ctrl, "fail_s_ctrl", folder);
	zr_fault_create_knob(&board->fail_g_ctrl, "fail_g_ctrl", folder);
}
