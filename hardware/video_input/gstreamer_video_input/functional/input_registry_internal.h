#pragma once

#include <mutex>

#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

namespace ZR {

/// Held while an object enters `instances` and while the bus thread steps from one to the next: a
/// map may turn its tree around then. Objects never leave it. Never destroyed.
inline std::mutex& registryGrowth() {
    static auto& mutex = *new std::mutex;
    return mutex;
}

using InputEntry = decltype(ZRGstreamerVideoInput::instances)::const_iterator;

inline InputEntry firstInput() {
    const std::lock_guard<std::mutex> lock(registryGrowth());
    return ZRGstreamerVideoInput::instances.begin();
}

inline InputEntry inputAfter(InputEntry entry) {
    const std::lock_guard<std::mutex> lock(registryGrowth());
    return ++entry;
}

}  // namespace ZR
