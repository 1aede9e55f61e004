// How a process ends that has shown pictures. The process that ends is a child of the test.

#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/scene/support/stream_source.h"
#include "tests/scene/support/video_scene.h"

namespace {

using namespace ZR;
using namespace ZR::test;

constexpr QRect area(100, 60, 600, 360);
/// Of a child that had nothing to end.
constexpr int neverPlayed = 3;
/// Of a child whose picture stood still.
constexpr int stoodStill = 4;

void playOrExit(VideoScene& scene, const StreamSource& source) {
    ZRGstreamerVideoInput& input = scene.input();
    scene.place(input, area);
    source.chooseFor(input);
    input.start(0);
    if (!scene.waitForQuarters(area, upright))
        std::_Exit(neverPlayed);
}

[[noreturn]] void leaveInOrder(ZRVideoStreamType type) {
    {
        VideoScene scene;
        const StreamSource source(type);
        playOrExit(scene, source);
        scene.stopInputs();
        scene.quit();
    }
    std::exit(0);
}

[[noreturn]] void leaveWithoutQuit(ZRVideoStreamType type) {
    {
        VideoScene scene;
        const StreamSource source(type);
        playOrExit(scene, source);
        scene.stopInputs();
        scene.leaveWithoutQuit();
    }
    std::exit(0);
}

/// The service ends first, although an application is asked to stop its streams before.
[[noreturn]] void leaveQuittingWhilePlaying(ZRVideoStreamType type) {
    {
        VideoScene scene;
        const StreamSource source(type);
        playOrExit(scene, source);
        scene.quit();
        if (!scene.waitForPictures(area))
            std::_Exit(stoodStill);
        scene.stopInputs();
        // Nobody walks over the inputs any more: the pipeline is dropped at once.
        scene.input().reset();
    }
    std::exit(0);
}

[[noreturn]] void leaveBeforeAnythingPlayed() {
    {
        VideoScene scene;
        ZRGstreamerVideoInput::getInstance("video");
        scene.leaveWithoutQuit();
    }
    std::exit(0);
}

class Leaving : public testing::TestWithParam<ZRVideoStreamType> {};

INSTANTIATE_TEST_SUITE_P(Stream, Leaving, testing::ValuesIn(networkStreams), streamName);

TEST_P(Leaving, in_order_ends_with_status_0) {
    EXPECT_EXIT(leaveInOrder(GetParam()), testing::ExitedWithCode(0), "");
}

TEST_P(Leaving, without_quitting_ends_with_status_0_when_nothing_plays) {
    EXPECT_EXIT(leaveWithoutQuit(GetParam()), testing::ExitedWithCode(0), "");
}

TEST_P(Leaving, quitting_while_it_plays_ends_with_status_0) {
    EXPECT_EXIT(leaveQuittingWhilePlaying(GetParam()), testing::ExitedWithCode(0), "");
}

TEST(LeavingEarly, before_gstreamer_is_ready_ends_with_status_0) {
    EXPECT_EXIT(leaveBeforeAnythingPlayed(), testing::ExitedWithCode(0), "");
}

}  // namespace
