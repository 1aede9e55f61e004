// SPDX-License-Identifier: GPL-2.0
/* Notifications that a driver should never send, by name. */
#include <linux/kernel.h>
#include <linux/seq_file.h>
#include <linux/string.h>

#include "zr_notify.h"

#define HEADERS (NLMSG_HDRLEN + GENL_HDRLEN)
#define LONG_PAYLOAD 4096
/* Enough for whatever is added to a sample below. */
#define ROOM (LONG_PAYLOAD + 64)

/* The attribute at @index of a sample, which is still in order before it. */
static struct nlattr *nth(struct sk_buff *skb, int index)
{
	struct nlattr *attribute = (void *)(skb->data + HEADERS);

	while (index--)
		attribute = (void *)attribute + NLA_ALIGN(attribute->nla_len);
	return attribute;
}

static void cut_at(struct sk_buff *skb, const void *end)
{
	skb_trim(skb, (const u8 *)end - skb->data);
}

/* Room is there: the result of these nla_put() cannot be a failure. */
static void add(struct sk_buff *skb, int type, size_t size)
{
	static const u8 ones[LONG_PAYLOAD] = { [0 ... LONG_PAYLOAD - 1] = 1 };

	WARN_ON(nla_put(skb, type, size, ones));
}

/* --- How many ------------------------------------------------------------ */

static void no_attributes(struct sk_buff *skb)
{
	skb_trim(skb, HEADERS);
}

static void two_attributes(struct sk_buff *skb)
{
	cut_at(skb, nth(skb, 2));
}

static void four_attributes(struct sk_buff *skb)
{
	add(skb, ZR_NOTIFY_VALUE + 1, sizeof(u32));
}

/* --- Which --------------------------------------------------------------- */

static void unknown_types(struct sk_buff *skb)
{
	int i;

	for (i = 0; i < 3; i++)
		nth(skb, i)->nla_type += 10;
}

/* The value comes twice, the flags never. */
static void no_flags(struct sk_buff *skb)
{
	nth(skb, 1)->nla_type = ZR_NOTIFY_VALUE;
}

static void no_value(struct sk_buff *skb)
{
	nth(skb, 2)->nla_type = ZR_NOTIFY_FLAGS;
}

static void no_channel(struct sk_buff *skb)
{
	nth(skb, 0)->nla_type = ZR_NOTIFY_VALUE + 1;
}

/* --- Lengths of attributes ----------------------------------------------- */

static void zero_length(struct sk_buff *skb)
{
	nth(skb, 0)->nla_len = 0;
}

static void zero_length_last(struct sk_buff *skb)
{
	nth(skb, 2)->nla_len = 0;
}

static void short_length(struct sk_buff *skb)
{
	nth(skb, 2)->nla_len = NLA_HDRLEN - 1;
}

static void past_end(struct sk_buff *skb)
{
	nth(skb, 2)->nla_len += 64;
}

static void past_end_first(struct sk_buff *skb)
{
	nth(skb, 0)->nla_len = U16_MAX;
}

/* The message ends inside the header of the last attribute. */
static void cut_header(struct sk_buff *skb)
{
	cut_at(skb, (u8 *)nth(skb, 2) + 2);
}

/* --- Payloads ------------------------------------------------------------ */

static void no_payload(struct sk_buff *skb)
{
	skb_trim(skb, HEADERS);
	add(skb, ZR_NOTIFY_CHANNEL, 0);
	add(skb, ZR_NOTIFY_FLAGS, 0);
	add(skb, ZR_NOTIFY_VALUE, 0);
}

static void short_payload(struct sk_buff *skb)
{
	skb_trim(skb, HEADERS);
	add(skb, ZR_NOTIFY_CHANNEL, 1);
	add(skb, ZR_NOTIFY_FLAGS, 2);
	add(skb, ZR_NOTIFY_VALUE, 3);
}

static void short_value(struct sk_buff *skb)
{
	cut_at(skb, nth(skb, 2));
	add(skb, ZR_NOTIFY_VALUE, 2);
}

static void wide_value(struct sk_buff *skb)
{
	cut_at(skb, nth(skb, 2));
	add(skb, ZR_NOTIFY_VALUE, 8);
}

static void long_message(struct sk_buff *skb)
{
	cut_at(skb, nth(skb, 2));
	add(skb, ZR_NOTIFY_VALUE, LONG_PAYLOAD);
}

static void invalid(struct sk_buff *skb)
{
	memset(nla_data(nth(skb, 1)), 0, sizeof(u32));
}

/* --- Headers ------------------------------------------------------------- */

static void wrong_family(struct sk_buff *skb)
{
	/* The controller is the one family that is always there. */
	nlmsg_hdr(skb)->nlmsg_type = GENL_ID_CTRL;
}

static void wrong_command(struct sk_buff *skb)
{
	struct genlmsghdr *header = nlmsg_data(nlmsg_hdr(skb));

	header->cmd = ZR_NOTIFY_COMMAND + 1;
}

static void length_below(struct sk_buff *skb)
{
	nlmsg_hdr(skb)->nlmsg_len = 8;
}

static void length_headers(struct sk_buff *skb)
{
	nlmsg_hdr(skb)->nlmsg_len = NLMSG_HDRLEN;
}

static void length_above(struct sk_buff *skb)
{
	nlmsg_hdr(skb)->nlmsg_len += 64;
}

/* The header tells the whole length, most of it is not there. */
static void truncated(struct sk_buff *skb)
{
	skb_trim(skb, NLMSG_HDRLEN - 4);
}

static void empty(struct sk_buff *skb)
{
	skb_trim(skb, 0);
}

/* A body is changed before the header's length is set, a header after it. */
static const struct {
	const char *word;
	void (*body)(struct sk_buff *skb);
	void (*header)(struct sk_buff *skb);
} words[] = {
	{ "none", .body = no_attributes },
	{ "two", .body = two_attributes },
	{ "four", .body = four_attributes },
	{ "unknown_types", .body = unknown_types },
	{ "no_channel", .body = no_channel },
	{ "no_flags", .body = no_flags },
	{ "no_value", .body = no_value },
	{ "zero_length", .body = zero_length },
	{ "zero_length_last", .body = zero_length_last },
	{ "short_length", .body = short_length },
	{ "past_end", .body = past_end },
	{ "past_end_first", .body = past_end_first },
	{ "cut_header", .body = cut_header },
	{ "no_payload", .body = no_payload },
	{ "short_payload", .body = short_payload },
	{ "short_value", .body = short_value },
	{ "wide_value", .body = wide_value },
	{ "long", .body = long_message },
	{ "invalid", .body = invalid },
	{ "wrong_family", .header = wrong_family },
	{ "wrong_command", .header = wrong_command },
	{ "length_below", .header = length_below },
	{ "length_headers", .header = length_headers },
	{ "length_above", .header = length_above },
	{ "truncated", .header = truncated },
	{ "empty", .header = empty },
};

struct zr_notice zr_notice_sample(const struct zr_family *family)
{
	struct zr_notice notice = { .flags = ZR_NOTIFY_VALID, .value = 1 };

	if (family == &zr_families[ZR_NOTIFY_ANALOG])
		notice.name = "ai.0";
	return notice;
}

int zr_malformed_send(const struct zr_family *family, const char *word)
{
	struct zr_notice sample = zr_notice_sample(family);
	struct sk_buff *skb;
	int i = 0;

	while (i < ARRAY_SIZE(words) && strcmp(words[i].word, word))
		i++;
	if (i == ARRAY_SIZE(words))
		return -EINVAL;
	skb = zr_notice_build(family, &sample, ROOM);
	if (!skb)
		return -ENOMEM;
	if (words[i].body)
		words[i].body(skb);
	nlmsg_hdr(skb)->nlmsg_len = skb->len;
	if (words[i].header)
		words[i].header(skb);
	zr_family_log(family, "malformed %s", word);
	return zr_family_multicast(family, skb);
}

int zr_malformed_show(struct seq_file *file, void *v)
{
	int i;

	for (i = 0; i < ARRAY_SIZE(words); i++)
		seq_printf(file, "%s\n", words[i].word);
	return 0;
}
