/* SPDX-License-Identifier: GPL-2.0 */
/*
 * Where the capture nodes and the media graph of the board meet.
 *
 * Locks, outermost first: the lock of a zr_device, zr_media_lock, the media
 * device's graph_mutex, the state lock of a sub-device.
 */
#ifndef ZR_MEDIA_H
#define ZR_MEDIA_H

#include <linux/types.h>
#include <media/media-entity.h>
#include <media/v4l2-device.h>

#include "zr_terminal.h"

/* --- Capture nodes, as the graph sees them ------------------------------- */

struct zr_capture;

/*
 * Make a video node that is an entity named @name with one sink pad. The
 * node is registered, but not linked. Or an ERR_PTR. May sleep; the media
 * device of @v4l2 is initialised and not necessarily registered yet.
 */
struct zr_capture *zr_capture_add(struct v4l2_device *v4l2, const char *name);
/*
 * Take the node away. When this returns streaming has stopped and the entity
 * is in the graph no more, also where somebody still holds the node open; its
 * memory goes with the last holder.
 */
void zr_capture_remove(struct zr_capture *capture);
struct media_entity *zr_capture_entity(struct zr_capture *capture);
/*
 * What the input-select control holds. Called with graph_mutex held, so it
 * takes no lock: the control's value is kept in a word beside it.
 */
unsigned int zr_capture_input(struct zr_capture *capture);
/*
 * Knobs of the node named @name. They outlive the node, which comes and goes
 * below them, and are made once, in @folder.
 */
void zr_capture_create_knobs(const char *name, struct dentry *folder);

/* --- Decoders, as the capture nodes see them ----------------------------- */

/* Lives as long as the module, whether the decoder is there or not. */
struct zr_decoder;

#define ZR_CAMERAS 3

/*
 * The decoder at the upper end of the enabled links that lead to @entity, or
 * NULL. Takes graph_mutex: not for use under a control's or a state's lock.
 */
struct zr_decoder *zr_decoder_upstream(struct media_entity *entity);
/* As above, graph_mutex is held. */
struct zr_decoder *zr_decoder_upstream_locked(struct media_entity *entity);
/*
 * The sub-device of a decoder that is in the graph. graph_mutex is held, here
 * and while the caller asks it for standards: its s_std, g_std, querystd and
 * g_tvnorms rely on that.
 */
struct v4l2_subdev *zr_decoder_subdev(struct zr_decoder *decoder);

/* All below take no lock and may be called from any context. */

/* The camera (0 to 2) that @input, the input-select control's value, shows. */
unsigned int zr_decoder_camera(const struct zr_decoder *decoder,
			       unsigned int input);
/* What S_STD set last. */
v4l2_std_id zr_decoder_standard(const struct zr_decoder *decoder);
/* Whether the decoder is there and gets a signal from that camera. */
bool zr_decoder_signal(const struct zr_decoder *decoder, unsigned int camera);

#endif
