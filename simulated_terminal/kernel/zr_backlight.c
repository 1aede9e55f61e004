// SPDX-License-Identifier: GPL-2.0
/* The display's backlight, in one of the three places where boards have it. */
#include <linux/backlight.h>
#include <linux/debugfs.h>
#include <linux/err.h>
#include <linux/module.h>
#include <linux/platform_device.h>

#include "zr_terminal.h"

#define ZR_BACKLIGHT_MAX 255

static char *parameter = "pwm";
module_param_named(backlight, parameter, charp, 0444);
MODULE_PARM_DESC(backlight, "Backlight device: pwm, class, legacy, none");

static enum { PLACE_PWM, PLACE_CLASS, PLACE_LEGACY, PLACE_NONE } place;

static const char * const places[] = {
	[PLACE_PWM] = "pwm",
	[PLACE_CLASS] = "class",
	[PLACE_LEGACY] = "legacy",
	[PLACE_NONE] = "none",
	NULL
};

struct zr_backlight {
	struct zr_device device;
	int level;	/* what the lamp shows; READ_ONCE and WRITE_ONCE */
	struct zr_fault fail_write;
	struct platform_device *parent;	/* only with backlight=pwm */
	struct backlight_device *class;
};

static int backlight_update(struct backlight_device *class)
{
	struct zr_backlight *backlight = bl_get_data(class);
	int level = backlight_get_brightness(class);
	int ret = zr_fault_take(&backlight->fail_write);

	if (!ret)
		WRITE_ONCE(backlight->level, level);
	zr_log_number("backlight", "brightness", level, ret);
	return ret;
}

static int backlight_level(struct backlight_device *class)
{
	struct zr_backlight *backlight = bl_get_data(class);

	return READ_ONCE(backlight->level);
}

static const struct backlight_ops class_ops = {
	.update_status = backlight_update,
	.get_brightness = backlight_level,
};

static int backlight_attach(struct zr_device *device)
{
	struct zr_backlight *backlight =
		container_of(device, struct zr_backlight, device);
	const struct backlight_properties properties = {
		.type = BACKLIGHT_RAW,
		.max_brightness = ZR_BACKLIGHT_MAX,
		.brightness = READ_ONCE(backlight->level),
	};
	const char *name = place == PLACE_CLASS ? "backlight"
						: "pwm-backlight.0";
	struct platform_device *parent = NULL;
	struct backlight_device *class;

	if (place == PLACE_PWM) {
		parent = platform_device_register_simple("pwm-backlight", 0,
							 NULL, 0);
		if (IS_ERR(parent))
			return PTR_ERR(parent);
	}
	class = backlight_device_register(name, parent ? &parent->dev : NULL,
					  backlight, &class_ops, &properties);
	if (IS_ERR(class)) {
		platform_device_unregister(parent);
		return PTR_ERR(class);
	}
	backlight->parent = parent;
	backlight->class = class;
	return 0;
}

static void backlight_detach(struct zr_device *device)
{
	struct zr_backlight *backlight =
		container_of(device, struct zr_backlight, device);

	backlight_device_unregister(backlight->class);
	platform_device_unregister(backlight->parent);
}

static int level_get(void *data, u64 *level)
{
	struct zr_backlight *backlight = data;

	*level = READ_ONCE(backlight->level);
	return 0;
}

static int level_set(void *data, u64 level)
{
	struct zr_backlight *backlight = data;
	struct zr_device *device = &backlight->device;

	if (level > ZR_BACKLIGHT_MAX)
		return -EINVAL;
	WRITE_ONCE(backlight->level, level);

	/* The class shows its own copy until the driver tells of a change. */
	mutex_lock(&device->lock);
	if (device->present)
		backlight_force_update(backlight->class,
				       BACKLIGHT_UPDATE_HOTKEY);
	mutex_unlock(&device->lock);
	return 0;
}
DEFINE_DEBUGFS_ATTRIBUTE(level_operations, level_get, level_set, "%llu\n");

static void backlight_create_knobs(struct zr_device *device,
				   struct dentry *folder)
{
	struct zr_backlight *backlight =
		container_of(device, struct zr_backlight, device);

	folder = debugfs_create_dir("brightness", folder);
	debugfs_create_file_unsafe("value", 0600, folder, backlight,
				   &level_operations);
	zr_fault_create_knob(&backlight->fail_write, "fail_write", folder);
}

static const struct zr_device_ops backlight_ops = {
	.attach = backlight_attach,
	.detach = backlight_detach,
	.create_knobs = backlight_create_knobs,
};

static struct zr_backlight backlight = {
	.device = { .name = "backlight", .ops = &backlight_ops },
	.level = ZR_BACKLIGHT_MAX,
};

int zr_backlight_init(void)
{
	int choice = zr_parameter_choice("backlight", parameter, places);

	if (choice < 0)
		return choice;
	place = choice;
	if (place == PLACE_NONE)
		return 0;
	zr_fault_init(&backlight.fail_write);
	return zr_device_add(&backlight.device);
}
