#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "hardware/netlink/netlink_message_internal.h"

namespace ZR::test {

/// The bytes of a number as the kernel writes it.
std::string bytesOf(std::uint32_t number);
std::string bytesOf(std::uint16_t number);

/// One attribute, padded; its length field tells the truth.
std::string attribute(int type, std::string_view payload);
std::string attribute(int type, std::uint32_t payload);

/// An attribute's four header bytes, whatever they claim.
std::string attributeHeader(int length, int type);

/// A generic netlink message: both headers, then @p attributes. Its length field tells the truth.
std::string message(int type, std::string_view attributes, int command = 1);

/// The same message with another length field.
std::string withLength(std::string message, std::uint32_t length);

/// A receive buffer that holds @p bytes, or as many as fit; what is left over looks like attributes.
MessageBuffer received(std::string_view bytes);

/// A message on the heap, not one byte larger: what reads outside is seen by the address sanitizer.
class ExactMessage {
  public:
    explicit ExactMessage(std::string_view bytes);

    const nlmsghdr* header() const { return reinterpret_cast<const nlmsghdr*>(bytes_.get()); }
    /// Where in the message @p attribute stands, -1 for null.
    std::ptrdiff_t offsetOf(const nlattr* attribute) const;

  private:
    std::unique_ptr<unsigned char[]> bytes_;
};

}  // namespace ZR::test
