#pragma once

#include <linux/v4l2-subdev.h>

#include <string_view>

#include "platform/media_controller/text_internal.h"

namespace ZR::media_controller {

/// What a format text wants of one pad.
struct PadFormat {
    v4l2_mbus_framefmt format{};   ///< a width or height of 0: leave it
    v4l2_rect crop{-1, -1, 0, 0};  ///< left or top -1: leave it
    v4l2_rect compose{-1, -1, 0, 0};
    v4l2_fract interval{};  ///< a numerator of 0: leave it
};

/// The kernel's code of a media bus format, 0 for a name that is none; the case counts.
unsigned int busFormatCode(std::string_view name);

/// Takes properties, "[fmt:UYVY2X8/720x576@1/25 field:none]", and the blanks behind them; false when
/// they cannot be read. A property that stands twice counts as the last one has it, and a "fmt:"
/// undoes the field and colour properties before it.
bool takePadFormat(Text& text, PadFormat& wanted);

}  // namespace ZR::media_controller
