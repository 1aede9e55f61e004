// What an application does to the items that carry a picture, while it plays.

#include "tests/scene/faults/fault_test.h"
#include "tests/scene/support/stream_source.h"

namespace {

using namespace ZR;
using namespace ZR::test;

class ItemFault : public FaultTest {
  protected:
    void play() {
        item_ = scene_.place(input_, area);
        source_.chooseFor(input_);
        input_.start(0);
        ASSERT_TRUE(scene_.waitForQuarters(area, upright));
    }

    void expectParkedUnder(const QQuickItem* parent) {
        EXPECT_EQ(input_.shownItem()->parentItem(), parent);
        EXPECT_EQ(input_.shownWaitItem()->parentItem(), parent);
        EXPECT_FALSE(input_.shownItem()->isVisible());
        EXPECT_FALSE(input_.shownWaitItem()->isVisible());
        EXPECT_FALSE(input_.isRunning(0));
    }

    /// The input is not spoilt: placed again, it plays.
    void expectPlaysAgain() {
        item_ = scene_.place(input_, area);
        input_.start(0);
        EXPECT_TRUE(scene_.waitForQuarters(area, upright));
        EXPECT_TRUE(scene_.waitForPictures(area));
    }

    StreamSource source_{StreamUdpJpeg};
    WatchedInput& input_ = input();
    QQuickItem* item_ = nullptr;
};

TEST_F(ItemFault, destroyed_while_playing_stops_the_stream_and_parks_the_items) {
    ASSERT_NO_FATAL_FAILURE(play());
    delete item_;
    EXPECT_EQ(texts(), std::vector<std::string>{removed});
    expectParkedUnder(scene_.window().contentItem());
    EXPECT_TRUE(scene_.waitForQuarters(area, onlyScene));
    input_.handleQueuedCommands();
    expectNoLineFor(1.5);
    expectPlaysAgain();
    EXPECT_EQ(texts(), std::vector<std::string>{removed});
}

TEST_F(ItemFault, destroyed_with_its_own_parent_is_noticed_too) {
    QQuickItem* const page = scene_.addItem({QPoint(0, 0), QSize(Scene::width, Scene::height)});
    ASSERT_NO_FATAL_FAILURE(play());
    item_->setParentItem(page);
    item_->setParent(page);
    delete page;
    EXPECT_EQ(texts(), std::vector<std::string>{removed});
    expectParkedUnder(scene_.window().contentItem());
    expectPlaysAgain();
}

TEST_F(ItemFault, destroyed_while_a_restart_is_pending_is_not_restarted) {
    ASSERT_NO_FATAL_FAILURE(play());
    source_.process().pause();
    ASSERT_TRUE(waitForLines(restartIn1000));
    ASSERT_TRUE(input_.isRestartPending());
    delete item_;
    source_.process().resume();
    ASSERT_TRUE(scene_.waitUntil([&] { return !input_.isRestartPending(); }));
    EXPECT_EQ(texts(), (std::vector<std::string>{timedOut, restartIn1000, removed}));
    EXPECT_EQ(input_.restarts(), 0U);
    expectParkedUnder(scene_.window().contentItem());
    expectPlaysAgain();
}

TEST_F(ItemFault, hidden_while_a_restart_is_pending_is_not_restarted) {
    ASSERT_NO_FATAL_FAILURE(play());
    source_.process().pause();
    ASSERT_TRUE(waitForLines(restartIn1000));
    item_->setVisible(false);
    ASSERT_TRUE(scene_.waitUntil([&] { return !input_.isRestartPending(); }));
    source_.process().resume();
    EXPECT_EQ(input_.restarts(), 0U);
    item_->setVisible(true);
    expectNoLineFor(1);
    EXPECT_EQ(quartersOf(scene_.grab(), area), waiting);
    // It is the application's turn.
    input_.stop(0);
    input_.handleQueuedCommands();
    input_.start(0);
    EXPECT_TRUE(scene_.waitForQuarters(area, upright));
    EXPECT_EQ(texts(), (std::vector<std::string>{timedOut, restartIn1000}));
}

TEST_F(ItemFault, moved_to_another_parent_plays_on_and_is_restarted_there) {
    ASSERT_NO_FATAL_FAILURE(play());
    QQuickItem* const page = scene_.addItem({50, 30, 700, 440});
    item_->setParentItem(page);
    const QRect there = area.translated(50, 30);
    EXPECT_TRUE(scene_.waitForQuarters(there, upright));
    EXPECT_TRUE(scene_.waitForPictures(there));
    source_.process().pause();
    ASSERT_TRUE(waitForLines(restartIn1000));
    source_.process().resume();
    EXPECT_TRUE(isAfter(waitForRestarts(input_, 1), output_.lines()[1].when, 1000));
    EXPECT_TRUE(scene_.waitForQuarters(there, upright));
    EXPECT_TRUE(scene_.waitForPictures(there));
    // A page that is hidden hides the item, and nobody needs a restart.
    page->setVisible(false);
    source_.process().pause();
    ASSERT_TRUE(waitForLines(timedOut, 2));
    expectNoLineFor(1);
    EXPECT_EQ(input_.restarts(), 1U);
}

TEST_F(ItemFault, the_main_window_destroyed_while_items_are_parked_leaves_them_without_a_parent) {
    auto* const mainWindow = new QQuickItem(scene_.window().contentItem());
    ZRVideoInputInterface::setMainWindow(mainWindow);
    ASSERT_NO_FATAL_FAILURE(play());
    input_.removeVideoItem();
    expectParkedUnder(mainWindow);
    delete mainWindow;
    expectParkedUnder(nullptr);
    expectPlaysAgain();
    // And once more with nowhere to park.
    delete item_;
    expectParkedUnder(nullptr);
    expectPlaysAgain();
}

}  // namespace
