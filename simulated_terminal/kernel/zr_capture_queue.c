// SPDX-License-Identifier: GPL-2.0
/* The queue of a capture node, and the thread that brings its frames. */
#include <linux/err.h>
#include <linux/kthread.h>
#include <linux/math64.h>
#include <media/videobuf2-vmalloc.h>

#include "zr_capture.h"

/* How long the capture interface waits for the end of a frame. */
#define FRAME_TIMEOUT_NS NSEC_PER_SEC

#define MINIMUM_BUFFERS 2

struct capture_buffer {
	struct vb2_v4l2_buffer vb;	/* first: the queue finds it there */
	struct list_head node;
};

static struct capture_buffer *buffer_of(struct vb2_buffer *vb)
{
	return container_of(to_vb2_v4l2_buffer(vb), struct capture_buffer, vb);
}

/* --- Buffers ------------------------------------------------------------- */

static int queue_setup(struct vb2_queue *queue, unsigned int *buffers,
		       unsigned int *planes, unsigned int sizes[],
		       struct device *devices[])
{
	struct zr_capture *capture = vb2_get_drv_priv(queue);
	unsigned int size = capture->format.sizeimage;

	if (*planes)
		return *planes == 1 && sizes[0] >= size ? 0 : -EINVAL;
	if (queue->num_buffers + *buffers < MINIMUM_BUFFERS)
		*buffers = MINIMUM_BUFFERS - queue->num_buffers;
	*planes = 1;
	sizes[0] = size;
	return 0;
}

static int buffer_prepare(struct vb2_buffer *vb)
{
	struct zr_capture *capture = vb2_get_drv_priv(vb->vb2_queue);
	unsigned int size = capture->format.sizeimage;

	if (vb2_plane_size(vb, 0) < size)
		return -EINVAL;
	vb2_set_plane_payload(vb, 0, size);
	return 0;
}

static void buffer_queue(struct vb2_buffer *vb)
{
	struct zr_capture *capture = vb2_get_drv_priv(vb->vb2_queue);

	spin_lock(&capture->buffers_lock);
	list_add_tail(&buffer_of(vb)->node, &capture->buffers);
	spin_unlock(&capture->buffers_lock);
}

static struct capture_buffer *next_buffer(struct zr_capture *capture)
{
	struct capture_buffer *buffer;

	spin_lock(&capture->buffers_lock);
	buffer = list_first_entry_or_null(&capture->buffers,
					  struct capture_buffer, node);
	if (buffer)
		list_del(&buffer->node);
	spin_unlock(&capture->buffers_lock);
	return buffer;
}

static void return_buffers(struct zr_capture *capture,
			   enum vb2_buffer_state state)
{
	struct capture_buffer *buffer;

	while ((buffer = next_buffer(capture)))
		vb2_buffer_done(&buffer->vb.vb2_buf, state);
}

/* --- Frames -------------------------------------------------------------- */

/*
 * A frame for which there is no buffer is lost, and its number with it. @end is
 * when the frame ended, however late the thread is.
 */
static void deliver_frame(struct zr_capture *capture, u32 number, u64 end)
{
	struct capture_buffer *buffer = next_buffer(capture);
	struct zr_look look;

	if (!buffer)
		return;
	zr_capture_look(capture, &look);
	zr_picture_set_look(&capture->picture, &look);
	zr_picture_draw(&capture->picture, number,
			vb2_plane_vaddr(&buffer->vb.vb2_buf, 0));
	buffer->vb.sequence = number;
	buffer->vb.field = capture->format.field;
	buffer->vb.vb2_buf.timestamp = end;
	WRITE_ONCE(capture->frames, capture->frames + 1);
	vb2_buffer_done(&buffer->vb.vb2_buf, VB2_BUF_STATE_DONE);
}

/* Links stay while a stream runs, but parts of the path may be taken away. */
static bool has_signal(struct zr_capture *capture)
{
	unsigned int input = zr_capture_control(capture, ZR_CAPTURE_INPUT);
	struct zr_decoder *decoder = capture->decoder;

	return zr_decoder_upstream(&capture->video.entity) == decoder &&
	       zr_decoder_signal(decoder, zr_decoder_camera(decoder, input));
}

/* Without frames the capture interface gives up, until the next STREAMON. */
static void fail_stream(struct zr_capture *capture)
{
	WRITE_ONCE(capture->failed, true);
	zr_log_text(capture->board->folder, "stream", "", 0, -EIO);
	vb2_queue_error(&capture->queue);
}

/* When frame @number ends, after the stream's start. */
static u64 frame_end(const struct zr_capture *capture, u32 number)
{
	return ((u64)number + 1) * capture->period_ns;
}

/* A knob leaves some out, for who takes long to show one. */
static bool is_delivered(const struct zr_capture *capture, u32 number)
{
	return number % READ_ONCE(capture->board->every) == 0;
}

static void wait_until(ktime_t when)
{
	set_current_state(TASK_INTERRUPTIBLE);
	if (kthread_should_stop())
		__set_current_state(TASK_RUNNING);
	else
		schedule_hrtimeout(&when, HRTIMER_MODE_ABS);
}

static int bring_frames(void *data)
{
	struct zr_capture *capture = data;
	u64 start = ktime_get_ns();
	u64 last = start;	/* when there was a frame */
	u32 number = 0;

	while (!kthread_should_stop()) {
		u64 end = start + frame_end(capture, number);
		u64 now;

		wait_until(ns_to_ktime(end));
		now = ktime_get_ns();
		if (now < end)
			continue;
		if (READ_ONCE(capture->board->stall)) {
			last = now;
		} else if (has_signal(capture)) {
			if (!capture->failed && is_delivered(capture, number))
				deliver_frame(capture, number, end);
			last = now;
		} else if (now - last >= FRAME_TIMEOUT_NS && !capture->failed) {
			fail_stream(capture);
		}
		/* What a busy machine was too late for is lost. */
		do {
			number++;
		} while (start + frame_end(capture, number) < now);
	}
	return 0;
}

/* --- Start and stop ------------------------------------------------------ */

static int start_frames(struct zr_capture *capture)
{
	struct task_struct *thread;
	struct v4l2_fract interval;
	struct zr_look look;
	int ret;

	zr_capture_look(capture, &look);
	interval = zr_capture_interval(look.ntsc);
	capture->period_ns = div_u64((u64)interval.numerator * NSEC_PER_SEC,
				     interval.denominator);
	capture->frames = 0;
	capture->failed = false;
	ret = zr_picture_init(&capture->picture, capture->format.pixelformat,
			      capture->format.width, capture->format.height,
			      &look);
	if (ret)
		return ret;
	thread = kthread_run(bring_frames, capture, "%s",
			     capture->board->folder);
	if (IS_ERR(thread)) {
		zr_picture_free(&capture->picture);
		return PTR_ERR(thread);
	}
	capture->thread = thread;
	return 0;
}

/* The graph validates the links, this node's own among them. */
static int start_pipeline(struct zr_capture *capture)
{
	int ret;

	/* Read and poll may have waited for the lock while the node went. */
	if (!video_is_registered(&capture->video))
		return -ENODEV;
	ret = zr_fault_take(&capture->board->fail_streamon);
	if (!ret)
		ret = media_pipeline_start(&capture->pad,
					   &capture->video.pipe);
	if (ret)
		return ret;
	/* From here on no link of the path changes. */
	capture->decoder = zr_decoder_upstream(&capture->video.entity);
	ret = capture->decoder ? start_frames(capture) : -ENOLINK;
	if (ret)
		media_pipeline_stop(&capture->pad);
	return ret;
}

static int start_streaming(struct vb2_queue *queue, unsigned int count)
{
	struct zr_capture *capture = vb2_get_drv_priv(queue);
	int ret = start_pipeline(capture);

	zr_log_text(capture->board->folder, "streamon", "", 0, ret);
	if (ret)
		return_buffers(capture, VB2_BUF_STATE_QUEUED);
	return ret;
}

static void stop_streaming(struct vb2_queue *queue)
{
	struct zr_capture *capture = vb2_get_drv_priv(queue);

	kthread_stop(capture->thread);
	capture->thread = NULL;
	media_pipeline_stop(&capture->pad);
	return_buffers(capture, VB2_BUF_STATE_ERROR);
	zr_picture_free(&capture->picture);
	zr_log_text(capture->board->folder, "streamoff", "", 0, 0);
}

static const struct vb2_ops queue_ops = {
	.queue_setup = queue_setup,
	.buf_prepare = buffer_prepare,
	.buf_queue = buffer_queue,
	.start_streaming = start_streaming,
	.stop_streaming = stop_streaming,
	.wait_prepare = vb2_ops_wait_prepare,
	.wait_finish = vb2_ops_wait_finish,
};

int zr_capture_init_queue(struct zr_capture *capture, struct device *dev)
{
	struct vb2_queue *queue = &capture->queue;

	spin_lock_init(&capture->buffers_lock);
	INIT_LIST_HEAD(&capture->buffers);
	queue->type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
	queue->io_modes = VB2_MMAP | VB2_USERPTR | VB2_DMABUF | VB2_READ;
	queue->dev = dev;
	queue->lock = &capture->lock;
	queue->ops = &queue_ops;
	queue->mem_ops = &vb2_vmalloc_memops;
	queue->drv_priv = capture;
	queue->buf_struct_size = sizeof(struct capture_buffer);
	queue->timestamp_flags = V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC;
	return vb2_queue_init(queue);
}
