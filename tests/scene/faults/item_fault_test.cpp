// What an application does to the items that carry a picture, while it plays.

#include <cstdlib>

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

    WatchedInput& input_ = input();
    StreamSource source_{StreamUdpJpeg};
    QQuickItem* item_ = nullptr;
};

TEST_F(ItemFault, destroyed_while_playing_stops_the_stream_and_parks_the_items) {
    ASSERT_NO_FATAL_FAILURE(play());
    delete item_;
    EXPECT_EQ(texts(), std::vector<std::string>{removed});
    expectParkedUnder(scene_.window().contentItem());
    EXPECT_TRUE(scene_.waitForQuarters(area, onlyScene));
    input_.handleQueuedCommands();
    expectNoLineFor(1.2);
    expectPlaysAgain();
    EXPECT_EQ(texts(), std::vector<std::string>{removed});
    // And with its own parent.
    auto* const page = new QQuickItem(scene_.window().contentItem());
    item_->setParentItem(page);
    item_->setParent(page);
    delete page;
    EXPECT_EQ(texts(), (std::vector<std::string>{removed, removed}));
    expectParkedUnder(scene_.window().contentItem());
    expectPlaysAgain();
}

TEST_F(ItemFault, destroyed_or_hidden_while_a_restart_is_pending_is_not_restarted) {
    WatchedInput& hidden = input("hidden");
    StreamSource source(StreamUdpH264);
    source.chooseFor(hidden);
    const QRect corner(10, 10, 80, 60);
    QQuickItem* const hiddenItem = scene_.place(hidden, corner);
    hidden.start(0);
    ASSERT_NO_FATAL_FAILURE(play());
    ASSERT_TRUE(scene_.waitForQuarters(corner, upright));
    source_.process().pause();
    source.process().pause();
    ASSERT_TRUE(scene_.waitUntil([&] { return input_.isRestartPending(); }));
    delete item_;
    ASSERT_TRUE(scene_.waitUntil([&] { return hidden.isRestartPending(); }));
    hiddenItem->setVisible(false);
    const auto idle = [&] { return !input_.isRestartPending() && !hidden.isRestartPending(); };
    ASSERT_TRUE(scene_.waitUntil(idle));
    source_.process().resume();
    source.process().resume();
    hiddenItem->setVisible(true);
    expectNoLineFor(0.5);
    EXPECT_EQ(output_.count(timedOut), 2);
    EXPECT_EQ(output_.count(restartIn1000), 2);
    EXPECT_EQ(output_.count(removed), 1);
    EXPECT_EQ(input_.restarts() + hidden.restarts(), 0U);
    expectParkedUnder(scene_.window().contentItem());
    expectPlaysAgain();
    // It is the application's turn for the other one.
    hidden.stop(0);
    hidden.handleQueuedCommands();
    hidden.start(0);
    EXPECT_TRUE(scene_.waitForQuarters(corner, upright));
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

/// Of a child that did not come as far as it should, and of one in which the stream went on.
constexpr int tooEarly = 3;
constexpr int playedOn = 4;

/// The window is not the scene's, so that the application survives it.
[[noreturn]] void loseWindowWhilePlaying() {
    {
        const TimedOutput output;
        VideoScene scene;
        ZRGstreamerVideoInput& input = scene.input();
        const StreamSource source(StreamUdpJpeg);
        auto window = std::make_unique<QQuickWindow>();
        bool rendered = false;
        QObject::connect(window.get(), &QQuickWindow::frameSwapped, window.get(),
                         [&rendered] { rendered = true; });
        window->resize(Scene::width, Scene::height);
        window->show();
        ZRVideoInputInterface::setMainWindow(window->contentItem());
        auto* const item = new QQuickItem(window->contentItem());
        item->setSize(window->size());
        input.setVideoItem(item, 0);
        if (!scene.waitUntil([&] { return rendered; }))
            std::_Exit(tooEarly);
        source.chooseFor(input);
        input.start(0);
        const QRect whole(0, 0, Scene::width, Scene::height);
        if (!scene.waitUntil([&] { return quartersOf(window->grabWindow(), whole) == upright; }))
            std::_Exit(tooEarly);
        window.reset();
        if (output.count(removed) != 1 || input.isRunning(0))
            std::_Exit(playedOn);
        scene.runFor(0.3);
    }
    std::exit(0);
}

TEST(WindowFault, destroyed_while_playing_stops_the_stream_and_the_process_ends_with_status_0) {
    EXPECT_EXIT(loseWindowWhilePlaying(), testing::ExitedWithCode(0), "");
}

}  // namespace
