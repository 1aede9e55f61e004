#pragma once

#include <cstdint>

#include "common/zrapi_export.h"

namespace ZR {

/// The process's millisecond clock.
class ZRAPI_EXPORT ZRTick {
  public:
    /// Returns the milliseconds of a clock that only goes forward (CLOCK_MONOTONIC: since boot,
    /// without the time spent suspended). For differences; callable from any thread.
    static std::uint64_t getTickCount();
};

}  // namespace ZR
