#pragma once

#include <cstdint>

#include "hardware/netlink/netlink_message_internal.h"

namespace ZR {

// A driver's notification without its socket: from message to the values of an event.

/// The attributes that drivers send, by type; absent ones are not present. Of two attributes of one
/// type the last one counts.
struct Notification {
    Payload channel;  ///< type 1: a number, or the name of an analog channel
    Payload flags;    ///< type 2
    Payload value;    ///< type 3: state or reading
};

/// What a notification puts into its event.
struct NotificationValues {
    std::uint32_t value1;
    std::uint32_t value2;
};

/// Takes a notification apart.
/// @param received      bytes that came
/// @param familyId      the driver's family
/// @param notification  receives the attributes, which point into @p message
/// @return false for another family's message, one without exactly three attributes, and one that
///         does not hold together
bool parseNotification(const MessageBuffer& message, std::int64_t received, int familyId,
                       Notification& notification);

NotificationValues digitalInputValues(const Notification& notification);
NotificationValues digitalOutputValues(const Notification& notification);

/// @param values  receives the event's values
/// @return false for a notification without a valid reading
bool analogValues(const Notification& notification, NotificationValues& values);

}  // namespace ZR
