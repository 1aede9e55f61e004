/* SPDX-License-Identifier: GPL-2.0 */
/*
 * The simulated board: its devices, their attributes and their drivers.
 */
#ifndef ZR_TERMINAL_H
#define ZR_TERMINAL_H

#include <linux/device.h>
#include <linux/list.h>
#include <linux/mutex.h>

#include "zr_knob.h"

/* --- Module parameters ------------------------------------------------- */

/* The index of @value in the NULL-ended @choices, or -EINVAL and a report. */
int zr_parameter_choice(const char *parameter, const char *value,
			const char * const *choices);
/* Whether the comma-separated @list (NULL: empty) names @item. */
bool zr_list_has(const char *list, const char *item);
/*
 * 0 when @known says yes to each item of @list, or -EINVAL and a report.
 * Catches the misspelt name that would otherwise change nothing.
 */
int zr_list_check(const char *parameter, const char *list,
		  bool (*known)(const char *item));

/* Whether "variant" names the processor with two image processing units. */
bool zr_processor_is_quad(void);

/* --- Attributes of our own drivers -------------------------------------- */

/* The netlink family that tells of a changed value. */
enum zr_notify {
	ZR_NOTIFY_NOBODY,
	ZR_NOTIFY_DI,
	ZR_NOTIFY_DO,
	ZR_NOTIFY_ANALOG,
};

struct zr_attribute_spec {
	const char *name;
	umode_t mode;
	/* What a write may set, and the answer to other numbers. */
	int minimum;
	int maximum;
	int out_of_range;
	int initial;
	enum zr_notify notify;
};

struct zr_device;

struct zr_attribute {
	struct device_attribute sysfs;
	const struct zr_attribute_spec *spec;
	struct zr_device *owner;
	struct zr_value value;
	struct zr_fault fail_write;
};

int zr_attribute_init(struct zr_attribute *attribute, struct zr_device *owner,
		      const struct zr_attribute_spec *spec);
void zr_attribute_free(struct zr_attribute *attribute);
void zr_attribute_create_knobs(struct zr_attribute *attribute,
			       struct dentry *folder);

/* --- Notifications ------------------------------------------------------ */

int zr_notify_init(void);
void zr_notify_exit(void);
/* Tell whoever listens of a changed value. May sleep; @dev is alive. */
void zr_notify_value(struct zr_attribute *attribute, struct device *dev);

/* --- Devices ------------------------------------------------------------ */

#define ZR_ATTRIBUTES_MAX 8

struct zr_device_ops {
	/*
	 * Register with the kernel, and unregister so that no callback into
	 * the driver runs or starts afterwards. Never concurrent.
	 */
	int (*attach)(struct zr_device *device);
	void (*detach)(struct zr_device *device);
	/* Knobs beyond those of the attributes. May be NULL. */
	void (*create_knobs)(struct zr_device *device, struct dentry *folder);
};

struct zr_device {
	/* Set by the driver before zr_device_add(). */
	const char *name;
	const struct zr_device_ops *ops;
	const struct zr_attribute_spec *specs;	/* ended by a NULL name */
	const char *without;			/* list of attributes left out */

	/* Set by attach() where the device has attributes of ours. */
	struct device *dev;

	/* Held over attach and detach; whoever uses dev from a knob takes it. */
	struct mutex lock;
	bool present;

	struct zr_attribute *attributes;
	unsigned int attribute_count;
	struct attribute *group_attributes[ZR_ATTRIBUTES_MAX + 1];
	struct attribute_group group;
	const struct attribute_group *groups[2];

	struct list_head node;
};

/* The folder of all knobs. */
struct dentry *zr_knob_root(void);
int zr_device_add(struct zr_device *device);
void zr_device_remove_all(void);
/* Attach everything that was added, but what the parameter "absent" names. */
int zr_device_attach_all(void);

/*
 * The one place that hears of every changed value of our own attributes,
 * whether user space or a knob set it. @dev is alive during the call.
 */
void zr_value_changed(struct zr_attribute *attribute, struct device *dev);

/* --- Drivers ------------------------------------------------------------ */

/*
 * init adds the driver's devices. exit runs when all devices are gone, also
 * after a failed init, and undoes whatever init got done.
 */
int zr_platform_init(void);
int zr_analog_init(void);
void zr_analog_exit(void);
int zr_led_init(void);
void zr_led_exit(void);
int zr_backlight_init(void);
int zr_regulator_init(void);
void zr_regulator_exit(void);
int zr_input_init(void);
int zr_device_tree_init(void);
void zr_device_tree_exit(void);
int zr_can_init(void);
void zr_can_exit(void);
int zr_media_init(void);
void zr_media_exit(void);

#endif
