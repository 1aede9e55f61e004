#include <gtest/gtest.h>

#include <QObject>
#include <QQuickItem>
#include <thread>

#include "hardware/video_input/gstreamer_video_input/functional/scene_watch_internal.h"

namespace ZR {
namespace {

/// A record of its own; nothing is drawn.
class SceneRecord_pure : public testing::Test {
  protected:
    /// As the bus thread asks.
    static bool isOnScreenElsewhere(const QObject& input, const QQuickItem* parent,
                                    const QQuickItem* wait) {
        bool answer = false;
        std::thread([&] { answer = isOnScreen(input, parent, wait); }).join();
        return answer;
    }

    SceneWatch watch_;
    QObject input_;
    QQuickItem shown_;
    QQuickItem hidden_;

    SceneRecord_pure() { hidden_.setVisible(false); }
};

TEST_F(SceneRecord_pure, of_an_unknown_input_is_not_visible) {
    EXPECT_FALSE(watch_.isPublished(&input_));
    EXPECT_FALSE(watch_.isPublished(nullptr));
}

TEST_F(SceneRecord_pure, is_visible_when_either_item_is) {
    for (const bool parent : {false, true})
        for (const bool wait : {false, true}) {
            watch_.publishParentItem(&input_, parent);
            watch_.publishWaitItem(&input_, wait);
            EXPECT_EQ(watch_.isPublished(&input_), parent || wait) << parent << wait;
        }
}

TEST_F(SceneRecord_pure, belongs_to_one_input) {
    const QObject other;
    watch_.publishParentItem(&input_, true);
    EXPECT_FALSE(watch_.isPublished(&other));
    watch_.publishWaitItem(&other, true);
    watch_.publishParentItem(&input_, false);
    EXPECT_FALSE(watch_.isPublished(&input_));
    EXPECT_TRUE(watch_.isPublished(&other));
}

TEST_F(SceneRecord_pure, is_gone_once_its_input_is_forgotten) {
    watch_.publishParentItem(&input_, true);
    watch_.publishWaitItem(&input_, true);
    watch_.forget(&input_);
    EXPECT_FALSE(watch_.isPublished(&input_));
}

TEST_F(SceneRecord_pure, keeps_its_connections_until_they_are_replaced) {
    int first = 0;
    int second = 0;
    QObject item;
    watch_.follow(&input_, {QObject::connect(&item, &QObject::objectNameChanged, &input_,
                                             [&first] { ++first; })});
    item.setObjectName("a");
    watch_.follow(&input_, {QObject::connect(&item, &QObject::objectNameChanged, &input_,
                                             [&second] { ++second; })});
    item.setObjectName("b");
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 1);
}

TEST_F(SceneRecord_pure, cuts_its_connections_when_its_input_is_forgotten) {
    int calls = 0;
    QObject item;
    watch_.follow(&input_, {QObject::connect(&item, &QObject::objectNameChanged, &input_,
                                             [&calls] { ++calls; })});
    watch_.forget(&input_);
    item.setObjectName("a");
    EXPECT_EQ(calls, 0);
}

TEST_F(SceneRecord_pure, is_not_asked_on_the_thread_of_the_items) {
    EXPECT_FALSE(isOnScreen(input_, nullptr, nullptr));
    EXPECT_FALSE(isOnScreen(input_, &hidden_, &hidden_));
    EXPECT_TRUE(isOnScreen(input_, &shown_, &hidden_));
    EXPECT_TRUE(isOnScreen(input_, &hidden_, &shown_));
    EXPECT_TRUE(isOnScreen(input_, nullptr, &shown_));
    EXPECT_TRUE(isOnScreen(input_, &shown_, nullptr));
}

TEST_F(SceneRecord_pure, is_all_that_another_thread_asks) {
    EXPECT_FALSE(isOnScreenElsewhere(input_, &shown_, &shown_));
    SceneWatch::get().publishWaitItem(&input_, true);
    EXPECT_TRUE(isOnScreenElsewhere(input_, &hidden_, nullptr));
    SceneWatch::get().forget(&input_);
}

TEST_F(SceneRecord_pure, is_the_same_for_all) {
    EXPECT_EQ(&SceneWatch::get(), &SceneWatch::get());
}

TEST_F(SceneRecord_pure, can_be_written_and_read_by_two_threads) {
    std::thread reader([this] {
        for (int i = 0; i < 10000; ++i)
            (void)watch_.isPublished(&input_);
    });
    for (int i = 0; i < 10000; ++i) {
        watch_.publishParentItem(&input_, true);
        watch_.publishWaitItem(&input_, i % 2 == 0);
    }
    reader.join();
    EXPECT_TRUE(watch_.isPublished(&input_));
}

}  // namespace
}  // namespace ZR
