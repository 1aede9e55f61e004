#include <gtest/gtest.h>

#include <cstdint>
#include <ctime>
#include <type_traits>

#include "common/zrapi_os_abs/zr_tick.h"

namespace ZR::test {
namespace {

std::uint64_t monotonicMilliseconds() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1000U +
           static_cast<std::uint64_t>(now.tv_nsec) / 1000000U;
}

}  // namespace

TEST(Tick_pure, counts_the_milliseconds_of_the_monotonic_clock) {
    for (int i = 0; i < 1000; ++i) {
        const std::uint64_t before = monotonicMilliseconds();
        const std::uint64_t tick = ZRTick::getTickCount();
        const std::uint64_t after = monotonicMilliseconds();
        ASSERT_GE(tick, before);
        ASSERT_LE(tick, after);
    }
}

TEST(Tick_pure, never_goes_back_and_goes_forward) {
    const std::uint64_t start = ZRTick::getTickCount();
    std::uint64_t last = start;
    while (last < start + 3) {
        const std::uint64_t tick = ZRTick::getTickCount();
        ASSERT_GE(tick, last);
        last = tick;
    }
}

TEST(Tick_pure, does_not_wrap_at_32_bits) {
    EXPECT_TRUE((std::is_same_v<decltype(ZRTick::getTickCount()), std::uint64_t>));
}

}  // namespace ZR::test
