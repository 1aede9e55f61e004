// SPDX-License-Identifier: GPL-2.0
/* Nodes of sub-devices: what stands before the kernel's own operations. */
#include <linux/fs.h>
#include <media/v4l2-dev.h>

#include "zr_graph.h"

static const struct v4l2_file_operations *core_operations;
static struct v4l2_file_operations operations;

static struct zr_subdev *subdev_behind(struct file *file)
{
	return zr_subdev_from(vdev_to_v4l2_subdev(video_devdata(file)));
}

/*
 * The kernel's open follows pointers that are cleared before the node is
 * gone.
 */
static int guarded_open(struct file *file)
{
	int ret = -ENODEV;

	down_read(&zr_media_going);
	if (video_is_registered(video_devdata(file))) {
		ret = zr_fault_take(&subdev_behind(file)->part->fail_open);
		if (!ret)
			ret = core_operations->open(file);
	}
	up_read(&zr_media_going);
	return ret;
}

/* Which camera a decoder looks at depends on the links behind it. */
static bool needs_graph(unsigned int cmd)
{
	switch (cmd) {
	case VIDIOC_SUBDEV_QUERYSTD:
	case VIDIOC_SUBDEV_G_STD:
	case VIDIOC_SUBDEV_S_STD:
		return true;
	default:
		return false;
	}
}

static long guarded_ioctl(struct file *file, unsigned int cmd,
			  unsigned long arg)
{
	struct mutex *lock = &subdev_behind(file)->graph->media.graph_mutex;
	long ret;

	if (!needs_graph(cmd))
		return core_operations->unlocked_ioctl(file, cmd, arg);
	mutex_lock(lock);
	ret = core_operations->unlocked_ioctl(file, cmd, arg);
	mutex_unlock(lock);
	return ret;
}

void zr_subdev_guard_node(struct zr_subdev *subdev)
{
	struct video_device *node = subdev->sd.devnode;

	if (!core_operations) {
		core_operations = node->fops;
		operations = *core_operations;
		operations.open = guarded_open;
		operations.unlocked_ioctl = guarded_ioctl;
		/* Programs of 32 bits would get past the guard. */
		operations.compat_ioctl32 = NULL;
	}
	WRITE_ONCE(node->fops, &operations);
}
