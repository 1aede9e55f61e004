// SPDX-License-Identifier: GPL-2.0
/* Key, encoder and status illumination: LED class devices. */
#include <linux/debugfs.h>
#include <linux/leds.h>
#include <linux/module.h>

#include "zr_terminal.h"

#define ZR_PLAIN_MAX 255
#define ZR_COLOUR_MAX 0xffffff

static char *key = "plain";
module_param(key, charp, 0444);
MODULE_PARM_DESC(key, "Key LED: plain, colour, none");

static char *encoder = "plain";
module_param(encoder, charp, 0444);
MODULE_PARM_DESC(encoder, "Encoder LED: plain, colour, none");

static char *rgb = "user";
module_param(rgb, charp, 0444);
MODULE_PARM_DESC(rgb, "Status LED: user, sys, none");

static char *key_trigger = "zr-attached";
module_param(key_trigger, charp, 0444);
MODULE_PARM_DESC(key_trigger, "Trigger attached to the key LED, or none");

enum { KIND_PLAIN, KIND_COLOUR, KIND_NONE };
enum { STATUS_USER, STATUS_SYS, STATUS_NONE };

struct zr_led {
	struct zr_device device;
	const char *name;
	const char *trigger;
	int maximum;
	int level;	/* what the lamp shows; READ_ONCE and WRITE_ONCE */
	bool logged;	/* off while the class itself sets the lamp up */
	struct led_classdev class;
};

/*
 * Not the blocking variant: a detached trigger then turns the lamp off
 * before the class tells of the detaching, always in this order.
 */
static void led_set(struct led_classdev *class, enum led_brightness level)
{
	struct zr_led *led = container_of(class, struct zr_led, class);

	WRITE_ONCE(led->level, level);
	if (READ_ONCE(led->logged))
		zr_log_number(led->device.name, "brightness", level, 0);
}

static enum led_brightness led_get(struct led_classdev *class)
{
	struct zr_led *led = container_of(class, struct zr_led, class);

	return READ_ONCE(led->level);
}

/*
 * The class tells no driver which trigger it attaches, but it announces it
 * to user space, and every announcement of a device passes its type.
 */
static int led_announce(struct device *dev, struct kobj_uevent_env *env)
{
	static const char key[] = "TRIGGER=";
	struct led_classdev *class = dev_get_drvdata(dev);
	struct zr_led *led = container_of(class, struct zr_led, class);
	const char *name;
	int i;

	for (i = 0; i < env->envp_idx; i++) {
		if (strncmp(env->envp[i], key, strlen(key)))
			continue;
		name = env->envp[i] + strlen(key);
		if (READ_ONCE(led->logged))
			zr_log_text(led->device.name, "trigger", name,
				    strlen(name), 0);
	}
	return 0;
}

static const struct device_type led_type = {
	.name = "zr_led",
	.uevent = led_announce,
};

static int led_attach(struct zr_device *device)
{
	struct zr_led *led = container_of(device, struct zr_led, device);
	int ret;

	memset(&led->class, 0, sizeof(led->class));
	led->class.name = device->name;
	led->class.max_brightness = led->maximum;
	led->class.brightness_set = led_set;
	led->class.brightness_get = led_get;
	led->class.default_trigger = led->trigger;
	ret = led_classdev_register(NULL, &led->class);
	if (ret)
		return ret;
	/*
	 * The class shows the files before it sets up the lock that a read of
	 * "trigger" takes: such a read would leave that lock held for ever.
	 * Under its own name the LED therefore appears only when complete.
	 */
	ret = device_rename(led->class.dev, led->name);
	if (ret) {
		led_classdev_unregister(&led->class);
		return ret;
	}
	led->class.name = led->name;
	led->class.dev->type = &led_type;
	WRITE_ONCE(led->logged, true);
	return 0;
}

static void led_detach(struct zr_device *device)
{
	struct zr_led *led = container_of(device, struct zr_led, device);

	WRITE_ONCE(led->logged, false);
	/*
	 * The class takes the trigger off first and the files away last. A
	 * trigger that user space attaches in between would keep a pointer to
	 * an LED that is gone. A claimed LED takes none.
	 */
	mutex_lock(&led->class.led_access);
	led_sysfs_disable(&led->class);
	mutex_unlock(&led->class.led_access);
	led_classdev_unregister(&led->class);
}

static int level_get(void *data, u64 *level)
{
	struct zr_led *led = data;

	*level = READ_ONCE(led->level);
	return 0;
}

static int level_set(void *data, u64 level)
{
	struct zr_led *led = data;

	if (level > led->maximum)
		return -EINVAL;
	WRITE_ONCE(led->level, level);
	return 0;
}
DEFINE_DEBUGFS_ATTRIBUTE(level_operations, level_get, level_set, "%llu\n");

static int claimed_get(void *data, u64 *claimed)
{
	struct zr_led *led = data;

	mutex_lock(&led->device.lock);
	*claimed = led->device.present && led_sysfs_is_disabled(&led->class);
	mutex_unlock(&led->device.lock);
	return 0;
}

static int claimed_set(void *data, u64 claimed)
{
	struct zr_led *led = data;
	int ret = -ENODEV;

	if (claimed > 1)
		return -EINVAL;
	mutex_lock(&led->device.lock);
	if (led->device.present) {
		mutex_lock(&led->class.led_access);
		if (claimed)
			led_sysfs_disable(&led->class);
		else
			led_sysfs_enable(&led->class);
		mutex_unlock(&led->class.led_access);
		ret = 0;
	}
	mutex_unlock(&led->device.lock);
	return ret;
}
DEFINE_DEBUGFS_ATTRIBUTE(claimed_operations, claimed_get, claimed_set,
			 "%llu\n");

static void led_create_knobs(struct zr_device *device, struct dentry *folder)
{
	struct zr_led *led = container_of(device, struct zr_led, device);

	debugfs_create_file_unsafe("claimed", 0600, folder, led,
				   &claimed_operations);
	folder = debugfs_create_dir("brightness", folder);
	debugfs_create_file_unsafe("value", 0600, folder, led,
				   &level_operations);
}

static const struct zr_device_ops led_ops = {
	.attach = led_attach,
	.detach = led_detach,
	.create_knobs = led_create_knobs,
};

static struct zr_led key_led = {
	.device = { .name = "key", .ops = &led_ops },
	.name = "bl:key",
};

static struct zr_led encoder_led = {
	.device = { .name = "encoder", .ops = &led_ops },
	.name = "bl:enc",
};

static struct zr_led rgb_led = {
	.device = { .name = "rgb", .ops = &led_ops },
	.maximum = ZR_COLOUR_MAX,
};

static void trigger_detach(struct led_classdev *class)
{
}

static int trigger_attach(struct led_classdev *class)
{
	led_set_brightness(class, class->max_brightness);
	return 0;
}

static struct led_trigger trigger = {
	.name = "zr-attached",
	.activate = trigger_attach,
	.deactivate = trigger_detach,
};

static bool trigger_registered;

static int add_illumination(struct zr_led *led, const char *parameter,
			    const char *value)
{
	static const char * const kinds[] = {
		[KIND_PLAIN] = "plain",
		[KIND_COLOUR] = "colour",
		[KIND_NONE] = "none",
		NULL
	};
	int kind = zr_parameter_choice(parameter, value, kinds);

	if (kind < 0 || kind == KIND_NONE)
		return min(kind, 0);
	led->maximum = kind == KIND_PLAIN ? ZR_PLAIN_MAX : ZR_COLOUR_MAX;
	return zr_device_add(&led->device);
}

static int add_status(void)
{
	static const char * const names[] = {
		[STATUS_USER] = "user:rgb",
		[STATUS_SYS] = "sys:status:rgb",
	};
	static const char * const choices[] = {
		[STATUS_USER] = "user",
		[STATUS_SYS] = "sys",
		[STATUS_NONE] = "none",
		NULL
	};
	int choice = zr_parameter_choice("rgb", rgb, choices);

	if (choice < 0 || choice == STATUS_NONE)
		return min(choice, 0);
	rgb_led.name = names[choice];
	return zr_device_add(&rgb_led.device);
}

int zr_led_init(void)
{
	int ret = led_trigger_register(&trigger);

	if (ret)
		return ret;
	trigger_registered = true;

	/* The class knows no trigger of the name "none": it attaches nothing. */
	key_led.trigger = key_trigger;
	ret = add_illumination(&key_led, "key", key);
	if (!ret)
		ret = add_illumination(&encoder_led, "encoder", encoder);
	if (!ret)
		ret = add_status();
	return ret;
}

void zr_led_exit(void)
{
	if (trigger_registered)
		led_trigger_unregister(&trigger);
}
