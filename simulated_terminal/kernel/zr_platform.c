// SPDX-License-Identifier: GPL-2.0
/* Digital inputs and outputs and the beeper: platform devices. */
#include <linux/errno.h>
#include <linux/kernel.h>
#include <linux/platform_device.h>

#include "zr_terminal.h"

static const struct zr_attribute_spec input_specs[] = {
	{ .name = "state", .mode = 0444, .notify = ZR_NOTIFY_DI },
	{}
};

static const struct zr_attribute_spec output_specs[] = {
	{ .name = "state", .mode = 0644, .maximum = 1,
	  .out_of_range = EINVAL, .notify = ZR_NOTIFY_DO },
	{}
};

static const struct zr_attribute_spec beeper_specs[] = {
	{ .name = "volume", .mode = 0644, .maximum = 100,
	  .out_of_range = ERANGE, .initial = 50 },
	{}
};

struct board_device {
	struct zr_device device;
	const char *platform_name;
	int id;
};

static int platform_attach(struct zr_device *device)
{
	struct board_device *board =
		container_of(device, struct board_device, device);
	struct platform_device *platform;
	int ret;

	platform = platform_device_alloc(board->platform_name, board->id);
	if (!platform)
		return -ENOMEM;
	/* Added with the device, so that it never shows without them. */
	platform->dev.groups = device->groups;
	ret = platform_device_add(platform);
	if (ret) {
		platform_device_put(platform);
		return ret;
	}
	device->dev = &platform->dev;
	return 0;
}

static void platform_detach(struct zr_device *device)
{
	platform_device_unregister(to_platform_device(device->dev));
}

static const struct zr_device_ops platform_ops = {
	.attach = platform_attach,
	.detach = platform_detach,
};

#define BOARD_DEVICE(folder, platform, number, attributes) {	\
	.device = {						\
		.name = folder,					\
		.ops = &platform_ops,				\
		.specs = attributes,				\
	},							\
	.platform_name = platform,				\
	.id = number,						\
}

static struct board_device board_devices[] = {
	BOARD_DEVICE("zr_di.0", "zr_di", 0, input_specs),
	BOARD_DEVICE("zr_di.1", "zr_di", 1, input_specs),
	BOARD_DEVICE("zr_di.2", "zr_di", 2, input_specs),
	BOARD_DEVICE("zr_di.3", "zr_di", 3, input_specs),
	BOARD_DEVICE("zr_do.0", "zr_do", 0, output_specs),
	BOARD_DEVICE("zr_do.1", "zr_do", 1, output_specs),
	BOARD_DEVICE("zr_do.2", "zr_do", 2, output_specs),
	BOARD_DEVICE("beeper", "pwm-speaker", 0, beeper_specs),
};

int zr_platform_init(void)
{
	int ret = 0;
	int i;

	for (i = 0; i < ARRAY_SIZE(board_devices) && !ret; i++)
		ret = zr_device_add(&board_devices[i].device);
	return ret;
}
