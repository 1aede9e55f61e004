#include <algorithm>
#include <string_view>

#include "hardware/netlink/notification_internal.h"

namespace ZR {
namespace {

constexpr int attributeCount = 3;
constexpr std::uint16_t channelType = 1;
constexpr std::uint16_t flagsType = 2;
constexpr std::uint16_t valueType = 3;
constexpr std::uint32_t valueIsValid = 1;
constexpr std::uint32_t absent = 0xFFFFFFFF;

constexpr std::uint32_t lastOutputChannel = 2;
constexpr std::uint32_t firstOutputCode = 16;

struct AnalogChannel {
    std::string_view part;
    std::uint32_t code;
};

constexpr std::uint32_t lightCode = 6;
constexpr std::uint32_t unknownCode = 0xFFFFFFFF;
constexpr std::int32_t brightestLight = 1000;

// Names are searched for these parts in this order. Supply and battery share a code on purpose.
constexpr AnalogChannel channelsBeforeLight[] = {
    {"ai.0", 0x10000}, {"ai.1", 0x10001},    {"ai.2", 0x10002},  {"ai.3", 0x10003},
    {"supply_vcc", 4}, {"board_12v_bat", 4}, {"temperature", 5},
};
constexpr std::string_view lightName = "light";  // the whole name, not a part of it
constexpr AnalogChannel channelAfterLight{"frequency", 256};

bool contains(std::string_view name, const AnalogChannel& channel) {
    return name.find(channel.part) != std::string_view::npos;
}

std::uint32_t analogCode(std::string_view name) {
    for (const AnalogChannel& channel : channelsBeforeLight) {
        if (contains(name, channel))
            return channel.code;
    }
    if (name == lightName)
        return lightCode;
    return contains(name, channelAfterLight) ? channelAfterLight.code : unknownCode;
}

/// The payload's text up to its first NUL.
std::string_view text(const Payload& payload) {
    const std::string_view whole(reinterpret_cast<const char*>(payload.bytes), payload.size);
    return whole.substr(0, whole.find('\0'));
}

/// A payload too short for a word counts as absent.
bool holdsWord(const Payload& payload) {
    return payload.size >= sizeof(std::uint32_t);
}

std::uint32_t wordOr(const Payload& payload, std::uint32_t otherwise) {
    return holdsWord(payload) ? payload.word<std::uint32_t>() : otherwise;
}

/// The number of the payload's first four bytes, the lowest one first; fewer bytes serve too.
std::uint32_t littleEndian(const Payload& payload) {
    constexpr std::size_t bitsPerByte = 8;
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < std::min(payload.size, sizeof number); ++i)
        number |= std::uint32_t{payload.bytes[i]} << (i * bitsPerByte);
    return number;
}

}  // namespace

bool parseNotification(const MessageBuffer& message, std::int64_t received, int familyId,
                       Notification& notification) {
    if (!isComplete(message, received) || message.header()->nlmsg_type != familyId)
        return false;
    notification = {};
    int count = 0;
    for (AttributeWalk walk(message.header()); !walk.isAtEnd(); walk.next(), ++count) {
        if (count == attributeCount || !walk.isWhole())
            return false;
        if (walk.type() == channelType)
            notification.channel = walk.payload();
        else if (walk.type() == flagsType)
            notification.flags = walk.payload();
        else if (walk.type() == valueType)
            notification.value = walk.payload();
    }
    return count == attributeCount;
}

NotificationValues digitalInputValues(const Notification& notification) {
    return {wordOr(notification.channel, absent), wordOr(notification.value, absent)};
}

NotificationValues digitalOutputValues(const Notification& notification) {
    NotificationValues values = digitalInputValues(notification);
    if (values.value1 <= lastOutputChannel)
        values.value1 += firstOutputCode;
    return values;
}

bool analogValues(const Notification& notification, NotificationValues& values) {
    if ((wordOr(notification.flags, 0) & valueIsValid) == 0 || notification.value.size == 0)
        return false;
    values.value1 = analogCode(text(notification.channel));
    values.value2 = littleEndian(notification.value);
    // Compared as signed: a reading with the top bit set is below the limit.
    if (values.value1 == lightCode && static_cast<std::int32_t>(values.value2) > brightestLight)
        values.value2 = brightestLight;
    return true;
}

}  // namespace ZR
