// SPDX-License-Identifier: GPL-2.0
/* Knobs of the media graph and of its parts, and their lines in the log. */
#include <linux/debugfs.h>
#include <linux/media-bus-format.h>
#include <linux/module.h>
#include <linux/seq_file.h>

#include "zr_graph.h"

/* --- Texts --------------------------------------------------------------- */

static const struct {
	u32 code;
	const char *name;
} codes[] = {
	{ MEDIA_BUS_FMT_UYVY8_2X8, "UYVY8_2X8" },
	{ MEDIA_BUS_FMT_YUYV8_2X8, "YUYV8_2X8" },
	{ MEDIA_BUS_FMT_UYVY8_1X16, "UYVY8_1X16" },
	{ MEDIA_BUS_FMT_AYUV8_1X32, "AYUV8_1X32" },
};

static const char * const fields[] = {
	[V4L2_FIELD_ANY] = "any",
	[V4L2_FIELD_NONE] = "none",
	[V4L2_FIELD_TOP] = "top",
	[V4L2_FIELD_BOTTOM] = "bottom",
	[V4L2_FIELD_INTERLACED] = "interlaced",
	[V4L2_FIELD_SEQ_TB] = "seq-tb",
	[V4L2_FIELD_SEQ_BT] = "seq-bt",
	[V4L2_FIELD_ALTERNATE] = "alternate",
	[V4L2_FIELD_INTERLACED_TB] = "interlaced-tb",
	[V4L2_FIELD_INTERLACED_BT] = "interlaced-bt",
};

void zr_format_text(const struct v4l2_mbus_framefmt *format, char *text,
		    size_t size)
{
	char code[16];
	unsigned int i;

	snprintf(code, sizeof(code), "0x%04x", format->code);
	for (i = 0; i < ARRAY_SIZE(codes); i++)
		if (codes[i].code == format->code)
			strscpy(code, codes[i].name, sizeof(code));
	snprintf(text, size, "%s/%ux%u %s", code, format->width,
		 format->height,
		 format->field < ARRAY_SIZE(fields) ? fields[format->field]
						    : "?");
}

static const char *key_of(const struct zr_part *part)
{
	return part ? part->key : "?";
}

void zr_log_link(const struct zr_part *source, unsigned int source_pad,
		 const struct zr_part *sink, unsigned int sink_pad, u32 flags,
		 int error)
{
	char text[64];
	int length = scnprintf(text, sizeof(text), "%u -> %s:%u %u",
			       source_pad, key_of(sink), sink_pad,
			       flags & MEDIA_LNK_FL_ENABLED ? 1 : 0);

	zr_log_text(key_of(source), "link", text, length, error);
}

/* --- The graph ----------------------------------------------------------- */

static void show_link(struct seq_file *file, const struct media_link *link)
{
	seq_printf(file, "%s:%u -> %s:%u %u\n",
		   key_of(zr_part_of(link->source->entity)),
		   link->source->index,
		   key_of(zr_part_of(link->sink->entity)), link->sink->index,
		   link->flags & MEDIA_LNK_FL_ENABLED ? 1 : 0);
}

static int links_show(struct seq_file *file, void *v)
{
	struct media_link *link;

	mutex_lock(&zr_media_lock);
	if (zr_graph) {
		mutex_lock(&zr_graph->media.graph_mutex);
		media_device_for_each_link(link, &zr_graph->media)
			if (!link->is_backlink &&
			    media_type(link->gobj0) == MEDIA_GRAPH_PAD)
				show_link(file, link);
		mutex_unlock(&zr_graph->media.graph_mutex);
	}
	mutex_unlock(&zr_media_lock);
	return 0;
}
DEFINE_SHOW_ATTRIBUTE(links);

void zr_graph_create_knobs(struct dentry *folder)
{
	debugfs_create_file("links", 0400, folder, NULL, &links_fops);
}

/* --- Parts --------------------------------------------------------------- */

static void show_pad(struct seq_file *file, struct zr_subdev *subdev,
		     const struct v4l2_mbus_framefmt *format, unsigned int pad)
{
	const struct v4l2_fract *interval = &subdev->intervals[pad];
	char text[64];

	zr_format_text(format, text, sizeof(text));
	seq_printf(file, "%u %s", pad, text);
	if (subdev->part->kind == ZR_PART_INTERFACE) {
		mutex_lock(&subdev->interval_lock);
		seq_printf(file, " %u/%u", interval->numerator,
			   interval->denominator);
		mutex_unlock(&subdev->interval_lock);
	}
	seq_putc(file, '\n');
}

static int formats_show(struct seq_file *file, void *v)
{
	struct zr_part *part = file->private;
	struct v4l2_subdev_state *state;
	struct v4l2_subdev *sd;
	unsigned int i;

	mutex_lock(&zr_media_lock);
	if (part->subdev) {
		sd = &part->subdev->sd;
		state = v4l2_subdev_lock_and_get_active_state(sd);
		for (i = 0; i < sd->entity.num_pads; i++)
			show_pad(file, part->subdev,
				 v4l2_subdev_get_pad_format(sd, state, i), i);
		v4l2_subdev_unlock_state(state);
	}
	mutex_unlock(&zr_media_lock);
	return 0;
}
DEFINE_SHOW_ATTRIBUTE(formats);

void zr_part_create_knobs(struct zr_device *device, struct dentry *folder)
{
	struct zr_part *part = container_of(device, struct zr_part, device);

	zr_fault_create_knob(&part->fail_link, "fail_link", folder);
	if (part->kind == ZR_PART_CAPTURE) {
		zr_capture_create_knobs(part->name, folder);
		return;
	}
	debugfs_create_file("formats", 0400, folder, part, &formats_fops);
	zr_fault_create_knob(&part->fail_open, "fail_open", folder);
	zr_fault_create_knob(&part->fail_s_fmt, "fail_s_fmt", folder);
	if (part->kind == ZR_PART_INTERFACE)
		zr_fault_create_knob(&part->fail_interval,
				     "fail_s_frame_interval", folder);
	if (part->decoder)
		zr_decoder_create_knobs(part->decoder, folder);
}
