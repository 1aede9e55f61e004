#include <linux/netlink.h>

#include <climits>
#include <cstring>
#include <memory>

#include "hardware/netlink/event_interface.h"
#include "tests/fuzz/fuzz_check.h"

namespace ZR::test {
namespace {

constexpr std::size_t headersSize = 20;

/// A message of exactly its size, with the input behind its headers.
std::string messageAround(const std::uint8_t* data, std::size_t size) {
    std::string bytes(headersSize, '\0');
    if (size > 0)
        bytes.append(reinterpret_cast<const char*>(data), size);
    const auto length = static_cast<std::uint32_t>(bytes.size());
    std::memcpy(bytes.data(), &length, sizeof length);
    return bytes;
}

}  // namespace

void checkAttributeWalk(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = messageAround(data, size);
    const std::unique_ptr<unsigned char[]> exact(new unsigned char[bytes.size()]);
    std::memcpy(exact.get(), bytes.data(), bytes.size());
    const auto* const message = reinterpret_cast<const nlmsghdr*>(exact.get());

    const std::vector<PlainAttribute> expected = plainAttributes(bytes, headersSize, bytes.size());
    const int count = attr_count(message);
    require(count >= 0 && static_cast<std::size_t>(count) == expected.size(), "attribute count");
    for (int i = 0; i < count; ++i) {
        const auto* const found = reinterpret_cast<const unsigned char*>(attr_get(message, i));
        require(found != nullptr, "each attribute that counts is found");
        require(found == exact.get() + expected[static_cast<std::size_t>(i)].offset,
                "attribute's place");
    }
    require(attr_get(message, count) == nullptr, "none behind the last");
    require(attr_get(message, INT_MAX) == nullptr, "none far behind the last");
    require(attr_get(message, -1) == nullptr, "none before the first");

    bool allWhole = true;
    for (const PlainAttribute& attribute : expected)
        allWhole = allWhole && attribute.whole;
    require(areAttributesWhole(message) == allWhole, "whole attributes");
}

}  // namespace ZR::test
