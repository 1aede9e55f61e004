#pragma once

#include <cstdint>

#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

namespace ZR {

constexpr int failedStreamDelay = 1000;       ///< ms
constexpr int silentServerDelay = 10000;      ///< ms; a server that does not answer needs its time
constexpr int changedInterfaceDelay = 100;    ///< ms
constexpr std::uint32_t rtspPatience = 5000;  ///< ms from an RTSP start to its first data

/// Whether an input has been restarted so often that only the application can help it.
constexpr bool isGivenUp(unsigned int restarts) {
    return restarts > 9;
}

/// Whether an RTSP server that was asked to play owes its first data for too long.
/// @param startTick  ms, 0 when none is owed
/// @param now        ms of the same clock, its low 32 bits
constexpr bool isDataOverdue(int streamType, std::uint32_t startTick, std::uint32_t now) {
    // The difference holds across the 49.7 days after which 32 bits begin anew.
    return streamType == StreamRtsp && startTick != 0 && now - startTick > rtspPatience;
}

}  // namespace ZR
