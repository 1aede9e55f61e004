// SPDX-License-Identifier: GPL-2.0
/* Parts of the media graph: their presence, their links, their end. */
#include <linux/err.h>
#include <linux/kernel.h>
#include <linux/slab.h>

#include "zr_graph.h"

/* Longer than any path of the board. */
#define ZR_PATH_MAX 8

/* --- Who is who ---------------------------------------------------------- */

static struct media_entity *entity_of(const struct zr_part *part)
{
	if (part->subdev)
		return &part->subdev->sd.entity;
	return part->capture ? zr_capture_entity(part->capture) : NULL;
}

struct zr_part *zr_part_of(struct media_entity *entity)
{
	const struct zr_board *board = zr_board();
	unsigned int i;

	for (i = 0; i < board->part_count; i++)
		if (entity_of(&board->parts[i]) == entity)
			return &board->parts[i];
	return NULL;
}

/* The entity at the other end of the enabled link to a sink of @entity. */
static struct media_entity *entity_before(struct media_entity *entity)
{
	struct media_link *link;

	for_each_media_entity_data_link(entity, link)
		if (link->sink->entity == entity &&
		    (link->flags & MEDIA_LNK_FL_ENABLED))
			return link->source->entity;
	return NULL;
}

struct zr_decoder *zr_decoder_upstream_locked(struct media_entity *entity)
{
	unsigned int steps;

	for (steps = 0; entity && steps < ZR_PATH_MAX; steps++) {
		struct zr_part *part = zr_part_of(entity);

		if (part && part->kind == ZR_PART_DECODER)
			return part->decoder;
		entity = entity_before(entity);
	}
	return NULL;
}

struct zr_decoder *zr_decoder_upstream(struct media_entity *entity)
{
	struct media_device *media = READ_ONCE(entity->graph_obj.mdev);
	struct zr_decoder *decoder;

	if (!media)
		return NULL;
	mutex_lock(&media->graph_mutex);
	decoder = zr_decoder_upstream_locked(entity);
	mutex_unlock(&media->graph_mutex);
	return decoder;
}

struct v4l2_subdev *zr_decoder_subdev(struct zr_decoder *decoder)
{
	return decoder->part->subdev ? &decoder->part->subdev->sd : NULL;
}

/* --- Links --------------------------------------------------------------- */

static int make_link(const struct zr_link_spec *spec)
{
	struct zr_part *source = zr_board_find(spec->source);
	struct zr_part *sink = zr_board_find(spec->sink);

	if (!entity_of(source) || !entity_of(sink))
		return 0;
	return media_create_pad_link(entity_of(source), spec->source_pad,
				     entity_of(sink), spec->sink_pad, 0);
}

/* With whatever of its neighbours is there. */
static int make_links(const struct zr_part *part)
{
	const struct zr_board *board = zr_board();
	unsigned int i;
	int ret = 0;

	mutex_lock(&zr_graph->media.graph_mutex);
	for (i = 0; i < board->link_count && !ret; i++)
		if (!strcmp(board->links[i].source, part->key) ||
		    !strcmp(board->links[i].sink, part->key))
			ret = make_link(&board->links[i]);
	mutex_unlock(&zr_graph->media.graph_mutex);
	return ret;
}

/* Links go with their entity, and nobody would tell the multiplexers. */
static void release_sinks(struct media_entity *entity)
{
	struct media_link *link;

	for_each_media_entity_data_link(entity, link)
		if (link->source->entity == entity &&
		    (link->flags & MEDIA_LNK_FL_ENABLED))
			media_entity_call(link->sink->entity, link_setup,
					  link->sink, link->source, 0);
}

/* --- Sub-devices --------------------------------------------------------- */

/*
 * The kernel writes to a sub-device once more after its release, and clears
 * its node then; a pipeline that still runs writes to its pads at its end.
 */
static bool can_be_freed(const struct zr_subdev *subdev)
{
	return READ_ONCE(subdev->released) && !READ_ONCE(subdev->sd.devnode) &&
	       !zr_subdev_is_streaming(subdev);
}

static void free_retired(struct zr_graph *graph)
{
	struct zr_subdev *subdev;
	struct zr_subdev *next;

	list_for_each_entry_safe(subdev, next, &graph->subdevs, node) {
		if (!can_be_freed(subdev))
			continue;
		list_del(&subdev->node);
		zr_subdev_free(subdev);
	}
}

void zr_graph_free_subdevs(struct zr_graph *graph)
{
	struct zr_subdev *subdev;
	struct zr_subdev *next;

	list_for_each_entry_safe(subdev, next, &graph->subdevs, node)
		zr_subdev_free(subdev);
}

static int register_subdev(struct zr_part *part)
{
	struct zr_graph *graph = zr_graph;
	struct zr_subdev *subdev;
	int ret;

	free_retired(graph);
	subdev = zr_subdev_new(graph, part);
	if (IS_ERR(subdev))
		return PTR_ERR(subdev);
	ret = v4l2_device_register_subdev(&graph->v4l2, &subdev->sd);
	if (ret) {
		zr_subdev_free(subdev);
		return ret;
	}
	list_add_tail(&subdev->node, &graph->subdevs);
	ret = v4l2_device_register_subdev_nodes(&graph->v4l2);
	if (ret) {
		v4l2_device_unregister_subdev(&subdev->sd);
		return ret;
	}
	zr_subdev_guard_node(subdev);
	mutex_lock(&graph->media.graph_mutex);
	part->subdev = subdev;
	mutex_unlock(&graph->media.graph_mutex);
	return 0;
}

static void unregister_subdev(struct zr_part *part)
{
	struct media_device *media = &zr_graph->media;
	struct zr_subdev *subdev = part->subdev;

	mutex_lock(&media->graph_mutex);
	release_sinks(&subdev->sd.entity);
	part->subdev = NULL;
	mutex_unlock(&media->graph_mutex);

	down_write(&zr_media_going);
	v4l2_device_unregister_subdev(&subdev->sd);
	up_write(&zr_media_going);
}

/* --- Capture nodes ------------------------------------------------------- */

static int register_capture(struct zr_part *part)
{
	struct zr_capture *capture = zr_capture_add(&zr_graph->v4l2,
						    part->name);

	if (IS_ERR(capture))
		return PTR_ERR(capture);
	mutex_lock(&zr_graph->media.graph_mutex);
	part->capture = capture;
	mutex_unlock(&zr_graph->media.graph_mutex);
	return 0;
}

static void unregister_capture(struct zr_part *part)
{
	struct zr_capture *capture = part->capture;

	mutex_lock(&zr_graph->media.graph_mutex);
	part->capture = NULL;
	mutex_unlock(&zr_graph->media.graph_mutex);
	zr_capture_remove(capture);
}

/* --- Parts --------------------------------------------------------------- */

int zr_part_register(struct zr_part *part)
{
	int ret;

	/* Its formats start from the standard that it has then. */
	if (part->decoder)
		zr_decoder_power(part->decoder, true);
	ret = part->kind == ZR_PART_CAPTURE ? register_capture(part)
					    : register_subdev(part);
	if (!ret)
		ret = make_links(part);
	if (ret)
		zr_part_unregister(part);
	return ret;
}

void zr_part_unregister(struct zr_part *part)
{
	if (part->decoder)
		zr_decoder_power(part->decoder, false);
	if (part->subdev)
		unregister_subdev(part);
	if (part->capture)
		unregister_capture(part);
}

static int part_attach(struct zr_device *device)
{
	struct zr_part *part = container_of(device, struct zr_part, device);
	int ret = 0;

	mutex_lock(&zr_media_lock);
	/* Without a media device it comes into sight together with that. */
	if (zr_graph)
		ret = zr_part_register(part);
	part->plugged = !ret;
	mutex_unlock(&zr_media_lock);
	return ret;
}

static void part_detach(struct zr_device *device)
{
	struct zr_part *part = container_of(device, struct zr_part, device);

	mutex_lock(&zr_media_lock);
	part->plugged = false;
	if (zr_graph)
		zr_part_unregister(part);
	mutex_unlock(&zr_media_lock);
}

static const struct zr_device_ops part_ops = {
	.attach = part_attach,
	.detach = part_detach,
	.create_knobs = zr_part_create_knobs,
};

int zr_parts_add(void)
{
	const struct zr_board *board = zr_board();
	unsigned int i;
	int ret = 0;

	for (i = 0; i < board->part_count && !ret; i++) {
		struct zr_part *part = &board->parts[i];

		zr_fault_init(&part->fail_open);
		zr_fault_init(&part->fail_s_fmt);
		zr_fault_init(&part->fail_interval);
		zr_fault_init(&part->fail_link);
		part->device.name = part->key;
		part->device.ops = &part_ops;
		ret = zr_device_add(&part->device);
	}
	return ret;
}
