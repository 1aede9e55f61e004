#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "hardware/netlink/netlink_message_internal.h"

/// The fuzz targets' own ground: each check takes any bytes and ends the process when the code under
/// test does not do with them what an independent reading of them says.

namespace ZR::test {

void checkAttributeWalk(const std::uint8_t* data, std::size_t size);
void checkFamilyReply(const std::uint8_t* data, std::size_t size);
void checkNotification(const std::uint8_t* data, std::size_t size);

/// Ends the process with @p what unless @p holds.
void require(bool holds, const char* what);

/// The first byte of an input says whether the message's length field is set to what came; with
/// random lengths hardly any message would be taken apart.
constexpr std::uint8_t lengthIsSet = 1;

/// What a socket gave: at most 276 bytes of the input. Under the address sanitizer nothing behind
/// the message can be read.
class Reception {
  public:
    Reception(const std::uint8_t* data, std::size_t size);
    Reception(const Reception&) = delete;
    Reception& operator=(const Reception&) = delete;
    ~Reception();

    const MessageBuffer& buffer() const { return *buffer_; }
    std::int64_t count() const { return static_cast<std::int64_t>(bytes_.size()); }
    /// A copy of all that came.
    const std::string& bytes() const { return bytes_; }

  private:
    std::unique_ptr<MessageBuffer> buffer_;
    std::string bytes_;
};

/// An attribute as a plain reading of the bytes has it.
struct PlainAttribute {
    std::size_t offset;
    unsigned int type;    ///< of a whole one
    bool whole;           ///< header and payload lie inside
    std::string payload;  ///< of a whole one
};

/// The attributes of bytes[begin, end), by index arithmetic on a text.
std::vector<PlainAttribute> plainAttributes(const std::string& bytes, std::size_t begin,
                                            std::size_t end);

/// The whole message of what came; an empty text when its length field does not fit.
std::string plainMessage(const Reception& reception);

/// The little-endian number of @p count bytes.
std::uint32_t plainNumber(const std::string& bytes, std::size_t offset, std::size_t count);

}  // namespace ZR::test
