#include <string>

#include "tests/hardware/video_input/capture_board.h"
#include "tests/hardware/video_input/capture_texts.h"
#include "tests/support/output_capture.h"

// What one start after the other asks of the drivers.

namespace ZR::test {
namespace {

constexpr int sharedDecoder = 12;
const std::string asking = "VIDIOC_G_CTRL 10 9968066 0";
const std::string forcingPal = "VIDIOC_S_STD 12 255";
const std::string forcingNtsc = "VIDIOC_S_STD 12 45056";
const std::string palFormats = std::string("v4l2_subdev_parse_setup_formats ") + sharedPalDualLite;
const std::string ntscFormats =
    std::string("v4l2_subdev_parse_setup_formats ") + sharedNtscDualLite;

class StartSequence : public CaptureTest {
  protected:
    StartSequence() { discover(false); }

    /// The calls that one start makes.
    Calls starting(int input) {
        (void)takeCalls();
        input_.setupCameraInput(input);
        return takeCalls();
    }

    OpenInput input_;
};

TEST_F(StartSequence, a_second_start_of_input_1_sets_neither_standard_nor_formats) {
    EXPECT_EQ(starting(1).size(), 3U);
    EXPECT_EQ(starting(1), Calls{});
    EXPECT_EQ(starting(1), Calls{});
}

TEST_F(StartSequence, a_second_start_of_input_0_only_asks_once_both_standards_are_known_and_equal) {
    (void)starting(2);
    (void)starting(0);
    EXPECT_EQ(starting(0), Calls{asking});
    EXPECT_EQ(starting(0), Calls{asking});
}

TEST_F(StartSequence, a_change_between_inputs_of_one_standard_sets_the_selection_only) {
    (void)starting(0);
    (void)starting(2);
    EXPECT_EQ(starting(0), (Calls{asking, "VIDIOC_S_CTRL 10 9968066 0"}));
    EXPECT_EQ(starting(2), (Calls{asking, "VIDIOC_S_CTRL 10 9968066 1"}));
}

TEST_F(StartSequence, input_0_is_set_up_each_time_while_input_2_was_never_started) {
    EXPECT_EQ(starting(0), (Calls{asking, "VIDIOC_QUERYSTD 12 0", forcingPal, palFormats}));
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(starting(0), (Calls{asking, forcingPal, palFormats}));
}

TEST_F(StartSequence, input_2_is_set_up_each_time_while_input_0_was_never_started) {
    Devices::devices[sharedDecoder].signal = 0xB000;
    (void)starting(2);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(starting(2), (Calls{asking, forcingNtsc, ntscFormats}));
}

TEST_F(StartSequence, a_change_from_pal_on_input_0_to_ntsc_on_input_2_rebuilds_the_formats) {
    Devices::devices[sharedDecoder].signal = 0xFF;
    (void)starting(0);
    Devices::devices[sharedDecoder].signal = 0xB000;
    EXPECT_EQ(starting(2), (Calls{asking, "VIDIOC_S_CTRL 10 9968066 1", "VIDIOC_QUERYSTD 12 0",
                                  forcingNtsc, ntscFormats}));
    EXPECT_EQ(Devices::devices[10].selection, 1);
    EXPECT_EQ(Devices::devices[sharedDecoder].standard, 0xB000U);
}

TEST_F(StartSequence, inputs_of_two_standards_are_set_up_at_each_change) {
    (void)starting(0);
    Devices::devices[sharedDecoder].signal = 0xB000;
    (void)starting(2);
    EXPECT_EQ(starting(0), (Calls{asking, "VIDIOC_S_CTRL 10 9968066 0", forcingPal, palFormats}));
    EXPECT_EQ(starting(0), (Calls{asking, forcingPal, palFormats}));
    EXPECT_EQ(starting(2), (Calls{asking, "VIDIOC_S_CTRL 10 9968066 1", forcingNtsc, ntscFormats}));
}

TEST_F(StartSequence, each_object_detects_for_itself) {
    (void)starting(1);
    OpenInput other;
    (void)takeCalls();
    other.setupCameraInput(1);
    EXPECT_EQ(callsOf("VIDIOC_QUERYSTD"), Calls{"VIDIOC_QUERYSTD 13 0"});
}

TEST_F(StartSequence, a_start_before_any_discovery_touches_no_device) {
    ZRGstreamerVideoInput::mediaDevice = nullptr;
    for (int& descriptor : ZRGstreamerVideoInput::fileDescriptors)
        descriptor = -1;
    for (int& descriptor : ZRGstreamerVideoInput::fileDescriptorsSub)
        descriptor = -1;
    const OutputCapture capture;
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(starting(i), Calls{}) << i;
}

}  // namespace
}  // namespace ZR::test
