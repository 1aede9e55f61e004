#pragma once

/* Formats on the pads of V4L2 sub-devices: the part of libv4l2subdev's interface that this project
 * uses, in the form that v4l-utils had before 1.28. */

#include <linux/v4l2-subdev.h>

#ifdef __cplusplus
extern "C" {
#endif

struct media_device;

/** Sets active formats, rectangles and frame intervals on pads as a text describes them:
 * "'entity':0 [fmt:UYVY2X8/720x576@1/25 field:none],'other':2 [...]".
 *
 * Pads are set from left to right, up to the first that fails. The format and interval of a source
 * pad are also set on the sink pads of sub-devices that its enabled links lead to.
 *
 * @param media  an enumerated device
 * @param p      the text
 * @return 0, or a negative errno: -EINVAL for a text that cannot be read to its end, also when a
 *         comma ends it and every pad was set; else the kernel's
 */
int v4l2_subdev_parse_setup_formats(struct media_device* media, const char* p);

#ifdef __cplusplus
}
#endif
