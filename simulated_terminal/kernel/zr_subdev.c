// SPDX-License-Identifier: GPL-2.0
/* Sub-devices of the media graph: what they are made of. */
#include <linux/err.h>
#include <linux/module.h>
#include <linux/slab.h>

#include "zr_graph.h"

static const u32 functions[] = {
	[ZR_PART_DECODER] = MEDIA_ENT_F_ATV_DECODER,
	[ZR_PART_RECEIVER] = MEDIA_ENT_F_VID_IF_BRIDGE,
	[ZR_PART_MUX] = MEDIA_ENT_F_VID_MUX,
	[ZR_PART_INTERFACE] = MEDIA_ENT_F_VID_IF_BRIDGE,
};

bool zr_subdev_is_streaming(const struct zr_subdev *subdev)
{
	unsigned int i;

	for (i = 0; i < subdev->sd.entity.num_pads; i++)
		if (READ_ONCE(subdev->pads[i].pipe))
			return true;
	return false;
}

/* --- Links --------------------------------------------------------------- */

/* A multiplexer takes one input; its output carries that one's format. */
static int mux_link_setup(struct media_entity *entity,
			  const struct media_pad *local,
			  const struct media_pad *remote, u32 flags)
{
	struct v4l2_subdev *sd = media_entity_to_v4l2_subdev(entity);
	struct zr_subdev *subdev = zr_subdev_from(sd);
	unsigned int source = entity->num_pads - 1;
	struct v4l2_subdev_state *state;
	int ret = 0;

	if (!(local->flags & MEDIA_PAD_FL_SINK))
		return 0;
	state = v4l2_subdev_lock_and_get_active_state(sd);
	if (!(flags & MEDIA_LNK_FL_ENABLED)) {
		if (subdev->active == local->index)
			WRITE_ONCE(subdev->active, -1);
	} else if (subdev->active >= 0 && subdev->active != local->index) {
		ret = -EBUSY;
		zr_log_link(zr_part_of(remote->entity), remote->index,
			    subdev->part, local->index, flags, ret);
	} else {
		WRITE_ONCE(subdev->active, local->index);
		*v4l2_subdev_get_pad_format(sd, state, source) =
			*v4l2_subdev_get_pad_format(sd, state, local->index);
	}
	v4l2_subdev_unlock_state(state);
	return ret;
}

static const struct media_entity_operations entity_operations = {
	.link_validate = v4l2_subdev_link_validate,
};

static const struct media_entity_operations mux_operations = {
	.link_setup = mux_link_setup,
	.link_validate = v4l2_subdev_link_validate,
};

/* --- Frame intervals ----------------------------------------------------- */

static int get_interval(struct v4l2_subdev *sd,
			struct v4l2_subdev_frame_interval *interval)
{
	struct zr_subdev *subdev = zr_subdev_from(sd);

	mutex_lock(&subdev->interval_lock);
	interval->interval = subdev->intervals[interval->pad];
	mutex_unlock(&subdev->interval_lock);
	return 0;
}

static void keep_interval(struct zr_subdev *subdev, unsigned int pad,
			  struct v4l2_fract *interval)
{
	unsigned int i;

	mutex_lock(&subdev->interval_lock);
	/* One that makes no sense becomes what comes in. */
	if (!interval->numerator || !interval->denominator)
		*interval = subdev->intervals[0];
	subdev->intervals[pad] = *interval;
	if (pad == 0)
		for (i = 1; i < subdev->sd.entity.num_pads; i++)
			subdev->intervals[i] = *interval;
	mutex_unlock(&subdev->interval_lock);
}

static int set_interval(struct v4l2_subdev *sd,
			struct v4l2_subdev_frame_interval *interval)
{
	struct zr_subdev *subdev = zr_subdev_from(sd);
	int ret = zr_fault_take(&subdev->part->fail_interval);
	char text[48];
	int length;

	if (!ret && zr_subdev_is_streaming(subdev))
		ret = -EBUSY;
	if (!ret)
		keep_interval(subdev, interval->pad, &interval->interval);
	length = scnprintf(text, sizeof(text), "%u %u/%u", interval->pad,
			   interval->interval.numerator,
			   interval->interval.denominator);
	zr_log_text(subdev->part->key, "interval", text, length, ret);
	return ret;
}

static const struct v4l2_subdev_video_ops interface_video_ops = {
	.g_frame_interval = get_interval,
	.s_frame_interval = set_interval,
};

/* --- Their making -------------------------------------------------------- */

static const struct v4l2_subdev_ops decoder_ops = {
	.video = &zr_decoder_video_ops,
	.pad = &zr_subdev_pad_ops,
};

static const struct v4l2_subdev_ops interface_ops = {
	.video = &interface_video_ops,
	.pad = &zr_interface_pad_ops,
};

static const struct v4l2_subdev_ops plain_ops = {
	.pad = &zr_subdev_pad_ops,
};

static void subdev_release(struct v4l2_subdev *sd)
{
	WRITE_ONCE(zr_subdev_from(sd)->released, true);
}

static const struct v4l2_subdev_internal_ops internal_ops = {
	.release = subdev_release,
};

static const struct v4l2_subdev_ops *ops_of(enum zr_part_kind kind)
{
	switch (kind) {
	case ZR_PART_DECODER:
		return &decoder_ops;
	case ZR_PART_INTERFACE:
		return &interface_ops;
	default:
		return &plain_ops;
	}
}

static int init_pads(struct zr_subdev *subdev, const struct zr_part *part)
{
	unsigned int count = part->sinks + part->sources;
	unsigned int i;

	for (i = 0; i < count; i++) {
		subdev->pads[i].flags = i < part->sinks ? MEDIA_PAD_FL_SINK
							: MEDIA_PAD_FL_SOURCE;
		subdev->intervals[i].numerator = 1;
		subdev->intervals[i].denominator = 30;
	}
	/* Of its sinks a multiplexer needs one, which nobody else knows. */
	if (part->kind != ZR_PART_MUX && part->sinks)
		subdev->pads[0].flags |= MEDIA_PAD_FL_MUST_CONNECT;
	return media_entity_pads_init(&subdev->sd.entity, count, subdev->pads);
}

struct zr_subdev *zr_subdev_new(struct zr_graph *graph, struct zr_part *part)
{
	struct zr_subdev *subdev = kzalloc(sizeof(*subdev), GFP_KERNEL);
	struct v4l2_subdev *sd;
	int ret;

	if (!subdev)
		return ERR_PTR(-ENOMEM);
	subdev->part = part;
	subdev->graph = graph;
	subdev->active = -1;
	mutex_init(&subdev->interval_lock);

	sd = &subdev->sd;
	v4l2_subdev_init(sd, ops_of(part->kind));
	sd->internal_ops = &internal_ops;
	sd->owner = THIS_MODULE;
	sd->dev = graph->dev;
	sd->flags = V4L2_SUBDEV_FL_HAS_DEVNODE;
	strscpy(sd->name, part->name, sizeof(sd->name));
	sd->entity.function = functions[part->kind];
	sd->entity.ops = part->kind == ZR_PART_MUX ? &mux_operations
						   : &entity_operations;
	ret = init_pads(subdev, part);
	if (!ret)
		ret = v4l2_subdev_init_finalize(sd);
	if (ret) {
		kfree(subdev);
		return ERR_PTR(ret);
	}
	return subdev;
}

void zr_subdev_free(struct zr_subdev *subdev)
{
	v4l2_subdev_cleanup(&subdev->sd);
	media_entity_cleanup(&subdev->sd.entity);
	kfree(subdev);
}
