// SPDX-License-Identifier: GPL-2.0
/* The board's regulators. One of them tells whether the ignition is on. */
#include <linux/debugfs.h>
#include <linux/err.h>
#include <linux/module.h>
#include <linux/platform_device.h>
#include <linux/regulator/driver.h>

#include "zr_terminal.h"

static bool ignition_there = true;
module_param_named(ignition, ignition_there, bool, 0444);
MODULE_PARM_DESC(ignition, "Whether a regulator is named ignition-irq");

/* What the regulators are part of: the class wants a parent. */
static struct platform_device *power;

struct ignition {
	struct zr_device device;
	int on;		/* READ_ONCE and WRITE_ONCE */
	struct zr_fault fail_read;
	struct regulator_dev *class;
};

static int always_enabled(struct regulator_dev *class)
{
	return 1;
}

static const struct regulator_ops rail_ops = {
	.is_enabled = always_enabled,
};

static int ignition_enabled(struct regulator_dev *class)
{
	struct ignition *ignition = rdev_get_drvdata(class);
	int ret = zr_fault_take(&ignition->fail_read);

	return ret ? ret : READ_ONCE(ignition->on);
}

static const struct regulator_ops ignition_class_ops = {
	.is_enabled = ignition_enabled,
};

#define REGULATOR(regulator_name, regulator_operations) {	\
	.name = regulator_name,					\
	.type = REGULATOR_VOLTAGE,				\
	.owner = THIS_MODULE,					\
	.ops = regulator_operations,				\
}

static const struct regulator_desc rail_descriptions[] = {
	REGULATOR("zr-3v3", &rail_ops),
	REGULATOR("zr-5v-usb", &rail_ops),
	REGULATOR("zr-12v-out", &rail_ops),
};

static struct regulator_dev *rails[ARRAY_SIZE(rail_descriptions)];

static const struct regulator_desc ignition_description =
	REGULATOR("ignition-irq", &ignition_class_ops);

static struct regulator_dev *add_regulator(const struct regulator_desc *desc,
					   void *data)
{
	const struct regulator_config config = {
		.dev = &power->dev,
		.driver_data = data,
	};

	return regulator_register(&power->dev, desc, &config);
}

static int ignition_attach(struct zr_device *device)
{
	struct ignition *ignition =
		container_of(device, struct ignition, device);
	struct regulator_dev *class =
		add_regulator(&ignition_description, ignition);

	if (IS_ERR(class))
		return PTR_ERR(class);
	ignition->class = class;
	return 0;
}

static void ignition_detach(struct zr_device *device)
{
	struct ignition *ignition =
		container_of(device, struct ignition, device);

	regulator_unregister(ignition->class);
}

static int on_get(void *data, u64 *on)
{
	struct ignition *ignition = data;

	*on = READ_ONCE(ignition->on);
	return 0;
}

static int on_set(void *data, u64 on)
{
	struct ignition *ignition = data;

	if (on > 1)
		return -EINVAL;
	WRITE_ONCE(ignition->on, on);
	return 0;
}
DEFINE_DEBUGFS_ATTRIBUTE(on_operations, on_get, on_set, "%llu\n");

static void ignition_create_knobs(struct zr_device *device,
				  struct dentry *folder)
{
	struct ignition *ignition =
		container_of(device, struct ignition, device);

	folder = debugfs_create_dir("state", folder);
	debugfs_create_file_unsafe("value", 0600, folder, ignition,
				   &on_operations);
	zr_fault_create_knob(&ignition->fail_read, "fail_read", folder);
}

static const struct zr_device_ops ignition_ops = {
	.attach = ignition_attach,
	.detach = ignition_detach,
	.create_knobs = ignition_create_knobs,
};

static struct ignition ignition = {
	.device = { .name = "ignition", .ops = &ignition_ops },
};

static int add_rails(void)
{
	struct regulator_dev *rail;
	int i;

	for (i = 0; i < ARRAY_SIZE(rails); i++) {
		rail = add_regulator(&rail_descriptions[i], NULL);
		if (IS_ERR(rail))
			return PTR_ERR(rail);
		rails[i] = rail;
	}
	return 0;
}

int zr_regulator_init(void)
{
	struct platform_device *parent;
	int ret;

	parent = platform_device_register_simple("zr_power",
						 PLATFORM_DEVID_NONE, NULL, 0);
	if (IS_ERR(parent))
		return PTR_ERR(parent);
	power = parent;

	ret = add_rails();
	if (ret || !ignition_there)
		return ret;
	zr_fault_init(&ignition.fail_read);
	return zr_device_add(&ignition.device);
}

void zr_regulator_exit(void)
{
	int i;

	for (i = 0; i < ARRAY_SIZE(rails); i++)
		regulator_unregister(rails[i]);
	platform_device_unregister(power);
}
