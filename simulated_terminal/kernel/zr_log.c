// SPDX-License-Identifier: GPL-2.0
/* The numbered log of what reached the drivers. */
#include <linux/debugfs.h>
#include <linux/fs.h>
#include <linux/module.h>
#include <linux/seq_file.h>
#include <linux/string_helpers.h>

#include "zr_knob.h"

#define ZR_LOG_LINES 1024
#define ZR_LOG_TEXT_MAX 64
#define ZR_LOG_LINE_SIZE 192

/* A ring: line number n stands in slot n % ZR_LOG_LINES. */
static char lines[ZR_LOG_LINES][ZR_LOG_LINE_SIZE];
static unsigned long last;	/* number of the newest line; 0: none */
static DEFINE_SPINLOCK(lock);

static void append(const char *device, const char *attribute,
		   const char *text, int error)
{
	const char *name = error ? zr_errno_name(-error) : NULL;
	unsigned long flags;
	char *line;
	int length;

	spin_lock_irqsave(&lock, flags);
	last++;
	line = lines[last % ZR_LOG_LINES];
	length = scnprintf(line, ZR_LOG_LINE_SIZE, "%s %s%s%s", device,
			   attribute, *text ? " " : "", text);
	if (name)
		scnprintf(line + length, ZR_LOG_LINE_SIZE - length,
			  " error %s", name);
	else if (error)
		scnprintf(line + length, ZR_LOG_LINE_SIZE - length,
			  " error %d", -error);
	spin_unlock_irqrestore(&lock, flags);
}

void zr_log_text(const char *device, const char *attribute, const char *text,
		 size_t length, int error)
{
	char escaped[ZR_LOG_TEXT_MAX + 1];
	int size;

	if (length && text[length - 1] == '\n')
		length--;
	size = string_escape_mem(text, min_t(size_t, length, ZR_LOG_TEXT_MAX),
				 escaped, ZR_LOG_TEXT_MAX,
				 ESCAPE_ANY | ESCAPE_NAP | ESCAPE_APPEND, "\\");
	escaped[min(size, ZR_LOG_TEXT_MAX)] = '\0';
	append(device, attribute, escaped, error);
}

void zr_log_number(const char *device, const char *attribute, int number,
		   int error)
{
	char text[16];

	scnprintf(text, sizeof(text), "%d", number);
	append(device, attribute, text, error);
}

void zr_log_clear(void)
{
	unsigned long flags;

	spin_lock_irqsave(&lock, flags);
	last = 0;
	spin_unlock_irqrestore(&lock, flags);
}

/*
 * The position is the line's own number, so that a reader that is slower
 * than the ring skips what is gone instead of repeating or mixing lines.
 */
static void *log_seek(loff_t *pos)
{
	unsigned long newest;
	unsigned long flags;

	spin_lock_irqsave(&lock, flags);
	newest = last;
	spin_unlock_irqrestore(&lock, flags);

	if (newest > ZR_LOG_LINES && *pos <= newest - ZR_LOG_LINES)
		*pos = newest - ZR_LOG_LINES + 1;
	return *pos <= newest ? pos : NULL;
}

static void *log_start(struct seq_file *file, loff_t *pos)
{
	if (*pos == 0)
		*pos = 1;
	return log_seek(pos);
}

static void *log_next(struct seq_file *file, void *v, loff_t *pos)
{
	++*pos;
	return log_seek(pos);
}

static void log_stop(struct seq_file *file, void *v)
{
}

static int log_show(struct seq_file *file, void *v)
{
	unsigned long number = *(loff_t *)v;
	char line[ZR_LOG_LINE_SIZE];
	unsigned long flags;
	bool there;

	spin_lock_irqsave(&lock, flags);
	there = number <= last && number + ZR_LOG_LINES > last;
	if (there)
		memcpy(line, lines[number % ZR_LOG_LINES], sizeof(line));
	spin_unlock_irqrestore(&lock, flags);

	if (!there)
		return SEQ_SKIP;
	seq_printf(file, "%lu %s\n", number, line);
	return 0;
}

static const struct seq_operations log_sequence = {
	.start = log_start,
	.next = log_next,
	.stop = log_stop,
	.show = log_show,
};

static int log_open(struct inode *inode, struct file *file)
{
	/* ": > log" writes nothing and must empty it all the same. */
	if ((file->f_mode & FMODE_WRITE) && (file->f_flags & O_TRUNC))
		zr_log_clear();
	return seq_open(file, &log_sequence);
}

static ssize_t log_write(struct file *file, const char __user *text,
			 size_t count, loff_t *pos)
{
	zr_log_clear();
	return count;
}

static const struct file_operations log_operations = {
	.owner = THIS_MODULE,
	.open = log_open,
	.read = seq_read,
	.write = log_write,
	.llseek = seq_lseek,
	.release = seq_release,
};

void zr_log_create_knob(struct dentry *folder)
{
	debugfs_create_file("log", 0600, folder, NULL, &log_operations);
}
