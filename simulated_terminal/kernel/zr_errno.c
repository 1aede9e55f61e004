// SPDX-License-Identifier: GPL-2.0
/* Names of the errors that a driver can answer. */
#include <linux/errno.h>
#include <linux/kernel.h>
#include <linux/string.h>

#include "zr_knob.h"

#define NAME(error) { error, #error }

static const struct {
	int error;
	const char *name;
} names[] = {
	NAME(EPERM), NAME(ENOENT), NAME(EINTR), NAME(EIO), NAME(ENXIO),
	NAME(E2BIG), NAME(EBADF), NAME(EAGAIN), NAME(ENOMEM), NAME(EACCES),
	NAME(EFAULT), NAME(EBUSY), NAME(EEXIST), NAME(ENODEV), NAME(EINVAL),
	NAME(ENFILE), NAME(EMFILE), NAME(ENOTTY), NAME(EFBIG), NAME(ENOSPC),
	NAME(ESPIPE), NAME(EROFS), NAME(EPIPE), NAME(EDOM), NAME(ERANGE),
	NAME(EDEADLK), NAME(ENODATA), NAME(ETIME), NAME(ENOLINK), NAME(ECOMM),
	NAME(EPROTO), NAME(EBADMSG), NAME(EOVERFLOW), NAME(EILSEQ),
	NAME(EMSGSIZE), NAME(EOPNOTSUPP), NAME(ENETDOWN), NAME(ENETUNREACH),
	NAME(ECONNRESET), NAME(ENOBUFS), NAME(ESHUTDOWN), NAME(ETIMEDOUT),
	NAME(EHOSTDOWN), NAME(EALREADY), NAME(EINPROGRESS), NAME(ESTALE),
	NAME(EREMOTEIO), NAME(ECANCELED), NAME(EHWPOISON),
};

const char *zr_errno_name(int error)
{
	int i;

	for (i = 0; i < ARRAY_SIZE(names); i++)
		if (names[i].error == error)
			return names[i].name;
	return NULL;
}

int zr_errno_parse(const char *text)
{
	int number;
	int i;

	for (i = 0; i < ARRAY_SIZE(names); i++)
		if (!strcmp(names[i].name, text))
			return names[i].error;
	if (kstrtoint(text, 10, &number) || number < 1 || number > ZR_ERRNO_MAX)
		return -EINVAL;
	return number;
}
