// SPDX-License-Identifier: GPL-2.0
/* What the cameras' paths consist of, for each processor. */
#include <linux/kernel.h>

#include "zr_graph.h"

#define DECODER(chip) \
	{ .key = chip, .kind = ZR_PART_DECODER, .sources = 1 }
#define RECEIVER(part) \
	{ .key = part, .name = part, .kind = ZR_PART_RECEIVER, \
	  .sinks = 1, .sources = 4 }
#define MUX(part, inputs) \
	{ .key = part, .name = part, .kind = ZR_PART_MUX, \
	  .sinks = inputs, .sources = 1 }
#define INTERFACE(part) \
	{ .key = part, .name = part, .kind = ZR_PART_INTERFACE, \
	  .sinks = 1, .sources = 2 }, \
	{ .key = part "_capture", .name = part " capture", \
	  .kind = ZR_PART_CAPTURE, .sinks = 1 }

static struct zr_part dual_parts[] = {
	INTERFACE("ipu1_csi0"),
	INTERFACE("ipu1_csi1"),
	MUX("ipu1_csi0_mux", 5),
	MUX("ipu1_csi1_mux", 5),
	RECEIVER("imx6-mipi-csi2"),
	DECODER("tw9912"),
	DECODER("adv7180"),
};

static const struct zr_link_spec dual_links[] = {
	{ "tw9912", 0, "ipu1_csi1_mux", 4 },
	{ "adv7180", 0, "imx6-mipi-csi2", 0 },
	{ "imx6-mipi-csi2", 1, "ipu1_csi0_mux", 0 },
	{ "imx6-mipi-csi2", 2, "ipu1_csi0_mux", 1 },
	{ "imx6-mipi-csi2", 3, "ipu1_csi0_mux", 2 },
	{ "imx6-mipi-csi2", 4, "ipu1_csi0_mux", 3 },
	{ "imx6-mipi-csi2", 1, "ipu1_csi1_mux", 0 },
	{ "imx6-mipi-csi2", 2, "ipu1_csi1_mux", 1 },
	{ "imx6-mipi-csi2", 3, "ipu1_csi1_mux", 2 },
	{ "imx6-mipi-csi2", 4, "ipu1_csi1_mux", 3 },
	{ "ipu1_csi0_mux", 5, "ipu1_csi0", 0 },
	{ "ipu1_csi1_mux", 5, "ipu1_csi1", 0 },
	{ "ipu1_csi0", 2, "ipu1_csi0_capture", 0 },
	{ "ipu1_csi1", 2, "ipu1_csi1_capture", 0 },
};

static struct zr_part quad_parts[] = {
	INTERFACE("ipu1_csi0"),
	INTERFACE("ipu1_csi1"),
	INTERFACE("ipu2_csi0"),
	INTERFACE("ipu2_csi1"),
	MUX("ipu1_csi0_mux", 2),
	MUX("ipu2_csi1_mux", 2),
	RECEIVER("imx6-mipi-csi2"),
	DECODER("tw9912"),
	DECODER("adv7180"),
};

static const struct zr_link_spec quad_links[] = {
	{ "tw9912", 0, "ipu2_csi1_mux", 1 },
	{ "adv7180", 0, "imx6-mipi-csi2", 0 },
	{ "imx6-mipi-csi2", 1, "ipu1_csi0_mux", 0 },
	{ "imx6-mipi-csi2", 2, "ipu1_csi1", 0 },
	{ "imx6-mipi-csi2", 3, "ipu2_csi0", 0 },
	{ "imx6-mipi-csi2", 4, "ipu2_csi1_mux", 0 },
	{ "ipu1_csi0_mux", 2, "ipu1_csi0", 0 },
	{ "ipu2_csi1_mux", 2, "ipu2_csi1", 0 },
	{ "ipu1_csi0", 2, "ipu1_csi0_capture", 0 },
	{ "ipu1_csi1", 2, "ipu1_csi1_capture", 0 },
	{ "ipu2_csi0", 2, "ipu2_csi0_capture", 0 },
	{ "ipu2_csi1", 2, "ipu2_csi1_capture", 0 },
};

#define BOARD(name) { \
	.parts = name##_parts, .part_count = ARRAY_SIZE(name##_parts), \
	.links = name##_links, .link_count = ARRAY_SIZE(name##_links), \
}

static const struct zr_board dual = BOARD(dual);
static const struct zr_board quad = BOARD(quad);

const struct zr_board *zr_board(void)
{
	return zr_processor_is_quad() ? &quad : &dual;
}

struct zr_part *zr_board_find(const char *key)
{
	const struct zr_board *board = zr_board();
	unsigned int i;

	for (i = 0; i < board->part_count; i++)
		if (!strcmp(board->parts[i].key, key))
			return &board->parts[i];
	return NULL;
}
