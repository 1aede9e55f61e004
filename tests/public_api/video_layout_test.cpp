// What programs rely on of the video inputs' records.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <type_traits>

#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"
#include "hardware/video_input/zr_video_setting.h"

namespace {

using ZR::VideoSetting;
using ZR::ZRGstreamerVideoInput;
using ZR::ZRRotation;
using ZR::ZRVideoMirrorSetting;

int degreesOf(ZRRotation rotation) {
    return rotation.degrees;
}

}  // namespace

TEST(VideoLayout_pure, a_video_setting_is_seven_32_bit_words_in_their_order) {
    EXPECT_EQ(offsetof(VideoSetting, mirror), 0U);
    EXPECT_EQ(offsetof(VideoSetting, rotation), 4U);
    EXPECT_EQ(offsetof(VideoSetting, brightness), 8U);
    EXPECT_EQ(offsetof(VideoSetting, contrast), 12U);
    EXPECT_EQ(offsetof(VideoSetting, hue), 16U);
    EXPECT_EQ(offsetof(VideoSetting, saturation), 20U);
    EXPECT_EQ(offsetof(VideoSetting, videoStandard), 24U);
    EXPECT_EQ(sizeof(VideoSetting), 28U);
    EXPECT_EQ(alignof(VideoSetting), 4U);
}

TEST(VideoLayout_pure, a_fresh_video_setting_has_its_defaults) {
    const VideoSetting fresh;
    const std::int32_t expected[] = {0, 0, 0, 127, 0, 127, 2};
    static_assert(sizeof expected == sizeof fresh);
    EXPECT_EQ(std::memcmp(&fresh, expected, sizeof expected), 0);
}

TEST(VideoLayout_pure, a_video_setting_is_copied_as_memory) {
    EXPECT_TRUE(std::is_trivially_copyable_v<VideoSetting>);
    EXPECT_TRUE(std::is_standard_layout_v<VideoSetting>);
}

TEST(VideoLayout_pure, a_mirror_setting_is_an_int_and_0_is_none) {
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<ZRVideoMirrorSetting>, int>));
    EXPECT_EQ(static_cast<int>(ZR::VideoMirrorNone), 0);
    EXPECT_EQ(static_cast<int>(static_cast<ZRVideoMirrorSetting>(-2147483647 - 1)),
              -2147483647 - 1);
}

TEST(VideoLayout_pure, a_rotation_is_one_int_that_a_number_becomes_by_itself) {
    EXPECT_EQ(sizeof(ZRRotation), 4U);
    EXPECT_EQ(alignof(ZRRotation), 4U);
    EXPECT_TRUE((std::is_same_v<decltype(ZRRotation::degrees), int>));
    EXPECT_TRUE((std::is_convertible_v<int, ZRRotation>));
    EXPECT_TRUE(std::is_trivially_copyable_v<ZRRotation>);
    EXPECT_EQ(degreesOf(-90), -90);
    EXPECT_EQ(ZRRotation().degrees, 0);
}

TEST(VideoLayout_pure, the_shared_members_of_video_inputs_have_their_types) {
    using Input = ZRGstreamerVideoInput;
    EXPECT_TRUE((std::is_same_v<decltype(Input::instances),
                                std::map<std::string, std::unique_ptr<ZRGstreamerVideoInput>>>));
    EXPECT_TRUE((std::is_same_v<decltype(Input::videoDevices), std::string[3]>));
    EXPECT_TRUE((std::is_same_v<decltype(Input::videoSubDevices), std::string[3]>));
    EXPECT_TRUE((std::is_same_v<decltype(Input::fileDescriptors), int[3]>));
    EXPECT_TRUE((std::is_same_v<decltype(Input::fileDescriptorsSub), int[3]>));
    EXPECT_TRUE((std::is_same_v<decltype(Input::lastSetStandard), int[3]>));
    EXPECT_TRUE((std::is_same_v<decltype(Input::runningOnQuadCore), bool>));
    EXPECT_TRUE((std::is_same_v<decltype(Input::initialSetupPending), bool>));
    EXPECT_TRUE((std::is_same_v<decltype(Input::mediaDevice), struct media_device*>));
}

TEST(VideoLayout_pure, a_video_input_has_one_owner_and_may_be_derived_from) {
    EXPECT_FALSE(std::is_copy_constructible_v<ZRGstreamerVideoInput>);
    EXPECT_FALSE(std::is_copy_assignable_v<ZRGstreamerVideoInput>);
    EXPECT_TRUE(std::has_virtual_destructor_v<ZRGstreamerVideoInput>);
    EXPECT_FALSE(std::is_final_v<ZRGstreamerVideoInput>);
    EXPECT_FALSE((std::is_convertible_v<std::string, ZRGstreamerVideoInput>));
    EXPECT_TRUE((std::is_constructible_v<ZRGstreamerVideoInput, std::string>));
}
