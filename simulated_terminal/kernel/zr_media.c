// SPDX-License-Identifier: GPL-2.0
/* The media device of the cameras' paths. */
#include <linux/err.h>
#include <linux/fs.h>
#include <linux/module.h>
#include <linux/platform_device.h>
#include <linux/slab.h>

#include "zr_graph.h"

#define ZR_MEDIA_DRIVER "zr-camera"

DEFINE_MUTEX(zr_media_lock);
struct zr_graph *zr_graph;
DECLARE_RWSEM(zr_media_going);

static bool driver_registered;
static struct zr_fault fail_info;
static struct zr_fault fail_entities;
static struct zr_fault fail_links;
static struct zr_fault fail_topology;

/* --- The media node ------------------------------------------------------ */

/* The kernel's own operations, and ours that stand before them. */
static const struct media_file_operations *core_operations;
static struct media_file_operations media_operations;

static int injected_failure(unsigned int cmd)
{
	switch (cmd) {
	case MEDIA_IOC_DEVICE_INFO:
		return zr_fault_take(&fail_info);
	case MEDIA_IOC_ENUM_ENTITIES:
		return zr_fault_take(&fail_entities);
	case MEDIA_IOC_ENUM_LINKS:
		return zr_fault_take(&fail_links);
	case MEDIA_IOC_G_TOPOLOGY:
		return zr_fault_take(&fail_topology);
	default:
		return 0;
	}
}

/*
 * The kernel looks whether the device is still there before it comes here,
 * and then uses what may have been freed meanwhile.
 */
static long guarded_ioctl(struct file *file, unsigned int cmd,
			  unsigned long arg)
{
	long ret = -ENODEV;

	down_read(&zr_media_going);
	if (media_devnode_is_registered(media_devnode_data(file))) {
		ret = injected_failure(cmd);
		if (!ret)
			ret = core_operations->ioctl(file, cmd, arg);
	}
	up_read(&zr_media_going);
	return ret;
}

static void guard_media_node(struct media_devnode *devnode)
{
	if (!core_operations) {
		core_operations = devnode->fops;
		media_operations = *core_operations;
		media_operations.ioctl = guarded_ioctl;
		/* Programs of 32 bits would get past the guard. */
		media_operations.compat_ioctl = NULL;
	}
	WRITE_ONCE(devnode->fops, &media_operations);
}

/* --- Links --------------------------------------------------------------- */

static int take_link_fault(struct zr_part *source, struct zr_part *sink)
{
	int ret = source ? zr_fault_take(&source->fail_link) : 0;

	return ret || !sink ? ret : zr_fault_take(&sink->fail_link);
}

/* graph_mutex is held. */
static int link_notify(struct media_link *link, u32 flags,
		       unsigned int notification)
{
	struct zr_part *source = zr_part_of(link->source->entity);
	struct zr_part *sink = zr_part_of(link->sink->entity);
	int ret = 0;

	if (notification == MEDIA_DEV_NOTIFY_PRE_LINK_CH)
		ret = take_link_fault(source, sink);
	/* What has come into effect, or what we made fail. */
	if (ret || (notification == MEDIA_DEV_NOTIFY_POST_LINK_CH &&
		    link->flags == flags))
		zr_log_link(source, link->source->index, sink,
			    link->sink->index, flags, ret);
	return ret;
}

static const struct media_device_ops media_ops = {
	.link_notify = link_notify,
};

/* --- Coming and going ---------------------------------------------------- */

/* The last node has been closed. */
static void release_graph(struct v4l2_device *v4l2)
{
	struct zr_graph *graph = container_of(v4l2, struct zr_graph, v4l2);

	zr_graph_free_subdevs(graph);
	media_device_cleanup(&graph->media);
	put_device(graph->dev);
	kfree(graph);
}

static int init_graph(struct zr_graph *graph, struct device *dev)
{
	int ret;

	INIT_LIST_HEAD(&graph->subdevs);
	graph->media.dev = dev;
	graph->media.ops = &media_ops;
	strscpy(graph->media.model, "zr-terminal-camera",
		sizeof(graph->media.model));
	strscpy(graph->media.driver_name, ZR_MEDIA_DRIVER,
		sizeof(graph->media.driver_name));
	media_device_init(&graph->media);
	graph->v4l2.mdev = &graph->media;
	graph->v4l2.release = release_graph;
	ret = v4l2_device_register(dev, &graph->v4l2);
	if (ret) {
		media_device_cleanup(&graph->media);
		return ret;
	}
	graph->dev = get_device(dev);
	return 0;
}

static struct zr_graph *make_graph(void)
{
	struct platform_device *platform;
	struct zr_graph *graph;
	int ret;

	platform = platform_device_register_simple(ZR_MEDIA_DRIVER,
						   PLATFORM_DEVID_NONE,
						   NULL, 0);
	if (IS_ERR(platform))
		return ERR_CAST(platform);
	/* Sub-device nodes cannot be opened below a device without a driver. */
	ret = platform->dev.driver ? 0 : -ENODEV;
	graph = ret ? NULL : kzalloc(sizeof(*graph), GFP_KERNEL);
	if (graph)
		ret = init_graph(graph, &platform->dev);
	if (!graph || ret) {
		kfree(graph);
		platform_device_unregister(platform);
		return ERR_PTR(ret ? ret : -ENOMEM);
	}
	return graph;
}

static int register_parts(void)
{
	const struct zr_board *board = zr_board();
	unsigned int i;
	int ret = 0;

	for (i = 0; i < board->part_count && !ret; i++)
		if (board->parts[i].plugged)
			ret = zr_part_register(&board->parts[i]);
	return ret;
}

static void unregister_parts(void)
{
	const struct zr_board *board = zr_board();
	unsigned int i;

	for (i = board->part_count; i--; )
		zr_part_unregister(&board->parts[i]);
}

/*
 * Nodes that are still held open take their interface off the graph when they
 * are closed. The media device would free it now, before them.
 */
static void leave_open_interfaces(struct media_device *media)
{
	struct media_interface *interface;
	struct media_interface *next;

	mutex_lock(&media->graph_mutex);
	list_for_each_entry_safe(interface, next, &media->interfaces,
				 graph_obj.list) {
		__media_remove_intf_links(interface);
		list_del_init(&interface->graph_obj.list);
	}
	mutex_unlock(&media->graph_mutex);
}

/* Under zr_media_lock. */
static void remove_graph(void)
{
	struct zr_graph *graph = zr_graph;
	struct platform_device *platform = to_platform_device(graph->dev);

	unregister_parts();
	zr_graph = NULL;
	down_write(&zr_media_going);
	leave_open_interfaces(&graph->media);
	media_device_unregister(&graph->media);
	up_write(&zr_media_going);
	v4l2_device_unregister(&graph->v4l2);
	platform_device_unregister(platform);
	v4l2_device_put(&graph->v4l2);
}

static int media_attach(struct zr_device *device)
{
	int ret;

	mutex_lock(&zr_media_lock);
	zr_graph = make_graph();
	if (IS_ERR(zr_graph)) {
		ret = PTR_ERR(zr_graph);
		zr_graph = NULL;
		mutex_unlock(&zr_media_lock);
		return ret;
	}
	ret = register_parts();
	if (!ret)
		ret = media_device_register(&zr_graph->media);
	if (ret)
		remove_graph();
	else
		guard_media_node(zr_graph->media.devnode);
	mutex_unlock(&zr_media_lock);
	return ret;
}

static void media_detach(struct zr_device *device)
{
	mutex_lock(&zr_media_lock);
	remove_graph();
	mutex_unlock(&zr_media_lock);
}

static void media_create_knobs(struct zr_device *device, struct dentry *folder)
{
	zr_graph_create_knobs(folder);
	zr_fault_create_knob(&fail_info, "fail_info", folder);
	zr_fault_create_knob(&fail_entities, "fail_entities", folder);
	zr_fault_create_knob(&fail_links, "fail_links", folder);
	zr_fault_create_knob(&fail_topology, "fail_topology", folder);
}

static const struct zr_device_ops media_device_ops = {
	.attach = media_attach,
	.detach = media_detach,
	.create_knobs = media_create_knobs,
};

static struct zr_device media = { .name = "media", .ops = &media_device_ops };

/* --- The driver of the device above them all ----------------------------- */

static int camera_probe(struct platform_device *platform)
{
	return 0;
}

static struct platform_driver camera_driver = {
	.probe = camera_probe,
	.driver = { .name = ZR_MEDIA_DRIVER },
};

int zr_media_init(void)
{
	int ret;

	zr_fault_init(&fail_info);
	zr_fault_init(&fail_entities);
	zr_fault_init(&fail_links);
	zr_fault_init(&fail_topology);
	ret = zr_decoders_init();
	if (!ret)
		ret = platform_driver_register(&camera_driver);
	if (ret)
		return ret;
	driver_registered = true;
	/* First, so that each part finds it, and it goes when they are gone. */
	ret = zr_device_add(&media);
	return ret ? ret : zr_parts_add();
}

void zr_media_exit(void)
{
	if (driver_registered)
		platform_driver_unregister(&camera_driver);
}
