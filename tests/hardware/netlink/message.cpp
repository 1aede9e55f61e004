#include "tests/hardware/netlink/message.h"

#include <algorithm>
#include <cstring>

namespace ZR::test {
namespace {

template <typename Value>
std::string rawBytes(const Value& value) {
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

}  // namespace

std::string bytesOf(std::uint32_t number) {
    return rawBytes(number);
}

std::string bytesOf(std::uint16_t number) {
    return rawBytes(number);
}

std::string attribute(int type, std::string_view payload) {
    std::string bytes = attributeHeader(static_cast<int>(NLA_HDRLEN + payload.size()), type);
    bytes += payload;
    bytes.resize(NLA_ALIGN(bytes.size()));
    return bytes;
}

std::string attribute(int type, std::uint32_t payload) {
    return attribute(type, bytesOf(payload));
}

std::string attributeHeader(int length, int type) {
    return bytesOf(static_cast<std::uint16_t>(length)) + bytesOf(static_cast<std::uint16_t>(type));
}

std::string message(int type, std::string_view attributes, int command) {
    nlmsghdr header{};
    header.nlmsg_len = static_cast<std::uint32_t>(messageHeaderSize + attributes.size());
    header.nlmsg_type = static_cast<std::uint16_t>(type);
    genlmsghdr generic{};
    generic.cmd = static_cast<std::uint8_t>(command);
    generic.version = 1;
    return rawBytes(header) + rawBytes(generic) + std::string(attributes);
}

std::string withLength(std::string message, std::uint32_t length) {
    return message.replace(0, sizeof length, bytesOf(length));
}

MessageBuffer received(std::string_view bytes) {
    MessageBuffer buffer;
    const std::string filler = attribute(1, 0x11111111);
    for (std::size_t i = 0; i < MessageBuffer::size; ++i)
        buffer.bytes[i] = static_cast<unsigned char>(filler[i % filler.size()]);
    std::memcpy(buffer.bytes.data(), bytes.data(), std::min(bytes.size(), MessageBuffer::size));
    return buffer;
}

ExactMessage::ExactMessage(std::string_view bytes) : bytes_(new unsigned char[bytes.size()]) {
    std::memcpy(bytes_.get(), bytes.data(), bytes.size());
}

std::ptrdiff_t ExactMessage::offsetOf(const nlattr* attribute) const {
    return attribute == nullptr ? -1
                                : reinterpret_cast<const unsigned char*>(attribute) - bytes_.get();
}

}  // namespace ZR::test
