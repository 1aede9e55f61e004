#pragma once

/* Notifications of kernel drivers over generic netlink, as plain functions for C and C++.
 *
 * The functions keep no state and may be called from any thread; a descriptor is used by one thread
 * at a time. Messages are received into 276 bytes; a longer one is dropped. */

#include <linux/netlink.h>

#include "common/zrapi_export.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Connects to the notifications of a driver: resolves its generic netlink family through the
 * kernel's controller and joins the family's first multicast group.
 *
 * Each failure prints one line to standard output, "... failed with error %d (%s)", with `errno` as
 * it stands. One answer of the controller is read, and what comes first counts as the answer.
 * Nothing is tried again, but for a send that the kernel puts off (EAGAIN).
 *
 * All pointers must not be null.
 *
 * @param familyName  the driver's family, for instance "ZR_DI"; at most 251 characters fit the
 *                    question, and the kernel has none of more than 15
 * @param familyId    receives the family's number, -1 when it was not resolved; unchanged when no
 *                    socket could be made, bound or joined to the controller's group
 * @param groupName   receives the group's name and a NUL; 16 bytes are room for the kernel's names.
 *                    Like the number it is stored also when only joining the group failed
 * @param groupId     receives the group's number
 * @return the socket, which the caller gives to event_if_disconnect(), or -1
 */
ZRAPI_EXPORT int event_if_connect(const char* familyName, int* familyId, char* groupName,
                                  int* groupId);

/** Closes a socket of event_if_connect().
 * @param fd  the socket
 */
ZRAPI_EXPORT void event_if_disconnect(int fd);

/** Waits for one notification and copies its attributes' payloads, in the message's order.
 *
 * One message is taken and dropped when it does not match: another family, another command, another
 * number of attributes, or an attribute that does not lie inside the message.
 *
 * @param fd         socket of event_if_connect(); one of 1024 or more cannot be waited on
 * @param familyId   family number of event_if_connect()
 * @param command    command of the driver's generic netlink header
 * @param timeoutUs  longest wait, microseconds; a negative one is refused with -1
 * @param attrCount  number of attributes; one `void*` follows for each, a buffer with room for
 *                   whatever the driver sends there: no bound is checked
 * @return 1 when a matching message was copied, 0 when the time passed or the message received does
 *         not match (nothing is copied), -1 when waiting failed (EINTR included)
 */
ZRAPI_EXPORT int event_if_waitevent(int fd, int familyId, int command, int timeoutUs, int attrCount,
                                    ...);

/** Counts the attributes after a message's two headers (20 bytes).
 *
 * While bytes remain an attribute counts, also a last one that is short or runs past the end; one
 * whose length rounds to 0 is the last. The message's length field is trusted: check it against
 * the bytes received first.
 *
 * @param msg  message, whole up to its length field
 * @return number of attributes, 0 for none
 */
ZRAPI_EXPORT int attr_count(const struct nlmsghdr* msg);

/** Finds an attribute, walking as attr_count() does. The one it returns can be short or run past
 * the message's end: check its length before its payload is used.
 *
 * @param msg    message, whole up to its length field
 * @param index  0-based position
 * @return the attribute, inside the message, or null when there are not that many
 */
ZRAPI_EXPORT struct nlattr* attr_get(const struct nlmsghdr* msg, int index);

#ifdef __cplusplus
}
#endif
