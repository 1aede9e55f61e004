// SPDX-License-Identifier: GPL-2.0
/* Knobs of the video decoders and of the cameras before them. */
#include <linux/debugfs.h>
#include <linux/fs.h>
#include <linux/module.h>
#include <linux/seq_file.h>
#include <linux/uaccess.h>

#include "zr_graph.h"

static const struct {
	const char *name;
	v4l2_std_id standard;
} names[] = {
	{ "none", V4L2_STD_UNKNOWN },
	{ "pal", V4L2_STD_PAL },
	{ "ntsc", V4L2_STD_NTSC },
	{ "secam", V4L2_STD_SECAM },
};

/* --- What is detected ---------------------------------------------------- */

static int detects_show(struct seq_file *file, void *v)
{
	const struct zr_camera *camera = file->private;
	v4l2_std_id standard = READ_ONCE(camera->detects);
	unsigned int i;

	if (READ_ONCE(camera->noise)) {
		seq_puts(file, "noise\n");
		return 0;
	}
	for (i = 0; i < ARRAY_SIZE(names); i++) {
		if (names[i].standard != standard)
			continue;
		seq_printf(file, "%s\n", names[i].name);
		return 0;
	}
	seq_printf(file, "0x%llx\n", standard);
	return 0;
}

static int detects_open(struct inode *inode, struct file *file)
{
	return single_open(file, detects_show, inode->i_private);
}

static int parse_standard(const char *text, u64 *standard)
{
	unsigned int i;

	for (i = 0; i < ARRAY_SIZE(names); i++) {
		if (strcmp(names[i].name, text))
			continue;
		*standard = names[i].standard;
		return 0;
	}
	return kstrtou64(text, 0, standard);
}

static ssize_t detects_write(struct file *file, const char __user *from,
			     size_t size, loff_t *pos)
{
	struct zr_camera *camera = file_inode(file)->i_private;
	char text[32];
	char *word;
	u64 standard;

	if (size >= sizeof(text))
		return -EINVAL;
	if (copy_from_user(text, from, size))
		return -EFAULT;
	text[size] = '\0';
	word = strim(text);
	if (!strcmp(word, "noise")) {
		WRITE_ONCE(camera->noise, true);
		return size;
	}
	if (parse_standard(word, &standard))
		return -EINVAL;
	WRITE_ONCE(camera->detects, standard);
	WRITE_ONCE(camera->noise, false);
	return size;
}

static const struct file_operations detects_operations = {
	.owner = THIS_MODULE,
	.open = detects_open,
	.read = seq_read,
	.write = detects_write,
	.llseek = seq_lseek,
	.release = single_release,
};

/* --- The signal ---------------------------------------------------------- */

static int signal_get(void *data, u64 *there)
{
	struct zr_camera *camera = data;

	*there = READ_ONCE(camera->signal);
	return 0;
}

static int signal_set(void *data, u64 there)
{
	struct zr_camera *camera = data;

	if (there > 1)
		return -EINVAL;
	WRITE_ONCE(camera->signal, there);
	return 0;
}
DEFINE_DEBUGFS_ATTRIBUTE(signal_operations, signal_get, signal_set, "%llu\n");

/* --- What was set -------------------------------------------------------- */

static int standard_get(void *data, u64 *standard)
{
	*standard = zr_decoder_standard(data);
	return 0;
}
DEFINE_DEBUGFS_ATTRIBUTE(standard_operations, standard_get, NULL, "0x%llx\n");

static void create_camera_knobs(unsigned int number, struct dentry *folder)
{
	struct zr_camera *camera = &zr_cameras[number];
	struct dentry *knobs;
	char name[16];

	snprintf(name, sizeof(name), "camera.%u", number);
	knobs = debugfs_create_dir(name, folder);
	debugfs_create_file("detects", 0600, knobs, camera,
			    &detects_operations);
	debugfs_create_file_unsafe("signal", 0600, knobs, camera,
				   &signal_operations);
}

void zr_decoder_create_knobs(struct zr_decoder *decoder, struct dentry *folder)
{
	create_camera_knobs(decoder->inputs[0], folder);
	if (decoder->inputs[1] != decoder->inputs[0])
		create_camera_knobs(decoder->inputs[1], folder);
	debugfs_create_file_unsafe("standard", 0400, folder, decoder,
				   &standard_operations);
	zr_fault_create_knob(&decoder->fail_querystd, "fail_querystd", folder);
	zr_fault_create_knob(&decoder->fail_g_std, "fail_g_std", folder);
	zr_fault_create_knob(&decoder->fail_s_std, "fail_s_std", folder);
}
