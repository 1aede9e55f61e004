// SPDX-License-Identifier: GPL-2.0
/*
 * /proc/device-tree/compatible. A kernel without device tree support leaves
 * the name free.
 */
#include <linux/debugfs.h>
#include <linux/fs.h>
#include <linux/module.h>
#include <linux/proc_fs.h>
#include <linux/slab.h>

#include "zr_terminal.h"

static bool device_tree_there = true;
module_param_named(device_tree, device_tree_there, bool, 0444);
MODULE_PARM_DESC(device_tree, "Whether /proc/device-tree is there");

static char *variant = "quad";
module_param(variant, charp, 0444);
MODULE_PARM_DESC(variant, "Processor: quad, dual, ull");

enum { VARIANT_QUAD, VARIANT_DUAL, VARIANT_ULL };

static const char * const variants[] = {
	[VARIANT_QUAD] = "quad",
	[VARIANT_DUAL] = "dual",
	[VARIANT_ULL] = "ull",
	NULL
};

/* As in a flattened tree: each name ends with a NUL, the last one too. */
static const char quad[] = "zr,terminal-quad\0fsl,imx6q";
static const char dual[] = "zr,terminal-dual\0fsl,imx6dl";
static const char ull[] = "zr,terminal-ull\0fsl,imx6ull";

static struct zr_value compatible;
static struct proc_dir_entry *folder;

static ssize_t compatible_read(struct file *file, char __user *to,
			       size_t size, loff_t *pos)
{
	char *text = kmalloc(ZR_VALUE_MAX, GFP_KERNEL);
	ssize_t ret;

	if (!text)
		return -ENOMEM;
	ret = zr_value_read(&compatible, text);
	if (ret >= 0)
		ret = simple_read_from_buffer(to, size, pos, text, ret);
	kfree(text);
	return ret;
}

static const struct proc_ops compatible_operations = {
	.proc_read = compatible_read,
	.proc_lseek = default_llseek,
};

static int tree_attach(struct zr_device *device)
{
	folder = proc_mkdir("device-tree", NULL);
	if (!folder)
		return -ENOMEM;
	if (!proc_create("compatible", 0444, folder, &compatible_operations)) {
		proc_remove(folder);
		return -ENOMEM;
	}
	return 0;
}

static void tree_detach(struct zr_device *device)
{
	proc_remove(folder);
}

static void tree_create_knobs(struct zr_device *device, struct dentry *knobs)
{
	zr_value_create_knobs(&compatible,
			      debugfs_create_dir("compatible", knobs));
}

static const struct zr_device_ops tree_ops = {
	.attach = tree_attach,
	.detach = tree_detach,
	.create_knobs = tree_create_knobs,
};

static struct zr_device tree = { .name = "device_tree", .ops = &tree_ops };

static int init_compatible(int choice)
{
	switch (choice) {
	case VARIANT_DUAL:
		return zr_value_init(&compatible, dual, sizeof(dual));
	case VARIANT_ULL:
		return zr_value_init(&compatible, ull, sizeof(ull));
	default:
		return zr_value_init(&compatible, quad, sizeof(quad));
	}
}

/* The small processor has no image processing units; it gets those of dual. */
bool zr_processor_is_quad(void)
{
	return !strcmp(variant, variants[VARIANT_QUAD]);
}

int zr_device_tree_init(void)
{
	int choice = zr_parameter_choice("variant", variant, variants);
	int ret;

	if (choice < 0 || !device_tree_there)
		return min(choice, 0);
	ret = init_compatible(choice);
	return ret ? ret : zr_device_add(&tree);
}

void zr_device_tree_exit(void)
{
	zr_value_free(&compatible);
}
