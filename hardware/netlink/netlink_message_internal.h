#pragma once

#include <linux/genetlink.h>
#include <linux/netlink.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ZR {

// Messages of generic netlink, whoever sent them: nothing here reads outside the bytes received.

constexpr std::size_t messageHeaderSize = NLMSG_HDRLEN + GENL_HDRLEN;

/// Room for one message; what is longer arrives cut off and is dropped by its length.
struct alignas(nlmsghdr) MessageBuffer {
    static constexpr std::size_t size = 276;
    std::array<unsigned char, size> bytes;

    const nlmsghdr* header() const { return reinterpret_cast<const nlmsghdr*>(bytes.data()); }
};

/// A payload inside a message; empty and null when there is none.
struct Payload {
    const unsigned char* bytes = nullptr;
    std::size_t size = 0;

    bool isPresent() const { return bytes != nullptr; }
    /// The word at the payload's start; only for payloads of at least its size.
    template <typename Word>
    Word word() const {
        Word value;
        std::memcpy(&value, bytes, sizeof value);
        return value;
    }
};

/// Walks attributes one after the other. While bytes remain an attribute counts, also a last one
/// that is short or runs past the end; one whose length rounds to 0 is the last.
class AttributeWalk {
  public:
    AttributeWalk(const unsigned char* bytes, std::int64_t size) : position_(bytes), left_(size) {}
    explicit AttributeWalk(const nlmsghdr* message)
        : AttributeWalk(reinterpret_cast<const unsigned char*>(message) + messageHeaderSize,
                        std::int64_t{message->nlmsg_len} - std::int64_t{messageHeaderSize}) {}
    explicit AttributeWalk(const Payload& nest)
        : AttributeWalk(nest.bytes, static_cast<std::int64_t>(nest.size)) {}

    bool isAtEnd() const { return left_ <= 0; }
    void next() {
        const std::int64_t step = hasHeader() ? NLA_ALIGN(header().nla_len) : 0;
        left_ = step == 0 ? 0 : left_ - step;
        position_ += left_ > 0 ? step : 0;
    }

    const unsigned char* position() const { return position_; }
    /// Tells whether header and payload lie inside the message.
    bool isWhole() const {
        return hasHeader() && header().nla_len >= NLA_HDRLEN && header().nla_len <= left_;
    }
    /// Type and payload of a whole attribute.
    std::uint16_t type() const { return header().nla_type; }
    Payload payload() const {
        return {position_ + NLA_HDRLEN, std::size_t{header().nla_len} - NLA_HDRLEN};
    }

  private:
    bool hasHeader() const { return left_ >= NLA_HDRLEN; }
    nlattr header() const {
        nlattr attribute;
        std::memcpy(&attribute, position_, sizeof attribute);
        return attribute;
    }

    const unsigned char* position_;
    std::int64_t left_;
};

/// Tells whether @p received bytes hold the message that its length field promises.
inline bool isComplete(const MessageBuffer& buffer, std::int64_t received) {
    if (received < NLMSG_HDRLEN)
        return false;
    const std::uint32_t length = buffer.header()->nlmsg_len;
    return length >= NLMSG_HDRLEN && length <= received;
}

/// Tells whether every attribute of a complete message lies inside it.
inline bool areAttributesWhole(const nlmsghdr* message) {
    for (AttributeWalk walk(message); !walk.isAtEnd(); walk.next()) {
        if (!walk.isWhole())
            return false;
    }
    return true;
}

/// Tells whether a complete message has a generic header, and with this command.
inline bool hasCommand(const MessageBuffer& buffer, int command) {
    return buffer.header()->nlmsg_len >= messageHeaderSize && buffer.bytes[NLMSG_HDRLEN] == command;
}

}  // namespace ZR
