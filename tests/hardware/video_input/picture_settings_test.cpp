#include <QQmlComponent>
#include <QQmlEngine>
#include <limits>

#include "tests/hardware/video_input/video_service.h"

namespace ZR::test {
namespace {

constexpr auto mirrored = static_cast<ZRVideoMirrorSetting>(3);

/// A video item whose QML code notes how it is to be turned.
class PictureSettings : public PlacedVideoTest {
  protected:
    PictureSettings() {
        QQmlComponent component(&engine_);
        component.setData(
            "import QtQuick 2.0\n"
            "Item { property string calls: ''\n"
            "function setTransformation(mirror, rotation) {\n"
            "calls += typeof mirror + mirror + ' ' + typeof rotation + rotation + ';' } }",
            {});
        video_.reset(qobject_cast<QQuickItem*>(component.create()));
        video_->setParentItem(parent_.get());
        input_.videoItem = video_.get();
    }

    ~PictureSettings() override {
        made_->videoItem = nullptr;
        video_.reset();
    }

    std::string transformations() {
        std::string calls = video_->property("calls").toString().toStdString();
        video_->setProperty("calls", "");
        return calls;
    }

    /// A built camera stream, of which the calls so far are forgotten.
    void buildCamera(int camera) {
        input_.setStreamType(StreamCamera);
        input_.currentInput = camera;
        const OutputCapture quiet;
        input_.init();
        (void)takeCalls();
    }

    bool hasRecord(unsigned short input) const { return input_.videoSettings.count(input) == 1; }

    QQmlEngine engine_;
};

TEST_F(PictureSettings, a_fresh_record_reads_its_defaults) {
    EXPECT_EQ(input_.getMirrorSetting(2), VideoMirrorNone);
    const VideoSetting& fresh = input_.videoSettings.at(2);
    EXPECT_EQ(fresh.mirror, 0);
    EXPECT_EQ(fresh.rotation.degrees, 0);
    EXPECT_EQ(fresh.brightness, 0);
    EXPECT_EQ(fresh.contrast, 127);
    EXPECT_EQ(fresh.hue, 0);
    EXPECT_EQ(fresh.saturation, 127);
    EXPECT_EQ(fresh.videoStandard, 2);
}

TEST_F(PictureSettings, asking_for_a_mirror_or_a_rotation_makes_the_record) {
    (void)input_.getRotationSetting(9);
    EXPECT_TRUE(hasRecord(9));
    (void)input_.getMirrorSetting(65535);
    EXPECT_TRUE(hasRecord(65535));
}

TEST_F(PictureSettings, asking_for_the_geometry_makes_no_record) {
    (void)input_.getWidth(1);
    (void)input_.getHeight(1);
    (void)input_.getXPosition(1);
    (void)input_.getYPosition(1);
    EXPECT_TRUE(input_.videoSettings.empty());
}

TEST_F(PictureSettings, values_are_stored_for_their_input_unchanged) {
    EXPECT_EQ(input_.setBrightness(1, -5), 0);
    EXPECT_EQ(input_.setContrast(1, 1000), 0);
    EXPECT_EQ(input_.setHue(1, std::numeric_limits<int>::min()), 0);
    EXPECT_EQ(input_.videoSettings.at(1).brightness, -5);
    EXPECT_EQ(input_.videoSettings.at(1).contrast, 1000);
    EXPECT_EQ(input_.videoSettings.at(1).hue, std::numeric_limits<int>::min());
    EXPECT_EQ(input_.videoSettings.at(1).saturation, 127);
    EXPECT_FALSE(hasRecord(2));
}

TEST_F(PictureSettings, saturation_while_the_stream_type_is_not_3_returns_11_and_stores_nothing) {
    for (const int type : {0, 1, 2, 4}) {
        input_.setStreamType(type);
        EXPECT_EQ(input_.setSaturation(1, 200), 11);
        EXPECT_FALSE(hasRecord(1)) << "not even a record";
    }
    (void)input_.getMirrorSetting(1);
    EXPECT_EQ(input_.videoSettings.at(1).saturation, 127);
}

TEST_F(PictureSettings, saturation_with_a_camera_is_stored) {
    input_.setStreamType(StreamCamera);
    EXPECT_EQ(input_.setSaturation(2, 200), 0);
    EXPECT_EQ(input_.videoSettings.at(2).saturation, 200);
}

TEST_F(PictureSettings, values_of_the_current_camera_are_set_on_its_element) {
    buildCamera(2);
    EXPECT_EQ(input_.setBrightness(2, 10), 0);
    EXPECT_EQ(input_.setContrast(2, 20), 0);
    EXPECT_EQ(input_.setHue(2, -30), 0);
    EXPECT_EQ(input_.setSaturation(2, 40), 0);
    EXPECT_EQ(takeCalls(), (Calls{"v4l2src brightness=10", "v4l2src contrast=20", "v4l2src hue=-30",
                                  "v4l2src saturation=40"}));
    EXPECT_EQ(input_.videoSettings.at(2).brightness, 10);
    EXPECT_EQ(input_.videoSettings.at(2).contrast, 20);
    EXPECT_EQ(input_.videoSettings.at(2).hue, -30);
    EXPECT_EQ(input_.videoSettings.at(2).saturation, 40);
}

TEST_F(PictureSettings, brightness_for_an_interface_that_is_not_the_current_one_is_only_stored) {
    buildCamera(2);
    input_.setBrightness(1, 10);
    input_.setContrast(3, 20);
    input_.setHue(1, 30);
    input_.setSaturation(3, 40);
    EXPECT_EQ(takeCalls(), Calls{});
    EXPECT_EQ(input_.videoSettings.at(1).brightness, 10);
    EXPECT_EQ(input_.videoSettings.at(3).saturation, 40);
}

TEST_F(PictureSettings, values_take_effect_when_the_stream_of_their_interface_starts) {
    input_.setStreamType(StreamCamera);
    input_.setBrightness(1, 10);
    input_.setContrast(1, 20);
    input_.setHue(1, 30);
    input_.setSaturation(1, 40);
    input_.currentInput = 1;
    const OutputCapture quiet;
    (void)input_.startSlot();
    const Calls calls = takeCallsOf({"v4l2src"});
    EXPECT_EQ(Calls(calls.end() - 4, calls.end()),
              (Calls{"v4l2src brightness=10", "v4l2src contrast=20", "v4l2src hue=30",
                     "v4l2src saturation=40"}));
}

TEST_F(PictureSettings, values_of_a_network_stream_are_never_set_on_its_source) {
    input_.setStreamType(StreamUdpH264);
    input_.currentInput = 4;
    input_.init();
    (void)takeCalls();
    input_.setBrightness(4, 10);
    input_.setContrast(4, 10);
    input_.setHue(4, 10);
    // Chosen, but the pipeline is still that of the network stream.
    input_.setStreamType(StreamCamera);
    input_.setBrightness(4, 10);
    input_.setSaturation(4, 10);
    EXPECT_EQ(takeCalls(), Calls{});
}

TEST_F(PictureSettings, values_without_a_camera_element_are_only_stored) {
    input_.setStreamType(StreamCamera);
    input_.currentInput = 1;
    EXPECT_EQ(input_.setBrightness(1, 10), 0);
    EXPECT_EQ(input_.setSaturation(1, 10), 0);
    EXPECT_EQ(takeCalls(), Calls{});
}

TEST_F(PictureSettings, values_of_a_camera_stream_whose_type_was_changed_are_only_stored) {
    buildCamera(1);
    input_.setStreamType(StreamUdpH264);
    input_.setBrightness(1, 10);
    input_.setContrast(1, 10);
    input_.setHue(1, 10);
    EXPECT_EQ(input_.setSaturation(1, 10), 11);
    EXPECT_EQ(takeCalls(), Calls{});
}

TEST_F(PictureSettings, setRotation_minus_90_followed_by_getRotationSetting_yields_270) {
    input_.setRotation(1, -90);
    EXPECT_EQ(input_.getRotationSetting(1).degrees, 270);
    EXPECT_EQ(input_.videoSettings.at(1).rotation.degrees, 270);
    input_.setRotation(1, 450);
    EXPECT_EQ(input_.getRotationSetting(1).degrees, 90);
}

TEST_F(PictureSettings, a_stored_rotation_is_normalised_again_when_it_is_read) {
    input_.videoSettings[1].rotation.degrees = -450;
    EXPECT_EQ(input_.getRotationSetting(1).degrees, 270);
    EXPECT_EQ(input_.videoSettings[1].rotation.degrees, -450);
}

TEST_F(PictureSettings, setMirror_sends_mirror_and_then_rotation_as_numbers) {
    input_.videoSettings[1].rotation.degrees = 90;
    EXPECT_EQ(input_.setMirror(1, mirrored), 0);
    EXPECT_EQ(transformations(), "number3 number90;");
    EXPECT_EQ(input_.getMirrorSetting(1), mirrored);
}

TEST_F(PictureSettings, setMirror_of_another_camera_is_kept_for_later) {
    input_.setStreamType(StreamCamera);
    input_.currentInput = 2;
    EXPECT_EQ(input_.setMirror(1, mirrored), 0);
    EXPECT_EQ(transformations(), "");
    EXPECT_EQ(input_.getMirrorSetting(1), mirrored);
    EXPECT_EQ(input_.setMirror(2, mirrored), 0);
    EXPECT_EQ(transformations(), "number3 number0;");
}

TEST_F(PictureSettings, of_any_input_are_applied_at_once_on_a_network_stream) {
    input_.setStreamType(StreamUdpH264);
    input_.currentInput = 4;
    EXPECT_EQ(input_.setMirror(1, mirrored), 0);
    EXPECT_EQ(transformations(), "number3 number0;");
    EXPECT_EQ(input_.setRotation(1, 180), 0);
    EXPECT_EQ(transformations(), "number3 number180;number3 number180;");
}

TEST_F(PictureSettings, setMirror_without_one_of_the_items_returns_0) {
    input_.parentItem = nullptr;
    EXPECT_EQ(input_.setMirror(1, mirrored), 0);
    EXPECT_EQ(transformations(), "");
    input_.parentItem = parent_.get();
    input_.videoItem = nullptr;
    EXPECT_EQ(input_.setMirror(1, mirrored), 0);
    EXPECT_EQ(input_.getMirrorSetting(1), mirrored);
}

TEST_F(PictureSettings, setRotation_sends_the_angle_and_then_fills_the_parent) {
    EXPECT_EQ(input_.setRotation(1, 90), 0);
    // Its own, and the one of the size.
    EXPECT_EQ(transformations(), "number0 number90;number0 number90;");
    EXPECT_EQ(input_.getWidth(1), 480);
    EXPECT_EQ(input_.getHeight(1), 800);
}

TEST_F(PictureSettings, setRotation_of_another_camera_or_without_items_returns_1) {
    input_.setStreamType(StreamCamera);
    input_.currentInput = 2;
    EXPECT_EQ(input_.setRotation(1, 90), 1);
    EXPECT_EQ(input_.getRotationSetting(1).degrees, 90);
    input_.parentItem = nullptr;
    EXPECT_EQ(input_.setRotation(2, 90), 1);
    input_.parentItem = parent_.get();
    input_.videoItem = nullptr;
    EXPECT_EQ(input_.setRotation(2, 90), 1);
    EXPECT_EQ(input_.getRotationSetting(2).degrees, 90);
    EXPECT_EQ(transformations(), "");
}

TEST_F(PictureSettings, with_rotation_90_setSize_makes_the_item_as_wide_as_its_parent_is_high) {
    for (const int degrees : {90, 270}) {
        input_.videoSettings[1].rotation.degrees = degrees;
        EXPECT_EQ(input_.setSize(1, 10, 20), 0);
        EXPECT_EQ(video_->width(), 480);
        EXPECT_EQ(video_->height(), 800);
        EXPECT_EQ(input_.width, 480);
        EXPECT_EQ(input_.height, 800);
    }
}

TEST_F(PictureSettings, with_any_other_rotation_setSize_fills_the_parent_as_it_is) {
    for (const int degrees : {0, 45, 180, 359}) {
        input_.videoSettings[1].rotation.degrees = degrees;
        EXPECT_EQ(input_.setSize(1, 10, 20), 0);
        EXPECT_EQ(video_->width(), 800);
        EXPECT_EQ(video_->height(), 480);
    }
}

TEST_F(PictureSettings, setSize_cuts_the_parents_size_to_whole_pixels) {
    parent_->setSize({800.9, 480.9});
    EXPECT_EQ(input_.setSize(1, 10, 20), 0);
    EXPECT_EQ(video_->width(), 800);
    EXPECT_EQ(video_->height(), 480);
}

TEST_F(PictureSettings, setSize_sends_the_mirror_again) {
    input_.videoSettings[1].mirror = mirrored;
    EXPECT_EQ(input_.setSize(1, 10, 20), 0);
    EXPECT_EQ(transformations(), "number3 number0;");
}

TEST_F(PictureSettings, setSize_takes_the_rotation_of_the_input_it_is_given) {
    input_.videoSettings[1].rotation.degrees = 90;
    EXPECT_EQ(input_.setSize(2, 10, 20), 0);
    EXPECT_EQ(video_->width(), 800);
    EXPECT_TRUE(hasRecord(2));
}

TEST_F(PictureSettings, setSize_without_one_of_the_items_stores_the_size_and_returns_1) {
    input_.parentItem = nullptr;
    EXPECT_EQ(input_.setSize(1, 10, 20), 1);
    EXPECT_EQ(input_.width, 10);
    EXPECT_EQ(input_.height, 20);
    input_.parentItem = parent_.get();
    input_.videoItem = nullptr;
    EXPECT_EQ(input_.setSize(1, -30, 40), 1);
    EXPECT_EQ(input_.width, -30);
    EXPECT_EQ(input_.height, 40);
    EXPECT_FALSE(hasRecord(1));
}

TEST_F(PictureSettings, setPosition_moves_the_video_item_whatever_the_input) {
    EXPECT_EQ(input_.setPosition(9, -12, 34), 0);
    EXPECT_EQ(video_->x(), -12);
    EXPECT_EQ(video_->y(), 34);
    EXPECT_EQ(input_.xPosition, -12);
    EXPECT_EQ(input_.yPosition, 34);
    EXPECT_FALSE(hasRecord(9));
}

TEST_F(PictureSettings, setPosition_without_one_of_the_items_stores_the_position) {
    input_.parentItem = nullptr;
    EXPECT_EQ(input_.setPosition(1, 5, 6), 0);
    EXPECT_EQ(video_->x(), 0);
    input_.parentItem = parent_.get();
    input_.videoItem = nullptr;
    EXPECT_EQ(input_.setPosition(1, 7, 8), 0);
    EXPECT_EQ(input_.xPosition, 7);
    EXPECT_EQ(input_.yPosition, 8);
    EXPECT_EQ(video_->x(), 0);
}

TEST_F(PictureSettings, the_geometry_is_that_of_the_item_truncated_toward_zero) {
    video_->setX(-1.9);
    video_->setY(2.9);
    video_->setSize({100.9, 200.9});
    for (const unsigned short input : {std::uint16_t{0}, std::uint16_t{3}}) {
        EXPECT_EQ(input_.getXPosition(input), -1);
        EXPECT_EQ(input_.getYPosition(input), 2);
        EXPECT_EQ(input_.getWidth(input), 100);
        EXPECT_EQ(input_.getHeight(input), 200);
    }
}

TEST_F(PictureSettings, the_geometry_is_0_when_there_is_no_video_item) {
    video_->setX(9);
    input_.videoItem = nullptr;
    EXPECT_EQ(input_.getXPosition(1), 0);
    EXPECT_EQ(input_.getYPosition(1), 0);
    EXPECT_EQ(input_.getWidth(1), 0);
    EXPECT_EQ(input_.getHeight(1), 0);
}

TEST_F(PictureSettings, calls_through_the_interface_behave_identically) {
    ZRVideoInputInterface& interface = input_;
    EXPECT_EQ(interface.setRotation(1, -90), 0);
    EXPECT_EQ(interface.getRotationSetting(1).degrees, 270);
    EXPECT_EQ(interface.setMirror(1, mirrored), 0);
    EXPECT_EQ(interface.getMirrorSetting(1), mirrored);
    EXPECT_EQ(interface.setSaturation(1, 1), 11);
    EXPECT_EQ(interface.setPosition(1, 3, 4), 0);
    EXPECT_EQ(interface.getXPosition(1), 3);
    EXPECT_EQ(interface.getYPosition(1), 4);
    EXPECT_EQ(interface.getWidth(1), 480);
    EXPECT_EQ(interface.getHeight(1), 800);
}

TEST_F(PictureSettings, an_item_without_the_function_is_left_unturned) {
    const auto plain = makeItem("plain");
    input_.videoItem = plain.get();
    EXPECT_EQ(input_.setMirror(1, mirrored), 0);
    EXPECT_EQ(input_.setRotation(1, 90), 0);
    EXPECT_EQ(plain->width(), 480);
    input_.videoItem = video_.get();
}

}  // namespace
}  // namespace ZR::test
