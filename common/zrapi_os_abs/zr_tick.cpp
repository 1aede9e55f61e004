#include "common/zrapi_os_abs/zr_tick.h"

#include <ctime>

namespace ZR {
namespace {

constexpr std::uint64_t millisecondsPerSecond = 1000;
constexpr std::uint64_t nanosecondsPerMillisecond = 1000000;

}  // namespace

std::uint64_t ZRTick::getTickCount() {
    timespec now{};
    (void)::clock_gettime(CLOCK_MONOTONIC, &now);  // cannot fail for this clock
    return static_cast<std::uint64_t>(now.tv_sec) * millisecondsPerSecond +
           static_cast<std::uint64_t>(now.tv_nsec) / nanosecondsPerMillisecond;
}

}  // namespace ZR
