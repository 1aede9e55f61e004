/* SPDX-License-Identifier: GPL-2.0 */
/*
 * Generic netlink families that tell of changed values, between their
 * source and their knobs.
 */
#ifndef ZR_NOTIFY_H
#define ZR_NOTIFY_H

#include <net/genetlink.h>

#include "zr_terminal.h"

#define ZR_NOTIFY_COMMAND 1
#define ZR_NOTIFY_VERSION 1

/* What the attributes of a notification are, by their types. */
enum {
	ZR_NOTIFY_CHANNEL = 1,	/* u32, or the name in ANALOG */
	ZR_NOTIFY_FLAGS,	/* u32 */
	ZR_NOTIFY_VALUE,	/* u32 */
};

#define ZR_NOTIFY_VALID BIT(0)

struct zr_family {
	struct genl_family genl;
	/* Held while sending: notifications leave in the order of changes. */
	struct mutex lock;
	bool registered;
	bool muted;
};

struct zr_notice {
	const char *name;	/* NULL: the channel has a number */
	u32 channel;
	u32 flags;
	u32 value;
};

extern struct zr_family zr_families[];
extern const unsigned int zr_family_count;
/* Whether notifications appear in the log. */
extern bool zr_notify_logged;

/* Register or unregister; takes the lock. */
int zr_family_set_registered(struct zr_family *family, bool registered);

/* The rest wants the lock held and the family registered. */

/*
 * A complete notification with @room bytes to spare behind it, or NULL. Its
 * netlink header stands at the start of the data.
 */
struct sk_buff *zr_notice_build(const struct zr_family *family,
				const struct zr_notice *notice, size_t room);
/* Multicast @skb, which is used up. That nobody listens is no error. */
int zr_family_multicast(const struct zr_family *family, struct sk_buff *skb);
void zr_family_log(const struct zr_family *family, const char *format, ...)
	__printf(2, 3);

/* A notification like those of the family's drivers, of its first channel. */
struct zr_notice zr_notice_sample(const struct zr_family *family);
/* Send the malformed one that @word names. */
int zr_malformed_send(const struct zr_family *family, const char *word);
int zr_malformed_show(struct seq_file *file, void *v);

void zr_notify_create_knobs(struct dentry *folder);

#endif
