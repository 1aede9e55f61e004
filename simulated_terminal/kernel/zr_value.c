// SPDX-License-Identifier: GPL-2.0
/* The text behind an attribute, and the knob that sets it byte for byte. */
#include <linux/debugfs.h>
#include <linux/fs.h>
#include <linux/mm.h>
#include <linux/module.h>
#include <linux/slab.h>
#include <linux/string.h>
#include <linux/uaccess.h>

#include "zr_knob.h"

int zr_value_init(struct zr_value *value, const char *text, size_t length)
{
	value->text = kzalloc(ZR_VALUE_MAX, GFP_KERNEL);
	if (!value->text)
		return -ENOMEM;
	mutex_init(&value->lock);
	zr_fault_init(&value->fail_read);
	memcpy(value->text, text, length);
	value->length = length;
	return 0;
}

void zr_value_free(struct zr_value *value)
{
	kfree(value->text);
	value->text = NULL;
}

ssize_t zr_value_read(struct zr_value *value, char *text)
{
	ssize_t ret = zr_fault_take(&value->fail_read);

	if (ret)
		return ret;
	mutex_lock(&value->lock);
	ret = value->length;
	memcpy(text, value->text, ret);
	mutex_unlock(&value->lock);
	return ret;
}

bool zr_value_replace(struct zr_value *value, const char *text, size_t length)
{
	if (length == value->length && !memcmp(value->text, text, length))
		return false;
	memcpy(value->text, text, length);
	value->length = length;
	return true;
}

static void tell(struct zr_value *value)
{
	if (value->changed)
		value->changed(value);
}

/* One open "value" file. */
struct value_file {
	struct zr_value *value;
	bool empty_at_close;
};

static int value_open(struct inode *inode, struct file *file)
{
	struct value_file *open = kzalloc(sizeof(*open), GFP_KERNEL);

	if (!open)
		return -ENOMEM;
	open->value = inode->i_private;
	/*
	 * ": > value" opens with truncation and writes nothing: an empty text.
	 * It waits for the close, or each "echo 1 > value" would show as empty
	 * first. The flag is gone once the file is open.
	 */
	open->empty_at_close = (file->f_mode & FMODE_WRITE) &&
			       (file->f_flags & O_TRUNC);
	file->private_data = open;
	return 0;
}

static ssize_t value_read(struct file *file, char __user *to, size_t size,
			  loff_t *pos)
{
	struct value_file *open = file->private_data;
	struct zr_value *value = open->value;
	ssize_t ret;

	mutex_lock(&value->lock);
	ret = simple_read_from_buffer(to, size, pos, value->text,
				      value->length);
	mutex_unlock(&value->lock);
	return ret;
}

/* 1 if the text is a different one now, 0 if not, or -EFBIG. */
static int put(struct zr_value *value, const char *text, size_t size,
	       bool append)
{
	int ret = -EFBIG;

	mutex_lock(&value->lock);
	if (!append) {
		ret = zr_value_replace(value, text, size);
	} else if (value->length + size <= ZR_VALUE_MAX) {
		memcpy(value->text + value->length, text, size);
		value->length += size;
		ret = 1;
	}
	mutex_unlock(&value->lock);
	return ret;
}

static ssize_t value_write(struct file *file, const char __user *from,
			   size_t size, loff_t *pos)
{
	struct value_file *open = file->private_data;
	char *text;
	int ret;

	if (size > ZR_VALUE_MAX)
		return -EFBIG;
	text = memdup_user(from, size);
	if (IS_ERR(text))
		return PTR_ERR(text);
	ret = put(open->value, text, size, *pos > 0);
	kfree(text);
	if (ret < 0)
		return ret;

	open->empty_at_close = false;
	*pos += size;
	if (ret)
		tell(open->value);
	return size;
}

static int value_release(struct inode *inode, struct file *file)
{
	struct value_file *open = file->private_data;

	if (open->empty_at_close && put(open->value, "", 0, false))
		tell(open->value);
	kfree(open);
	return 0;
}

static const struct file_operations value_operations = {
	.owner = THIS_MODULE,
	.open = value_open,
	.read = value_read,
	.write = value_write,
	.llseek = default_llseek,
	.release = value_release,
};

void zr_value_create_knobs(struct zr_value *value, struct dentry *folder)
{
	debugfs_create_file("value", 0600, folder, value, &value_operations);
	zr_fault_create_knob(&value->fail_read, "fail_read", folder);
}
