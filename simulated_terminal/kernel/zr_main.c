// SPDX-License-Identifier: GPL-2.0
/*
 * The terminal's board for kernels that run without one: real drivers with
 * a simulated board behind them, set through files in debugfs.
 */
#include <linux/kernel.h>
#include <linux/module.h>

#include "zr_terminal.h"

static const struct {
	int (*init)(void);
	void (*exit)(void);
} drivers[] = {
	/* Before the devices, whose changes it tells of, and gone after them. */
	{ zr_notify_init, zr_notify_exit },
	{ zr_platform_init },
	{ zr_analog_init, zr_analog_exit },
	{ zr_led_init, zr_led_exit },
	{ zr_backlight_init },
	{ zr_regulator_init, zr_regulator_exit },
	{ zr_input_init },
	{ zr_device_tree_init, zr_device_tree_exit },
	{ zr_can_init, zr_can_exit },
	{ zr_media_init, zr_media_exit },
};

static void tear_down(int count)
{
	zr_device_remove_all();
	while (count--)
		if (drivers[count].exit)
			drivers[count].exit();
}

static int __init zr_terminal_init(void)
{
	int ret = 0;
	int i;

	for (i = 0; i < ARRAY_SIZE(drivers) && !ret; i++)
		ret = drivers[i].init();
	if (!ret)
		ret = zr_device_attach_all();
	if (ret)
		tear_down(i);
	return ret;
}

static void __exit zr_terminal_exit(void)
{
	tear_down(ARRAY_SIZE(drivers));
}

module_init(zr_terminal_init);
module_exit(zr_terminal_exit);

MODULE_LICENSE("GPL");
MODULE_DESCRIPTION("Simulated terminal board");
