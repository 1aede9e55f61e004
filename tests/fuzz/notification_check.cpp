#include <algorithm>
#include <string>

#include "hardware/netlink/notification_internal.h"
#include "tests/fuzz/fuzz_check.h"

namespace ZR::test {
namespace {

constexpr int family = 30;
constexpr std::size_t headersSize = 20;
constexpr std::uint32_t absent = 0xFFFFFFFF;

/// A payload of the plain reading; null when absent.
using Plain = const std::string*;

struct PlainNotification {
    std::vector<PlainAttribute> attributes;

    Plain last(unsigned int type) const {
        Plain found = nullptr;
        for (const PlainAttribute& attribute : attributes)
            if (attribute.type == type)
                found = &attribute.payload;
        return found;
    }
};

bool readPlainly(const Reception& reception, PlainNotification& notification) {
    const std::string message = plainMessage(reception);
    if (message.size() < headersSize || plainNumber(message, 4, 2) != family)
        return false;
    notification.attributes = plainAttributes(message, headersSize, message.size());
    return notification.attributes.size() == 3 &&
           std::all_of(notification.attributes.begin(), notification.attributes.end(),
                       [](const PlainAttribute& attribute) { return attribute.whole; });
}

std::uint32_t wordOrAbsent(Plain payload) {
    return payload == nullptr || payload->size() < 4 ? absent : plainNumber(*payload, 0, 4);
}

std::uint32_t plainAnalogCode(const std::string& name) {
    const auto has = [&name](const char* part) { return name.find(part) != std::string::npos; };
    for (const char digit : {'0', '1', '2', '3'})
        if (has((std::string("ai.") + digit).c_str()))
            return 0x10000U + static_cast<std::uint32_t>(digit - '0');
    if (has("supply_vcc") || has("board_12v_bat"))
        return 4;
    if (has("temperature"))
        return 5;
    if (name == "light")
        return 6;
    return has("frequency") ? 256 : absent;
}

void checkInside(const Payload& payload, Plain expected, const Reception& reception) {
    require(payload.isPresent() == (expected != nullptr), "an attribute is there or not");
    if (!payload.isPresent())
        return;
    const unsigned char* const begin = reception.buffer().bytes.data();
    const std::size_t end = plainMessage(reception).size();
    require(payload.bytes >= begin + headersSize && payload.bytes + payload.size <= begin + end,
            "payload inside the message");
    require(std::string(reinterpret_cast<const char*>(payload.bytes), payload.size) == *expected,
            "payload");
}

void checkDigital(const Notification& notification, const PlainNotification& plain) {
    const std::uint32_t channel = wordOrAbsent(plain.last(1));
    const std::uint32_t value = wordOrAbsent(plain.last(3));
    const NotificationValues input = digitalInputValues(notification);
    require(input.value1 == channel && input.value2 == value, "digital input");
    const NotificationValues output = digitalOutputValues(notification);
    require(output.value1 == (channel < 3 ? channel + 16 : channel) && output.value2 == value,
            "digital output");
}

void checkAnalog(const Notification& notification, const PlainNotification& plain) {
    NotificationValues values{1, 2};
    const bool hasEvent = analogValues(notification, values);
    const Plain flags = plain.last(2);
    const Plain value = plain.last(3);
    const bool expected = flags != nullptr && flags->size() >= 4 && (flags->at(0) & 1) != 0 &&
                          value != nullptr && !value->empty();
    require(hasEvent == expected, "analog event or none");
    if (!hasEvent)
        return;
    const Plain channel = plain.last(1);
    const std::string name = channel == nullptr ? "" : channel->substr(0, channel->find('\0'));
    std::uint32_t reading = plainNumber(*value, 0, std::min<std::size_t>(value->size(), 4));
    if (name == "light" && reading > 1000 && reading < 0x80000000)
        reading = 1000;
    require(values.value1 == plainAnalogCode(name), "analog channel");
    require(values.value2 == reading, "analog reading");
}

}  // namespace

void checkNotification(const std::uint8_t* data, std::size_t size) {
    const Reception reception(data, size);
    Notification notification;
    const bool taken =
        parseNotification(reception.buffer(), reception.count(), family, notification);
    PlainNotification plain;
    require(taken == readPlainly(reception, plain), "the notification is taken or dropped");
    if (!taken)
        return;
    checkInside(notification.channel, plain.last(1), reception);
    checkInside(notification.flags, plain.last(2), reception);
    checkInside(notification.value, plain.last(3), reception);
    checkDigital(notification, plain);
    checkAnalog(notification, plain);
}

}  // namespace ZR::test
