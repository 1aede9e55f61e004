// SPDX-License-Identifier: GPL-2.0
/* Knobs that let frames arrive from the bus as if another node had sent them. */
#include <linux/ctype.h>
#include <linux/debugfs.h>
#include <linux/fs.h>
#include <linux/kernel.h>
#include <linux/module.h>
#include <linux/string.h>
#include <linux/uaccess.h>
#include <asm/unaligned.h>

#include "zr_can.h"

#define ZR_FLOOD_MAX 10000000
#define ZR_FLOOD_BATCH 64
#define ZR_FLOOD_ID 0x100

#define STANDARD_DIGITS 3
#define EXTENDED_DIGITS 8

static int parse_identifier(const char *text, size_t digits,
			    struct can_frame *frame)
{
	char hex[EXTENDED_DIGITS + 1] = "";
	bool extended = digits == EXTENDED_DIGITS;
	size_t i;

	if (!extended && digits != STANDARD_DIGITS)
		return -EINVAL;
	/* kstrtou32() alone would take signs and 0x. */
	for (i = 0; i < digits; i++)
		if (!isxdigit(text[i]))
			return -EINVAL;
	memcpy(hex, text, digits);
	if (kstrtou32(hex, 16, &frame->can_id) ||
	    frame->can_id > (extended ? CAN_EFF_MASK : CAN_SFF_MASK))
		return -EINVAL;
	if (extended)
		frame->can_id |= CAN_EFF_FLAG;
	return 0;
}

/* "R" or "R" and the length that the remote frame asks for. */
static int parse_remote(const char *text, struct can_frame *frame)
{
	frame->can_id |= CAN_RTR_FLAG;
	if (!*text)
		return 0;
	if (*text < '0' || *text > '0' + CAN_MAX_DLEN || text[1])
		return -EINVAL;
	frame->len = *text - '0';
	return 0;
}

static int parse_data(const char *text, struct can_frame *frame)
{
	while (*text) {
		if (*text == '.' && frame->len) {
			text++;
			continue;
		}
		if (frame->len == CAN_MAX_DLEN ||
		    hex2bin(&frame->data[frame->len], text, 1))
			return -EINVAL;
		frame->len++;
		text += 2;
	}
	return 0;
}

/* As candump prints it and cansend takes it: 123#1122, 12345678#, 123#R. */
static int parse_frame(const char *text, struct can_frame *frame)
{
	const char *body = strchr(text, '#');
	int ret;

	memset(frame, 0, sizeof(*frame));
	if (!body)
		return -EINVAL;
	ret = parse_identifier(text, body - text, frame);
	if (ret)
		return ret;
	body++;
	return *body == 'R' ? parse_remote(body + 1, frame) :
			      parse_data(body, frame);
}

char *zr_can_copy_line(const char __user *from, size_t size, char *text,
		       size_t room)
{
	if (size >= room)
		return ERR_PTR(-EINVAL);
	if (copy_from_user(text, from, size))
		return ERR_PTR(-EFAULT);
	text[size] = '\0';
	return strim(text);
}

static int push(struct zr_can *can, const struct can_frame *frame)
{
	return zr_can_on_bus(can) ? zr_can_receive(can, frame) : -ENETDOWN;
}

static ssize_t inject_write(struct file *file, const char __user *from,
			    size_t size, loff_t *pos)
{
	struct zr_can *can = file_inode(file)->i_private;
	struct can_frame frame;
	char text[64];
	char *line = zr_can_copy_line(from, size, text, sizeof(text));
	int ret;

	if (IS_ERR(line))
		return PTR_ERR(line);
	ret = parse_frame(line, &frame);
	if (ret)
		return ret;
	ret = zr_can_lock_running(can);
	if (ret)
		return ret;
	ret = push(can, &frame);
	zr_can_unlock(can);
	return ret ? ret : size;
}

static const struct file_operations inject_operations = {
	.owner = THIS_MODULE,
	.open = simple_open,
	.write = inject_write,
	.llseek = no_llseek,
};

static int push_batch(struct zr_can *can, u64 *next, u64 end)
{
	struct can_frame frame = {
		.can_id = ZR_FLOOD_ID,
		.len = CAN_MAX_DLEN,
	};
	int ret = zr_can_lock_running(can);

	if (ret)
		return ret;
	while (*next < end && !ret) {
		put_unaligned_be64(*next, frame.data);
		ret = push(can, &frame);
		++*next;
	}
	zr_can_unlock(can);
	return ret;
}

/* In batches, so that the device can go and stop in between. */
static int flood_set(void *data, u64 count)
{
	struct zr_can *can = data;
	u64 next = 0;
	int ret = 0;

	if (!count || count > ZR_FLOOD_MAX)
		return -EINVAL;
	while (next < count && !ret) {
		ret = push_batch(can, &next,
				 min_t(u64, count, next + ZR_FLOOD_BATCH));
		/* Not -ERESTARTSYS: the flood must not begin again. */
		if (wait_event_interruptible(can->drained,
					     !READ_ONCE(can->undelivered)))
			return -EINTR;
	}
	return ret;
}
DEFINE_DEBUGFS_ATTRIBUTE(flood_operations, NULL, flood_set, "%llu\n");

void zr_can_create_frame_knobs(struct zr_can *can, struct dentry *folder)
{
	debugfs_create_file("inject", 0200, folder, can, &inject_operations);
	debugfs_create_file_unsafe("flood", 0200, folder, can,
				   &flood_operations);
}
