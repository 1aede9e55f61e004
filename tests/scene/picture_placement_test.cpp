// Where and how a picture that plays is shown. The stream is JPEG: the first picture is a whole one.

#include <gtest/gtest.h>

#include "tests/scene/support/stream_source.h"
#include "tests/scene/support/video_scene.h"

namespace {

using namespace ZR;
using namespace ZR::test;

constexpr QRect area(100, 60, 600, 360);
constexpr QRect tallArea(20, 20, 240, 420);
constexpr auto mirror = static_cast<ZRVideoMirrorSetting>(1);

class PicturePlacement : public testing::Test {
  protected:
    PicturePlacement() { source_.chooseFor(input_); }

    /// What the application's item shows is this, and the picture covers the item exactly.
    void expectFilled(const QRect& expectedArea, const Quarters& expected) {
        EXPECT_TRUE(scene_.waitForQuarters(expectedArea, expected))
            << testing::PrintToString(quartersOf(scene_.grab(), expectedArea));
        EXPECT_EQ(pictureArea(scene_.grab()), expectedArea);
    }

    void play(const QRect& where) {
        item_ = scene_.place(input_, where);
        input_.start(0);
        ASSERT_TRUE(scene_.waitForQuarters(where, upright));
    }

    VideoScene scene_;
    StreamSource source_{StreamUdpJpeg};
    ZRGstreamerVideoInput& input_ = scene_.input();
    QQuickItem* item_ = nullptr;
};

TEST_F(PicturePlacement, turns_by_each_quarter_and_fills_the_item_all_the_same) {
    play(area);
    for (const int degrees : {90, 180, 270, 0}) {
        EXPECT_EQ(input_.setRotation(0, degrees), 0);
        SCOPED_TRACE(degrees);
        expectFilled(area, turned(upright, degrees));
    }
}

TEST_F(PicturePlacement, turned_by_a_quarter_has_width_and_height_exchanged) {
    play(area);
    input_.setRotation(0, -90);
    EXPECT_EQ(input_.getWidth(0), area.height());
    EXPECT_EQ(input_.getHeight(0), area.width());
    EXPECT_EQ(input_.getRotationSetting(0).degrees, 270);
    expectFilled(area, turned(upright, 270));
}

TEST_F(PicturePlacement, mirrors_and_mirrors_back) {
    play(area);
    input_.setMirror(0, mirror);
    expectFilled(area, mirrored(upright));
    input_.setMirror(0, VideoMirrorNone);
    expectFilled(area, upright);
}

TEST_F(PicturePlacement, is_mirrored_first_when_it_is_turned_too) {
    play(area);
    input_.setMirror(0, mirror);
    input_.setRotation(0, 90);
    expectFilled(area, turned(mirrored(upright), 90));
}

TEST_F(PicturePlacement, takes_over_at_its_start_how_it_was_turned_and_mirrored_before) {
    scene_.place(input_, area);
    // After a port is chosen, the settings of interface 4 count at the start.
    input_.setMirror(4, mirror);
    input_.setRotation(4, 180);
    input_.start(0);
    expectFilled(area, turned(mirrored(upright), 180));
}

TEST_F(PicturePlacement, fills_an_item_of_other_proportions_whatever_size_was_asked_for) {
    play(tallArea);
    EXPECT_EQ(input_.setSize(0, 17, 23), 0);
    expectFilled(tallArea, upright);
    input_.setRotation(0, 90);
    expectFilled(tallArea, turned(upright, 90));
}

TEST_F(PicturePlacement, follows_the_size_of_its_item_when_the_size_is_set_again) {
    play(area);
    item_->setSize({300, 200});
    expectFilled(area, upright);
    EXPECT_EQ(input_.setSize(0, 0, 0), 0);
    expectFilled({area.topLeft(), QSize(300, 200)}, upright);
}

TEST_F(PicturePlacement, is_moved_by_its_position) {
    play({100, 60, 300, 200});
    input_.setPosition(0, 40, 30);
    expectFilled({140, 90, 300, 200}, upright);
    EXPECT_EQ(input_.getXPosition(0), 40);
    EXPECT_EQ(input_.getYPosition(0), 30);
}

TEST_F(PicturePlacement, vanishes_with_its_item_and_is_back_with_it) {
    play(area);
    item_->setVisible(false);
    EXPECT_TRUE(scene_.waitForQuarters(area, onlyScene));
    item_->setVisible(true);
    expectFilled(area, upright);
    EXPECT_TRUE(scene_.waitForPictures(area)) << "the picture stands still";
}

TEST_F(PicturePlacement, moved_to_another_item_waits_there_and_plays_after_the_next_start) {
    play({20, 20, 300, 200});
    const QRect there(400, 200, 360, 240);
    scene_.place(input_, there);
    EXPECT_TRUE(scene_.waitForQuarters(there, waiting));
    EXPECT_EQ(quartersOf(scene_.grab(), {20, 20, 300, 200}), onlyScene);
    input_.stop(0);
    scene_.waitUntil([&] { return !input_.isRunning(0); });
    input_.start(0);
    expectFilled(there, upright);
}

TEST_F(PicturePlacement, leaves_the_scene_when_it_is_removed_and_plays_when_it_is_set_again) {
    play(area);
    input_.removeVideoItem();
    EXPECT_TRUE(scene_.waitForQuarters(area, onlyScene));
    EXPECT_FALSE(input_.isRunning(0));
    input_.setVideoItem(item_, 0);
    EXPECT_TRUE(scene_.waitForQuarters(area, waiting));
    input_.start(0);
    expectFilled(area, upright);
    EXPECT_TRUE(scene_.waitForPictures(area));
}

TEST_F(PicturePlacement, stays_when_the_same_item_is_set_again) {
    play(area);
    input_.setVideoItem(item_, 0);
    input_.setVideoItem(nullptr, 0);
    expectFilled(area, upright);
    EXPECT_TRUE(scene_.waitForPictures(area));
}

}  // namespace
