// SPDX-License-Identifier: GPL-2.0
/* sysfs attributes of our own drivers: one number, checked and logged. */
#include <linux/debugfs.h>
#include <linux/kernel.h>
#include <linux/slab.h>
#include <linux/sysfs.h>

#include "zr_terminal.h"

static ssize_t attribute_show(struct device *dev,
			      struct device_attribute *sysfs, char *buf)
{
	struct zr_attribute *attribute =
		container_of(sysfs, struct zr_attribute, sysfs);

	/* Not sysfs_emit(): a knob may have put anything there, NULs too. */
	return zr_value_read(&attribute->value, buf);
}

static int attribute_parse(const struct zr_attribute_spec *spec,
			   const char *text, int *number)
{
	int ret = kstrtoint(text, 10, number);

	if (ret)
		return ret;
	if (*number < spec->minimum || *number > spec->maximum)
		return -spec->out_of_range;
	return 0;
}

static ssize_t attribute_store(struct device *dev,
			       struct device_attribute *sysfs,
			       const char *buf, size_t count)
{
	struct zr_attribute *attribute =
		container_of(sysfs, struct zr_attribute, sysfs);
	const struct zr_attribute_spec *spec = attribute->spec;
	struct zr_value *value = &attribute->value;
	bool changed = false;
	char text[16];
	int number;
	int length;
	int ret;

	/* Log and value under one lock: their orders must be the same. */
	mutex_lock(&value->lock);
	ret = zr_fault_take(&attribute->fail_write);
	if (!ret)
		ret = attribute_parse(spec, buf, &number);
	if (!ret) {
		length = scnprintf(text, sizeof(text), "%d\n", number);
		changed = zr_value_replace(value, text, length);
	}
	zr_log_text(attribute->owner->name, spec->name, buf, count, ret);
	mutex_unlock(&value->lock);

	if (changed)
		zr_value_changed(attribute, dev);
	return ret ? ret : count;
}

static void changed_by_knob(struct zr_value *value)
{
	struct zr_attribute *attribute =
		container_of(value, struct zr_attribute, value);
	struct zr_device *owner = attribute->owner;

	mutex_lock(&owner->lock);
	if (owner->present)
		zr_value_changed(attribute, owner->dev);
	mutex_unlock(&owner->lock);
}

void zr_value_changed(struct zr_attribute *attribute, struct device *dev)
{
	sysfs_notify(&dev->kobj, NULL, attribute->spec->name);
	zr_notify_value(attribute, dev);
}

int zr_attribute_init(struct zr_attribute *attribute, struct zr_device *owner,
		      const struct zr_attribute_spec *spec)
{
	char text[16];
	int length = scnprintf(text, sizeof(text), "%d\n", spec->initial);

	attribute->spec = spec;
	attribute->owner = owner;
	attribute->value.changed = changed_by_knob;
	zr_fault_init(&attribute->fail_write);

	sysfs_attr_init(&attribute->sysfs.attr);
	attribute->sysfs.attr.name = spec->name;
	attribute->sysfs.attr.mode = spec->mode;
	attribute->sysfs.show = attribute_show;
	if (spec->mode & 0222)
		attribute->sysfs.store = attribute_store;
	return zr_value_init(&attribute->value, text, length);
}

void zr_attribute_free(struct zr_attribute *attribute)
{
	zr_value_free(&attribute->value);
}

void zr_attribute_create_knobs(struct zr_attribute *attribute,
			       struct dentry *folder)
{
	folder = debugfs_create_dir(attribute->spec->name, folder);
	zr_value_create_knobs(&attribute->value, folder);
	if (attribute->sysfs.store)
		zr_fault_create_knob(&attribute->fail_write, "fail_write",
				     folder);
}
