#include <gtest/gtest.h>

#include <string>

#include "camera_scene.h"

namespace ZR::test {
namespace {

class VideoCameras : public CameraScene {};

}  // namespace

TEST_F(VideoCameras, each_camera_is_shown_in_its_turn_with_its_own_standard) {
    plugInCamera(2, "ntsc");
    capture();
    ZRGstreamerVideoInput& input = play(1, left);
    EXPECT_EQ("input 0 PAL", shownEventually("input 0 PAL", left));
    EXPECT_TRUE(input.isRunning(1));
    input.setCurrentInterface(2);
    EXPECT_EQ("input 1 PAL", shownEventually("input 1 PAL", left));
    input.setCurrentInterface(3);
    EXPECT_EQ("input 2 NTSC", shownEventually("input 2 NTSC", left));
    const std::string printed = released();
    EXPECT_EQ(2, occurrencesOf("Trigger stream restart in 100 milliseconds.\n", printed));
    EXPECT_EQ(0, occurrencesOf("GST Error", printed)) << printed;
    EXPECT_LT(0, occurrencesOf("has no property named 'min-buffers'", printed));
}

}  // namespace ZR::test
