#include "tests/hardware/video_input/video_service.h"

// Waiting for GStreamer, without its threads.

namespace ZR::test {
namespace {

constexpr char notReady[] =
    "VIDEO: ERROR WHILE WAITING FOR GSTREAMER TO BE INITIALIZED! EXPECT ERRORS!\n";

class GstReady : public VideoServiceTest {
  protected:
    GstReady() {
        Input::gstInitDone = false;
        GstCallSubstitute::isLogging = true;
        GstCallSubstitute::insteadOfSleep = [this] {
            Input::gstInitDone = ++sleeps_ == doneAfter_;
        };
    }

    /// What a wait prints when GStreamer is up after @p sleeps of its sleeps.
    std::string waiting(int sleeps) {
        doneAfter_ = sleeps;
        const OutputCapture capture;
        input_.waitForGstReady();
        return capture.output();
    }

    static Calls sleepsOf100Milliseconds(std::size_t count) { return {count, "usleep 100000"}; }

    TestInput input_;
    int sleeps_ = 0;
    int doneAfter_ = 0;
};

TEST_F(GstReady, returns_at_once_when_it_is_there) {
    Input::gstInitDone = true;
    EXPECT_EQ(waiting(1), "");
    EXPECT_EQ(takeCalls(), Calls{});
}

TEST_F(GstReady, returns_as_soon_as_it_is_seen_after_one_of_the_first_ten_sleeps) {
    EXPECT_EQ(waiting(1), "");
    EXPECT_EQ(takeCalls(), sleepsOf100Milliseconds(1));
    Input::gstInitDone = false;
    sleeps_ = 0;
    EXPECT_EQ(waiting(10), "");
    EXPECT_EQ(takeCalls(), sleepsOf100Milliseconds(10));
}

TEST_F(GstReady, says_so_after_the_eleventh_sleep_and_returns_anyway) {
    EXPECT_EQ(waiting(0), notReady);
    EXPECT_EQ(takeCalls(), sleepsOf100Milliseconds(11));
}

TEST_F(GstReady, says_so_also_when_it_came_with_the_eleventh_sleep) {
    EXPECT_EQ(waiting(11), notReady);
    EXPECT_EQ(takeCalls(), sleepsOf100Milliseconds(11));
}

TEST_F(GstReady, is_awaited_by_each_slot_before_anything_else) {
    const OutputCapture quiet;
    doneAfter_ = 1;
    const auto firstCall = [this](auto operation) {
        Input::gstInitDone = false;
        sleeps_ = 0;
        (void)takeCalls();
        operation();
        const Calls calls = takeCalls();
        return calls.empty() ? "none" : calls.front();
    };
    input_.setStreamType(StreamUdpH264);
    EXPECT_EQ(firstCall([this] { (void)input_.startSlot(); }), "usleep 100000");
    EXPECT_EQ(firstCall([this] { input_.stopSlot(); }), "usleep 100000");
    EXPECT_EQ(firstCall([this] { input_.changeInterfaceSlot(); }), "usleep 100000");
    EXPECT_EQ(firstCall([this] { input_.setVideoItem(nullptr, 0); }), "usleep 100000");
}

TEST_F(GstReady, that_does_not_come_lets_the_operation_go_on) {
    input_.setStreamType(StreamUdpH264);
    const OutputCapture capture;
    EXPECT_FALSE(input_.startSlot());
    EXPECT_EQ(capture.output(), notReady);
    Input::gstInitDone = true;
    EXPECT_TRUE(input_.isPlaying());
}

}  // namespace
}  // namespace ZR::test
