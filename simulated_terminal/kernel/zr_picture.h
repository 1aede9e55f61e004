/* SPDX-License-Identifier: GPL-2.0 */
/* The picture that a camera of the simulated board shows. */
#ifndef ZR_PICTURE_H
#define ZR_PICTURE_H

#include <linux/types.h>

/* Both leave a picture as the camera gave it. */
#define ZR_CONTRAST_NEUTRAL 127
#define ZR_SATURATION_NEUTRAL 127

/* What the whole picture depends on. */
struct zr_look {
	int camera;
	int ntsc;	/* 1: 525 lines, 0: 625 */
	int brightness;	/* -128 to 127 */
	int contrast;	/* 0 to 255 */
	int saturation;	/* 0 to 255 */
	int hue;	/* -128 to 127, half a turn each way */
};

struct zr_colour {
	u8 y;
	u8 u;
	u8 v;
};

struct zr_picture {
	u32 format;	/* V4L2_PIX_FMT_UYVY, YUYV or NV12 */
	unsigned int width;
	unsigned int height;
	struct zr_look look;
	struct zr_colour black;	/* as the look makes them */
	struct zr_colour white;
	/* All that stands still, in the picture's format. */
	u8 *background;
};

/* Bytes of a line's first plane, and of a whole frame. */
unsigned int zr_picture_line_size(u32 format, unsigned int width);
unsigned int zr_picture_size(u32 format, unsigned int width,
			     unsigned int height);

int zr_picture_init(struct zr_picture *picture, u32 format, unsigned int width,
		    unsigned int height, const struct zr_look *look);
void zr_picture_free(struct zr_picture *picture);
/* Draw the background anew where @look is another one. */
void zr_picture_set_look(struct zr_picture *picture,
			 const struct zr_look *look);
/* Frame @number of the moving picture, into zr_picture_size() bytes. */
void zr_picture_draw(const struct zr_picture *picture, u32 number, u8 *to);

#endif
