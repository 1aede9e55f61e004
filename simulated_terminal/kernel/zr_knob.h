/* SPDX-License-Identifier: GPL-2.0 */
/*
 * What stands behind the drivers of the simulated board: the log of what
 * reached them, injected failures, and the texts that attributes show.
 */
#ifndef ZR_KNOB_H
#define ZR_KNOB_H

#include <linux/dcache.h>
#include <linux/mutex.h>
#include <linux/spinlock.h>
#include <linux/types.h>

/* --- Log ------------------------------------------------------------- */

/*
 * Append one line. @text goes in without its newline and escaped; @error is
 * 0 or the negative errno with which the driver refused. Callable from any
 * context: LED triggers set lamps from timers.
 */
void zr_log_text(const char *device, const char *attribute, const char *text,
		 size_t length, int error);
void zr_log_number(const char *device, const char *attribute, int number,
		   int error);
void zr_log_clear(void);
void zr_log_create_knob(struct dentry *folder);

/* --- Errno names ------------------------------------------------------ */

/* The last one that user space knows; what follows is the kernel's own. */
#define ZR_ERRNO_MAX 133

/* NULL for one without a name here. @error is positive. */
const char *zr_errno_name(int error);
/* The positive errno of a name or a decimal number, or -EINVAL. */
int zr_errno_parse(const char *text);

/* --- Injected failures ------------------------------------------------ */

struct zr_fault {
	spinlock_t lock;	/* all below */
	int error;		/* positive; 0: off */
	int count;		/* how many are left; -1: for ever */
	int after;		/* how many succeed before */
};

void zr_fault_init(struct zr_fault *fault);
/* 0, or the negative errno with which this access is to fail. */
int zr_fault_take(struct zr_fault *fault);
void zr_fault_create_knob(struct zr_fault *fault, const char *name,
			  struct dentry *folder);

/* --- The text behind an attribute -------------------------------------- */

/* sysfs_emit() and the sysfs core allow one byte less than a page. */
#define ZR_VALUE_MAX (PAGE_SIZE - 1)

struct zr_value {
	struct mutex lock;	/* text and length */
	char *text;
	size_t length;
	struct zr_fault fail_read;
	/* Told that a knob changed the text, without the lock. May be NULL. */
	void (*changed)(struct zr_value *value);
};

int zr_value_init(struct zr_value *value, const char *text, size_t length);
void zr_value_free(struct zr_value *value);
/* The text's length, or the injected error. @text holds ZR_VALUE_MAX bytes. */
ssize_t zr_value_read(struct zr_value *value, char *text);
/* Replace the text; the lock is held. True if it is a different one. */
bool zr_value_replace(struct zr_value *value, const char *text, size_t length);
/* The files "value" and "fail_read". */
void zr_value_create_knobs(struct zr_value *value, struct dentry *folder);

#endif
