#pragma once

#include <cstddef>
#include <cstdint>

#include "hardware/netlink/netlink_message_internal.h"

namespace ZR {

// The question for a driver's family and the controller's answer, without the socket.

/// Builds the question for a family.
/// @param portId  sender's port in the header
/// @return its length, or 0 for a name that does not fit
std::size_t buildFamilyRequest(const char* familyName, std::uint32_t portId,
                               MessageBuffer& request);

/// Takes the family's number and its first multicast group from the controller's answer.
/// @param received   bytes that came
/// @param groupName  receives the group's name and a NUL; unchanged on failure
/// @param groupId    receives the group's number; unchanged on failure
/// @return the family's number, 0 when it is not where the controller puts it, -1 when the answer
///         is none or has no group
int parseFamilyReply(const MessageBuffer& reply, std::int64_t received, char* groupName,
                     int* groupId);

}  // namespace ZR
