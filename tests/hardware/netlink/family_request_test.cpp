// The question for a driver's family, byte for byte.

#include <gtest/gtest.h>

#include <string>

#include "hardware/netlink/family_resolution_internal.h"
#include "tests/hardware/netlink/message.h"

namespace ZR::test {
namespace {

constexpr std::uint32_t port = 0x01020304;
constexpr std::size_t longestName = 251;

std::string text(const MessageBuffer& buffer, std::size_t size) {
    return {reinterpret_cast<const char*>(buffer.bytes.data()), size};
}

/// The whole buffer for a name that is asked for.
std::string expectedRequest(const std::string& name, std::uint32_t length) {
    const std::string zero4(4, '\0');
    std::string bytes = bytesOf(length) + bytesOf(std::uint16_t{0x10}) + bytesOf(std::uint16_t{1});
    bytes += zero4 + bytesOf(port);
    bytes += std::string("\3\1\0\0", 4);
    bytes += bytesOf(static_cast<std::uint16_t>(name.size() + 5)) + bytesOf(std::uint16_t{2});
    bytes += name;
    bytes.resize(MessageBuffer::size);
    return bytes;
}

TEST(FamilyRequest_pure, is_built_byte_for_byte_in_a_zeroed_buffer) {
    MessageBuffer request = received("");
    EXPECT_EQ(buildFamilyRequest("ZR_DI", port, request), 32U);
    EXPECT_EQ(text(request, MessageBuffer::size), expectedRequest("ZR_DI", 32));
}

TEST(FamilyRequest_pure, its_length_is_rounded_up_to_four_bytes) {
    MessageBuffer request;  // NOLINT(*-init): filled by the request
    EXPECT_EQ(buildFamilyRequest("", port, request), 28U);
    EXPECT_EQ(buildFamilyRequest("a", port, request), 28U);
    EXPECT_EQ(buildFamilyRequest("abc", port, request), 28U);
    EXPECT_EQ(buildFamilyRequest("abcd", port, request), 32U);
    EXPECT_EQ(text(request, MessageBuffer::size), expectedRequest("abcd", 32));
}

TEST(FamilyRequest_pure, an_empty_name_is_asked_for_with_its_nul) {
    MessageBuffer request;  // NOLINT(*-init): filled by the request
    EXPECT_EQ(buildFamilyRequest("", port, request), 28U);
    EXPECT_EQ(text(request, MessageBuffer::size), expectedRequest("", 28));
}

TEST(FamilyRequest_pure, the_longest_name_fills_the_buffer) {
    const std::string name(longestName, 'x');
    MessageBuffer request;  // NOLINT(*-init): filled by the request
    EXPECT_EQ(buildFamilyRequest(name.c_str(), port, request), MessageBuffer::size);
    EXPECT_EQ(text(request, MessageBuffer::size), expectedRequest(name, MessageBuffer::size));
}

TEST(FamilyRequest_pure, a_longer_name_does_not_fit) {
    MessageBuffer request;  // NOLINT(*-init): filled by the request
    for (const std::size_t size : {longestName + 1, std::size_t{65530}, std::size_t{65536}})
        EXPECT_EQ(buildFamilyRequest(std::string(size, 'x').c_str(), port, request), 0U) << size;
}

}  // namespace
}  // namespace ZR::test
