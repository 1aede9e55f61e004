// What an application does to show a network stream, for each type of stream.

#include <gtest/gtest.h>

#include "tests/scene/support/stream_source.h"
#include "tests/scene/support/streams.h"
#include "tests/scene/support/video_scene.h"

namespace {

using namespace ZR;
using namespace ZR::test;

constexpr QRect area(100, 60, 600, 360);

class TypicalRequest : public testing::TestWithParam<ZRVideoStreamType> {
  protected:
    VideoScene scene_;
    StreamSource source_{GetParam()};
    ZRGstreamerVideoInput& input_ = scene_.input();
};

INSTANTIATE_TEST_SUITE_P(Stream, TypicalRequest, testing::ValuesIn(networkStreams), streamName);

TEST_P(TypicalRequest, shows_the_picture_upright_and_fills_the_applications_item) {
    scene_.place(input_, area);
    source_.chooseFor(input_);
    input_.start(0);
    EXPECT_TRUE(scene_.waitForQuarters(area, upright));
    EXPECT_EQ(pictureArea(scene_.grab()), area);
    EXPECT_TRUE(scene_.waitForPictures(area)) << "the picture stands still";
    EXPECT_TRUE(input_.isRunning(0));
}

TEST_P(TypicalRequest, through_the_interface_alone_plays_too) {
    scene_.place(input_, area);
    source_.chooseFor(input_);
    ZRVideoInputInterface* input = ZRVideoInputInterface::getInstance(VideoInputGstreamer, "video");
    ASSERT_EQ(input, &input_);
    input->start(0);
    EXPECT_TRUE(scene_.waitForQuarters(area, upright));
    EXPECT_TRUE(input->isInitialized());
}

TEST_P(TypicalRequest, shows_the_wait_item_before_the_start_and_after_a_stop) {
    scene_.place(input_, area);
    source_.chooseFor(input_);
    EXPECT_EQ(quartersOf(scene_.grab(), area), waiting);
    input_.start(0);
    ASSERT_TRUE(scene_.waitForQuarters(area, upright));
    input_.stop(0);
    EXPECT_TRUE(scene_.waitForQuarters(area, waiting));
    EXPECT_FALSE(input_.isRunning(0));
}

TEST_P(TypicalRequest, plays_again_after_a_stop) {
    scene_.place(input_, area);
    source_.chooseFor(input_);
    input_.start(0);
    ASSERT_TRUE(scene_.waitForQuarters(area, upright));
    input_.stop(0);
    ASSERT_TRUE(scene_.waitForQuarters(area, waiting));
    input_.start(0);
    EXPECT_TRUE(scene_.waitForQuarters(area, upright));
    EXPECT_TRUE(scene_.waitForPictures(area));
}

TEST_P(TypicalRequest, plays_on_when_another_stream_is_chosen_while_stopped) {
    scene_.place(input_, area);
    source_.chooseFor(input_);
    input_.start(0);
    ASSERT_TRUE(scene_.waitForQuarters(area, upright));
    input_.stop(0);
    ASSERT_TRUE(scene_.waitForQuarters(area, waiting));
    const StreamSource other(GetParam() == StreamUdpH264 ? StreamUdpJpeg : StreamUdpH264);
    other.chooseFor(input_);
    input_.start(0);
    EXPECT_TRUE(scene_.waitForQuarters(area, upright));
    EXPECT_TRUE(scene_.waitForPictures(area));
}

class PortChange : public TypicalRequest {};

INSTANTIATE_TEST_SUITE_P(Stream, PortChange, testing::Values(StreamUdpH264, StreamUdpJpeg),
                         streamName);

TEST_P(PortChange, while_playing_shows_the_wait_item_and_then_the_new_ports_picture) {
    scene_.place(input_, area);
    source_.chooseFor(input_);
    input_.start(0);
    ASSERT_TRUE(scene_.waitForQuarters(area, upright));
    // Nobody sends to the new port yet, so that the wait item stays to be seen.
    const int port = freeUdpPort();
    input_.setCurrentInterface(port);
    ASSERT_TRUE(scene_.waitForQuarters(area, waiting));
    const auto sender = GetParam() == StreamUdpH264 ? sendH264(port) : sendJpeg(port);
    EXPECT_TRUE(scene_.waitForQuarters(area, upright));
    EXPECT_TRUE(scene_.waitForPictures(area));
    EXPECT_EQ(input_.getCurrentInterface(), port);
}

}  // namespace
