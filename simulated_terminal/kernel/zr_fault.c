// SPDX-License-Identifier: GPL-2.0
/* Injected failures: "after AFTER good accesses COUNT answer ERRNO". */
#include <linux/debugfs.h>
#include <linux/fs.h>
#include <linux/module.h>
#include <linux/seq_file.h>
#include <linux/string.h>
#include <linux/uaccess.h>

#include "zr_knob.h"

void zr_fault_init(struct zr_fault *fault)
{
	spin_lock_init(&fault->lock);
	fault->error = 0;
	fault->count = 0;
	fault->after = 0;
}

int zr_fault_take(struct zr_fault *fault)
{
	int error = 0;

	spin_lock(&fault->lock);
	if (fault->error && fault->after > 0) {
		fault->after--;
	} else {
		error = fault->error;
		if (error && fault->count > 0 && --fault->count == 0)
			fault->error = 0;
	}
	spin_unlock(&fault->lock);
	return -error;
}

/* The next word of @rest, which ends with one, or NULL. */
static char *next_word(char **rest)
{
	if (!*rest)
		return NULL;
	*rest = skip_spaces(*rest);
	return strsep(rest, " ");
}

static int fault_parse(char *text, int *error, int *count, int *after)
{
	char *rest = strim(text);
	char *word = next_word(&rest);

	*error = 0;
	*count = 1;
	*after = 0;
	if (!strcmp(word, "0"))
		return rest ? -EINVAL : 0;
	*error = zr_errno_parse(word);
	if (*error < 0)
		return *error;
	word = next_word(&rest);
	if (word && kstrtoint(word, 10, count))
		return -EINVAL;
	if (rest && kstrtoint(skip_spaces(rest), 10, after))
		return -EINVAL;
	return (*count == -1 || *count > 0) && *after >= 0 ? 0 : -EINVAL;
}

static ssize_t fault_write(struct file *file, const char __user *from,
			   size_t size, loff_t *pos)
{
	struct zr_fault *fault = file_inode(file)->i_private;
	char text[48];
	int error;
	int count;
	int after;
	int ret;

	if (size >= sizeof(text))
		return -EINVAL;
	if (copy_from_user(text, from, size))
		return -EFAULT;
	text[size] = '\0';
	ret = fault_parse(text, &error, &count, &after);
	if (ret)
		return ret;

	spin_lock(&fault->lock);
	fault->error = error;
	fault->count = count;
	fault->after = after;
	spin_unlock(&fault->lock);
	return size;
}

static int fault_show(struct seq_file *file, void *v)
{
	struct zr_fault *fault = file->private;
	const char *name;
	int error;
	int count;
	int after;

	spin_lock(&fault->lock);
	error = fault->error;
	count = fault->count;
	after = fault->after;
	spin_unlock(&fault->lock);

	name = zr_errno_name(error);
	if (!error)
		seq_puts(file, "0");
	else if (name)
		seq_printf(file, "%s %d", name, count);
	else
		seq_printf(file, "%d %d", error, count);
	if (error && after)
		seq_printf(file, " %d", after);
	seq_putc(file, '\n');
	return 0;
}

static int fault_open(struct inode *inode, struct file *file)
{
	return single_open(file, fault_show, inode->i_private);
}

static const struct file_operations fault_operations = {
	.owner = THIS_MODULE,
	.open = fault_open,
	.read = seq_read,
	.write = fault_write,
	.llseek = seq_lseek,
	.release = single_release,
};

void zr_fault_create_knob(struct zr_fault *fault, const char *name,
			  struct dentry *folder)
{
	debugfs_create_file(name, 0600, folder, fault, &fault_operations);
}
