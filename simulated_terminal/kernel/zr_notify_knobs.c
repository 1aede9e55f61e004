// SPDX-License-Identifier: GPL-2.0
/* The knobs of the netlink families. */
#include <linux/debugfs.h>
#include <linux/fs.h>
#include <linux/module.h>
#include <linux/sched/signal.h>
#include <linux/seq_file.h>
#include <linux/slab.h>
#include <linux/string.h>
#include <linux/uaccess.h>

#include "zr_notify.h"

/* As much as a body may hold, and as a flood may count. */
#define BODY_MAX 32768
#define FLOOD_MAX 1000000

/* --- Switches ------------------------------------------------------------ */

static int registered_set(void *data, u64 registered)
{
	if (registered > 1)
		return -EINVAL;
	return zr_family_set_registered(data, registered);
}

static int registered_get(void *data, u64 *registered)
{
	struct zr_family *family = data;

	*registered = READ_ONCE(family->registered);
	return 0;
}
DEFINE_DEBUGFS_ATTRIBUTE(registered_operations, registered_get, registered_set,
			 "%llu\n");

static int muted_set(void *data, u64 muted)
{
	struct zr_family *family = data;

	if (muted > 1)
		return -EINVAL;
	/* Once this is through, nothing that began before it is under way. */
	mutex_lock(&family->lock);
	family->muted = muted;
	mutex_unlock(&family->lock);
	return 0;
}

static int muted_get(void *data, u64 *muted)
{
	struct zr_family *family = data;

	*muted = READ_ONCE(family->muted);
	return 0;
}
DEFINE_DEBUGFS_ATTRIBUTE(muted_operations, muted_get, muted_set, "%llu\n");

static int logged_set(void *data, u64 logged)
{
	if (logged > 1)
		return -EINVAL;
	WRITE_ONCE(zr_notify_logged, logged);
	return 0;
}

static int logged_get(void *data, u64 *logged)
{
	*logged = READ_ONCE(zr_notify_logged);
	return 0;
}
DEFINE_DEBUGFS_ATTRIBUTE(logged_operations, logged_get, logged_set, "%llu\n");

/* --- Bodies and datagrams as they are given ------------------------------ */

static struct sk_buff *with_header(const struct zr_family *family,
				   const void *body, size_t size)
{
	struct sk_buff *skb = genlmsg_new(size, GFP_KERNEL);
	void *start;

	if (!skb)
		return NULL;
	start = genlmsg_put(skb, 0, 0, &family->genl, 0, ZR_NOTIFY_COMMAND);
	skb_put_data(skb, body, size);
	genlmsg_end(skb, start);
	return skb;
}

static struct sk_buff *as_it_is(const struct zr_family *family,
				const void *datagram, size_t size)
{
	struct sk_buff *skb = alloc_skb(size, GFP_KERNEL);

	if (skb)
		skb_put_data(skb, datagram, size);
	return skb;
}

static ssize_t send_from_user(struct file *file, const char __user *from,
			      size_t size, const char *knob,
			      struct sk_buff *(*build)(const struct zr_family *,
						       const void *, size_t))
{
	struct zr_family *family = file_inode(file)->i_private;
	struct sk_buff *skb;
	void *bytes;
	int ret = -ENODEV;

	if (size > BODY_MAX)
		return -EFBIG;
	bytes = memdup_user(from, size);
	if (IS_ERR(bytes))
		return PTR_ERR(bytes);
	mutex_lock(&family->lock);
	if (family->registered) {
		skb = build(family, bytes, size);
		zr_family_log(family, "%s %zu", knob, size);
		ret = skb ? zr_family_multicast(family, skb) : -ENOMEM;
	}
	mutex_unlock(&family->lock);
	kfree(bytes);
	return ret ? ret : size;
}

static ssize_t send_write(struct file *file, const char __user *from,
			  size_t size, loff_t *pos)
{
	return send_from_user(file, from, size, "send", with_header);
}

static const struct file_operations send_operations = {
	.owner = THIS_MODULE,
	.write = send_write,
};

static ssize_t raw_write(struct file *file, const char __user *from,
			 size_t size, loff_t *pos)
{
	return send_from_user(file, from, size, "raw", as_it_is);
}

static const struct file_operations raw_operations = {
	.owner = THIS_MODULE,
	.write = raw_write,
};

/* --- Malformed ones ------------------------------------------------------ */

static ssize_t malformed_write(struct file *file, const char __user *from,
			       size_t size, loff_t *pos)
{
	struct zr_family *family = file_inode(file)->i_private;
	char text[32];
	int ret = -ENODEV;

	if (size >= sizeof(text))
		return -EINVAL;
	if (copy_from_user(text, from, size))
		return -EFAULT;
	text[size] = '\0';
	mutex_lock(&family->lock);
	if (family->registered)
		ret = zr_malformed_send(family, strim(text));
	mutex_unlock(&family->lock);
	return ret ? ret : size;
}

static int malformed_open(struct inode *inode, struct file *file)
{
	return single_open(file, zr_malformed_show, NULL);
}

static const struct file_operations malformed_operations = {
	.owner = THIS_MODULE,
	.open = malformed_open,
	.read = seq_read,
	.write = malformed_write,
	.llseek = seq_lseek,
	.release = single_release,
};

/* --- Floods -------------------------------------------------------------- */

static int flood_one(struct zr_family *family, u32 number)
{
	struct zr_notice notice = zr_notice_sample(family);
	struct sk_buff *skb;
	int ret = -ENODEV;

	notice.value = number;
	mutex_lock(&family->lock);
	if (family->registered) {
		skb = zr_notice_build(family, &notice, 0);
		ret = skb ? zr_family_multicast(family, skb) : -ENOMEM;
	}
	mutex_unlock(&family->lock);
	return ret;
}

static int flood_set(void *data, u64 count)
{
	struct zr_family *family = data;
	int ret = 0;
	u32 number;

	if (count < 1 || count > FLOOD_MAX)
		return -EINVAL;
	zr_family_log(family, "flood %llu", count);
	for (number = 1; number <= count && !ret; number++) {
		ret = flood_one(family, number);
		if (fatal_signal_pending(current))
			ret = -EINTR;
		cond_resched();
	}
	return ret;
}
DEFINE_DEBUGFS_ATTRIBUTE(flood_operations, NULL, flood_set, "%llu\n");

/* ------------------------------------------------------------------------- */

static void create_family_knobs(struct zr_family *family, struct dentry *parent)
{
	struct dentry *folder = debugfs_create_dir(family->genl.name, parent);

	debugfs_create_file_unsafe("registered", 0600, folder, family,
				   &registered_operations);
	if (!family->genl.n_mcgrps)
		return;
	debugfs_create_file_unsafe("muted", 0600, folder, family,
				   &muted_operations);
	debugfs_create_file("send", 0200, folder, family, &send_operations);
	debugfs_create_file("raw", 0200, folder, family, &raw_operations);
	debugfs_create_file("malformed", 0600, folder, family,
			    &malformed_operations);
	debugfs_create_file_unsafe("flood", 0200, folder, family,
				   &flood_operations);
}

void zr_notify_create_knobs(struct dentry *folder)
{
	unsigned int i;

	debugfs_create_file_unsafe("logged", 0600, folder, NULL,
				   &logged_operations);
	for (i = 0; i < zr_family_count; i++)
		create_family_knobs(&zr_families[i], folder);
}
