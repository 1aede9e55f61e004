// SPDX-License-Identifier: GPL-2.0
/* Generic netlink notifications of changed values. */
#include <linux/debugfs.h>
#include <linux/kernel.h>
#include <linux/module.h>
#include <linux/platform_device.h>
#include <linux/string.h>

#include "zr_notify.h"

static char *families = "ZR_DI,ZR_DO,ANALOG";
module_param(families, charp, 0444);
MODULE_PARM_DESC(families, "List of netlink families registered at load");

/* The longest number is "-2147483648" and its newline. */
#define NUMBER_SIZE 16

bool zr_notify_logged;

static const struct genl_multicast_group groups[] = {
	{ .name = "events" },
};

#define FAMILY(text)					\
	.genl = {					\
		.name = text,				\
		.version = ZR_NOTIFY_VERSION,		\
		.maxattr = ZR_NOTIFY_VALUE,		\
		.module = THIS_MODULE,			\
		.mcgrps = groups,			\
		.n_mcgrps = ARRAY_SIZE(groups),		\
	}

struct zr_family zr_families[] = {
	[ZR_NOTIFY_NOBODY] = {
		/* Has no group, for those who look for one. */
		.genl = {
			.name = "ZR_QUIET",
			.version = ZR_NOTIFY_VERSION,
			.module = THIS_MODULE,
		},
	},
	[ZR_NOTIFY_DI] = { FAMILY("ZR_DI") },
	[ZR_NOTIFY_DO] = { FAMILY("ZR_DO") },
	[ZR_NOTIFY_ANALOG] = { FAMILY("ANALOG") },
};

const unsigned int zr_family_count = ARRAY_SIZE(zr_families);

static int put_channel(struct sk_buff *skb, const struct zr_notice *notice)
{
	if (notice->name)
		return nla_put_string(skb, ZR_NOTIFY_CHANNEL, notice->name);
	return nla_put_u32(skb, ZR_NOTIFY_CHANNEL, notice->channel);
}

struct sk_buff *zr_notice_build(const struct zr_family *family,
				const struct zr_notice *notice, size_t room)
{
	size_t size = 2 * nla_total_size(sizeof(u32));
	struct sk_buff *skb;
	void *start;

	size += nla_total_size(notice->name ? strlen(notice->name) + 1 :
			       sizeof(u32));
	skb = genlmsg_new(size + room, GFP_KERNEL);
	if (!skb)
		return NULL;
	start = genlmsg_put(skb, 0, 0, &family->genl, 0, ZR_NOTIFY_COMMAND);
	if (!start || put_channel(skb, notice) ||
	    nla_put_u32(skb, ZR_NOTIFY_FLAGS, notice->flags) ||
	    nla_put_le32(skb, ZR_NOTIFY_VALUE, cpu_to_le32(notice->value))) {
		nlmsg_free(skb);
		return NULL;
	}
	genlmsg_end(skb, start);
	return skb;
}

int zr_family_multicast(const struct zr_family *family, struct sk_buff *skb)
{
	int ret = genlmsg_multicast(&family->genl, skb, 0, 0, GFP_KERNEL);

	return ret == -ESRCH ? 0 : ret;
}

void zr_family_log(const struct zr_family *family, const char *format, ...)
{
	char text[48];
	va_list arguments;
	int length;

	if (!READ_ONCE(zr_notify_logged))
		return;
	va_start(arguments, format);
	length = vscnprintf(text, sizeof(text), format, arguments);
	va_end(arguments);
	zr_log_text("notify", family->genl.name, text, length, 0);
}

/* Negative numbers go out as they lie in memory; so wide is the range. */
static bool read_number(struct zr_value *value, u32 *number)
{
	char text[NUMBER_SIZE];
	size_t length;
	s64 wide;

	mutex_lock(&value->lock);
	length = value->length;
	if (length < sizeof(text))
		memcpy(text, value->text, length);
	mutex_unlock(&value->lock);

	if (length >= sizeof(text))
		return false;
	text[length] = '\0';
	if (strlen(text) != length || kstrtos64(text, 10, &wide) ||
	    wide < S32_MIN || wide > U32_MAX)
		return false;
	*number = wide;
	return true;
}

static void notify(struct zr_family *family, const struct zr_notice *notice)
{
	struct sk_buff *skb = zr_notice_build(family, notice, 0);

	if (!skb)
		return;
	/* First the log: whoever was notified may look there at once. */
	if (!notice->name)
		zr_family_log(family, "%u %d", notice->channel, notice->value);
	else if (notice->flags & ZR_NOTIFY_VALID)
		zr_family_log(family, "%s %d", notice->name, notice->value);
	else
		zr_family_log(family, "%s invalid", notice->name);
	zr_family_multicast(family, skb);
}

void zr_notify_value(struct zr_attribute *attribute, struct device *dev)
{
	enum zr_notify which = attribute->spec->notify;
	struct zr_family *family = &zr_families[which];
	struct zr_notice notice = {};

	if (which == ZR_NOTIFY_NOBODY)
		return;
	mutex_lock(&family->lock);
	/*
	 * Read here, not at the change: of two that overlap the later
	 * notification tells what is there in the end.
	 */
	if (read_number(&attribute->value, &notice.value))
		notice.flags = ZR_NOTIFY_VALID;
	if (which == ZR_NOTIFY_ANALOG)
		notice.name = attribute->owner->name;
	else
		notice.channel = to_platform_device(dev)->id;
	/* An input is high or low; only a measurement can be out of order. */
	if (family->registered && !family->muted &&
	    (notice.name || notice.flags))
		notify(family, &notice);
	mutex_unlock(&family->lock);
}

int zr_family_set_registered(struct zr_family *family, bool registered)
{
	int ret = 0;

	mutex_lock(&family->lock);
	if (registered && !family->registered) {
		ret = genl_register_family(&family->genl);
		family->registered = !ret;
	} else if (!registered && family->registered) {
		family->registered = false;
		ret = genl_unregister_family(&family->genl);
	}
	mutex_unlock(&family->lock);
	return ret;
}

static bool is_family(const char *name)
{
	unsigned int i;

	for (i = 0; i < zr_family_count; i++)
		if (!strcmp(zr_families[i].genl.name, name))
			return true;
	return false;
}

int zr_notify_init(void)
{
	int ret = zr_list_check("families", families, is_family);
	unsigned int i;

	for (i = 0; i < zr_family_count; i++)
		mutex_init(&zr_families[i].lock);
	for (i = 0; i < zr_family_count && !ret; i++)
		if (zr_list_has(families, zr_families[i].genl.name))
			ret = zr_family_set_registered(&zr_families[i], true);
	if (!ret)
		zr_notify_create_knobs(debugfs_create_dir("notify",
							  zr_knob_root()));
	return ret;
}

void zr_notify_exit(void)
{
	unsigned int i;

	for (i = 0; i < zr_family_count; i++)
		zr_family_set_registered(&zr_families[i], false);
}
