#include <QQmlEngine>

#include "tests/hardware/video_input/video_service.h"
#include "tests/support/private_root.h"

// The two items and the application's.

namespace ZR::test {
namespace {

constexpr char sceneFile[] = "/dev/shm/video.qml";
constexpr char noVideoItem[] = "NO VIDEO ITEM!\n";
constexpr char noSceneFile[] =
    "ERROR: video.qml file not found! Expect disaster when trying to use anything video "
    "related!\n";

/// Two items below a root, at a z and a place of their own, one inside the other's neighbour.
constexpr char wholeScene[] =
    "import QtQuick 2.0\n"
    "Item {\n"
    "  Item { Item { objectName: 'videoItem'; z: 5; x: 3; y: 4; visible: false } }\n"
    "  Item { objectName: 'waitItemCamera'; z: 6; x: 3; y: 4 }\n"
    "}\n";

class ScenePlacement : public VideoServiceTest {
  protected:
    ScenePlacement() { makeFile(sceneFile, wholeScene); }

    ~ScenePlacement() override {
        deleteScene(input_);
        removeFile(sceneFile);
    }

    /// What the library never deletes.
    static void deleteScene(const TestInput& input) {
        QObject* root = input.videoItem != nullptr ? input.videoItem : input.waitItem;
        while (root != nullptr && root->parent() != nullptr)
            root = root->parent();
        delete root;
    }

    static std::string describe(const QQuickItem* item) {
        if (item == nullptr)
            return "none";
        const auto number = [](qreal value) { return std::to_string(static_cast<int>(value)); };
        return number(item->x()) + ' ' + number(item->y()) + ' ' + number(item->width()) + 'x' +
               number(item->height()) + " z" + number(item->z()) +
               (item->isVisible() ? " shown" : " hidden");
    }

    /// What placing prints.
    std::string placing(QQuickItem* item) {
        const OutputCapture capture;
        input_.setVideoItem(item, ZRColor(0xFF00FF00));
        return capture.output();
    }

    /// A scene in which the input has its items already, under @p parent_.
    void place() {
        ASSERT_EQ(placing(parent_.get()), "");
        (void)takeCalls();
    }

    std::unique_ptr<QQuickItem> parent_ = makeItem("parent");
    std::unique_ptr<QQuickItem> other_ = makeItem("other", 320, 240);
    std::unique_ptr<QQuickItem> window_ = makeItem("window");
    TestInput input_;
};

TEST_F(ScenePlacement, takes_both_items_from_anywhere_below_the_root) {
    input_.createVideoAndWaitItem();
    ASSERT_NE(input_.videoItem, nullptr);
    ASSERT_NE(input_.waitItem, nullptr);
    EXPECT_EQ(input_.videoItem->objectName(), "videoItem");
    EXPECT_EQ(input_.waitItem->objectName(), "waitItemCamera");
    EXPECT_EQ(input_.videoItem->parent()->parent(), input_.waitItem->parent()) << "one root";
}

TEST_F(ScenePlacement, of_each_input_has_items_of_its_own_on_one_engine) {
    TestInput second;
    input_.createVideoAndWaitItem();
    second.createVideoAndWaitItem();
    EXPECT_NE(input_.videoItem, second.videoItem);
    EXPECT_NE(input_.waitItem, second.waitItem);
    EXPECT_NE(qmlEngine(input_.videoItem), nullptr);
    EXPECT_EQ(qmlEngine(input_.videoItem), qmlEngine(second.videoItem));
    deleteScene(second);
}

TEST_F(ScenePlacement, keeps_the_root_alive) {
    input_.createVideoAndWaitItem();
    bool gone = false;
    QObject::connect(input_.waitItem, &QObject::destroyed, [&gone] { gone = true; });
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
    EXPECT_FALSE(gone);
    EXPECT_EQ(input_.waitItem->parent()->parent(), nullptr);
}

TEST_F(ScenePlacement, of_new_items_fills_the_parent_and_leaves_their_z) {
    EXPECT_EQ(placing(parent_.get()), "");
    EXPECT_EQ(input_.parentItem, parent_.get());
    EXPECT_EQ(input_.videoItem->parentItem(), parent_.get());
    EXPECT_EQ(input_.waitItem->parentItem(), parent_.get());
    EXPECT_EQ(describe(input_.videoItem), "0 0 800x480 z5 shown");
    EXPECT_EQ(describe(input_.waitItem), "0 0 800x480 z6 shown");
}

TEST_F(ScenePlacement, of_items_that_were_there_hides_the_video_and_puts_both_at_z_0) {
    place();
    input_.videoItem->setZ(5);
    input_.waitItem->setVisible(false);
    EXPECT_EQ(placing(other_.get()), "");
    EXPECT_EQ(input_.parentItem, other_.get());
    EXPECT_EQ(input_.videoItem->parentItem(), other_.get());
    EXPECT_EQ(input_.waitItem->parentItem(), other_.get());
    EXPECT_EQ(describe(input_.videoItem), "0 0 320x240 z0 hidden");
    EXPECT_EQ(describe(input_.waitItem), "0 0 320x240 z0 shown");
}

TEST_F(ScenePlacement, takes_the_size_once) {
    place();
    parent_->setSize({1024, 600});
    EXPECT_EQ(describe(input_.videoItem), "0 0 800x480 z5 shown");
}

TEST_F(ScenePlacement, children_with_z_0_or_below_are_raised_by_exactly_1_those_above_are_left) {
    const qreal before[] = {-2.5, -1, -0.25, 0, 0.25, 1, 7};
    const qreal after[] = {-1.5, 0, 0.75, 1, 0.25, 1, 7};
    std::vector<std::unique_ptr<QQuickItem>> children;
    for (const qreal z : before) {
        children.push_back(makeItem("child"));
        children.back()->setParentItem(parent_.get());
        children.back()->setZ(z);
    }
    place();
    for (std::size_t i = 0; i < children.size(); ++i)
        EXPECT_EQ(children[i]->z(), after[i]) << before[i];
}

TEST_F(ScenePlacement, raises_children_of_a_second_parent_too_and_grandchildren_never) {
    const auto child = makeItem("child");
    const auto grandchild = makeItem("grandchild");
    child->setParentItem(other_.get());
    grandchild->setParentItem(child.get());
    place();
    (void)placing(other_.get());
    EXPECT_EQ(child->z(), 1);
    EXPECT_EQ(grandchild->z(), 0);
}

TEST_F(ScenePlacement, with_the_same_parent_twice_places_once_the_second_call_clears_the_count) {
    place();
    const auto child = makeItem("child");
    child->setParentItem(parent_.get());
    input_.videoItem->setX(17);
    input_.restartCount = 5;
    EXPECT_EQ(placing(parent_.get()), "");
    EXPECT_EQ(input_.videoItem->x(), 17);
    EXPECT_EQ(child->z(), 0);
    EXPECT_EQ(input_.restartCount, 0U);
}

TEST_F(ScenePlacement, with_a_null_parent_does_nothing_but_clear_the_count) {
    input_.restartCount = 5;
    EXPECT_EQ(placing(nullptr), "");
    EXPECT_EQ(input_.restartCount, 0U);
    EXPECT_EQ(input_.videoItem, nullptr);
    place();
    input_.restartCount = 5;
    EXPECT_EQ(placing(nullptr), "");
    EXPECT_EQ(input_.parentItem, parent_.get());
    EXPECT_EQ(input_.restartCount, 0U);
}

TEST_F(ScenePlacement, clears_the_count_of_restarts) {
    input_.restartCount = 5;
    place();
    EXPECT_EQ(input_.restartCount, 0U);
    input_.restartCount = 5;
    (void)placing(other_.get());
    EXPECT_EQ(input_.restartCount, 0U);
}

TEST_F(ScenePlacement, does_not_use_the_color) {
    place();
    EXPECT_EQ(input_.getTransparentColor().value, 0x00010203U);
}

TEST_F(ScenePlacement, of_new_items_gives_a_sink_the_widget_it_has_not_and_no_sync) {
    input_.setStreamType(StreamUdpH264);
    input_.init();
    (void)takeCalls();
    EXPECT_EQ(placing(parent_.get()), "");
    EXPECT_EQ(takeCalls(), (Calls{"qmlglsink widget=videoItem", "qmlglsink sync=false"}));
}

TEST_F(ScenePlacement, of_items_that_were_there_gives_the_sink_the_widget_alone) {
    place();
    input_.setStreamType(StreamUdpH264);
    input_.init();
    (void)takeCalls();
    EXPECT_EQ(placing(other_.get()), "");
    EXPECT_EQ(takeCalls(), Calls{"qmlglsink widget=videoItem"});
}

TEST_F(ScenePlacement, with_a_pipeline_that_has_no_sink_goes_on) {
    input_.pipeline = GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr)));
    place();
    EXPECT_EQ(describe(input_.waitItem), "0 0 800x480 z6 shown");
}

TEST_F(ScenePlacement, without_the_file_says_so_each_time) {
    removeFile(sceneFile);
    input_.restartCount = 5;
    EXPECT_EQ(placing(parent_.get()), std::string(noSceneFile) + noVideoItem);
    EXPECT_EQ(input_.parentItem, parent_.get());
    EXPECT_EQ(input_.restartCount, 0U);
    EXPECT_EQ(placing(parent_.get()), "") << "the same parent";
    EXPECT_EQ(placing(other_.get()), std::string(noSceneFile) + noVideoItem);
    makeFile(sceneFile, wholeScene);
}

TEST_F(ScenePlacement, without_the_file_leaves_the_children_where_they_are) {
    removeFile(sceneFile);
    const auto child = makeItem("child");
    child->setParentItem(parent_.get());
    (void)placing(parent_.get());
    EXPECT_EQ(child->z(), 0);
    makeFile(sceneFile, wholeScene);
}

TEST_F(ScenePlacement, of_a_file_that_came_later_works) {
    removeFile(sceneFile);
    (void)placing(parent_.get());
    makeFile(sceneFile, wholeScene);
    EXPECT_EQ(placing(other_.get()), "");
    EXPECT_EQ(describe(input_.videoItem), "0 0 320x240 z5 shown");
}

TEST_F(ScenePlacement, of_a_file_with_an_error_finds_no_items) {
    for (const char* const text : {"import QtQuick 2.0\nItem { nonsense: }\n", "", "{",
                                   "import NoSuchModule 1.0\nItem {}\n"}) {
        makeFile(sceneFile, text);
        input_.parentItem = nullptr;
        EXPECT_EQ(placing(parent_.get()), noVideoItem) << text;
        EXPECT_EQ(input_.videoItem, nullptr);
        EXPECT_EQ(input_.waitItem, nullptr);
    }
}

TEST_F(ScenePlacement, of_a_root_that_is_no_item_finds_none) {
    makeFile(
        sceneFile,
        "import QtQml 2.0\nQtObject { property var a: QtObject { objectName: 'videoItem' } }\n");
    EXPECT_EQ(placing(parent_.get()), noVideoItem);
}

TEST_F(ScenePlacement, without_a_video_item_in_the_file_finds_none) {
    makeFile(sceneFile, "import QtQuick 2.0\nItem { Item { objectName: 'waitItemCamera' } }\n");
    EXPECT_EQ(placing(parent_.get()), noVideoItem);
    input_.doShowVideoItem(false);
    input_.removeVideoItem();
    EXPECT_EQ(input_.parentItem, nullptr);
}

TEST_F(ScenePlacement, without_a_wait_item_in_the_file_goes_on_without) {
    makeFile(sceneFile, "import QtQuick 2.0\nItem { Item { objectName: 'videoItem' } }\n");
    EXPECT_EQ(placing(parent_.get()), "");
    EXPECT_EQ(describe(input_.videoItem), "0 0 800x480 z0 shown");
    EXPECT_EQ(input_.waitItem, nullptr);
    input_.doShowVideoItem(false);
    EXPECT_FALSE(input_.videoItem->isVisible());
    (void)placing(other_.get());
    input_.removeVideoItem();
    EXPECT_EQ(input_.videoItem->parentItem(), nullptr);
}

TEST_F(ScenePlacement, doShowVideoItem_shows_one_and_hides_the_other) {
    place();
    input_.doShowVideoItem(true);
    EXPECT_TRUE(input_.videoItem->isVisible());
    EXPECT_FALSE(input_.waitItem->isVisible());
    input_.doShowVideoItem(false);
    EXPECT_FALSE(input_.videoItem->isVisible());
    EXPECT_TRUE(input_.waitItem->isVisible());
}

TEST_F(ScenePlacement, showVideoItem_is_carried_to_it_queued) {
    place();
    Q_EMIT input_.showVideoItem(false);
    EXPECT_TRUE(input_.videoItem->isVisible());
    deliverSignals();
    EXPECT_FALSE(input_.videoItem->isVisible());
}

TEST_F(ScenePlacement, doShowVideoItem_true_on_parked_items_changes_nothing) {
    ZRVideoInputInterface::setMainWindow(window_.get());
    place();
    input_.removeVideoItem();
    for (const bool show : {true, false}) {
        input_.doShowVideoItem(show);
        EXPECT_EQ(describe(input_.videoItem), "0 0 800x480 z5 hidden");
        EXPECT_EQ(describe(input_.waitItem), "0 0 800x480 z6 hidden");
    }
}

TEST_F(ScenePlacement, doShowVideoItem_on_items_without_a_parent_changes_nothing) {
    input_.doShowVideoItem(true);
    input_.createVideoAndWaitItem();
    input_.videoItem->setParentItem(nullptr);
    input_.waitItem->setParentItem(nullptr);
    input_.waitItem->setVisible(true);
    input_.doShowVideoItem(true);
    EXPECT_TRUE(input_.waitItem->isVisible());
    EXPECT_FALSE(input_.videoItem->isVisible());
}

TEST_F(ScenePlacement, removeVideoItem_stops_and_parks_both_under_the_main_window) {
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

TEST_F(ScenePlacement, removeVideoItem_without_a_main_window_takes_the_items_out_of_any_item) {
    place();
    input_.removeVideoItem();
    EXPECT_EQ(input_.videoItem->parentItem(), nullptr);
    EXPECT_EQ(input_.waitItem->parentItem(), nullptr);
    EXPECT_FALSE(input_.videoItem->isVisible());
}

TEST_F(ScenePlacement, removeVideoItem_without_a_place_leaves_the_items) {
    ZRVideoInputInterface::setMainWindow(window_.get());
    place();
    input_.parentItem = nullptr;
    input_.removeVideoItem();
    EXPECT_EQ(input_.videoItem->parentItem(), parent_.get());
    EXPECT_EQ(describe(input_.videoItem), "0 0 800x480 z5 shown");
}

TEST_F(ScenePlacement, after_removal_is_made_anew_by_the_next_setVideoItem) {
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

TEST_F(ScenePlacement, destroying_the_parent_item_stops_the_stream_and_parks_both_items) {
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

TEST_F(ScenePlacement, destroying_the_parent_item_without_a_main_window_leaves_the_items_alive) {
    place();
    const OutputCapture capture;
    parent_.reset();
    EXPECT_EQ(capture.output(), "REMOVE FROM DESTROYED\n");
    EXPECT_EQ(input_.videoItem->parentItem(), nullptr);
    EXPECT_EQ(input_.parentItem, nullptr);
}

TEST_F(ScenePlacement, destroying_a_parent_of_before_does_nothing) {
    place();
    (void)placing(other_.get());
    const OutputCapture capture;
    parent_.reset();
    EXPECT_EQ(capture.output(), "");
    EXPECT_EQ(input_.parentItem, other_.get());
    EXPECT_EQ(input_.videoItem->parentItem(), other_.get());
}

TEST_F(ScenePlacement, destroying_a_parent_after_the_removal_does_nothing) {
    place();
    input_.removeVideoItem();
    const OutputCapture capture;
    parent_.reset();
    EXPECT_EQ(capture.output(), "");
}

TEST_F(ScenePlacement, destroying_the_parent_of_an_input_without_items_forgets_it) {
    removeFile(sceneFile);
    (void)placing(parent_.get());
    const OutputCapture capture;
    parent_.reset();
    EXPECT_EQ(capture.output(), "");
    EXPECT_EQ(input_.parentItem, nullptr);
    makeFile(sceneFile, wholeScene);
}

TEST_F(ScenePlacement, videoWidgetDestroyed_of_anything_else_does_nothing) {
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

TEST_F(ScenePlacement, videoWidgetDestroyed_without_a_video_item_does_nothing) {
    input_.parentItem = parent_.get();
    const OutputCapture capture;
    input_.videoWidgetDestroyed(parent_.get());
    EXPECT_EQ(capture.output(), "");
    EXPECT_EQ(input_.parentItem, parent_.get());
    input_.parentItem = nullptr;
    input_.videoWidgetDestroyed(nullptr);
    EXPECT_EQ(capture.output(), "");
}

TEST_F(ScenePlacement, survives_a_video_item_that_the_application_destroys) {
    place();
    delete input_.videoItem;
    EXPECT_EQ(input_.videoItem, nullptr);
    input_.doShowVideoItem(false);
    EXPECT_TRUE(input_.waitItem->isVisible());
    input_.removeVideoItem();
    EXPECT_EQ(input_.getWidth(1), 0);
}

TEST_F(ScenePlacement, survives_a_wait_item_that_the_application_destroys) {
    place();
    delete input_.waitItem;
    EXPECT_EQ(input_.waitItem, nullptr);
    input_.doShowVideoItem(false);
    (void)placing(other_.get());
    input_.removeVideoItem();
}

TEST_F(ScenePlacement, survives_a_main_window_that_is_destroyed_before_the_items_are_parked) {
    ZRVideoInputInterface::setMainWindow(window_.get());
    place();
    window_.reset();
    input_.removeVideoItem();
    EXPECT_EQ(input_.videoItem->parentItem(), nullptr);
}

TEST_F(ScenePlacement, survives_a_main_window_that_is_destroyed_while_the_items_are_parked) {
    ZRVideoInputInterface::setMainWindow(window_.get());
    place();
    input_.removeVideoItem();
    window_.reset();
    ASSERT_NE(input_.videoItem, nullptr);
    EXPECT_EQ(input_.videoItem->parentItem(), nullptr);
    EXPECT_EQ(placing(other_.get()), "");
    EXPECT_EQ(describe(input_.waitItem), "0 0 320x240 z0 shown");
}

TEST_F(ScenePlacement, waits_for_GStreamer_first) {
    Input::gstInitDone = false;
    GstCallSubstitute::isLogging = true;
    GstCallSubstitute::insteadOfSleep = [] { Input::gstInitDone = true; };
    input_.setVideoItem(nullptr, 0);
    EXPECT_EQ(takeCalls(), Calls{"usleep 100000"});
}

}  // namespace
}  // namespace ZR::test
