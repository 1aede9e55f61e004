#include <functional>

#include "tests/hardware/video_input/video_service.h"

// What travels through the queue, and what becomes of it.

namespace ZR::test {
namespace {

using Queue = std::list<int>;

/// An input that does something of its own while a start builds its stream.
struct BuildingInput : TestInput {
    std::function<void()> building;
    int builds = 0;

    int init() override {
        ++builds;
        if (building)
            building();
        return 0;
    }
};

class CommandOperations : public VideoServiceTest {
  protected:
    BuildingInput made_;
    ZRVideoInputInterface& input_ = made_;
    const Queue& queue_ = made_.commandQueue;
};

TEST_F(CommandOperations, begin_with_an_empty_queue) {
    EXPECT_EQ(queue_, Queue{});
    EXPECT_FALSE(input_.isStopRequested());
}

TEST_F(CommandOperations, start_twice_in_a_row_leaves_one_start_queued) {
    EXPECT_EQ(input_.start(0), 0);
    EXPECT_EQ(input_.start(0), 0);
    EXPECT_EQ(queue_, Queue{0});
}

TEST_F(CommandOperations, stop_after_two_starts_leaves_only_the_stop) {
    input_.start(0);
    input_.start(0);
    EXPECT_EQ(input_.stop(0), 0);
    EXPECT_EQ(queue_, Queue{1});
    EXPECT_TRUE(input_.isStopRequested());
}

TEST_F(CommandOperations, start_stop_start_keeps_the_stop_and_the_start) {
    input_.start(0);
    input_.stop(0);
    input_.start(0);
    EXPECT_EQ(queue_, (Queue{1, 0}));
    EXPECT_TRUE(input_.isStopRequested());
}

TEST_F(CommandOperations, ignore_the_input_number_they_are_given) {
    constexpr unsigned short numbers[] = {1, 3, 4, 65535};
    for (const unsigned short number : numbers) {
        input_.start(number);
        EXPECT_EQ(queue_, Queue{0});
        input_.stop(number);
        EXPECT_EQ(queue_, Queue{1});
        input_.handleQueuedCommands();
    }
}

TEST_F(CommandOperations, setCurrentInterface_with_the_current_value_queues_nothing) {
    EXPECT_EQ(input_.setCurrentInterface(5004), 0);
    EXPECT_EQ(made_.currentInput, 0);
    made_.setStreamType(StreamCamera);
    EXPECT_EQ(input_.setCurrentInterface(0), 0);
    EXPECT_EQ(queue_, Queue{});
}

TEST_F(CommandOperations, on_a_network_stream_a_new_port_also_sets_the_input_number_to_4) {
    for (const int type : {0, 1, 2, 4, 17}) {
        made_.setStreamType(type);
        made_.currentInput = 1;
        EXPECT_EQ(input_.setCurrentInterface(6000 + type), 0);
        EXPECT_EQ(made_.udpPort, 6000 + type);
        EXPECT_EQ(made_.currentInput, 4);
        EXPECT_EQ(input_.getCurrentInterface(), 6000 + type);
        EXPECT_EQ(queue_, Queue{2});
    }
}

TEST_F(CommandOperations, on_the_camera_a_new_number_is_the_input_number_and_leaves_the_port) {
    made_.setStreamType(StreamCamera);
    EXPECT_EQ(input_.setCurrentInterface(2), 0);
    EXPECT_EQ(made_.currentInput, 2);
    EXPECT_EQ(made_.udpPort, 5004);
    EXPECT_EQ(input_.getCurrentInterface(), 2);
    EXPECT_EQ(queue_, Queue{2});
}

TEST_F(CommandOperations, store_any_number_unchecked) {
    made_.setStreamType(StreamCamera);
    input_.setCurrentInterface(-7);
    EXPECT_EQ(input_.getCurrentInterface(), -7);
    made_.setStreamType(StreamUdpJpeg);
    input_.setCurrentInterface(-1);
    EXPECT_EQ(input_.getCurrentInterface(), -1);
}

TEST_F(CommandOperations, start_change_and_stop_are_carried_out_in_their_order) {
    made_.restartCount = 3;
    made_.initialized = true;
    input_.start(0);
    input_.pushCommandToQueue(CommandChangeInterface);
    made_.building = [this] { EXPECT_EQ(made_.restartCount, 3U); };
    input_.handleQueuedCommands();
    EXPECT_EQ(made_.builds, 1);
    EXPECT_EQ(made_.restartCount, 0U);
    EXPECT_FALSE(made_.initialized);
    EXPECT_EQ(queue_, Queue{});
}

TEST_F(CommandOperations, of_an_empty_queue_do_nothing) {
    input_.handleQueuedCommands();
    EXPECT_EQ(made_.builds, 0);
    EXPECT_EQ(queue_, Queue{});
}

TEST_F(CommandOperations, of_an_unknown_code_are_dropped_without_effect) {
    made_.restartCount = 3;
    for (const int code : {3, -1, 1000000})
        input_.pushCommandToQueue(code);
    EXPECT_EQ(queue_.size(), 3U);
    input_.handleQueuedCommands();
    EXPECT_EQ(queue_, Queue{});
    EXPECT_EQ(made_.builds, 0);
    EXPECT_EQ(made_.restartCount, 3U);
}

TEST_F(CommandOperations, beside_an_unknown_code_are_carried_out) {
    input_.pushCommandToQueue(9);
    input_.start(0);
    input_.pushCommandToQueue(9);
    input_.handleQueuedCommands();
    EXPECT_EQ(made_.builds, 1);
    EXPECT_EQ(queue_, Queue{});
}

/// A command is run while it is still the first; what is first afterwards is taken for it.
TEST_F(CommandOperations, a_stop_that_comes_while_a_start_runs_is_removed_in_its_place) {
    made_.restartCount = 3;
    made_.building = [this] { input_.stop(0); };
    input_.start(0);
    input_.handleQueuedCommands();
    EXPECT_EQ(made_.builds, 1);
    EXPECT_EQ(queue_, Queue{});
}

TEST_F(CommandOperations, a_start_that_comes_while_a_start_runs_is_collapsed) {
    made_.building = [this] { input_.start(0); };
    input_.start(0);
    input_.handleQueuedCommands();
    EXPECT_EQ(made_.builds, 1);
}

TEST_F(CommandOperations, a_change_that_comes_while_a_start_runs_is_carried_out_after_it) {
    made_.restartCount = 3;
    made_.building = [this] { input_.pushCommandToQueue(CommandChangeInterface); };
    input_.start(0);
    input_.handleQueuedCommands();
    EXPECT_EQ(made_.restartCount, 0U);
    EXPECT_EQ(queue_, Queue{});
}

TEST_F(CommandOperations, a_start_that_empties_the_queue_leaves_nothing_to_remove) {
    made_.building = [this] { made_.removeVideoItem(); };
    input_.start(0);
    input_.handleQueuedCommands();
    EXPECT_EQ(made_.builds, 1);
    EXPECT_EQ(queue_, Queue{});
}

TEST_F(CommandOperations, queued_inside_a_drain_are_drained_too) {
    made_.building = [this] {
        if (made_.builds < 3) {
            input_.pushCommandToQueue(9);
            input_.start(0);
        }
    };
    input_.start(0);
    input_.handleQueuedCommands();
    EXPECT_EQ(made_.builds, 3);
    EXPECT_EQ(queue_, Queue{});
}

TEST_F(CommandOperations, isRunning_without_a_pipeline_is_false_without_calling_GStreamer) {
    GstCallSubstitute::isLogging = true;
    EXPECT_FALSE(input_.isRunning(0));
    EXPECT_EQ(takeCalls(), Calls{});
}

TEST_F(CommandOperations, isRunning_asks_for_the_state_with_a_time_out_of_one_second) {
    made_.pipeline = GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr)));
    GstCallSubstitute::isLogging = true;
    GstCallSubstitute::states = {GST_STATE_PLAYING, GST_STATE_PAUSED, GST_STATE_NULL};
    EXPECT_TRUE(input_.isRunning(7));
    EXPECT_FALSE(input_.isRunning(0));
    EXPECT_FALSE(input_.isRunning(0));
    EXPECT_EQ(takeCalls(),
              (Calls{"get_state 1000000000", "get_state 1000000000", "get_state 1000000000"}));
}

TEST_F(CommandOperations, isInitialized_is_the_built_flag) {
    EXPECT_FALSE(input_.isInitialized());
    made_.initialized = true;
    EXPECT_TRUE(input_.isInitialized());
}

TEST_F(CommandOperations, setters_store_and_getters_return_what_they_were_given) {
    EXPECT_EQ(made_.getStreamType(), StreamNone);
    EXPECT_EQ(made_.getRTSPURL(), "");
    EXPECT_EQ(made_.getTransparentColor().value, 0x00010203U);
    EXPECT_EQ(made_.getPipeline(), nullptr);
    for (const int type : {0, 3, -5, 2147483647}) {
        made_.setStreamType(type);
        EXPECT_EQ(made_.getStreamType(), type);
    }
    for (const std::string url : {"rtsp://host/stream", "", "a b ! c"}) {
        made_.setRTSPURL(url);
        EXPECT_EQ(made_.getRTSPURL(), url);
    }
    made_.transparentColor = 0xFF112233;
    EXPECT_EQ(made_.getTransparentColor().value, 0xFF112233U);
    made_.pipeline = GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr)));
    EXPECT_EQ(made_.getPipeline(), made_.pipeline);
}

TEST_F(CommandOperations, setMainWindow_stores_the_item) {
    const auto window = makeItem("window");
    ZRVideoInputInterface::setMainWindow(window.get());
    EXPECT_EQ(ZRVideoInputInterface::mainWindow, window.get());
    ZRVideoInputInterface::setMainWindow(nullptr);
    EXPECT_EQ(ZRVideoInputInterface::mainWindow, nullptr);
}

TEST_F(CommandOperations, a_main_window_that_is_destroyed_is_no_main_window_any_more) {
    auto window = makeItem("window");
    const auto other = makeItem("other");
    ZRVideoInputInterface::setMainWindow(window.get());
    ZRVideoInputInterface::setMainWindow(other.get());
    window.reset();
    EXPECT_EQ(ZRVideoInputInterface::mainWindow, other.get());
    window = makeItem("window");
    ZRVideoInputInterface::setMainWindow(window.get());
    window.reset();
    EXPECT_EQ(ZRVideoInputInterface::mainWindow, nullptr);
}

}  // namespace
}  // namespace ZR::test
