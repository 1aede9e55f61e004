#pragma once

#include <cstdint>
#include <string>

#include "hardware/can/zr_can_raw.h"

namespace zrctl {

/// Reads a frame as cansend takes it, as far as the library can send it: a data frame with up to
/// 8 bytes, with a standard or an extended identifier.
/// @throws UsageError for any other text
ZR::ZRCANMessage parseCanFrame(const std::string& text);

/// The frame as candump writes it, from the identifier word of the kernel.
std::string canFrameText(const ZR::ZRCANMessage& message);

/// The data alone, in hexadecimal digits; that of a remote frame is empty.
std::string canDataText(const ZR::ZRCANMessage& message);

/// What the kernel lets through: (identifier word & mask) == (id & mask).
struct CanFilter {
    std::uint32_t id;
    std::uint32_t mask;

    bool lets(std::uint32_t identifierWord) const { return ((identifierWord ^ id) & mask) == 0; }
};

/// Reads "ID:MASK" as candump takes it.
/// @throws UsageError for any other text
CanFilter parseCanFilter(const std::string& text);

}  // namespace zrctl
