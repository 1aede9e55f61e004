#pragma once

#include "common/zrapi_export.h"

namespace ZR {

/// Which input hardware the terminal has, and how small its processor is. Opens no device.
///
/// All operations are static, never fail and may be called from any thread.
class ZRAPI_EXPORT ZRFeatureDetection {
  public:
    /// Tells whether the rotary encoder exists ("/dev/input/encoder0"), looked up on each call.
    static bool hasEncoder();

    /// Tells whether a touch screen exists ("/dev/input/ts0", else "/dev/input/touchscreen0"),
    /// looked up on each call.
    static bool hasTouchscreen();

    /// Tells whether the keyboard exists ("/dev/input/keyboard0"), looked up on each call.
    static bool hasKeyboard();

    /// Tells whether the processor is a small variant: the device tree's "compatible" text names
    /// "imx6dl" or "imx6ull". A system without a readable device tree counts as small.
    ///
    /// Decided once per process, on the first call; the answer never changes after that.
    static bool isRunningOnSingleCore();
};

}  // namespace ZR
