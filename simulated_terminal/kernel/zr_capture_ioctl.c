// SPDX-License-Identifier: GPL-2.0
/* What a capture node answers to the ioctls. */
#include <linux/kernel.h>
#include <media/v4l2-event.h>
#include <media/v4l2-ioctl.h>

#include "zr_capture.h"

static int query_capabilities(struct file *file, void *fh,
			      struct v4l2_capability *capability)
{
	struct zr_capture *capture = video_drvdata(file);

	strscpy(capability->driver, "zr_terminal", sizeof(capability->driver));
	strscpy(capability->card, capture->board->name,
		sizeof(capability->card));
	return 0;
}

/* --- Formats ------------------------------------------------------------- */

static int enumerate_formats(struct file *file, void *fh,
			     struct v4l2_fmtdesc *description)
{
	if (description->index >= ZR_CAPTURE_FORMATS)
		return -EINVAL;
	description->pixelformat = zr_capture_formats[description->index];
	return 0;
}

static int get_format(struct file *file, void *fh, struct v4l2_format *format)
{
	struct zr_capture *capture = video_drvdata(file);

	format->fmt.pix = capture->format;
	return 0;
}

static int try_format(struct file *file, void *fh, struct v4l2_format *format)
{
	zr_capture_adjust(video_drvdata(file), &format->fmt.pix);
	return 0;
}

static void log_format(const struct zr_capture *capture)
{
	const struct v4l2_pix_format *format = &capture->format;
	char text[32];
	int length;

	length = scnprintf(text, sizeof(text), "%.4s %ux%u",
			   (const char *)&format->pixelformat, format->width,
			   format->height);
	zr_log_text(capture->board->folder, "format", text, length, 0);
}

static int set_format(struct file *file, void *fh, struct v4l2_format *format)
{
	struct zr_capture *capture = video_drvdata(file);

	if (vb2_is_busy(&capture->queue))
		return -EBUSY;
	zr_capture_adjust(capture, &format->fmt.pix);
	capture->format = format->fmt.pix;
	log_format(capture);
	return 0;
}

/* The size that a format can have now. */
static bool size_of_now(struct zr_capture *capture, u32 pixel_format,
			struct v4l2_pix_format *format)
{
	format->pixelformat = pixel_format;
	zr_capture_adjust(capture, format);
	return format->pixelformat == pixel_format;
}

static int enumerate_sizes(struct file *file, void *fh,
			   struct v4l2_frmsizeenum *size)
{
	struct v4l2_pix_format format;

	if (size->index || !size_of_now(video_drvdata(file),
					size->pixel_format, &format))
		return -EINVAL;
	size->type = V4L2_FRMSIZE_TYPE_DISCRETE;
	size->discrete.width = format.width;
	size->discrete.height = format.height;
	return 0;
}

/* --- Standards: the decoder's -------------------------------------------- */

/* graph_mutex is held until unlock_decoder(), also when there is none. */
static struct v4l2_subdev *lock_decoder(struct zr_capture *capture)
{
	struct media_entity *entity = &capture->video.entity;
	struct zr_decoder *decoder;

	mutex_lock(&entity->graph_obj.mdev->graph_mutex);
	decoder = zr_decoder_upstream_locked(entity);
	return decoder ? zr_decoder_subdev(decoder) : NULL;
}

static void unlock_decoder(struct zr_capture *capture)
{
	struct media_entity *entity = &capture->video.entity;

	mutex_unlock(&entity->graph_obj.mdev->graph_mutex);
}

static v4l2_std_id standard_of(struct zr_capture *capture)
{
	struct zr_decoder *decoder =
		zr_decoder_upstream(&capture->video.entity);

	return decoder ? zr_decoder_standard(decoder) : V4L2_STD_UNKNOWN;
}

static int query_standard(struct file *file, void *fh, v4l2_std_id *standard)
{
	struct zr_capture *capture = video_drvdata(file);
	struct v4l2_subdev *decoder = lock_decoder(capture);
	int ret = -ENODATA;

	if (decoder)
		ret = v4l2_subdev_call(decoder, video, querystd, standard);
	unlock_decoder(capture);
	return ret;
}

static int get_standard(struct file *file, void *fh, v4l2_std_id *standard)
{
	struct zr_capture *capture = video_drvdata(file);
	struct v4l2_subdev *decoder = lock_decoder(capture);
	int ret = -ENODATA;

	if (decoder)
		ret = v4l2_subdev_call(decoder, video, g_std, standard);
	unlock_decoder(capture);
	return ret;
}

/* What is set already may be set again at any time. */
static int set_standard(struct file *file, void *fh, v4l2_std_id standard)
{
	struct zr_capture *capture = video_drvdata(file);
	struct v4l2_subdev *decoder;
	int ret = -ENODATA;

	if (vb2_is_busy(&capture->queue))
		return standard == standard_of(capture) ? 0 : -EBUSY;
	decoder = lock_decoder(capture);
	if (decoder)
		ret = v4l2_subdev_call(decoder, video, s_std, standard);
	unlock_decoder(capture);
	return ret;
}

/* --- Frame rate ---------------------------------------------------------- */

static const struct v4l2_fract pal_interval = { 1, 25 };
static const struct v4l2_fract ntsc_interval = { 1001, 30000 };

struct v4l2_fract zr_capture_interval(bool ntsc)
{
	return ntsc ? ntsc_interval : pal_interval;
}

/* Without a decoder it is PAL. */
static bool is_ntsc(struct zr_capture *capture)
{
	return standard_of(capture) & V4L2_STD_525_60;
}

/*
 * The pads speak of fields, 50 a second, and the capture interface can leave
 * some out: 25 frames a second are offered whatever the standard.
 */
static int enumerate_intervals(struct file *file, void *fh,
			       struct v4l2_frmivalenum *interval)
{
	struct zr_capture *capture = video_drvdata(file);
	struct v4l2_pix_format format;
	bool ntsc;

	if (!size_of_now(capture, interval->pixel_format, &format) ||
	    interval->width != format.width ||
	    interval->height != format.height)
		return -EINVAL;
	ntsc = is_ntsc(capture);
	if (interval->index > ntsc)
		return -EINVAL;
	interval->type = V4L2_FRMIVAL_TYPE_DISCRETE;
	interval->discrete = zr_capture_interval(ntsc && !interval->index);
	return 0;
}

static int get_parameters(struct file *file, void *fh,
			  struct v4l2_streamparm *parameters)
{
	if (parameters->type != V4L2_BUF_TYPE_VIDEO_CAPTURE)
		return -EINVAL;
	parameters->parm.capture.capability = V4L2_CAP_TIMEPERFRAME;
	parameters->parm.capture.timeperframe =
		zr_capture_interval(is_ntsc(video_drvdata(file)));
	parameters->parm.capture.readbuffers = 2;
	return 0;
}

/* --- Inputs: the one at the upper end of the links ----------------------- */

static int enumerate_inputs(struct file *file, void *fh,
			    struct v4l2_input *input)
{
	struct zr_capture *capture = video_drvdata(file);
	unsigned int select = zr_capture_control(capture, ZR_CAPTURE_INPUT);
	struct zr_decoder *decoder;

	if (input->index)
		return -EINVAL;
	input->type = V4L2_INPUT_TYPE_CAMERA;
	input->std = capture->video.tvnorms;
	input->capabilities = V4L2_IN_CAP_STD;
	decoder = zr_decoder_upstream(&capture->video.entity);
	if (!decoder) {
		strscpy(input->name, "Not linked", sizeof(input->name));
		input->status = V4L2_IN_ST_NO_SIGNAL;
		return 0;
	}
	select = zr_decoder_camera(decoder, select);
	snprintf(input->name, sizeof(input->name), "Camera %u", select + 1);
	if (!zr_decoder_signal(decoder, select))
		input->status = V4L2_IN_ST_NO_SIGNAL;
	return 0;
}

static int get_input(struct file *file, void *fh, unsigned int *input)
{
	*input = 0;
	return 0;
}

static int set_input(struct file *file, void *fh, unsigned int input)
{
	return input ? -EINVAL : 0;
}

/* --- Buffers ------------------------------------------------------------- */

/* Who waits for a frame while the node goes hears that it is gone. */
static int dequeue(struct file *file, void *fh, struct v4l2_buffer *buffer)
{
	int ret = vb2_ioctl_dqbuf(file, fh, buffer);

	return ret && !video_is_registered(video_devdata(file)) ? -ENODEV : ret;
}

const struct v4l2_ioctl_ops zr_capture_ioctl_ops = {
	.vidioc_querycap = query_capabilities,
	.vidioc_enum_fmt_vid_cap = enumerate_formats,
	.vidioc_g_fmt_vid_cap = get_format,
	.vidioc_try_fmt_vid_cap = try_format,
	.vidioc_s_fmt_vid_cap = set_format,
	.vidioc_enum_framesizes = enumerate_sizes,
	.vidioc_enum_frameintervals = enumerate_intervals,
	.vidioc_g_parm = get_parameters,
	/* The rate is the standard's: whatever is wanted, that is set. */
	.vidioc_s_parm = get_parameters,
	.vidioc_enum_input = enumerate_inputs,
	.vidioc_g_input = get_input,
	.vidioc_s_input = set_input,
	.vidioc_querystd = query_standard,
	.vidioc_g_std = get_standard,
	.vidioc_s_std = set_standard,
	.vidioc_reqbufs = vb2_ioctl_reqbufs,
	.vidioc_create_bufs = vb2_ioctl_create_bufs,
	.vidioc_prepare_buf = vb2_ioctl_prepare_buf,
	.vidioc_querybuf = vb2_ioctl_querybuf,
	.vidioc_qbuf = vb2_ioctl_qbuf,
	.vidioc_dqbuf = dequeue,
	.vidioc_expbuf = vb2_ioctl_expbuf,
	.vidioc_streamon = vb2_ioctl_streamon,
	.vidioc_streamoff = vb2_ioctl_streamoff,
	.vidioc_log_status = v4l2_ctrl_log_status,
	.vidioc_subscribe_event = v4l2_ctrl_subscribe_event,
	.vidioc_unsubscribe_event = v4l2_event_unsubscribe,
};
