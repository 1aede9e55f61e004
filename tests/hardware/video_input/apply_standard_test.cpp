#include <cerrno>
#include <string>
#include <vector>

#include "tests/hardware/video_input/capture_board.h"
#include "tests/hardware/video_input/capture_texts.h"
#include "tests/support/output_capture.h"

namespace ZR::test {
namespace {

using Input = ZRGstreamerVideoInput;
using Keys = std::vector<unsigned short>;

constexpr int sharedDecoder = 12;
constexpr int secondDecoder = 13;
constexpr v4l2_std_id palSignal = 0xFF;
constexpr v4l2_std_id ntscSignal = 0xB000;

std::string settingFormats(const std::string& text) {
    return "v4l2_subdev_parse_setup_formats " + text;
}

class ApplyStandard : public CaptureTest {
  protected:
    ApplyStandard() { discover(false); }

    static void setSignal(int decoder, v4l2_std_id mask) {
        Devices::devices[decoder].signal = mask;
    }

    void know(unsigned short interface, int standard) {
        input_.videoSettings[interface].videoStandard = standard;
    }

    /// The calls that one application makes.
    Calls applying(int input) {
        (void)takeCalls();
        input_.applyDetectedVideoStandard(input);
        return takeCalls();
    }

    Keys keys() const {
        Keys found;
        for (const auto& [interface, setting] : input_.videoSettings)
            found.push_back(interface);
        return found;
    }

    OpenInput input_;
};

TEST_F(ApplyStandard, an_unknown_standard_of_input_0_is_detected_forced_and_given_to_the_path) {
    setSignal(sharedDecoder, palSignal);
    EXPECT_EQ(applying(0), (Calls{"VIDIOC_QUERYSTD 12 0", "VIDIOC_S_STD 12 255",
                                  settingFormats(sharedPalDualLite)}));
    EXPECT_EQ(input_.standard(1), 0);
    EXPECT_EQ(Input::lastSetStandard[0], 0);
}

TEST_F(ApplyStandard, an_unknown_standard_of_input_2_is_detected_forced_and_given_to_the_path) {
    setSignal(sharedDecoder, ntscSignal);
    EXPECT_EQ(applying(2), (Calls{"VIDIOC_QUERYSTD 12 0", "VIDIOC_S_STD 12 45056",
                                  settingFormats(sharedNtscDualLite)}));
    EXPECT_EQ(input_.standard(3), 1);
    EXPECT_EQ(Input::lastSetStandard[2], 1);
    EXPECT_EQ(Input::lastSetStandard[0], 2);
}

TEST_F(ApplyStandard, an_unknown_standard_of_input_1_is_detected_forced_and_given_to_the_path) {
    setSignal(secondDecoder, ntscSignal);
    EXPECT_EQ(applying(1), (Calls{"VIDIOC_QUERYSTD 13 0", "VIDIOC_S_STD 13 45056",
                                  settingFormats(secondNtscDualLite)}));
    EXPECT_EQ(input_.standard(2), 1);
    EXPECT_EQ(Input::lastSetStandard[1], 1);
}

TEST_F(ApplyStandard, input_1_in_pal_has_the_size_of_pal) {
    setSignal(secondDecoder, palSignal);
    EXPECT_EQ(applying(1), (Calls{"VIDIOC_QUERYSTD 13 0", "VIDIOC_S_STD 13 255",
                                  settingFormats(secondPalDualLite)}));
}

TEST_F(ApplyStandard, the_quad_has_its_own_texts) {
    Input::runningOnQuadCore = true;
    setSignal(sharedDecoder, ntscSignal);
    EXPECT_EQ(applying(0).back(), settingFormats(sharedNtscQuad));
    EXPECT_EQ(applying(1).back(), settingFormats(secondPalQuad));
    setSignal(sharedDecoder, palSignal);
    EXPECT_EQ(applying(2).back(), settingFormats(sharedPalQuad));
    know(2, 2);
    setSignal(secondDecoder, ntscSignal);
    EXPECT_EQ(applying(1).back(), settingFormats(secondNtscQuad));
}

TEST_F(ApplyStandard, input_1_is_set_up_once_and_never_again) {
    setSignal(secondDecoder, palSignal);
    (void)applying(1);
    setSignal(secondDecoder, ntscSignal);
    EXPECT_EQ(applying(1), Calls{});
    EXPECT_EQ(input_.standard(2), 0);
    EXPECT_EQ(Input::lastSetStandard[1], 0);
}

TEST_F(ApplyStandard, input_1_minds_no_other_inputs_standard) {
    for (const int own : {0, 1})
        for (const int other : {0, 1, 2}) {
            know(1, other);
            know(2, own);
            know(3, 1 - other / 2);
            EXPECT_EQ(applying(1), Calls{}) << own << other;
        }
}

/// One row: what is known of the input and of the one beside it, and whether that is applied.
struct Known {
    int own;
    int other;
    bool applies;
};

TEST_F(ApplyStandard, a_known_standard_is_applied_where_the_other_inputs_is_not_the_same) {
    const std::vector<Known> rows{{0, 0, false}, {0, 1, true},  {0, 2, true},
                                  {1, 0, true},  {1, 1, false}, {1, 2, true}};
    for (const Known& row : rows) {
        const Calls applied{row.own == 1 ? "VIDIOC_S_STD 12 45056" : "VIDIOC_S_STD 12 255",
                            settingFormats(row.own == 1 ? sharedNtscDualLite : sharedPalDualLite)};
        know(1, row.own);
        know(3, row.other);
        EXPECT_EQ(applying(0), row.applies ? applied : Calls{}) << row.own << row.other;
        know(1, row.other);
        know(3, row.own);
        EXPECT_EQ(applying(2), row.applies ? applied : Calls{}) << row.own << row.other;
    }
}

TEST_F(ApplyStandard, what_is_detected_is_applied_also_where_the_other_inputs_is_the_same) {
    for (const int other : {0, 1, 2}) {
        for (const v4l2_std_id signal : {palSignal, ntscSignal}) {
            setSignal(sharedDecoder, signal);
            know(1, 2);
            know(3, other);
            EXPECT_EQ(applying(0).size(), 3U) << other;
            EXPECT_EQ(input_.standard(1), signal == ntscSignal ? 1 : 0);
            EXPECT_EQ(input_.standard(3), other);
            know(1, other);
            know(3, 2);
            EXPECT_EQ(applying(2).size(), 3U) << other;
            EXPECT_EQ(input_.standard(1), other);
        }
    }
}

TEST_F(ApplyStandard, the_last_set_standard_is_recorded_for_the_input_that_is_applied) {
    know(1, 1);
    know(3, 0);
    (void)applying(0);
    EXPECT_EQ(Input::lastSetStandard[0], 1);
    EXPECT_EQ(Input::lastSetStandard[1], 2);
    EXPECT_EQ(Input::lastSetStandard[2], 2);
    (void)applying(2);
    EXPECT_EQ(Input::lastSetStandard[2], 0);
}

TEST_F(ApplyStandard, the_last_set_standard_stays_where_nothing_is_applied) {
    know(1, 1);
    know(2, 1);
    know(3, 1);
    for (int input = 0; input < 3; ++input)
        (void)applying(input);
    for (const int standard : Input::lastSetStandard)
        EXPECT_EQ(standard, 2);
}

TEST_F(ApplyStandard, inputs_0_and_2_make_the_records_of_both_with_their_defaults) {
    setSignal(sharedDecoder, ntscSignal);
    (void)applying(0);
    EXPECT_EQ(keys(), (Keys{1, 3}));
    EXPECT_EQ(input_.standard(3), 2);
    EXPECT_EQ(input_.videoSettings.at(3).contrast, 127);
    OpenInput other;
    other.applyDetectedVideoStandard(2);
    EXPECT_EQ(other.videoSettings.size(), 2U);
    EXPECT_EQ(other.standard(1), 2);
}

TEST_F(ApplyStandard, a_known_standard_makes_the_record_of_the_other_input_too) {
    know(1, 0);
    (void)applying(0);
    EXPECT_EQ(keys(), (Keys{1, 3}));
}

TEST_F(ApplyStandard, input_1_makes_its_own_record_only) {
    (void)applying(1);
    EXPECT_EQ(keys(), Keys{2});
    (void)applying(1);
    EXPECT_EQ(keys(), Keys{2});
}

TEST_F(ApplyStandard, nothing_else_of_a_record_is_touched) {
    VideoSetting& setting = input_.videoSettings[1];
    setting = {static_cast<ZRVideoMirrorSetting>(3), 90, 1, 2, 3, 4, 2};
    (void)applying(0);
    EXPECT_EQ(setting.mirror, static_cast<ZRVideoMirrorSetting>(3));
    EXPECT_EQ(setting.rotation.degrees, 90);
    EXPECT_EQ(setting.brightness, 1);
    EXPECT_EQ(setting.contrast, 2);
    EXPECT_EQ(setting.hue, 3);
    EXPECT_EQ(setting.saturation, 4);
    EXPECT_EQ(setting.videoStandard, 0);
}

TEST_F(ApplyStandard, a_detection_that_fails_forces_pal_and_is_made_again_the_next_time) {
    const std::vector<Calls> expected{
        {"VIDIOC_QUERYSTD 12 0", "VIDIOC_S_STD 12 255", settingFormats(sharedPalDualLite)},
        {"VIDIOC_QUERYSTD 13 0", "VIDIOC_S_STD 13 255", settingFormats(secondPalDualLite)},
        {"VIDIOC_QUERYSTD 12 0", "VIDIOC_S_STD 12 255", settingFormats(sharedPalDualLite)}};
    for (int input = 0; input < 3; ++input) {
        const auto interface = static_cast<unsigned short>(input + 1);
        Input::lastSetStandard[input] = 0;
        Devices::fail("VIDIOC_QUERYSTD", EIO);
        const OutputCapture capture;
        EXPECT_EQ(applying(input), expected[static_cast<std::size_t>(input)]);
        EXPECT_EQ(input_.standard(interface), 2);
        EXPECT_EQ(Input::lastSetStandard[input], 2);
        setSignal(sharedDecoder, ntscSignal);
        setSignal(secondDecoder, ntscSignal);
        EXPECT_EQ(applying(input).size(), 3U);
        EXPECT_EQ(input_.standard(interface), 1);
    }
}

TEST_F(ApplyStandard, a_decoder_that_is_not_open_is_reported_and_the_formats_are_set) {
    Input::fileDescriptorsSub[0] = -1;
    errno = ENODEV;
    OutputCapture capture;
    const Calls made = applying(0);
    capture.release();
    EXPECT_EQ(made, Calls{settingFormats(sharedPalDualLite)});
    EXPECT_EQ(capture.output(), "ERROR OPENING VIDEO SUB DEVICE/dev/v4l-subdev3: No such device\n");
    EXPECT_EQ(Input::lastSetStandard[0], 2);
}

TEST_F(ApplyStandard, a_standard_that_is_refused_is_reported_and_the_formats_are_set) {
    setSignal(secondDecoder, ntscSignal);
    Devices::fail("VIDIOC_S_STD", EBUSY);
    OutputCapture capture;
    const Calls made = applying(1);
    capture.release();
    EXPECT_EQ(made.back(), settingFormats(secondNtscDualLite));
    EXPECT_EQ(capture.output(), "1: FAILED to set STD to 1\n");
    EXPECT_EQ(Input::lastSetStandard[1], 1);
}

TEST_F(ApplyStandard, formats_that_are_refused_are_ignored_without_a_word) {
    Media::formatsResult = -EINVAL;
    OutputCapture capture;
    const Calls first = applying(0);
    const Calls second = applying(1);
    capture.release();
    EXPECT_EQ(first.size() + second.size(), 6U);
    EXPECT_EQ(capture.output() + capture.errors(), "");
    EXPECT_EQ(input_.standard(1) + input_.standard(2), 0);
}

TEST_F(ApplyStandard, without_a_media_device_the_standard_is_forced_and_no_format_set) {
    Input::mediaDevice = nullptr;
    EXPECT_EQ(applying(0), (Calls{"VIDIOC_QUERYSTD 12 0", "VIDIOC_S_STD 12 255"}));
    EXPECT_EQ(applying(1), (Calls{"VIDIOC_QUERYSTD 13 0", "VIDIOC_S_STD 13 255"}));
}

TEST_F(ApplyStandard, decoders_that_were_not_found_leave_their_names_empty_in_the_texts) {
    Input::twName.clear();
    Input::advName.clear();
    const std::string begin = "'':0 [fmt:UYVY2X8/720x576";
    EXPECT_EQ(applying(0).back().substr(0, 57), settingFormats(begin));
    EXPECT_EQ(applying(1).back().substr(0, 57), settingFormats(begin));
}

TEST_F(ApplyStandard, the_sizes_are_those_of_the_class) {
    Input::palSize = "704x560";
    Input::ntscSize = "704x464";
    EXPECT_NE(applying(0).back().find("/704x560@1/50]"), std::string::npos);
    setSignal(secondDecoder, ntscSignal);
    EXPECT_NE(applying(1).back().find("/704x464@1/50 field:none],"), std::string::npos);
}

}  // namespace
}  // namespace ZR::test
