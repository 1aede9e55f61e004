// SPDX-License-Identifier: GPL-2.0
/*
 * The picture that a camera shows, made of flat rectangles on a grid of 24 by
 * 24 cells, so that a program finds its way at any size and after any scaling.
 */
#include <linux/bitops.h>
#include <linux/errno.h>
#include <linux/fixp-arith.h>
#include <linux/kernel.h>
#include <linux/minmax.h>
#include <linux/string.h>
#include <linux/videodev2.h>
#include <linux/vmalloc.h>

#include "zr_media.h"
#include "zr_picture.h"

#define CELLS 24

/* Rows of cells: where each part begins. */
#define ROW_STRIP 0
#define ROW_BARS 2
#define ROW_FIELD 4
#define ROW_TRACK 20
#define ROW_STANDARD 22

/* The strip: two cells of reference, then these bits, highest first. */
#define STRIP_REFERENCE 2
#define STRIP_CAMERA_SHIFT 17
#define STRIP_STANDARD_SHIFT 16
#define STRIP_SUM_BITS 3

/* Positions of the bar in its track, which it crosses from left to right. */
#define TRACK_STEPS 56

static const struct zr_colour black = { 16, 128, 128 };
static const struct zr_colour grey = { 126, 128, 128 };
static const struct zr_colour white = { 235, 128, 128 };
static const struct zr_colour yellow = { 210, 16, 146 };
static const struct zr_colour cyan = { 170, 166, 16 };
static const struct zr_colour magenta = { 106, 202, 222 };

static const struct zr_colour * const bars[] = {
	&white, &yellow, &cyan, &magenta, &grey, &black,
};

/* Red, green, blue. */
static const struct zr_colour camera_colours[ZR_CAMERAS] = {
	{ 81, 90, 240 }, { 145, 54, 34 }, { 41, 240, 110 },
};

/* The strokes of a digit, in cells. */
static const struct {
	u8 left, top, width, height;
} strokes[] = {
	{ 9, 5, 6, 2 }, { 9, 11, 6, 2 }, { 9, 17, 6, 2 },
	{ 9, 5, 2, 8 }, { 13, 5, 2, 8 }, { 9, 11, 2, 8 }, { 13, 11, 2, 8 },
	{ 11, 5, 2, 14 },	/* of the 1, which stands in the middle */
};

/* Which strokes make the digits of the cameras: 1, 2, 3. */
static const u8 digits[ZR_CAMERAS] = {
	BIT(7),
	BIT(0) | BIT(1) | BIT(2) | BIT(4) | BIT(5),
	BIT(0) | BIT(1) | BIT(2) | BIT(4) | BIT(6),
};

unsigned int zr_picture_line_size(u32 format, unsigned int width)
{
	return format == V4L2_PIX_FMT_NV12 ? width : 2 * width;
}

unsigned int zr_picture_size(u32 format, unsigned int width,
			     unsigned int height)
{
	if (format == V4L2_PIX_FMT_NV12)
		return width * height + width * (height / 2);
	return 2 * width * height;
}

/* --- Rectangles ---------------------------------------------------------- */

/* Pixels, all even: a pair shares its colour. */
struct rectangle {
	unsigned int left, top, width, height;
};

/* Where cell @index begins. */
static unsigned int edge(unsigned int index, unsigned int size)
{
	return (index * size / CELLS) & ~1U;
}

static struct rectangle cells(const struct zr_picture *picture,
			      unsigned int left, unsigned int top,
			      unsigned int width, unsigned int height)
{
	struct rectangle area = {
		.left = edge(left, picture->width),
		.top = edge(top, picture->height),
	};

	area.width = edge(left + width, picture->width) - area.left;
	area.height = edge(top + height, picture->height) - area.top;
	return area;
}

static void fill_packed(const struct zr_picture *picture, u8 *to,
			const struct rectangle *area,
			const struct zr_colour *colour)
{
	unsigned int stride = 2 * picture->width;
	u8 bytes[4] = { colour->u, colour->y, colour->v, colour->y };
	unsigned int row;
	u32 pair;

	if (picture->format == V4L2_PIX_FMT_YUYV) {
		swap(bytes[0], bytes[1]);
		swap(bytes[2], bytes[3]);
	}
	memcpy(&pair, bytes, sizeof(pair));
	to += area->top * stride + 2 * area->left;
	for (row = 0; row < area->height; row++)
		memset32((u32 *)(to + row * stride), pair, area->width / 2);
}

static void fill_planar(const struct zr_picture *picture, u8 *to,
			const struct rectangle *area,
			const struct zr_colour *colour)
{
	unsigned int stride = picture->width;
	u8 *chroma = to + stride * picture->height;
	u8 bytes[2] = { colour->u, colour->v };
	unsigned int row;
	u16 pair;

	memcpy(&pair, bytes, sizeof(pair));
	to += area->top * stride + area->left;
	for (row = 0; row < area->height; row++)
		memset(to + row * stride, colour->y, area->width);
	chroma += area->top / 2 * stride + area->left;
	for (row = 0; row < area->height / 2; row++)
		memset16((u16 *)(chroma + row * stride), pair,
			 area->width / 2);
}

static void fill(const struct zr_picture *picture, u8 *to,
		 struct rectangle area, struct zr_colour colour)
{
	if (picture->format == V4L2_PIX_FMT_NV12)
		fill_planar(picture, to, &area, &colour);
	else
		fill_packed(picture, to, &area, &colour);
}

/* --- Colours ------------------------------------------------------------- */

/* @value is as large as the tables' numbers make it, whose 1 is 2^31. */
static u8 chroma(s64 value)
{
	s64 rounded = (value + (s64)BIT(30)) >> 31;

	return clamp_t(s64, rounded + 128, 16, 240);
}

static struct zr_colour seen(const struct zr_look *look,
			     const struct zr_colour *colour)
{
	int degrees = look->hue * 180 / 128;
	s64 sine = fixp_sin32(degrees);
	s64 cosine = fixp_cos32(degrees);
	int u = (colour->u - 128) * look->saturation / ZR_SATURATION_NEUTRAL;
	int v = (colour->v - 128) * look->saturation / ZR_SATURATION_NEUTRAL;
	int y = (colour->y - 16) * look->contrast / ZR_CONTRAST_NEUTRAL;

	return (struct zr_colour){
		.y = clamp(y + 16 + look->brightness, 16, 235),
		.u = chroma(u * cosine - v * sine),
		.v = chroma(u * sine + v * cosine),
	};
}

/* --- The picture --------------------------------------------------------- */

static void draw_background(struct zr_picture *picture)
{
	const struct zr_look *look = &picture->look;
	u8 *to = picture->background;
	int i;

	for (i = 0; i < ARRAY_SIZE(bars); i++)
		fill(picture, to, cells(picture, 4 * i, ROW_BARS, 4, 2),
		     seen(look, bars[i]));

	fill(picture, to,
	     cells(picture, 0, ROW_FIELD, CELLS, ROW_TRACK - ROW_FIELD),
	     seen(look, &camera_colours[look->camera]));
	for (i = 0; i < ARRAY_SIZE(strokes); i++)
		if (digits[look->camera] & BIT(i))
			fill(picture, to,
			     cells(picture, strokes[i].left, strokes[i].top,
				   strokes[i].width, strokes[i].height),
			     picture->white);

	fill(picture, to, cells(picture, 0, ROW_TRACK, CELLS, 2),
	     picture->black);
	fill(picture, to, cells(picture, 0, ROW_STANDARD, CELLS, 2),
	     seen(look, look->ntsc ? &magenta : &yellow));
}

static void apply_look(struct zr_picture *picture, const struct zr_look *look)
{
	picture->look = *look;
	picture->black = seen(look, &black);
	picture->white = seen(look, &white);
	draw_background(picture);
}

int zr_picture_init(struct zr_picture *picture, u32 format, unsigned int width,
		    unsigned int height, const struct zr_look *look)
{
	picture->format = format;
	picture->width = width;
	picture->height = height;
	/* Of sizes that no cell divides an edge stays without colour. */
	picture->background = vzalloc(zr_picture_size(format, width, height));
	if (!picture->background)
		return -ENOMEM;
	apply_look(picture, look);
	return 0;
}

void zr_picture_free(struct zr_picture *picture)
{
	vfree(picture->background);
	picture->background = NULL;
}

void zr_picture_set_look(struct zr_picture *picture,
			 const struct zr_look *look)
{
	if (memcmp(&picture->look, look, sizeof(*look)))
		apply_look(picture, look);
}

static void draw_strip(const struct zr_picture *picture, u32 number, u8 *to)
{
	u32 bits = picture->look.camera << STRIP_CAMERA_SHIFT |
		   picture->look.ntsc << STRIP_STANDARD_SHIFT |
		   (number & U16_MAX);
	u32 all;
	int i;

	bits = bits << STRIP_SUM_BITS |
	       (hweight32(bits) & GENMASK(STRIP_SUM_BITS - 1, 0));
	all = BIT(CELLS - 1) | bits;
	for (i = 0; i < CELLS; i++)
		fill(picture, to, cells(picture, i, ROW_STRIP, 1, 2),
		     all & BIT(CELLS - 1 - i) ? picture->white :
						picture->black);
}

static void draw_bar(const struct zr_picture *picture, u32 number, u8 *to)
{
	struct rectangle bar = cells(picture, 0, ROW_TRACK, 2, 2);
	unsigned int way = picture->width - bar.width;

	bar.left = (way * (number % TRACK_STEPS) / (TRACK_STEPS - 1)) & ~1U;
	fill(picture, to, bar, picture->white);
}

void zr_picture_draw(const struct zr_picture *picture, u32 number, u8 *to)
{
	memcpy(to, picture->background,
	       zr_picture_size(picture->format, picture->width,
			       picture->height));
	draw_strip(picture, number, to);
	draw_bar(picture, number, to);
}
