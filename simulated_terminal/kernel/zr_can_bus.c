// SPDX-License-Identifier: GPL-2.0
/*
 * The bus between the CAN controllers: one frame at a time, each for as long
 * as its bits take, the lowest identifier first.
 */
#include <linux/can/skb.h>
#include <linux/hrtimer.h>
#include <linux/ktime.h>

#include "zr_can.h"

#define ZR_ACK_ERROR 8	/* what a missing acknowledgement adds */
#define ZR_RX_ERRORS_AFTER_PASSIVE 127

DEFINE_SPINLOCK(zr_can_lock);

static struct zr_can *members[ZR_CAN_MAX];
static int member_count;
static struct zr_can *sender;	/* whose frame is on the bus */
static struct zr_can *last_sender;
static struct hrtimer frame_end;

static struct can_priv *priv_of(const struct zr_can *can)
{
	return &zr_can_link_of(can)->can;
}

static bool has_mode(const struct zr_can *can, u32 mode)
{
	return priv_of(can)->ctrlmode & mode;
}

bool zr_can_on_bus(const struct zr_can *can)
{
	return can->running && !can->mute &&
	       priv_of(can)->state != CAN_STATE_BUS_OFF;
}

static void deliver(struct zr_can *can, struct sk_buff *skb)
{
	can->undelivered++;
	skb_queue_tail(&can->received, skb);
	napi_schedule(&zr_can_link_of(can)->napi);
}

static unsigned int data_length(const struct can_frame *frame)
{
	return frame->can_id & CAN_RTR_FLAG ? 0 : frame->len;
}

int zr_can_receive(struct zr_can *can, const struct can_frame *frame)
{
	struct net_device_stats *stats = &can->dev->stats;
	struct can_frame *copy;
	struct sk_buff *skb = alloc_can_skb(can->dev, &copy);

	if (!skb) {
		stats->rx_dropped++;
		return -ENOMEM;
	}
	*copy = *frame;
	stats->rx_packets++;
	stats->rx_bytes += data_length(frame);
	deliver(can, skb);

	/* A good frame brings a passive receiver back below the threshold. */
	if (can->rx_errors > ZR_RX_ERRORS_AFTER_PASSIVE)
		can->rx_errors = ZR_RX_ERRORS_AFTER_PASSIVE;
	else if (can->rx_errors)
		can->rx_errors--;
	zr_can_follow_counters(can);
	return 0;
}

/* --- Error states ---------------------------------------------------------- */

static enum can_state state_of(unsigned int errors)
{
	if (errors >= CAN_BUS_OFF_THRESHOLD)
		return CAN_STATE_BUS_OFF;
	if (errors >= CAN_ERROR_PASSIVE_THRESHOLD)
		return CAN_STATE_ERROR_PASSIVE;
	if (errors >= CAN_ERROR_WARNING_THRESHOLD)
		return CAN_STATE_ERROR_WARNING;
	return CAN_STATE_ERROR_ACTIVE;
}

static void tell_counters(const struct zr_can *can, struct can_frame *frame)
{
	frame->can_id |= CAN_ERR_CNT;
	frame->data[6] = can->tx_errors;
	frame->data[7] = can->rx_errors;
}

void zr_can_follow_counters(struct zr_can *can)
{
	enum can_state tx = state_of(can->tx_errors);
	enum can_state rx = state_of(can->rx_errors);
	enum can_state state = max(tx, rx);
	struct can_frame *frame;
	struct sk_buff *skb;

	if (state == priv_of(can)->state)
		return;
	/* Both out parameters are NULL when there is no memory. */
	skb = alloc_can_err_skb(can->dev, &frame);
	can_change_state(can->dev, skb ? frame : NULL, tx, rx);
	zr_log_text(can->dev->name, "state", zr_can_state_name(state),
		    strlen(zr_can_state_name(state)), 0);
	if (skb && state != CAN_STATE_BUS_OFF)
		tell_counters(can, frame);
	if (skb)
		deliver(can, skb);
	if (state == CAN_STATE_BUS_OFF) {
		zr_can_abort(can);
		netif_stop_queue(can->dev);
		can_bus_off(can->dev);
	}
}

/* --- Transmission ---------------------------------------------------------- */

/* Without stuff bits, with the gap to the next frame. */
static u64 duration_ns(const struct zr_can *can)
{
	bool extended = can->frame.can_id & CAN_EFF_FLAG;
	u64 bits = (extended ? 67 : 47) + 8 * data_length(&can->frame);

	return div_u64(bits * NSEC_PER_SEC, priv_of(can)->bittiming.bitrate);
}

/*
 * The order in which identifiers win the bus: by their 11 leading bits, of
 * equal ones the standard frame, then by the other 18 bits, data before
 * remote.
 */
static u64 rank(const struct can_frame *frame)
{
	bool extended = frame->can_id & CAN_EFF_FLAG;
	bool remote = frame->can_id & CAN_RTR_FLAG;
	u32 id = frame->can_id & CAN_EFF_MASK;

	if (!extended)
		return ((u64)(id & CAN_SFF_MASK) << 20) | remote;
	return ((u64)(id >> 18) << 20) | BIT(19) |
	       ((u64)(id & 0x3ffff) << 1) | remote;
}

/* A passive sender waits a little longer, so that it cannot block the bus. */
static u64 turn(const struct zr_can *can)
{
	bool yields = can == last_sender &&
		      priv_of(can)->state == CAN_STATE_ERROR_PASSIVE;

	return rank(&can->frame) | (yields ? BIT_ULL(63) : 0);
}

static void begin_next(void)
{
	int i;

	if (sender)
		return;
	for (i = 0; i < member_count; i++) {
		struct zr_can *can = members[i];

		if (!can->sending || !zr_can_on_bus(can))
			continue;
		if (!sender || turn(can) < turn(sender))
			sender = can;
	}
	if (sender)
		hrtimer_start(&frame_end, ns_to_ktime(duration_ns(sender)),
			      HRTIMER_MODE_REL_SOFT);
}

void zr_can_transmit(struct zr_can *can)
{
	can->sending = true;
	begin_next();
}

void zr_can_abort(struct zr_can *can)
{
	if (!can->sending)
		return;
	can->sending = false;
	can_free_echo_skb(can->dev, 0, NULL);
}

void zr_can_wake(struct zr_can *can)
{
	if (can->running && !can->stall && !can->sending &&
	    priv_of(can)->state != CAN_STATE_BUS_OFF)
		netif_wake_queue(can->dev);
}

static bool hears(const struct zr_can *can, const struct zr_can *from)
{
	return can != from && zr_can_on_bus(can) &&
	       priv_of(can)->bittiming.bitrate ==
	       priv_of(from)->bittiming.bitrate;
}

static bool is_acknowledged(const struct zr_can *from)
{
	int i;

	if (from->ack ||
	    has_mode(from, CAN_CTRLMODE_LOOPBACK | CAN_CTRLMODE_PRESUME_ACK))
		return true;
	for (i = 0; i < member_count; i++)
		if (hears(members[i], from) &&
		    !has_mode(members[i], CAN_CTRLMODE_LISTENONLY))
			return true;
	return false;
}

static void finish(struct zr_can *can)
{
	struct net_device_stats *stats = &can->dev->stats;
	int i;

	can->sending = false;
	stats->tx_packets++;
	if (has_mode(can, CAN_CTRLMODE_LOOPBACK)) {
		/* Received like any other frame instead of echoed. */
		stats->tx_bytes += data_length(&can->frame);
		can_free_echo_skb(can->dev, 0, NULL);
		zr_can_receive(can, &can->frame);
	} else {
		stats->tx_bytes += can_get_echo_skb(can->dev, 0, NULL);
	}
	for (i = 0; i < member_count; i++)
		if (hears(members[i], can))
			zr_can_receive(members[i], &can->frame);
	if (can->tx_errors) {
		can->tx_errors--;
		zr_can_follow_counters(can);
	}
	zr_can_wake(can);
}

static void report_missing_ack(struct zr_can *can)
{
	struct can_frame *frame;
	struct sk_buff *skb;

	priv_of(can)->can_stats.bus_error++;
	can->dev->stats.tx_errors++;
	if (!has_mode(can, CAN_CTRLMODE_BERR_REPORTING))
		return;
	skb = alloc_can_err_skb(can->dev, &frame);
	if (!skb)
		return;
	frame->can_id |= CAN_ERR_ACK | CAN_ERR_BUSERROR | CAN_ERR_PROT;
	frame->data[2] = CAN_ERR_PROT_TX;
	frame->data[3] = CAN_ERR_PROT_LOC_ACK;
	tell_counters(can, frame);
	deliver(can, skb);
}

/*
 * The frame stays in the buffer and is sent again, for ever: a passive
 * sender does not count missing acknowledgements, so it never gets bus-off
 * by them.
 */
static void miss_ack(struct zr_can *can)
{
	if (can->tx_errors < CAN_ERROR_PASSIVE_THRESHOLD)
		can->tx_errors += ZR_ACK_ERROR;
	report_missing_ack(can);
	zr_can_follow_counters(can);
	if (has_mode(can, CAN_CTRLMODE_ONE_SHOT)) {
		can->dev->stats.tx_aborted_errors++;
		zr_can_abort(can);
		zr_can_wake(can);
	}
}

static enum hrtimer_restart frame_ends(struct hrtimer *timer)
{
	struct zr_can *can;

	spin_lock(&zr_can_lock);
	can = sender;
	last_sender = sender;
	sender = NULL;
	/* It may have left the bus, or lost its frame, meanwhile. */
	if (can && can->sending && zr_can_on_bus(can)) {
		if (is_acknowledged(can))
			finish(can);
		else
			miss_ack(can);
	}
	begin_next();
	spin_unlock(&zr_can_lock);
	return HRTIMER_NORESTART;
}

void zr_can_bus_join(struct zr_can *can)
{
	members[member_count++] = can;
}

void zr_can_bus_init(void)
{
	hrtimer_init(&frame_end, CLOCK_MONOTONIC, HRTIMER_MODE_REL_SOFT);
	frame_end.function = frame_ends;
}

void zr_can_bus_exit(void)
{
	hrtimer_cancel(&frame_end);
}
