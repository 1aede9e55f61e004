#pragma once

#include <cstdint>
#include <initializer_list>

/// Tells whether a video node of the kernel decodes one of these compressed formats: GStreamer's own
/// plug-in then registers the real decoder.
bool hasKernelDecoder(std::initializer_list<std::uint32_t> formats);
