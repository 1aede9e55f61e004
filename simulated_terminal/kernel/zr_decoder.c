// SPDX-License-Identifier: GPL-2.0
/* Video decoders: what they detect, and the standard that they are set to. */
#include <linux/kernel.h>
#include <linux/media-bus-format.h>
#include <linux/module.h>

#include "zr_graph.h"

#define ZR_WIDTH 720
#define ZR_HEIGHT_525_LINES 480
#define ZR_HEIGHT_625_LINES 576

/* Decoders of this kind start so. */
#define ZR_STANDARD_AT_POWER_ON V4L2_STD_NTSC

static char *tw9912 = "tw9912 1-0044";
module_param(tw9912, charp, 0444);
MODULE_PARM_DESC(tw9912, "Entity name of the decoder of cameras 0 and 2");

static char *adv7180 = "adv7180 1-0020";
module_param(adv7180, charp, 0444);
MODULE_PARM_DESC(adv7180, "Entity name of the decoder of camera 1");

struct zr_camera zr_cameras[ZR_CAMERAS];

static struct zr_decoder decoders[] = {
	{ .inputs = { 0, 2 } },
	{ .inputs = { 1, 1 } },
};

/* --- For capture nodes --------------------------------------------------- */

unsigned int zr_decoder_camera(const struct zr_decoder *decoder,
			       unsigned int input)
{
	return decoder->inputs[input ? 1 : 0];
}

v4l2_std_id zr_decoder_standard(const struct zr_decoder *decoder)
{
	return READ_ONCE(decoder->standard);
}

bool zr_decoder_signal(const struct zr_decoder *decoder, unsigned int camera)
{
	return READ_ONCE(decoder->there) && camera < ZR_CAMERAS &&
	       READ_ONCE(zr_cameras[camera].signal);
}

/* --- Standards ----------------------------------------------------------- */

static struct zr_decoder *decoder_of(struct v4l2_subdev *sd)
{
	return zr_subdev_from(sd)->part->decoder;
}

void zr_decoder_power(struct zr_decoder *decoder, bool on)
{
	if (on)
		WRITE_ONCE(decoder->standard, ZR_STANDARD_AT_POWER_ON);
	WRITE_ONCE(decoder->there, on);
}

/* The camera that the capture node behind it has selected, else the first. */
static unsigned int selected_camera(struct zr_decoder *decoder)
{
	const struct zr_board *board = zr_board();
	unsigned int i;

	for (i = 0; i < board->part_count; i++) {
		struct zr_capture *capture = board->parts[i].capture;

		if (capture &&
		    zr_decoder_upstream_locked(zr_capture_entity(capture)) ==
		    decoder)
			return zr_decoder_camera(decoder,
						 zr_capture_input(capture));
	}
	return decoder->inputs[0];
}

static v4l2_std_id detect(struct zr_decoder *decoder)
{
	/* A decoder takes noise for one standard now, for another one then. */
	static const v4l2_std_id guesses[] = {
		V4L2_STD_PAL, V4L2_STD_NTSC, V4L2_STD_SECAM, V4L2_STD_UNKNOWN,
	};
	unsigned int number = selected_camera(decoder);
	const struct zr_camera *camera = &zr_cameras[number];

	if (!zr_decoder_signal(decoder, number))
		return V4L2_STD_UNKNOWN;
	if (!READ_ONCE(camera->noise))
		return READ_ONCE(camera->detects);
	return guesses[decoder->noise++ % ARRAY_SIZE(guesses)];
}

static int querystd(struct v4l2_subdev *sd, v4l2_std_id *standard)
{
	struct zr_decoder *decoder = decoder_of(sd);
	int ret = zr_fault_take(&decoder->fail_querystd);

	if (!ret)
		*standard = detect(decoder);
	return ret;
}

static int g_std(struct v4l2_subdev *sd, v4l2_std_id *standard)
{
	struct zr_decoder *decoder = decoder_of(sd);
	int ret = zr_fault_take(&decoder->fail_g_std);

	if (!ret)
		*standard = zr_decoder_standard(decoder);
	return ret;
}

static int g_tvnorms(struct v4l2_subdev *sd, v4l2_std_id *standards)
{
	*standards = V4L2_STD_ALL;
	return 0;
}

static void apply_standard(struct v4l2_subdev *sd, v4l2_std_id standard)
{
	struct v4l2_subdev_state *state =
		v4l2_subdev_lock_and_get_active_state(sd);

	WRITE_ONCE(decoder_of(sd)->standard, standard);
	zr_decoder_try_format(decoder_of(sd),
			      v4l2_subdev_get_pad_format(sd, state, 0));
	v4l2_subdev_unlock_state(state);
}

static int s_std(struct v4l2_subdev *sd, v4l2_std_id standard)
{
	struct zr_decoder *decoder = decoder_of(sd);
	int ret = zr_fault_take(&decoder->fail_s_std);
	char text[24];
	int length;

	if (!ret && !(standard & V4L2_STD_ALL))
		ret = -EINVAL;
	if (!ret && zr_subdev_is_streaming(zr_subdev_from(sd)))
		ret = -EBUSY;
	if (!ret)
		apply_standard(sd, standard);
	length = scnprintf(text, sizeof(text), "0x%llx", standard);
	zr_log_text(decoder->part->key, "standard", text, length, ret);
	return ret;
}

const struct v4l2_subdev_video_ops zr_decoder_video_ops = {
	.querystd = querystd,
	.g_std = g_std,
	.s_std = s_std,
	.g_tvnorms = g_tvnorms,
};

/* --- Format -------------------------------------------------------------- */

/* A mask of several standards counts as one of 525 lines if any of them is. */
void zr_decoder_try_format(struct zr_decoder *decoder,
			   struct v4l2_mbus_framefmt *format)
{
	format->code = MEDIA_BUS_FMT_UYVY8_2X8;
	format->colorspace = V4L2_COLORSPACE_SMPTE170M;
	format->width = ZR_WIDTH;
	format->height = zr_decoder_standard(decoder) & V4L2_STD_525_60 ?
			 ZR_HEIGHT_525_LINES : ZR_HEIGHT_625_LINES;
	switch (format->field) {
	case V4L2_FIELD_NONE:
	case V4L2_FIELD_INTERLACED_TB:
	case V4L2_FIELD_INTERLACED_BT:
	case V4L2_FIELD_SEQ_TB:
	case V4L2_FIELD_SEQ_BT:
		break;
	case V4L2_FIELD_ALTERNATE:
		/* A frame is one field then. */
		format->height /= 2;
		break;
	default:
		format->field = V4L2_FIELD_INTERLACED;
	}
}

/* --- Start --------------------------------------------------------------- */

static int init_decoder(struct zr_decoder *decoder, const char *key,
			const char *name)
{
	struct zr_part *part = zr_board_find(key);

	if (!*name || strlen(name) >= V4L2_SUBDEV_NAME_SIZE) {
		pr_err("zr_terminal: parameter %s is no name for an entity: \"%s\"\n",
		       key, name);
		return -EINVAL;
	}
	part->name = name;
	part->decoder = decoder;
	decoder->part = part;
	decoder->standard = ZR_STANDARD_AT_POWER_ON;
	zr_fault_init(&decoder->fail_querystd);
	zr_fault_init(&decoder->fail_g_std);
	zr_fault_init(&decoder->fail_s_std);
	return 0;
}

int zr_decoders_init(void)
{
	unsigned int i;
	int ret;

	for (i = 0; i < ZR_CAMERAS; i++) {
		zr_cameras[i].detects = V4L2_STD_PAL;
		zr_cameras[i].signal = true;
	}
	ret = init_decoder(&decoders[0], "tw9912", tw9912);
	return ret ? ret : init_decoder(&decoders[1], "adv7180", adv7180);
}
