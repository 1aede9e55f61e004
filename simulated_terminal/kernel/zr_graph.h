/* SPDX-License-Identifier: GPL-2.0 */
/*
 * The media graph from the inside. A part is what the board has, for as long
 * as the module is loaded; its sub-device or capture node comes and goes.
 */
#ifndef ZR_GRAPH_H
#define ZR_GRAPH_H

#include <linux/rwsem.h>
#include <media/media-device.h>
#include <media/v4l2-subdev.h>

#include "zr_media.h"

#define ZR_PADS_MAX 6

enum zr_part_kind {
	ZR_PART_DECODER,
	ZR_PART_RECEIVER,	/* MIPI */
	ZR_PART_MUX,
	ZR_PART_INTERFACE,	/* of the image processing unit */
	ZR_PART_CAPTURE,
};

struct zr_part {
	/* Set by the board's table. */
	const char *key;	/* knob folder, and the name in the log */
	const char *name;	/* of the entity */
	enum zr_part_kind kind;
	u16 sinks;		/* the pads from 0 on */
	u16 sources;		/* the pads behind them */

	struct zr_device device;
	struct zr_decoder *decoder;

	/* Under zr_media_lock. */
	bool plugged;
	/* Written with graph_mutex held as well. */
	struct zr_subdev *subdev;
	struct zr_capture *capture;

	struct zr_fault fail_open;
	struct zr_fault fail_s_fmt;
	struct zr_fault fail_interval;
	struct zr_fault fail_link;
};

struct zr_link_spec {
	const char *source;
	u16 source_pad;
	const char *sink;
	u16 sink_pad;
};

struct zr_board {
	struct zr_part *parts;
	unsigned int part_count;
	const struct zr_link_spec *links;
	unsigned int link_count;
};

struct zr_graph {
	struct media_device media;
	struct v4l2_device v4l2;
	struct device *dev;
	/* All that were ever made, until they can be freed. */
	struct list_head subdevs;
};

struct zr_subdev {
	struct v4l2_subdev sd;
	struct media_pad pads[ZR_PADS_MAX];
	struct zr_part *part;
	struct zr_graph *graph;
	/* Multiplexer: the sink whose link is enabled, or -1. */
	int active;
	/* Interface: per pad, under interval_lock. */
	struct mutex interval_lock;
	struct v4l2_fract intervals[ZR_PADS_MAX];
	/* The last holder has gone. */
	bool released;
	struct list_head node;
};

static inline struct zr_subdev *zr_subdev_from(struct v4l2_subdev *sd)
{
	return container_of(sd, struct zr_subdev, sd);
}

/* --- The board: zr_graph_board.c ----------------------------------------- */

/* That of the processor that the parameter "variant" names. */
const struct zr_board *zr_board(void);
struct zr_part *zr_board_find(const char *key);

/* --- The media device: zr_media.c ---------------------------------------- */

/* The graph and what is in it. Never taken by a callback. */
extern struct mutex zr_media_lock;
/* NULL while there is no media device. Under zr_media_lock. */
extern struct zr_graph *zr_graph;
/*
 * Held for writing while nodes go, for reading by whoever enters one. Comes
 * after zr_media_lock and before graph_mutex.
 */
extern struct rw_semaphore zr_media_going;

/* --- Parts: zr_part.c ---------------------------------------------------- */

int zr_parts_add(void);
/* Both under zr_media_lock, with a graph. */
int zr_part_register(struct zr_part *part);
void zr_part_unregister(struct zr_part *part);
void zr_graph_free_subdevs(struct zr_graph *graph);
/* The part behind an entity. graph_mutex is held. */
struct zr_part *zr_part_of(struct media_entity *entity);

/* --- Sub-devices: zr_subdev.c, zr_subdev_node.c -------------------------- */

struct zr_subdev *zr_subdev_new(struct zr_graph *graph, struct zr_part *part);
void zr_subdev_free(struct zr_subdev *subdev);
/* Stand before the kernel's operations of its node, which exists. */
void zr_subdev_guard_node(struct zr_subdev *subdev);
/* Whether it belongs to a pipeline that runs. */
bool zr_subdev_is_streaming(const struct zr_subdev *subdev);

/* zr_subdev_format.c */
extern const struct v4l2_subdev_pad_ops zr_subdev_pad_ops;
extern const struct v4l2_subdev_pad_ops zr_interface_pad_ops;
/* "UYVY8_2X8/720x576 none" */
void zr_format_text(const struct v4l2_mbus_framefmt *format, char *text,
		    size_t size);

/* --- Decoders: zr_decoder.c, zr_decoder_knobs.c -------------------------- */

struct zr_camera {
	u64 detects;
	bool noise;		/* another standard each time */
	bool signal;
};

struct zr_decoder {
	struct zr_part *part;
	/* The camera behind each of its inputs. */
	u8 inputs[2];
	v4l2_std_id standard;
	bool there;
	unsigned int noise;	/* how often noise was looked at */
	struct zr_fault fail_querystd;
	struct zr_fault fail_g_std;
	struct zr_fault fail_s_std;
};

extern struct zr_camera zr_cameras[ZR_CAMERAS];
/* Called with graph_mutex held. */
extern const struct v4l2_subdev_video_ops zr_decoder_video_ops;

int zr_decoders_init(void);
/* The decoder has got power, or lost it. */
void zr_decoder_power(struct zr_decoder *decoder, bool on);
void zr_decoder_try_format(struct zr_decoder *decoder,
			   struct v4l2_mbus_framefmt *format);
void zr_decoder_create_knobs(struct zr_decoder *decoder, struct dentry *folder);

/* --- Knobs: zr_part_knobs.c ---------------------------------------------- */

void zr_part_create_knobs(struct zr_device *device, struct dentry *folder);
void zr_graph_create_knobs(struct dentry *folder);
void zr_log_link(const struct zr_part *source, unsigned int source_pad,
		 const struct zr_part *sink, unsigned int sink_pad, u32 flags,
		 int error);

#endif
