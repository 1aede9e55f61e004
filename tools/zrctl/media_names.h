#pragma once

#include <cstdint>
#include <string>

#include "tools/zrctl/media_graph.h"

namespace zrctl {

/// @name Texts of the kernel's numbers
/// The number itself, as "0x2006", where it has no name.
/// @{

/// "video multiplexer", for the function of an entity.
std::string entityFunctionText(std::uint32_t function);

/// "UYVY8_2X8", for the media-bus code of a pad.
std::string busCodeText(std::uint32_t code);

/// "UYVY", for the pixel format of a video node.
std::string pixelFormatText(std::uint32_t fourcc);

/// "none", "interlaced", as media-ctl writes them.
std::string fieldText(std::uint32_t field);
/// @}

/// A name of the kernel's as printable ASCII.
std::string printable(const std::string& name);

/// "UYVY8_2X8/720x576@1/50 field:none", the form that media-ctl takes; "-" without a format.
std::string padFormatText(const MediaPad& pad);

/// "UYVY/720x576 field:none" of an entity with a video node; "-" without a format.
std::string videoFormatText(const MediaEntity& entity);

}  // namespace zrctl
