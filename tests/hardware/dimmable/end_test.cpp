#include <cstdlib>

#include "tests/hardware/dimmable/dimmable_board.h"
#include "tests/support/private_root.h"

// The object is destroyed when the process leaves: each of these runs a process to its end.

namespace ZR::test {
namespace {

using DimmableEnd = DimmableTest;

/// Leaves as a program does that returns from main, after @p last.
template <typename Last>
[[noreturn]] void leaveAfter(Last last) {
    last();
    std::exit(7);
}

TEST_F(DimmableEnd, a_process_that_used_every_device_leaves_in_order) {
    makeColorBoard();
    EXPECT_EXIT(leaveAfter([] {
                    for (const ZRDimmableDevice each :
                         {DisplayBacklight, KeyBacklight, EncoderBacklight, Beeper})
                        (void)device().setIntensity(50, each);
                    (void)device().setColor(1, RGBLED);
                }),
                testing::ExitedWithCode(7), "");
}

TEST_F(DimmableEnd, a_process_without_any_device_leaves_in_order) {
    EXPECT_EXIT(leaveAfter([] { (void)device(); }), testing::ExitedWithCode(7), "");
}

TEST_F(DimmableEnd, a_process_whose_last_writes_failed_leaves_in_order) {
    makeColorBoard();
    EXPECT_EXIT(leaveAfter([] {
                    (void)device();
                    static const RefusedWrites refused;
                    for (const ZRDimmableDevice each :
                         {DisplayBacklight, KeyBacklight, EncoderBacklight, Beeper})
                        (void)device().setIntensity(50, each);
                    (void)device().setColor(1, RGBLED);
                }),
                testing::ExitedWithCode(7), "");
}

TEST_F(DimmableEnd, nothing_is_written_back) {
    makeBoard();
    EXPECT_EXIT(leaveAfter([] {
                    {
                        (void)device();
                        const RefusedWrites refused;
                        (void)device().setIntensity(100, KeyBacklight);
                        (void)device().setIntensity(100, EncoderBacklight);
                        (void)device().setColor(1, RGBLED);
                    }
                }),
                testing::ExitedWithCode(7), "");
    for (const char* const path : {platformDisplay, keyFile, encoderFile, rgbFile, beeperFile})
        EXPECT_EQ(readFile(path), "128\n");
}

}  // namespace
}  // namespace ZR::test
