// SPDX-License-Identifier: GPL-2.0
/* Devices of the board: their knob folders, their presence, their end. */
#include <linux/debugfs.h>
#include <linux/module.h>
#include <linux/slab.h>

#include "zr_terminal.h"

static char *absent;
module_param(absent, charp, 0444);
MODULE_PARM_DESC(absent, "List of devices that are not present at load");

static LIST_HEAD(devices);
static struct dentry *root;

static int set_present(struct zr_device *device, bool present)
{
	int ret = 0;

	mutex_lock(&device->lock);
	if (present && !device->present) {
		ret = device->ops->attach(device);
		device->present = !ret;
	} else if (!present && device->present) {
		/*
		 * Nobody may find the device while it goes, and detach waits
		 * for callbacks, which therefore never take this lock.
		 */
		device->present = false;
		device->ops->detach(device);
		device->dev = NULL;
	}
	mutex_unlock(&device->lock);
	return ret;
}

static int present_set(void *data, u64 present)
{
	if (present > 1)
		return -EINVAL;
	return set_present(data, present);
}

static int present_get(void *data, u64 *present)
{
	struct zr_device *device = data;

	mutex_lock(&device->lock);
	*present = device->present;
	mutex_unlock(&device->lock);
	return 0;
}
DEFINE_DEBUGFS_ATTRIBUTE(present_operations, present_get, present_set,
			 "%llu\n");

static unsigned int count_specs(const struct zr_attribute_spec *specs)
{
	unsigned int count = 0;

	while (specs && specs[count].name)
		count++;
	return count;
}

static int create_attributes(struct zr_device *device)
{
	unsigned int specs = count_specs(device->specs);
	unsigned int i;
	int ret;

	if (WARN_ON(specs > ZR_ATTRIBUTES_MAX))
		return -EINVAL;
	device->attributes = kcalloc(specs, sizeof(*device->attributes),
				     GFP_KERNEL);
	if (!device->attributes)
		return -ENOMEM;

	for (i = 0; i < specs; i++) {
		unsigned int n = device->attribute_count;

		if (zr_list_has(device->without, device->specs[i].name))
			continue;
		ret = zr_attribute_init(&device->attributes[n], device,
					&device->specs[i]);
		if (ret)
			return ret;
		device->group_attributes[n] = &device->attributes[n].sysfs.attr;
		device->attribute_count++;
	}
	device->group.attrs = device->group_attributes;
	device->groups[0] = &device->group;
	return 0;
}

static void free_attributes(struct zr_device *device)
{
	unsigned int i;

	for (i = 0; i < device->attribute_count; i++)
		zr_attribute_free(&device->attributes[i]);
	kfree(device->attributes);
	device->attributes = NULL;
	device->attribute_count = 0;
}

struct dentry *zr_knob_root(void)
{
	if (!root)
		root = debugfs_create_dir("zr_terminal", NULL);
	return root;
}

static void create_knobs(struct zr_device *device)
{
	struct dentry *folder;
	unsigned int i;

	folder = debugfs_create_dir(device->name, zr_knob_root());
	debugfs_create_file_unsafe("present", 0600, folder, device,
				   &present_operations);
	for (i = 0; i < device->attribute_count; i++)
		zr_attribute_create_knobs(&device->attributes[i], folder);
	if (device->ops->create_knobs)
		device->ops->create_knobs(device, folder);
}

int zr_device_add(struct zr_device *device)
{
	int ret;

	mutex_init(&device->lock);
	list_add_tail(&device->node, &devices);
	ret = create_attributes(device);
	if (ret)
		return ret;
	create_knobs(device);
	return 0;
}

static bool is_device(const char *name)
{
	struct zr_device *device;

	list_for_each_entry(device, &devices, node)
		if (!strcmp(device->name, name))
			return true;
	return false;
}

int zr_device_attach_all(void)
{
	struct zr_device *device;
	int ret = zr_list_check("absent", absent, is_device);

	if (ret)
		return ret;
	zr_log_create_knob(root);
	list_for_each_entry(device, &devices, node) {
		if (zr_list_has(absent, device->name))
			continue;
		ret = set_present(device, true);
		if (ret) {
			pr_err("zr_terminal: %s cannot be made: %d\n",
			       device->name, ret);
			return ret;
		}
	}
	return 0;
}

void zr_device_remove_all(void)
{
	struct zr_device *device;
	struct zr_device *next;

	/* Knobs first: none may bring a device back behind our back. */
	debugfs_remove(root);
	root = NULL;
	list_for_each_entry_safe_reverse(device, next, &devices, node) {
		set_present(device, false);
		free_attributes(device);
		list_del(&device->node);
	}
}
