// Several network inputs in one scene at once.

#include <gtest/gtest.h>

#include "tests/scene/support/stream_source.h"
#include "tests/scene/support/video_scene.h"

namespace {

using namespace ZR;
using namespace ZR::test;

constexpr QRect areas[] = {{10, 10, 380, 220}, {410, 10, 380, 220}, {10, 250, 380, 220}};

class SeveralInputs : public testing::Test {
  protected:
    /// All inputs are made before the first starts.
    void play(const std::vector<ZRVideoStreamType>& types) {
        for (std::size_t i = 0; i < types.size(); ++i) {
            sources_.emplace_back(types[i]);
            inputs_.push_back(&scene_.input("video" + std::to_string(i)));
            scene_.place(*inputs_[i], areas[i]);
            sources_[i].chooseFor(*inputs_[i]);
        }
        for (ZRGstreamerVideoInput* input : inputs_)
            input->start(0);
    }

    void expectAllPlay() {
        for (std::size_t i = 0; i < inputs_.size(); ++i) {
            EXPECT_TRUE(scene_.waitForQuarters(areas[i], upright)) << i;
            EXPECT_TRUE(scene_.waitForPictures(areas[i])) << i;
        }
    }

    VideoScene scene_;
    std::vector<StreamSource> sources_;
    std::vector<ZRGstreamerVideoInput*> inputs_;
};

TEST_F(SeveralInputs, two_play_side_by_side) {
    play({StreamUdpH264, StreamUdpJpeg});
    expectAllPlay();
}

TEST_F(SeveralInputs, two_of_one_type_play_side_by_side) {
    play({StreamUdpH264, StreamUdpH264});
    expectAllPlay();
}

TEST_F(SeveralInputs, three_of_each_type_play_side_by_side) {
    play({StreamUdpH264, StreamUdpJpeg, StreamRtsp});
    expectAllPlay();
}

TEST_F(SeveralInputs, the_others_play_on_when_one_is_stopped) {
    play({StreamUdpH264, StreamUdpJpeg, StreamRtsp});
    expectAllPlay();
    inputs_[1]->stop(0);
    EXPECT_TRUE(scene_.waitForQuarters(areas[1], waiting));
    EXPECT_TRUE(scene_.waitForPictures(areas[0]));
    EXPECT_TRUE(scene_.waitForPictures(areas[2]));
    EXPECT_EQ(quartersOf(scene_.grab(), areas[1]), waiting);
}

TEST_F(SeveralInputs, each_is_turned_by_itself) {
    play({StreamUdpJpeg, StreamUdpH264});
    expectAllPlay();
    inputs_[0]->setRotation(0, 180);
    EXPECT_TRUE(scene_.waitForQuarters(areas[0], turned(upright, 180)));
    EXPECT_EQ(quartersOf(scene_.grab(), areas[1]), upright);
}

}  // namespace
