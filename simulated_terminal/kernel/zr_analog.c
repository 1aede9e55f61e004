// SPDX-License-Identifier: GPL-2.0
/* The "analog" class: converter inputs and the board's sensors. */
#include <linux/device/class.h>
#include <linux/err.h>
#include <linux/errno.h>
#include <linux/kdev_t.h>
#include <linux/kernel.h>
#include <linux/module.h>

#include "zr_terminal.h"

static char *ai_without;
module_param(ai_without, charp, 0444);
MODULE_PARM_DESC(ai_without, "List of attributes that ai.N do not have");

static char *supply = "vcc";
module_param(supply, charp, 0444);
MODULE_PARM_DESC(supply, "Supply voltage devices: vcc, bat, both, none");

enum { SUPPLY_VCC, SUPPLY_BAT, SUPPLY_BOTH, SUPPLY_NONE };

static const char * const supplies[] = {
	[SUPPLY_VCC] = "vcc",
	[SUPPLY_BAT] = "bat",
	[SUPPLY_BOTH] = "both",
	[SUPPLY_NONE] = "none",
	NULL
};

static struct class *analog_class;

#define VALUE(number) \
	{ .name = "value", .mode = 0444, .initial = number, \
	  .notify = ZR_NOTIFY_ANALOG }
#define SWITCH(attribute) \
	{ .name = attribute, .mode = 0644, .maximum = 1, \
	  .out_of_range = EINVAL }
#define QUANTITY(attribute, most, number) \
	{ .name = attribute, .mode = 0644, .maximum = most, \
	  .out_of_range = ERANGE, .initial = number }

#define AI_SPECS(number) {				\
	VALUE(number),					\
	SWITCH("measure_mode"),				\
	SWITCH("toggle_load"),				\
	QUANTITY("hysteresis", 65535, 0),		\
	QUANTITY("scan_interval", 60000, 100),		\
	{}						\
}

static const struct zr_attribute_spec ai_specs[][6] = {
	AI_SPECS(1000), AI_SPECS(2000), AI_SPECS(3000), AI_SPECS(4000),
};

static const struct zr_attribute_spec light_specs[] = {
	VALUE(300),
	QUANTITY("hysteresis", 65535, 0),
	QUANTITY("scan_interval", 60000, 1000),
	{}
};

static const struct zr_attribute_spec supply_specs[] = { VALUE(12000), {} };
static const struct zr_attribute_spec temperature_specs[] = { VALUE(25), {} };
static const struct zr_attribute_spec frequency_specs[] = { VALUE(50), {} };

static int analog_attach(struct zr_device *device)
{
	struct device *dev;

	dev = device_create_with_groups(analog_class, NULL, MKDEV(0, 0), NULL,
					device->groups, "%s", device->name);
	if (IS_ERR(dev))
		return PTR_ERR(dev);
	device->dev = dev;
	return 0;
}

static void analog_detach(struct zr_device *device)
{
	device_unregister(device->dev);
}

static const struct zr_device_ops analog_ops = {
	.attach = analog_attach,
	.detach = analog_detach,
};

#define ANALOG_DEVICE(folder, attributes) \
	{ .name = folder, .ops = &analog_ops, .specs = attributes }

static struct zr_device ai[] = {
	ANALOG_DEVICE("ai.0", ai_specs[0]),
	ANALOG_DEVICE("ai.1", ai_specs[1]),
	ANALOG_DEVICE("ai.2", ai_specs[2]),
	ANALOG_DEVICE("ai.3", ai_specs[3]),
};

static struct zr_device vcc = ANALOG_DEVICE("supply_vcc", supply_specs);
static struct zr_device bat = ANALOG_DEVICE("board_12v_bat", supply_specs);

static struct zr_device sensors[] = {
	ANALOG_DEVICE("light", light_specs),
	ANALOG_DEVICE("temperature", temperature_specs),
	ANALOG_DEVICE("frequency", frequency_specs),
};

static bool is_ai_attribute(const char *name)
{
	const struct zr_attribute_spec *spec;

	for (spec = ai_specs[0]; spec->name; spec++)
		if (!strcmp(spec->name, name))
			return true;
	return false;
}

static int add_inputs(void)
{
	int ret = zr_list_check("ai_without", ai_without, is_ai_attribute);
	int i;

	for (i = 0; i < ARRAY_SIZE(ai) && !ret; i++) {
		ai[i].without = ai_without;
		ret = zr_device_add(&ai[i]);
	}
	return ret;
}

static int add_supplies(void)
{
	int choice = zr_parameter_choice("supply", supply, supplies);
	int ret = 0;

	if (choice < 0)
		return choice;
	if (choice == SUPPLY_VCC || choice == SUPPLY_BOTH)
		ret = zr_device_add(&vcc);
	if (!ret && (choice == SUPPLY_BAT || choice == SUPPLY_BOTH))
		ret = zr_device_add(&bat);
	return ret;
}

int zr_analog_init(void)
{
	struct class *class = class_create(THIS_MODULE, "analog");
	int ret;
	int i;

	if (IS_ERR(class))
		return PTR_ERR(class);
	analog_class = class;
	ret = add_inputs();
	if (!ret)
		ret = add_supplies();
	for (i = 0; i < ARRAY_SIZE(sensors) && !ret; i++)
		ret = zr_device_add(&sensors[i]);
	return ret;
}

void zr_analog_exit(void)
{
	class_destroy(analog_class);
}
