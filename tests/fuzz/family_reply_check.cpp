#include <cstring>
#include <optional>

#include "hardware/netlink/family_resolution_internal.h"
#include "tests/fuzz/fuzz_check.h"

namespace ZR::test {
namespace {

constexpr std::size_t headersSize = 20;
// What is left of 276 bytes for a name behind the headers, five attributes, groups, group, number.
constexpr std::size_t longestGroupName = 216;

struct PlainReply {
    int familyId = 0;
    int groupId = 0;
    std::string groupName;
};

std::optional<PlainReply> plainGroup(const std::string& groups, PlainReply reply) {
    const auto nested = plainAttributes(groups, 0, groups.size());
    if (nested.empty() || !nested[0].whole)
        return std::nullopt;
    const std::string& group = nested[0].payload;
    const auto parts = plainAttributes(group, 0, group.size());
    if (parts.size() < 2 || !parts[0].whole || !parts[1].whole || parts[0].type != 2 ||
        parts[0].payload.size() < 4 || parts[1].type != 1)
        return std::nullopt;
    reply.groupId = static_cast<int>(plainNumber(parts[0].payload, 0, 4));
    reply.groupName = parts[1].payload.substr(0, parts[1].payload.find('\0'));
    return reply;
}

std::optional<PlainReply> plainReply(const Reception& reception) {
    const std::string message = plainMessage(reception);
    if (message.size() < headersSize || plainNumber(message, 4, 2) == 2 || message[16] != 1)
        return std::nullopt;
    const auto attributes = plainAttributes(message, headersSize, message.size());
    for (const PlainAttribute& attribute : attributes)
        if (!attribute.whole)
            return std::nullopt;
    PlainReply reply;
    if (attributes.size() > 1 && attributes[1].type == 1 && attributes[1].payload.size() >= 2)
        reply.familyId = static_cast<int>(plainNumber(attributes[1].payload, 0, 2));
    for (std::size_t i = 5; i < attributes.size(); ++i)
        if (attributes[i].type == 7)
            return plainGroup(attributes[i].payload, reply);
    return std::nullopt;
}

}  // namespace

void checkFamilyReply(const std::uint8_t* data, std::size_t size) {
    const Reception reception(data, size);
    const std::unique_ptr<char[]> groupName(new char[longestGroupName + 1]);
    std::memset(groupName.get(), '-', longestGroupName + 1);
    constexpr int untouched = 4711;
    int groupId = untouched;
    const int familyId =
        parseFamilyReply(reception.buffer(), reception.count(), groupName.get(), &groupId);

    const std::optional<PlainReply> expected = plainReply(reception);
    require((familyId != -1) == expected.has_value(), "the answer is taken or refused");
    if (!expected) {
        require(groupId == untouched && groupName[0] == '-', "a refused answer leaves nothing");
        return;
    }
    require(familyId == expected->familyId, "family number");
    require(groupId == expected->groupId, "group number");
    require(std::strcmp(groupName.get(), expected->groupName.c_str()) == 0, "group name");
}

}  // namespace ZR::test
