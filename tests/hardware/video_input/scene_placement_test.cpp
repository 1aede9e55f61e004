#include <QQmlEngine>

#include "tests/hardware/video_input/scene_test.h"

// Where the two items are placed.

namespace ZR::test {
namespace {

class ScenePlacement : public SceneTest {};

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
    const QObject context;
    QObject::connect(input_.waitItem, &QObject::destroyed, &context, [&gone] { gone = true; });
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

}  // namespace
}  // namespace ZR::test
