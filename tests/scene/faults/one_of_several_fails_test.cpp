// Several network inputs in one scene, of which one fails.

#include "tests/scene/faults/fault_test.h"
#include "tests/scene/support/stream_source.h"

namespace {

using namespace ZR;
using namespace ZR::test;

class OneOfSeveral : public FaultTest {
  protected:
    void play(const std::vector<ZRVideoStreamType>& types) {
        for (const ZRVideoStreamType type : types) {
            sources_.emplace_back(type);
            inputs_.push_back(&input("video" + std::to_string(inputs_.size())));
        }
        for (std::size_t i = 0; i < inputs_.size(); ++i) {
            scene_.place(*inputs_[i], areas[i]);
            sources_[i].chooseFor(*inputs_[i]);
            inputs_[i]->start(0);
        }
        for (std::size_t i = 0; i < inputs_.size(); ++i)
            ASSERT_TRUE(scene_.waitForQuarters(areas[i], upright)) << i;
    }

    /// One input is restarted, all others play on.
    void failAndComeBack(std::size_t failing) {
        sources_[failing].process().pause();
        ASSERT_TRUE(scene_.waitUntil([&] { return inputs_[failing]->isRestartPending(); }));
        sources_[failing].process().resume();
        for (std::size_t i = 0; i < inputs_.size(); ++i) {
            EXPECT_TRUE(i == failing || scene_.waitForPictures(areas[i])) << i;
        }
        EXPECT_NE(waitForRestarts(*inputs_[failing], 1), Clock::time_point());
        EXPECT_TRUE(scene_.waitForQuarters(areas[failing], upright));
        EXPECT_TRUE(scene_.waitForPictures(areas[failing]));
        for (std::size_t i = 0; i < inputs_.size(); ++i) {
            EXPECT_EQ(inputs_[i]->restarts(), i == failing ? 1U : 0U) << i;
            EXPECT_EQ(inputs_[i]->failures(), i == failing ? 1 : 0) << i;
        }
        EXPECT_EQ(texts(), (std::vector<std::string>{timedOut, restartIn1000}));
    }

    std::vector<StreamSource> sources_;
    std::vector<WatchedInput*> inputs_;
};

TEST_F(OneOfSeveral, of_two_is_restarted_and_the_other_plays_on) {
    ASSERT_NO_FATAL_FAILURE(play({StreamUdpJpeg, StreamUdpH264}));
    failAndComeBack(1);
}

TEST_F(OneOfSeveral, of_three_is_restarted_and_the_others_play_on) {
    ASSERT_NO_FATAL_FAILURE(play({StreamUdpH264, StreamUdpJpeg, StreamRtsp}));
    failAndComeBack(1);
}

}  // namespace
