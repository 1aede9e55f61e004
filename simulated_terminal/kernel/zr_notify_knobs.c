// SPDX-License-Identifier: GPL-2.0
/* The knobs of the netlink families. */
#include <linux/debugfs.h>
#include <linux/module.h>

#include "zr_notify.h"

static int registered_set(void *data, u64 registered)
{
	if (registered > 1)
		return -EINVAL;
	return zr_family_set_registered(data, registered);
}

static int registered_get(void *data, u64 *registered)
{
	struct zr_family *family = data;

	mutex_lock(&family->lock);
	*registered = family->registered;
	mutex_unlock(&family->lock);
	return 0;
}
DEFINE_DEBUGFS_ATTRIBUTE(registered_operations, registered_get, registered_set,
			 "%llu\n");

static int muted_set(void *data, u64 muted)
{
	struct zr_family *family = data;

	if (muted > 1)
		return -EINVAL;
	mutex_lock(&family->lock);
	family->muted = muted;
	mutex_unlock(&family->lock);
	return 0;
}

static int muted_get(void *data, u64 *muted)
{
	struct zr_family *family = data;

	mutex_lock(&family->lock);
	*muted = family->muted;
	mutex_unlock(&family->lock);
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

static void create_family_knobs(struct zr_family *family, struct dentry *parent)
{
	struct dentry *folder = debugfs_create_dir(family->genl.name, parent);

	debugfs_create_file_unsafe("registered", 0600, folder, family,
				   &registered_operations);
	if (!family->genl.n_mcgrps)
		return;
	debugfs_create_file_unsafe("muted", 0600, folder, family,
				   &muted_operations);
}

void zr_notify_create_knobs(struct dentry *folder)
{
	unsigned int i;

	debugfs_create_file_unsafe("logged", 0600, folder, NULL,
				   &logged_operations);
	for (i = 0; i < zr_family_count; i++)
		create_family_knobs(&zr_families[i], folder);
}
