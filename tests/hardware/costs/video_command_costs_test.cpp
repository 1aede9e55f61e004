#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"
#include "tests/hardware/costs/operation_cost.h"

// What a drain costs that the application's timer makes again and again.

namespace ZR::test {
namespace {

using Input = ZRGstreamerVideoInput;

class VideoCommandCost : public CostTest {
  protected:
    VideoCommandCost() { Input::busThreadLaunched = true; }
};

TEST_F(VideoCommandCost, handleQueuedCommands_on_an_empty_queue_takes_no_call_and_no_heap) {
    Input input("camera");
    const OperationCost cost = costOf([&input] {
        input.handleQueuedCommands();
        return 0U;
    });
    EXPECT_EQ(cost.calls(), "");
    EXPECT_EQ(cost.allocations, 0U);
}

TEST_F(VideoCommandCost, a_drain_of_an_unknown_code_takes_its_node_and_no_call) {
    Input input("camera");
    const OperationCost cost = costOf([&input] {
        input.pushCommandToQueue(9);
        input.handleQueuedCommands();
        return 0U;
    });
    EXPECT_EQ(cost.calls(), "");
    EXPECT_EQ(cost.allocations, 1U);
}

TEST_F(VideoCommandCost, start_stop_and_setCurrentInterface_take_their_node_and_no_call) {
    Input input("camera");
    int port = 5004;
    const Operation operations[] = {
        [&input] { return static_cast<unsigned int>(input.start(1)); },
        [&input] { return static_cast<unsigned int>(input.stop(1)); },
        [&input, &port] { return static_cast<unsigned int>(input.setCurrentInterface(++port)); }};
    for (const Operation& operation : operations) {
        const OperationCost cost = costOf([&] {
            // So that it is not collapsed with the one of the run before.
            input.pushCommandToQueue(9);
            return operation();
        });
        EXPECT_EQ(cost.result + cost.calls(), "0");
        EXPECT_EQ(cost.allocations, 2U) << "the nodes of the two commands";
    }
}

}  // namespace
}  // namespace ZR::test
