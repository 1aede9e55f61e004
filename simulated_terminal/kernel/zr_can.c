// SPDX-License-Identifier: GPL-2.0
/* CAN controllers: network devices of the kernel's CAN framework. */
#include <linux/can/skb.h>
#include <linux/ethtool.h>
#include <linux/err.h>
#include <linux/module.h>

#include "zr_can.h"

#define ZR_CAN_CLOCK_HZ 8000000

static unsigned int simcan;
module_param(simcan, uint, 0444);
MODULE_PARM_DESC(simcan, "Number of CAN controllers, 0 to 4");

static struct zr_can controllers[ZR_CAN_MAX];

/* Those of the terminal's own kind of controller, so its rates round alike. */
static const struct can_bittiming_const timing = {
	.name = "zr_terminal",
	.tseg1_min = 1,
	.tseg1_max = 16,
	.tseg2_min = 1,
	.tseg2_max = 8,
	.sjw_max = 4,
	.brp_min = 1,
	.brp_max = 64,
	.brp_inc = 1,
};

static struct zr_can *controller_of(const struct net_device *dev)
{
	struct zr_can_link *link = netdev_priv(dev);

	return link->controller;
}

static void log_event(const struct net_device *dev, const char *event,
		      int error)
{
	zr_log_text(dev->name, event, "", 0, error);
}

static int receive(struct napi_struct *napi, int budget)
{
	struct zr_can_link *link =
		container_of(napi, struct zr_can_link, napi);
	struct zr_can *can = link->controller;
	struct sk_buff *skb;
	int done = 0;

	while (done < budget && (skb = skb_dequeue(&can->received))) {
		netif_receive_skb(skb);
		done++;
	}
	spin_lock(&zr_can_lock);
	can->undelivered -= done;
	spin_unlock(&zr_can_lock);
	if (done < budget)
		napi_complete_done(napi, done);
	wake_up(&can->drained);
	return done;
}

static int can_open(struct net_device *dev)
{
	struct zr_can *can = controller_of(dev);
	struct zr_can_link *link = netdev_priv(dev);
	int ret = zr_fault_take(&can->fail_open);

	if (!ret)
		ret = open_candev(dev);
	if (ret) {
		log_event(dev, "open", ret);
		return ret;
	}

	napi_enable(&link->napi);
	spin_lock_bh(&zr_can_lock);
	can->tx_errors = 0;
	can->rx_errors = 0;
	link->can.state = CAN_STATE_ERROR_ACTIVE;
	can->running = true;
	if (can->stall)
		netif_stop_queue(dev);
	else
		netif_start_queue(dev);
	log_event(dev, "open", 0);
	spin_unlock_bh(&zr_can_lock);
	return 0;
}

static int can_stop(struct net_device *dev)
{
	struct zr_can *can = controller_of(dev);
	struct zr_can_link *link = netdev_priv(dev);

	/* From here on nobody gets bus-off or delivers a frame. */
	spin_lock_bh(&zr_can_lock);
	can->running = false;
	zr_can_abort(can);
	netif_stop_queue(dev);
	spin_unlock_bh(&zr_can_lock);

	close_candev(dev);
	napi_disable(&link->napi);
	skb_queue_purge(&can->received);
	can->undelivered = 0;
	wake_up(&can->drained);
	link->can.state = CAN_STATE_STOPPED;
	log_event(dev, "stop", 0);
	return 0;
}

static netdev_tx_t can_xmit(struct sk_buff *skb, struct net_device *dev)
{
	struct zr_can *can = controller_of(dev);
	struct zr_can_link *link = netdev_priv(dev);

	if (can_dev_dropped_skb(dev, skb))
		return NETDEV_TX_OK;

	spin_lock_bh(&zr_can_lock);
	if (!can->running || link->can.state == CAN_STATE_BUS_OFF) {
		dev->stats.tx_dropped++;
		kfree_skb(skb);
	} else if (can->mute) {
		consume_skb(skb);
	} else {
		netif_stop_queue(dev);
		can->frame = *(struct can_frame *)skb->data;
		can_put_echo_skb(skb, dev, 0, 0);
		zr_can_transmit(can);
	}
	spin_unlock_bh(&zr_can_lock);
	return NETDEV_TX_OK;
}

static const struct net_device_ops netdev_operations = {
	.ndo_open = can_open,
	.ndo_stop = can_stop,
	.ndo_start_xmit = can_xmit,
	.ndo_change_mtu = can_change_mtu,
};

static const struct ethtool_ops ethtool_operations = {
	.get_ts_info = ethtool_op_get_ts_info,
};

static int set_bittiming(struct net_device *dev)
{
	struct zr_can_link *link = netdev_priv(dev);
	int ret = zr_fault_take(&link->controller->fail_bitrate);

	zr_log_number(dev->name, "bitrate", link->can.bittiming.bitrate, ret);
	return ret;
}

/* The framework asks for nothing but the restart after a bus-off. */
static int set_mode(struct net_device *dev, enum can_mode mode)
{
	struct zr_can *can = controller_of(dev);
	struct zr_can_link *link = netdev_priv(dev);
	int ret;

	if (mode != CAN_MODE_START)
		return -EOPNOTSUPP;
	ret = zr_fault_take(&can->fail_restart);
	log_event(dev, "restart", ret);
	if (ret)
		return ret;

	spin_lock_bh(&zr_can_lock);
	if (can->running) {
		can->tx_errors = 0;
		can->rx_errors = 0;
		link->can.state = CAN_STATE_ERROR_ACTIVE;
		zr_can_wake(can);
	}
	spin_unlock_bh(&zr_can_lock);
	return 0;
}

static int get_error_counters(const struct net_device *dev,
			      struct can_berr_counter *counters)
{
	struct zr_can *can = controller_of(dev);

	spin_lock_bh(&zr_can_lock);
	counters->txerr = can->tx_errors;
	counters->rxerr = can->rx_errors;
	spin_unlock_bh(&zr_can_lock);
	return 0;
}

static struct net_device *make_link(struct zr_can *can)
{
	struct net_device *dev = alloc_candev(sizeof(struct zr_can_link), 1);
	struct zr_can_link *link;

	if (!dev)
		return NULL;
	dev->netdev_ops = &netdev_operations;
	dev->ethtool_ops = &ethtool_operations;
	dev->flags |= IFF_ECHO;
	SET_NETDEV_DEV(dev, &can->platform->dev);

	link = netdev_priv(dev);
	link->controller = can;
	link->can.clock.freq = ZR_CAN_CLOCK_HZ;
	link->can.bittiming_const = &timing;
	link->can.do_set_bittiming = set_bittiming;
	link->can.do_set_mode = set_mode;
	link->can.do_get_berr_counter = get_error_counters;
	link->can.ctrlmode_supported =
		CAN_CTRLMODE_LOOPBACK | CAN_CTRLMODE_LISTENONLY |
		CAN_CTRLMODE_3_SAMPLES | CAN_CTRLMODE_ONE_SHOT |
		CAN_CTRLMODE_BERR_REPORTING | CAN_CTRLMODE_PRESUME_ACK;
	netif_napi_add(dev, &link->napi, receive);
	return dev;
}

static void remove_platform(struct zr_can *can)
{
	platform_device_unregister(can->platform);
	can->platform = NULL;
}

static int can_attach(struct zr_device *device)
{
	struct zr_can *can = container_of(device, struct zr_can, device);
	struct platform_device *platform;
	int ret;

	platform = platform_device_register_simple("simcan", can->index,
						   NULL, 0);
	if (IS_ERR(platform))
		return PTR_ERR(platform);
	can->platform = platform;
	can->dev = make_link(can);
	if (!can->dev) {
		remove_platform(can);
		return -ENOMEM;
	}
	ret = register_candev(can->dev);
	if (ret) {
		free_candev(can->dev);
		can->dev = NULL;
		remove_platform(can);
	}
	return ret;
}

static void can_detach(struct zr_device *device)
{
	struct zr_can *can = container_of(device, struct zr_can, device);

	unregister_candev(can->dev);
	free_candev(can->dev);
	can->dev = NULL;
	remove_platform(can);
}

static const struct zr_device_ops can_ops = {
	.attach = can_attach,
	.detach = can_detach,
	.create_knobs = zr_can_create_knobs,
};

static int add_controller(int index)
{
	struct zr_can *can = &controllers[index];

	can->index = index;
	snprintf(can->name, sizeof(can->name), "simcan.%d", index);
	can->device.name = can->name;
	can->device.ops = &can_ops;
	can->ack = true;
	zr_fault_init(&can->fail_open);
	zr_fault_init(&can->fail_bitrate);
	zr_fault_init(&can->fail_restart);
	skb_queue_head_init(&can->received);
	init_waitqueue_head(&can->drained);
	zr_can_bus_join(can);
	return zr_device_add(&can->device);
}

int zr_can_init(void)
{
	int ret = 0;
	int i;

	zr_can_bus_init();
	if (simcan > ZR_CAN_MAX) {
		pr_err("zr_terminal: parameter simcan does not know \"%u\"\n",
		       simcan);
		return -EINVAL;
	}
	for (i = 0; i < simcan && !ret; i++)
		ret = add_controller(i);
	return ret;
}

void zr_can_exit(void)
{
	zr_can_bus_exit();
}
