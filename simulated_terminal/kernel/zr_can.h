/* SPDX-License-Identifier: GPL-2.0 */
/* CAN controllers of the board, and the bus that joins them. */
#ifndef ZR_CAN_H
#define ZR_CAN_H

#include <linux/can/dev.h>
#include <linux/netdevice.h>
#include <linux/platform_device.h>
#include <linux/spinlock.h>
#include <linux/wait.h>

#include "zr_terminal.h"

#define ZR_CAN_MAX 4

/* What is behind a controller stays when its network device goes. */
struct zr_can {
	struct zr_device device;
	char name[16];
	int index;

	/* Set by attach(); whoever is not a callback of it holds device.lock. */
	struct platform_device *platform;
	struct net_device *dev;

	struct zr_fault fail_open;
	struct zr_fault fail_bitrate;
	struct zr_fault fail_restart;

	/* All below are under zr_can_lock. */
	bool running;		/* opened; dev can be used */
	bool mute;
	bool stall;
	bool ack;
	unsigned int tx_errors;
	unsigned int rx_errors;
	bool sending;		/* the transmit buffer is occupied */
	struct can_frame frame;	/* the transmit buffer */

	/* What the bus delivered and the network stack has not taken yet. */
	struct sk_buff_head received;
	unsigned int undelivered;
	wait_queue_head_t drained;
};

/* What goes with the network device. */
struct zr_can_link {
	struct can_priv can;	/* first: can-dev finds it there */
	struct napi_struct napi;
	struct zr_can *controller;
};

/* Of the bus and of all its controllers. Taken with soft interrupts off. */
extern spinlock_t zr_can_lock;

static inline struct zr_can_link *zr_can_link_of(const struct zr_can *can)
{
	return netdev_priv(can->dev);
}

/* --- The bus. All but the first two are called under zr_can_lock. -------- */

void zr_can_bus_init(void);
void zr_can_bus_exit(void);
void zr_can_bus_join(struct zr_can *can);

/* Whether the controller is opened, neither bus-off nor mute. */
bool zr_can_on_bus(const struct zr_can *can);
/* Begin with the frame in the transmit buffer as soon as the bus is free. */
void zr_can_transmit(struct zr_can *can);
/* Forget the frame in the transmit buffer. */
void zr_can_abort(struct zr_can *can);
/* Let the network stack bring the next frame, where that is possible. */
void zr_can_wake(struct zr_can *can);
/* A frame arrives. */
int zr_can_receive(struct zr_can *can, const struct can_frame *frame);
/* The state follows the error counters, as the hardware's does. */
void zr_can_follow_counters(struct zr_can *can);

/* --- Knobs ---------------------------------------------------------------- */

/* 0 with device.lock and zr_can_lock held and the controller opened, or an error. */
int zr_can_lock_running(struct zr_can *can);
void zr_can_unlock(struct zr_can *can);
/* The line that was written, without blanks around it, or an error. */
char *zr_can_copy_line(const char __user *from, size_t size, char *text,
		       size_t room);
const char *zr_can_state_name(enum can_state state);
void zr_can_create_knobs(struct zr_device *device, struct dentry *folder);
void zr_can_create_frame_knobs(struct zr_can *can, struct dentry *folder);

#endif
