#pragma once

#include <linux/videodev2.h>

namespace ZR {

constexpr int standardPal = 0;
constexpr int standardNtsc = 1;
constexpr int standardUnknown = 2;

/// What a detected mask counts as.
struct DetectedStandard {
    int standard;
    bool supported;
};

/// NTSC comes first: a mask of both is NTSC. An empty mask, a decoder without a signal, is PAL, so
/// that a camera that is plugged in later is likely to be right.
constexpr DetectedStandard classifyStandard(v4l2_std_id mask) {
    if ((mask & V4L2_STD_NTSC) != 0)
        return {standardNtsc, true};
    return {standardPal, mask == 0 || (mask & V4L2_STD_PAL) != 0};
}

/// The mask that forces a standard: PAL for everything but NTSC.
constexpr v4l2_std_id forcedStandard(int standard) {
    return standard == standardNtsc ? V4L2_STD_NTSC : V4L2_STD_PAL;
}

}  // namespace ZR
