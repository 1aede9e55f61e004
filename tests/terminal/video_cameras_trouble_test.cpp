#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "camera_scene.h"
#include "tests/scene/support/queue_guarding_input.h"

namespace ZR::test {
namespace {

class VideoCamerasTrouble : public CameraScene {
  protected:
    void SetUp() override {
        CameraScene::SetUp();
        // Starts fail at once here.
        ZRGstreamerVideoInput::doInitialSetup();
        ZRGstreamerVideoInput::instances["video"] = std::make_unique<QueueGuardingInput>("video");
    }
};

constexpr char error[] = "GST Error : ";
constexpr char restart[] = "Trigger stream restart in 1000 milliseconds.\n";
constexpr char giveUp[] =
    "Video: Gave up after 10 automatic restarts. Please restart video manually...\n";

}  // namespace

TEST_F(VideoCamerasTrouble, a_lost_signal_ends_the_picture_and_the_signal_brings_it_back) {
    play(1, left);
    ASSERT_EQ("input 0 PAL", shownEventually("input 0 PAL", left));
    capture();
    turn("tw9912/camera.0/signal", "0");
    EXPECT_NE(std::string::npos, printedEventually(restart).find(error));
    EXPECT_EQ("the wait item", shownEventually("the wait item", left));
    turn("tw9912/camera.0/signal", "1");
    EXPECT_EQ("input 0 PAL", shownEventually("input 0 PAL", left));
    const std::string printed = released();
    EXPECT_EQ(0, occurrencesOf(giveUp, printed));
    EXPECT_LT(printed.find(error), printed.find(restart));
}

TEST_F(VideoCamerasTrouble, a_capture_node_that_goes_is_given_up_and_the_other_camera_serves) {
    ZRGstreamerVideoInput& input = play(1, left);
    ASSERT_EQ("input 0 PAL", shownEventually("input 0 PAL", left));
    capture();
    turn(captureKnobs(0) + "/present", "0");
    const std::string failing = printedEventually(giveUp);
    EXPECT_EQ(1, occurrencesOf(giveUp, failing));
    // Ten, and one that is refused.
    EXPECT_EQ(11, occurrencesOf(restart, failing)) << failing;
    EXPECT_LE(11, occurrencesOf(error, failing));
    EXPECT_EQ("the wait item", shownEventually("the wait item", left));
    // A start by hand fails too, and does not begin to count anew.
    input.start(1);
    EXPECT_EQ(2, occurrencesOf(giveUp, printedEventually(giveUp, 2)));
    input.setCurrentInterface(2);
    input.start(2);
    EXPECT_EQ("input 1 PAL", shownEventually("input 1 PAL", left));
}

}  // namespace ZR::test
