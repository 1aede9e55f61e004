#include "tests/fuzz/fuzz_check.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZR_FUZZ_POISON 1
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define ZR_FUZZ_POISON 1
#endif

#ifdef ZR_FUZZ_POISON
#include <sanitizer/asan_interface.h>
#endif

namespace ZR::test {
namespace {

constexpr std::size_t lengthSize = sizeof(std::uint32_t);
constexpr std::size_t attributeHeaderSize = 4;

#ifdef ZR_FUZZ_POISON
void forbid(const unsigned char* bytes, std::size_t count) {
    ASAN_POISON_MEMORY_REGION(bytes, count);
}
void allow(const unsigned char* bytes, std::size_t count) {
    ASAN_UNPOISON_MEMORY_REGION(bytes, count);
}
#else
void forbid(const unsigned char* /*bytes*/, std::size_t /*count*/) {}
void allow(const unsigned char* /*bytes*/, std::size_t /*count*/) {}
#endif

/// Where the message ends, by its own word or because no more came.
std::size_t endOfMessage(const std::string& bytes) {
    if (bytes.size() < lengthSize)
        return bytes.size();
    return std::clamp<std::size_t>(plainNumber(bytes, 0, lengthSize), lengthSize, bytes.size());
}

}  // namespace

void require(bool holds, const char* what) {
    if (holds)
        return;
    (void)std::fprintf(stderr, "FAILED: %s\n", what);
    std::abort();
}

Reception::Reception(const std::uint8_t* data, std::size_t size) : buffer_(new MessageBuffer) {
    if (size > 1)
        bytes_.assign(reinterpret_cast<const char*>(data + 1),
                      std::min(size - 1, MessageBuffer::size));
    if (size > 0 && (data[0] & lengthIsSet) != 0 && bytes_.size() >= lengthSize) {
        const auto length = static_cast<std::uint32_t>(bytes_.size());
        std::memcpy(bytes_.data(), &length, sizeof length);
    }
    std::memcpy(buffer_->bytes.data(), bytes_.data(), bytes_.size());
    const std::size_t end = endOfMessage(bytes_);
    forbid(buffer_->bytes.data() + end, MessageBuffer::size - end);
}

Reception::~Reception() {
    allow(buffer_->bytes.data(), MessageBuffer::size);
}

std::vector<PlainAttribute> plainAttributes(const std::string& bytes, std::size_t begin,
                                            std::size_t end) {
    std::vector<PlainAttribute> attributes;
    std::size_t at = begin;
    while (at < end) {
        PlainAttribute attribute{at, 0, false, {}};
        std::size_t step = 0;
        if (end - at >= attributeHeaderSize) {
            const std::size_t length = plainNumber(bytes, at, 2);
            attribute.type = plainNumber(bytes, at + 2, 2);
            attribute.whole = length >= attributeHeaderSize && at + length <= end;
            if (attribute.whole)
                attribute.payload =
                    bytes.substr(at + attributeHeaderSize, length - attributeHeaderSize);
            step = (length + 3) / 4 * 4;
        }
        attributes.push_back(attribute);
        at = step == 0 ? end : at + step;
    }
    return attributes;
}

std::string plainMessage(const Reception& reception) {
    const std::string& bytes = reception.bytes();
    constexpr std::size_t headerSize = 16;
    if (bytes.size() < headerSize)
        return {};
    const std::uint32_t length = plainNumber(bytes, 0, lengthSize);
    return length < headerSize || length > bytes.size() ? std::string() : bytes.substr(0, length);
}

std::uint32_t plainNumber(const std::string& bytes, std::size_t offset, std::size_t count) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < count; ++i)
        number |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes.at(offset + i)))
                  << (8 * i);
    return number;
}

}  // namespace ZR::test
