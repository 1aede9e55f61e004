// SPDX-License-Identifier: GPL-2.0
/*
 * Encoder, touch screen and keyboard. Events come through evdev, which
 * passes what is written into a node on as if the hardware had sent it.
 */
#include <linux/input.h>
#include <linux/kernel.h>

#include "zr_terminal.h"

struct zr_input {
	struct zr_device device;
	const char *name;
	const char *path;
	void (*describe)(struct input_dev *class);
	struct input_dev *class;
};

static void describe_encoder(struct input_dev *class)
{
	input_set_capability(class, EV_REL, REL_DIAL);
	input_set_capability(class, EV_KEY, BTN_0);
}

static void describe_touchscreen(struct input_dev *class)
{
	input_set_capability(class, EV_KEY, BTN_TOUCH);
	input_set_abs_params(class, ABS_X, 0, 1279, 0, 0);
	input_set_abs_params(class, ABS_Y, 0, 799, 0, 0);
	input_set_abs_params(class, ABS_PRESSURE, 0, 255, 0, 0);
	__set_bit(INPUT_PROP_DIRECT, class->propbit);
}

static void describe_keyboard(struct input_dev *class)
{
	static const unsigned int keys[] = {
		KEY_F1, KEY_F2, KEY_F3, KEY_F4, KEY_F5, KEY_F6, KEY_F7, KEY_F8,
		KEY_UP, KEY_DOWN, KEY_LEFT, KEY_RIGHT, KEY_ENTER, KEY_ESC,
	};
	int i;

	for (i = 0; i < ARRAY_SIZE(keys); i++)
		input_set_capability(class, EV_KEY, keys[i]);
}

static int input_attach(struct zr_device *device)
{
	struct zr_input *input = container_of(device, struct zr_input, device);
	struct input_dev *class = input_allocate_device();
	int ret;

	if (!class)
		return -ENOMEM;
	class->name = input->name;
	class->phys = input->path;
	class->id.bustype = BUS_HOST;
	input->describe(class);
	ret = input_register_device(class);
	if (ret) {
		input_free_device(class);
		return ret;
	}
	input->class = class;
	return 0;
}

static void input_detach(struct zr_device *device)
{
	struct zr_input *input = container_of(device, struct zr_input, device);

	input_unregister_device(input->class);
}

static const struct zr_device_ops input_ops = {
	.attach = input_attach,
	.detach = input_detach,
};

static struct zr_input inputs[] = {
	{
		.device = { .name = "input_encoder", .ops = &input_ops },
		.name = "zr encoder",
		.path = "zr_terminal/encoder",
		.describe = describe_encoder,
	}, {
		.device = { .name = "input_touchscreen", .ops = &input_ops },
		.name = "zr touchscreen",
		.path = "zr_terminal/touchscreen",
		.describe = describe_touchscreen,
	}, {
		.device = { .name = "input_keyboard", .ops = &input_ops },
		.name = "zr keyboard",
		.path = "zr_terminal/keyboard",
		.describe = describe_keyboard,
	},
};

int zr_input_init(void)
{
	int ret = 0;
	int i;

	for (i = 0; i < ARRAY_SIZE(inputs) && !ret; i++)
		ret = zr_device_add(&inputs[i].device);
	return ret;
}
