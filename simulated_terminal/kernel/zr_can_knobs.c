// SPDX-License-Identifier: GPL-2.0
/* Knobs of the CAN controllers. */
#include <linux/debugfs.h>
#include <linux/fs.h>
#include <linux/module.h>
#include <linux/seq_file.h>

#include "zr_can.h"

static const char * const state_names[] = {
	[CAN_STATE_ERROR_ACTIVE] = "error-active",
	[CAN_STATE_ERROR_WARNING] = "error-warning",
	[CAN_STATE_ERROR_PASSIVE] = "error-passive",
	[CAN_STATE_BUS_OFF] = "bus-off",
	[CAN_STATE_STOPPED] = "stopped",
};

/* The least transmit error count of each state. */
static const unsigned int thresholds[] = {
	[CAN_STATE_ERROR_ACTIVE] = 0,
	[CAN_STATE_ERROR_WARNING] = CAN_ERROR_WARNING_THRESHOLD,
	[CAN_STATE_ERROR_PASSIVE] = CAN_ERROR_PASSIVE_THRESHOLD,
	[CAN_STATE_BUS_OFF] = CAN_BUS_OFF_THRESHOLD,
};

const char *zr_can_state_name(enum can_state state)
{
	return state_names[state];
}

static enum can_state state_of(const struct zr_can *can)
{
	return zr_can_link_of(can)->can.state;
}

int zr_can_lock_running(struct zr_can *can)
{
	int ret;

	mutex_lock(&can->device.lock);
	spin_lock_bh(&zr_can_lock);
	if (can->device.present && can->running)
		return 0;
	ret = can->device.present ? -ENETDOWN : -ENODEV;
	zr_can_unlock(can);
	return ret;
}

void zr_can_unlock(struct zr_can *can)
{
	spin_unlock_bh(&zr_can_lock);
	mutex_unlock(&can->device.lock);
}

/* --- State and error counters ---------------------------------------------- */

/* Bus-off is left by a restart only, in hardware too. */
static int set_counters(struct zr_can *can, unsigned int tx, unsigned int rx)
{
	if (state_of(can) == CAN_STATE_BUS_OFF)
		return tx < CAN_BUS_OFF_THRESHOLD ? -EBUSY : 0;
	can->tx_errors = tx;
	can->rx_errors = rx;
	zr_can_follow_counters(can);
	return 0;
}

static int tx_errors_get(void *data, u64 *errors)
{
	struct zr_can *can = data;

	*errors = READ_ONCE(can->tx_errors);
	return 0;
}

static int tx_errors_set(void *data, u64 errors)
{
	struct zr_can *can = data;
	int ret;

	if (errors > CAN_BUS_OFF_THRESHOLD)
		return -EINVAL;
	ret = zr_can_lock_running(can);
	if (ret)
		return ret;
	ret = set_counters(can, errors, can->rx_errors);
	zr_can_unlock(can);
	return ret;
}
DEFINE_DEBUGFS_ATTRIBUTE(tx_errors_operations, tx_errors_get, tx_errors_set,
			 "%llu\n");

static int rx_errors_get(void *data, u64 *errors)
{
	struct zr_can *can = data;

	*errors = READ_ONCE(can->rx_errors);
	return 0;
}

static int rx_errors_set(void *data, u64 errors)
{
	struct zr_can *can = data;
	int ret;

	/* Errors of reception alone never lead to bus-off. */
	if (errors >= CAN_BUS_OFF_THRESHOLD)
		return -EINVAL;
	ret = zr_can_lock_running(can);
	if (ret)
		return ret;
	ret = set_counters(can, min_t(u64, can->tx_errors, U8_MAX), errors);
	zr_can_unlock(can);
	return ret;
}
DEFINE_DEBUGFS_ATTRIBUTE(rx_errors_operations, rx_errors_get, rx_errors_set,
			 "%llu\n");

static int state_show(struct seq_file *file, void *v)
{
	struct zr_can *can = file->private;
	int ret = 0;

	mutex_lock(&can->device.lock);
	if (can->device.present)
		seq_printf(file, "%s\n", zr_can_state_name(state_of(can)));
	else
		ret = -ENODEV;
	mutex_unlock(&can->device.lock);
	return ret;
}

static int state_open(struct inode *inode, struct file *file)
{
	return single_open(file, state_show, inode->i_private);
}

/* "error-passive", or "passive" in short. */
static int parse_state(const char *text)
{
	int i;

	for (i = 0; i < ARRAY_SIZE(thresholds); i++)
		if (!strcmp(text, state_names[i]) ||
		    (strstarts(state_names[i], "error-") &&
		     !strcmp(text, state_names[i] + strlen("error-"))))
			return i;
	return -EINVAL;
}

static ssize_t state_write(struct file *file, const char __user *from,
			   size_t size, loff_t *pos)
{
	struct zr_can *can = file_inode(file)->i_private;
	char text[32];
	char *name = zr_can_copy_line(from, size, text, sizeof(text));
	int state;
	int ret;

	if (IS_ERR(name))
		return PTR_ERR(name);
	state = parse_state(name);
	if (state < 0)
		return state;
	ret = zr_can_lock_running(can);
	if (ret)
		return ret;
	ret = set_counters(can, thresholds[state], 0);
	zr_can_unlock(can);
	return ret ? ret : size;
}

static const struct file_operations state_operations = {
	.owner = THIS_MODULE,
	.open = state_open,
	.read = seq_read,
	.write = state_write,
	.llseek = seq_lseek,
	.release = single_release,
};

/* --- Switches: they stay as set when the device goes and comes ------------- */

/* True when the switch has moved; device lock and bus lock are held then. */
static bool lock_and_switch(struct zr_can *can, bool *which, bool on)
{
	mutex_lock(&can->device.lock);
	spin_lock_bh(&zr_can_lock);
	if (*which != on) {
		*which = on;
		return true;
	}
	zr_can_unlock(can);
	return false;
}

static int mute_get(void *data, u64 *on)
{
	struct zr_can *can = data;

	*on = READ_ONCE(can->mute);
	return 0;
}

static int mute_set(void *data, u64 on)
{
	struct zr_can *can = data;

	if (on > 1)
		return -EINVAL;
	if (!lock_and_switch(can, &can->mute, on))
		return 0;
	if (can->running) {
		zr_can_abort(can);
		zr_can_wake(can);
	}
	zr_can_unlock(can);
	return 0;
}
DEFINE_DEBUGFS_ATTRIBUTE(mute_operations, mute_get, mute_set, "%llu\n");

static int stall_get(void *data, u64 *on)
{
	struct zr_can *can = data;

	*on = READ_ONCE(can->stall);
	return 0;
}

static int stall_set(void *data, u64 on)
{
	struct zr_can *can = data;

	if (on > 1)
		return -EINVAL;
	if (!lock_and_switch(can, &can->stall, on))
		return 0;
	if (can->running && on)
		netif_stop_queue(can->dev);
	else if (can->running)
		zr_can_wake(can);
	zr_can_unlock(can);
	return 0;
}
DEFINE_DEBUGFS_ATTRIBUTE(stall_operations, stall_get, stall_set, "%llu\n");

static int ack_get(void *data, u64 *on)
{
	struct zr_can *can = data;

	*on = READ_ONCE(can->ack);
	return 0;
}

static int ack_set(void *data, u64 on)
{
	struct zr_can *can = data;

	if (on > 1)
		return -EINVAL;
	if (lock_and_switch(can, &can->ack, on))
		zr_can_unlock(can);
	return 0;
}
DEFINE_DEBUGFS_ATTRIBUTE(ack_operations, ack_get, ack_set, "%llu\n");

/* --- All together -------------------------------------------------------- */

static int interface_show(struct seq_file *file, void *v)
{
	struct zr_can *can = file->private;

	mutex_lock(&can->device.lock);
	if (can->device.present)
		seq_printf(file, "%s\n", can->dev->name);
	mutex_unlock(&can->device.lock);
	return 0;
}
DEFINE_SHOW_ATTRIBUTE(interface);

void zr_can_create_knobs(struct zr_device *device, struct dentry *folder)
{
	struct zr_can *can = container_of(device, struct zr_can, device);

	debugfs_create_file("interface", 0400, folder, can, &interface_fops);
	debugfs_create_file("state", 0600, folder, can, &state_operations);
	debugfs_create_file_unsafe("tx_errors", 0600, folder, can,
				   &tx_errors_operations);
	debugfs_create_file_unsafe("rx_errors", 0600, folder, can,
				   &rx_errors_operations);
	debugfs_create_file_unsafe("mute", 0600, folder, can,
				   &mute_operations);
	debugfs_create_file_unsafe("stall", 0600, folder, can,
				   &stall_operations);
	debugfs_create_file_unsafe("ack", 0600, folder, can, &ack_operations);
	zr_can_create_frame_knobs(can, folder);
	zr_fault_create_knob(&can->fail_open, "fail_open", folder);
	zr_fault_create_knob(&can->fail_bitrate, "fail_bitrate", folder);
	zr_fault_create_knob(&can->fail_restart, "fail_restart", folder);
}
