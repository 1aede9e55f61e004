#pragma once

/* The kernel's media controller by entities and links: the part of libmediactl's interface that this
 * project uses, under the library's names.
 *
 * Every function takes a null device or entity and then fails, or answers nothing. One thread at a
 * time uses a device. Nothing is printed. What points into a device holds until the device's next
 * enumeration or its end. */

#include <linux/media.h>

#ifdef __cplusplus
extern "C" {
#endif

struct media_device;
struct media_entity;

/** Makes a handle of a media device; touches no device yet.
 * @param devnode  path of its node, for instance "/dev/media0"; copied
 * @return the handle, which media_device_unref() gives back, or null without memory or path
 */
struct media_device* media_device_new(const char* devnode);

/** Drops the handle and all that was enumerated; null is taken. */
void media_device_unref(struct media_device* media);

/** Reads entities and links from the kernel, opening the node for this time only. Once it has
 * succeeded, further calls succeed and do nothing.
 * @return 0, or a negative errno
 */
int media_device_enumerate(struct media_device* media);

/** Tells how many entities were enumerated. */
unsigned int media_get_entities_count(struct media_device* media);

/** Finds an entity by its 0-based position, in the kernel's order; null when there is none. */
struct media_entity* media_get_entity(struct media_device* media, unsigned int index);

/** Gives the kernel's description of an entity; its name always ends with a NUL. */
const struct media_entity_desc* media_entity_get_info(struct media_entity* entity);

/** Gives the path of an entity's device node, an empty text when it has none. */
const char* media_entity_get_devname(struct media_entity* entity);

/** Sets one link up as a text describes it: "'source':0 -> 'sink':1[1]".
 *
 * Entities stand by name in single or double quotes, or by number. The flags are a decimal number,
 * 1 is enabled; flags that the kernel keeps for itself stay as they are.
 *
 * @param p     the text; more may follow the closing bracket
 * @param endp  receives where reading ended, inside the text: behind the bracket and the blanks
 *              after it, else where it went wrong; null when nobody wants to know
 * @return 0, or a negative errno: -EINVAL for a text or link that is not known, else the kernel's
 */
int media_parse_setup_link(struct media_device* media, const char* p, char** endp);

#ifdef __cplusplus
}
#endif
