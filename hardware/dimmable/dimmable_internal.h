#pragma once

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <system_error>

#include "hardware/dimmable/zr_dimmable.h"

namespace ZR {

/// Full scale of an illumination's brightness attribute without colour.
constexpr int fullScale = 255;
constexpr unsigned int highestPercent = 100;
constexpr unsigned int highestColor = 0xFFFFFF;

/// Percent (0 to 100) to the attribute's 0 to 255, rounded.
constexpr unsigned int percentToRaw(unsigned int percent) {
    return (percent * fullScale + highestPercent / 2) / highestPercent;
}

/// The attribute's number to percent, rounded, in 32-bit arithmetic that wraps for numbers which no
/// driver gives.
constexpr int rawToPercent(int raw) {
    const std::uint32_t scaled = 200U * static_cast<std::uint32_t>(raw) + fullScale;
    return static_cast<int>(scaled) / (2 * fullScale);
}

/// The number at the start of an attribute's text: decimal, hexadecimal after "0x" or octal after
/// "0"; 0 without one. Saturates at 32 bits on every machine, as `long` does on the terminal's.
inline int parseRaw(const char* text) {
    // What drivers give is plain decimal; only the other forms, and what saturates, pay for strtol.
    int decimal = 0;
    if (*text >= '1' && *text <= '9' &&
        std::from_chars(text, text + std::strlen(text), decimal).ec == std::errc())
        return decimal;
    const long number = std::strtol(text, nullptr, 0);
    return static_cast<int>(
        std::clamp<long>(number, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

/// How one device takes and gives intensities.
struct IntensityRule {
    unsigned int lowest;
    unsigned int highest;
    bool writesPercent;  ///< scaled from percent on write
    bool readsPercent;   ///< scaled to percent on read
};

/// The rule of a device. The beeper is written unscaled and read scaled on purpose.
constexpr IntensityRule intensityRule(ZRDimmableDevice device, bool color,
                                      unsigned int displayMinimum) {
    if (device == DisplayBacklight)
        return {displayMinimum, highestPercent, true, true};
    if (device == Beeper)
        return {0, highestPercent, false, true};
    if (color)
        return {0, highestColor, false, false};
    return {0, highestPercent, true, true};
}

}  // namespace ZR
