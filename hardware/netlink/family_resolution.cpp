#include <linux/genetlink.h>
#include <linux/netlink.h>

#include <algorithm>
#include <cstring>

#include "hardware/netlink/family_resolution_internal.h"

namespace ZR {
namespace {

// The controller writes the attributes of its answer in a fixed order; these are the positions in
// it. The groups come after the operations, which not every family has.
constexpr int familyIdIndex = 1;
constexpr int firstGroupsIndex = 5;

bool isFamilyReply(const MessageBuffer& reply, std::int64_t received) {
    return isComplete(reply, received) && reply.header()->nlmsg_type != NLMSG_ERROR &&
           hasCommand(reply, CTRL_CMD_NEWFAMILY) && areAttributesWhole(reply.header());
}

struct FamilyReply {
    int familyId = 0;
    Payload groups;
};

FamilyReply findParts(const nlmsghdr* message) {
    FamilyReply parts;
    int index = 0;
    for (AttributeWalk walk(message); !walk.isAtEnd(); walk.next(), ++index) {
        const Payload payload = walk.payload();
        if (index == familyIdIndex && walk.type() == CTRL_ATTR_FAMILY_ID &&
            payload.size >= sizeof(std::uint16_t))
            parts.familyId = payload.word<std::uint16_t>();
        if (index >= firstGroupsIndex && walk.type() == CTRL_ATTR_MCAST_GROUPS) {
            parts.groups = payload;
            break;
        }
    }
    return parts;
}

/// Takes number and name of the first group. Only this order, number before name, is the kernel's.
bool takeFirstGroup(const Payload& groups, char* groupName, int* groupId) {
    const AttributeWalk group(groups);
    if (group.isAtEnd() || !group.isWhole())
        return false;
    AttributeWalk part(group.payload());
    if (part.isAtEnd() || !part.isWhole() || part.type() != CTRL_ATTR_MCAST_GRP_ID ||
        part.payload().size < sizeof(std::uint32_t))
        return false;
    const auto id = part.payload().word<std::uint32_t>();
    part.next();
    if (part.isAtEnd() || !part.isWhole() || part.type() != CTRL_ATTR_MCAST_GRP_NAME)
        return false;

    const Payload name = part.payload();
    const auto* end = std::find(name.bytes, name.bytes + name.size, '\0');
    *std::copy(name.bytes, end, groupName) = '\0';
    *groupId = static_cast<int>(id);
    return true;
}

}  // namespace

std::size_t buildFamilyRequest(const char* familyName, std::uint32_t portId,
                               MessageBuffer& request) {
    const std::size_t nameSize = std::strlen(familyName) + 1;
    if (nameSize > MessageBuffer::size - messageHeaderSize - NLA_HDRLEN)
        return 0;
    const std::size_t length = messageHeaderSize + NLA_ALIGN(NLA_HDRLEN + nameSize);

    nlmsghdr message{};
    message.nlmsg_len = static_cast<std::uint32_t>(length);
    message.nlmsg_type = GENL_ID_CTRL;
    message.nlmsg_flags = NLM_F_REQUEST;
    message.nlmsg_pid = portId;
    genlmsghdr generic{};
    generic.cmd = CTRL_CMD_GETFAMILY;
    generic.version = 1;
    nlattr attribute{};
    attribute.nla_len = static_cast<std::uint16_t>(NLA_HDRLEN + nameSize);
    attribute.nla_type = CTRL_ATTR_FAMILY_NAME;

    request.bytes.fill(0);
    unsigned char* to = request.bytes.data();
    std::memcpy(to, &message, sizeof message);
    std::memcpy(to + NLMSG_HDRLEN, &generic, sizeof generic);
    std::memcpy(to + messageHeaderSize, &attribute, sizeof attribute);
    std::memcpy(to + messageHeaderSize + NLA_HDRLEN, familyName, nameSize);
    return length;
}

int parseFamilyReply(const MessageBuffer& reply, std::int64_t received, char* groupName,
                     int* groupId) {
    if (!isFamilyReply(reply, received))
        return -1;
    const FamilyReply parts = findParts(reply.header());
    if (!parts.groups.isPresent() || !takeFirstGroup(parts.groups, groupName, groupId))
        return -1;
    return parts.familyId;
}

}  // namespace ZR
