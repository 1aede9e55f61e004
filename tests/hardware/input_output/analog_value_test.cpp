#include <gtest/gtest.h>

#include <cstdint>

#include "hardware/input_output/zr_input_output.h"

namespace ZR::test {

TEST(CalculateAnalogValue_pure, scales_by_10000_to_8525_and_truncates) {
    EXPECT_EQ(calculateAnalogValue(0), 0);
    EXPECT_EQ(calculateAnalogValue(1), 1);
    EXPECT_EQ(calculateAnalogValue(2), 2);
    EXPECT_EQ(calculateAnalogValue(6), 7);
    EXPECT_EQ(calculateAnalogValue(8524), 9998);
    EXPECT_EQ(calculateAnalogValue(8525), 10000);
    EXPECT_EQ(calculateAnalogValue(8526), 10001);
    EXPECT_EQ(calculateAnalogValue(65534), 76872);
    EXPECT_EQ(calculateAnalogValue(65535), 76873);
}

TEST(CalculateAnalogValue_pure, is_exact_over_the_whole_range) {
    for (std::int64_t raw = 0; raw <= 65535; ++raw)
        ASSERT_EQ(calculateAnalogValue(static_cast<unsigned short>(raw)), raw * 10000 / 8525)
            << raw;
}

}  // namespace ZR::test
