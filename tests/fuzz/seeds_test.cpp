// The fuzz targets' checks on their seeds and on what lies one step around them, in every build.

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "tests/fuzz/seeds.h"

namespace ZR::test {

/// The target's name, where GoogleTest would show its bytes.
static void PrintTo(const FuzzTarget& target, std::ostream* stream) {
    *stream << target.name;
}

namespace {

class FuzzSeeds_pure : public testing::TestWithParam<FuzzTarget> {
  protected:
    /// A check that fails ends the process.
    static void check(const std::string& input) {
        const std::vector<std::uint8_t> exact(input.begin(), input.end());
        GetParam().check(exact.data(), exact.size());
    }
};

TEST_P(FuzzSeeds_pure, pass_as_they_are) {
    ASSERT_FALSE(GetParam().seeds.empty());
    for (const Seed& seed : GetParam().seeds)
        check(seed.bytes);
}

TEST_P(FuzzSeeds_pure, pass_cut_off_at_every_byte) {
    for (const Seed& seed : GetParam().seeds)
        for (std::size_t size = 0; size < seed.bytes.size(); ++size)
            check(seed.bytes.substr(0, size));
}

TEST_P(FuzzSeeds_pure, pass_with_every_byte_changed) {
    for (const Seed& seed : GetParam().seeds)
        for (std::size_t at = 0; at < seed.bytes.size(); ++at)
            for (const int value : {0, 1, 2, 3, 4, 5, 7, 8, 9, 12, 16, 127, 128, 255}) {
                std::string changed = seed.bytes;
                changed[at] = static_cast<char>(value);
                check(changed);
            }
}

TEST_P(FuzzSeeds_pure, pass_longer_than_the_buffer) {
    for (const Seed& seed : GetParam().seeds)
        check(seed.bytes + std::string(300, '\4'));
}

std::string nameOf(const testing::TestParamInfo<FuzzTarget>& target) {
    return target.param.name;
}

INSTANTIATE_TEST_SUITE_P(All, FuzzSeeds_pure, testing::ValuesIn(fuzzTargets()), nameOf);

}  // namespace
}  // namespace ZR::test
