#pragma once

#include <cstdint>

namespace ZR {

/// A colour as one 32-bit word, 0xAARRGGBB: alpha, red, green and blue, 8 bits each.
struct ZRColor {
    /// @param word  0xAARRGGBB; converts by itself, so that a number serves as a colour
    // NOLINTNEXTLINE(google-explicit-constructor)
    constexpr ZRColor(std::uint32_t word = 0) : value(word) {}

    std::uint32_t value;  ///< 0xAARRGGBB
};

constexpr bool operator==(ZRColor left, ZRColor right) {
    return left.value == right.value;
}

constexpr bool operator!=(ZRColor left, ZRColor right) {
    return !(left == right);
}

}  // namespace ZR
