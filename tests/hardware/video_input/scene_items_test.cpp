#include <atomic>
#include <thread>

#include "tests/hardware/video_input/scene_test.h"

// What becomes of the two items once they are placed.

namespace ZR::test {
namespace {

class SceneItems : public SceneTest {};

TEST_F(SceneItems, doShowVideoItem_shows_one_and_hides_the_other) {
    place();
    input_.doShowVideoItem(true);
    EXPECT_TRUE(input_.videoItem->isVisible());
    EXPECT_FALSE(input_.waitItem->isVisible());
    input_.doShowVideoItem(false);
    EXPECT_FALSE(input_.videoItem->isVisible());
    EXPECT_TRUE(input_.waitItem->isVisible());
}

TEST_F(SceneItems, showVideoItem_is_carried_to_it_queued) {
    place();
    Q_EMIT input_.showVideoItem(false);
    EXPECT_TRUE(input_.videoItem->isVisible());
    deliverSignals();
    EXPECT_FALSE(input_.videoItem->isVisible());
}

TEST_F(SceneItems, doShowVideoItem_true_on_parked_items_changes_nothing) {
    ZRVideoInputInterface::setMainWindow(window_.get());
    place();
    input_.removeVideoItem();
    for (const bool show : {true, false}) {
        input_.doShowVideoItem(show);
        EXPECT_EQ(describe(input_.videoItem), "0 0 800x480 z5 hidden");
        EXPECT_EQ(describe(input_.waitItem), "0 0 800x480 z6 hidden");
    }
}

TEST_F(SceneItems, doShowVideoItem_on_items_without_a_parent_changes_nothing) {
    input_.doShowVideoItem(true);
    input_.createVideoAndWaitItem();
    input_.videoItem->setParentItem(nullptr);
    input_.waitItem->setParentItem(nullptr);
    input_.waitItem->setVisible(true);
    input_.doShowVideoItem(true);
    EXPECT_TRUE(input_.waitItem->isVisible());
    EXPECT_FALSE(input_.videoItem->isVisible());
}

TEST_F(SceneItems, removeVideoItem_stops_and_parks_both_under_the_main_window) {
    ZRVideoInputInterface::setMainWindow(window_.get());
    place();
    input_.setStreamType(StreamUdpH264);
    (void)input_.startSlot();
    input_.start(0);
    input_.pushCommandToQueue(CommandChangeInterface);
    input_.restartCount = 5;
    input_.removeVideoItem();
    EXPECT_EQ(GST_STATE(input_.pipeline), GST_STATE_NULL);
    EXPECT_TRUE(input_.commandQueue.empty());
    EXPECT_EQ(input_.videoItem->parentItem(), window_.get());
    EXPECT_EQ(input_.waitItem->parentItem(), window_.get());
    EXPECT_FALSE(input_.videoItem->isVisible());
    EXPECT_FALSE(input_.waitItem->isVisible());
    EXPECT_EQ(input_.parentItem, nullptr);
    EXPECT_EQ(input_.restartCount, 0U);
}

TEST_F(SceneItems, removeVideoItem_without_a_main_window_takes_the_items_out_of_any_item) {
    place();
    input_.removeVideoItem();
    EXPECT_EQ(input_.videoItem->parentItem(), nullptr);
    EXPECT_EQ(input_.waitItem->parentItem(), nullptr);
    EXPECT_FALSE(input_.videoItem->isVisible());
}

TEST_F(SceneItems, removeVideoItem_without_a_place_leaves_the_items) {
    ZRVideoInputInterface::setMainWindow(window_.get());
    place();
    input_.parentItem = nullptr;
    input_.removeVideoItem();
    EXPECT_EQ(input_.videoItem->parentItem(), parent_.get());
    EXPECT_EQ(describe(input_.videoItem), "0 0 800x480 z5 shown");
}

TEST_F(SceneItems, after_removal_is_made_anew_by_the_next_setVideoItem) {
    ZRVideoInputInterface::setMainWindow(window_.get());
    place();
    const QQuickItem* const video = input_.videoItem;
    input_.removeVideoItem();
    place();
    EXPECT_EQ(input_.videoItem, video);
    EXPECT_EQ(describe(input_.videoItem), "0 0 800x480 z0 hidden");
    EXPECT_EQ(describe(input_.waitItem), "0 0 800x480 z0 shown");
    EXPECT_EQ(input_.parentItem, parent_.get());
}

TEST_F(SceneItems, destroying_the_parent_item_stops_the_stream_and_parks_both_items) {
    ZRVideoInputInterface::setMainWindow(window_.get());
    place();
    input_.setStreamType(StreamUdpH264);
    (void)input_.startSlot();
    const OutputCapture capture;
    parent_.reset();
    EXPECT_EQ(capture.output(), "REMOVE FROM DESTROYED\n");
    EXPECT_EQ(GST_STATE(input_.pipeline), GST_STATE_NULL);
    EXPECT_EQ(input_.videoItem->parentItem(), window_.get());
    EXPECT_EQ(input_.waitItem->parentItem(), window_.get());
    EXPECT_EQ(input_.parentItem, nullptr);
}

TEST_F(SceneItems, destroying_the_parent_item_without_a_main_window_leaves_the_items_alive) {
    place();
    const OutputCapture capture;
    parent_.reset();
    EXPECT_EQ(capture.output(), "REMOVE FROM DESTROYED\n");
    EXPECT_EQ(input_.videoItem->parentItem(), nullptr);
    EXPECT_EQ(input_.parentItem, nullptr);
}

TEST_F(SceneItems, destroying_a_parent_of_before_does_nothing) {
    place();
    (void)placing(other_.get());
    const OutputCapture capture;
    parent_.reset();
    EXPECT_EQ(capture.output(), "");
    EXPECT_EQ(input_.parentItem, other_.get());
    EXPECT_EQ(input_.videoItem->parentItem(), other_.get());
}

TEST_F(SceneItems, destroying_a_parent_after_the_removal_does_nothing) {
    place();
    input_.removeVideoItem();
    const OutputCapture capture;
    parent_.reset();
    EXPECT_EQ(capture.output(), "");
}

TEST_F(SceneItems, destroying_the_parent_of_an_input_without_items_forgets_it) {
    removeFile(sceneFile);
    (void)placing(parent_.get());
    const OutputCapture capture;
    parent_.reset();
    EXPECT_EQ(capture.output(), "");
    EXPECT_EQ(input_.parentItem, nullptr);
    makeFile(sceneFile, wholeScene);
}

TEST_F(SceneItems, videoWidgetDestroyed_of_anything_else_does_nothing) {
    place();
    const OutputCapture capture;
    input_.videoWidgetDestroyed(other_.get());
    input_.videoWidgetDestroyed(nullptr);
    EXPECT_EQ(capture.output(), "");
    EXPECT_EQ(input_.parentItem, parent_.get());
    input_.videoWidgetDestroyed(parent_.get());
    EXPECT_EQ(capture.output(), "REMOVE FROM DESTROYED\n");
    EXPECT_EQ(input_.parentItem, nullptr);
}

TEST_F(SceneItems, videoWidgetDestroyed_without_a_video_item_does_nothing) {
    input_.parentItem = parent_.get();
    const OutputCapture capture;
    input_.videoWidgetDestroyed(parent_.get());
    EXPECT_EQ(capture.output(), "");
    EXPECT_EQ(input_.parentItem, parent_.get());
    input_.parentItem = nullptr;
    input_.videoWidgetDestroyed(nullptr);
    EXPECT_EQ(capture.output(), "");
}

/// As the bus thread asks.
bool asksForRestart(TestInput& input) {
    std::atomic<bool> asked = false;
    const auto noting = QObject::connect(
        &input, &ZRGstreamerVideoInput::errorDetected, &input, [&asked] { asked = true; },
        Qt::DirectConnection);
    input.streaming = true;
    std::thread([&input] {
        const OutputCapture quiet;
        input.handleBusMessage(gst_message_new_eos(nullptr));
    }).join();
    QObject::disconnect(noting);
    return asked;
}

TEST_F(SceneItems, a_wait_item_alone_counts_as_on_screen_while_it_is_visible) {
    EXPECT_FALSE(asksForRestart(input_));
    input_.createVideoAndWaitItem();
    EXPECT_TRUE(asksForRestart(input_));
    input_.waitItem->setVisible(false);
    EXPECT_FALSE(asksForRestart(input_));
    input_.waitItem->setVisible(true);
    EXPECT_TRUE(asksForRestart(input_));
    delete input_.waitItem;
    EXPECT_FALSE(asksForRestart(input_));
}

TEST_F(SceneItems, survives_a_video_item_that_the_application_destroys) {
    place();
    delete input_.videoItem;
    EXPECT_EQ(input_.videoItem, nullptr);
    input_.doShowVideoItem(false);
    EXPECT_TRUE(input_.waitItem->isVisible());
    input_.removeVideoItem();
    EXPECT_EQ(input_.getWidth(1), 0);
}

TEST_F(SceneItems, survives_a_wait_item_that_the_application_destroys) {
    place();
    delete input_.waitItem;
    EXPECT_EQ(input_.waitItem, nullptr);
    input_.doShowVideoItem(false);
    (void)placing(other_.get());
    input_.removeVideoItem();
}

TEST_F(SceneItems, survives_a_main_window_that_is_destroyed_before_the_items_are_parked) {
    ZRVideoInputInterface::setMainWindow(window_.get());
    place();
    window_.reset();
    input_.removeVideoItem();
    EXPECT_EQ(input_.videoItem->parentItem(), nullptr);
}

TEST_F(SceneItems, survives_a_main_window_that_is_destroyed_while_the_items_are_parked) {
    ZRVideoInputInterface::setMainWindow(window_.get());
    place();
    input_.removeVideoItem();
    window_.reset();
    ASSERT_NE(input_.videoItem, nullptr);
    EXPECT_EQ(input_.videoItem->parentItem(), nullptr);
    EXPECT_EQ(placing(other_.get()), "");
    EXPECT_EQ(describe(input_.waitItem), "0 0 320x240 z0 shown");
}

TEST_F(SceneItems, waits_for_GStreamer_first) {
    Input::gstInitDone = false;
    GstCallSubstitute::isLogging = true;
    GstCallSubstitute::insteadOfSleep = [] { Input::gstInitDone = true; };
    input_.setVideoItem(nullptr, 0);
    EXPECT_EQ(takeCalls(), Calls{"usleep 100000"});
}

}  // namespace
}  // namespace ZR::test
