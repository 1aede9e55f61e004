#include <cerrno>
#include <string>

#include "tests/hardware/video_input/capture_board.h"
#include "tests/hardware/video_input/capture_texts.h"
#include "tests/support/output_capture.h"

namespace ZR::test {
namespace {

using Input = ZRGstreamerVideoInput;

constexpr int sharedNode = 10;
const std::string asking = "VIDIOC_G_CTRL 10 9968066 0";

/// All three standards are known and equal, so that nothing follows the selection.
class Routing : public CaptureTest {
  protected:
    Routing() {
        discover(false);
        for (unsigned short interface = 1; interface <= 3; ++interface)
            input_.videoSettings[interface].videoStandard = 0;
    }

    /// What a set-up has printed.
    std::string printedBy(int input) {
        OutputCapture capture;
        input_.setupCameraInput(input);
        capture.release();
        return capture.output() + capture.errors();
    }

    /// What follows the selection when the other input's standard is another one.
    void makeStandardsDiffer() { input_.videoSettings[3].videoStandard = 1; }

    OpenInput input_;
};

TEST_F(Routing, input_0_is_selected_where_input_2_was) {
    Devices::devices[sharedNode].selection = 1;
    EXPECT_EQ(printedBy(0), "");
    EXPECT_EQ(calls(), (Calls{asking, "VIDIOC_S_CTRL 10 9968066 0"}));
    EXPECT_EQ(Devices::devices[sharedNode].selection, 0);
    EXPECT_EQ(Devices::devices[sharedNode].controlSet, 0x009819C2U);
}

TEST_F(Routing, input_2_is_selected_where_input_0_was) {
    Devices::devices[sharedNode].selection = 0;
    EXPECT_EQ(printedBy(2), "");
    EXPECT_EQ(calls(), (Calls{asking, "VIDIOC_S_CTRL 10 9968066 1"}));
    EXPECT_EQ(Devices::devices[sharedNode].selection, 1);
}

TEST_F(Routing, any_value_but_1_is_left_alone_for_input_0) {
    for (const int value : {0, 2, -1, 3, 0x7FFFFFFF}) {
        Devices::devices[sharedNode].selection = value;
        (void)takeCalls();
        input_.setupCameraInput(0);
        EXPECT_EQ(calls(), Calls{asking}) << value;
        EXPECT_EQ(Devices::devices[sharedNode].selection, value);
    }
}

TEST_F(Routing, any_value_but_0_is_left_alone_for_input_2) {
    for (const int value : {1, 2, -1, 3, 0x7FFFFFFF}) {
        Devices::devices[sharedNode].selection = value;
        (void)takeCalls();
        input_.setupCameraInput(2);
        EXPECT_EQ(calls(), Calls{asking}) << value;
        EXPECT_EQ(Devices::devices[sharedNode].selection, value);
    }
}

TEST_F(Routing, input_1_has_nothing_to_select_whatever_the_control_reads) {
    for (const int value : {0, 1, 2, -1}) {
        Devices::devices[sharedNode].selection = Devices::devices[11].selection = value;
        input_.setupCameraInput(1);
    }
    EXPECT_EQ(calls(), Calls{});
}

TEST_F(Routing, input_1_does_not_mind_a_capture_node_that_is_not_open) {
    Input::fileDescriptors[1] = -1;
    EXPECT_EQ(printedBy(1), "");
}

TEST_F(Routing, a_control_that_cannot_be_read_is_left_alone_and_the_standard_applied) {
    for (const int input : {0, 2}) {
        makeStandardsDiffer();
        Devices::devices[sharedNode].selection = input == 0 ? 1 : 0;
        Devices::fail("VIDIOC_G_CTRL", EINVAL);
        (void)takeCalls();
        EXPECT_EQ(printedBy(input), "");
        EXPECT_EQ(callsOf("VIDIOC_S_CTRL"), Calls{}) << input;
        EXPECT_EQ(callsOf("v4l2_subdev_parse_setup_formats").size(), 1U) << input;
    }
}

TEST_F(Routing, a_control_that_cannot_be_written_is_reported_and_the_standard_applied) {
    makeStandardsDiffer();
    Devices::devices[sharedNode].selection = 1;
    Devices::fail("VIDIOC_S_CTRL", EBUSY);
    EXPECT_EQ(printedBy(0), "0: FAIL: SET INPUT 0\n");
    EXPECT_EQ(callsOf("VIDIOC_S_CTRL").size(), 1U);
    EXPECT_EQ(callsOf("v4l2_subdev_parse_setup_formats").size(), 1U);
    Devices::devices[sharedNode].selection = 0;
    Devices::fail("VIDIOC_S_CTRL", ERANGE);
    EXPECT_EQ(printedBy(2), "2: FAIL: SET INPUT 1\n");
    EXPECT_EQ(callsOf("VIDIOC_S_CTRL").size(), 2U);
    EXPECT_EQ(callsOf("v4l2_subdev_parse_setup_formats").size(), 2U);
}

TEST_F(Routing, an_interrupted_read_of_the_control_is_repeated) {
    Devices::devices[sharedNode].selection = 1;
    Devices::fail("VIDIOC_G_CTRL", EINTR, 3);
    EXPECT_EQ(printedBy(0), "");
    EXPECT_EQ(calls(), (Calls{asking, asking, asking, asking, "VIDIOC_S_CTRL 10 9968066 0"}));
}

TEST_F(Routing, an_interrupted_write_of_the_control_counts_as_refused) {
    Devices::devices[sharedNode].selection = 1;
    Devices::fail("VIDIOC_S_CTRL", EINTR);
    EXPECT_EQ(printedBy(0), "0: FAIL: SET INPUT 0\n");
    EXPECT_EQ(calls(), (Calls{asking, "VIDIOC_S_CTRL 10 9968066 0"}));
}

TEST_F(Routing, a_capture_node_that_is_not_open_is_reported_and_the_standard_applied) {
    makeStandardsDiffer();
    Input::fileDescriptors[0] = Input::fileDescriptors[2] = -1;
    Input::videoDevices[2] = "/dev/video2";
    errno = ENODEV;
    EXPECT_EQ(printedBy(0), "ERROR OPENING VIDEO DEVICE /dev/video1: No such device\n");
    EXPECT_EQ(calls(),
              (Calls{"VIDIOC_S_STD 12 255",
                     std::string("v4l2_subdev_parse_setup_formats ") + sharedPalDualLite}));
    errno = EACCES;
    EXPECT_EQ(printedBy(2), "ERROR OPENING VIDEO DEVICE /dev/video2: Permission denied\n");
    EXPECT_EQ(callsOf("v4l2_subdev_parse_setup_formats").size(), 2U);
}

TEST_F(Routing, the_report_shows_errno_as_it_stands_and_an_empty_path) {
    Input::fileDescriptors[0] = -1;
    Input::videoDevices[0].clear();
    errno = 0;
    EXPECT_EQ(printedBy(0), "ERROR OPENING VIDEO DEVICE : Success\n");
    errno = ENOENT;
    EXPECT_EQ(printedBy(0), "ERROR OPENING VIDEO DEVICE : No such file or directory\n");
}

TEST_F(Routing, a_capture_node_with_the_descriptor_0_counts_as_not_open) {
    Devices::devices[0] = {};
    Input::fileDescriptors[0] = 0;
    errno = EIO;
    EXPECT_EQ(printedBy(0), "ERROR OPENING VIDEO DEVICE /dev/video1: Input/output error\n");
    EXPECT_EQ(calls(), Calls{});
}

TEST_F(Routing, a_capture_node_with_the_descriptor_1_counts_as_open) {
    Devices::devices[1].selection = 1;
    Input::fileDescriptors[0] = 1;
    input_.setupCameraInput(0);
    EXPECT_EQ(calls(), (Calls{"VIDIOC_G_CTRL 1 9968066 0", "VIDIOC_S_CTRL 1 9968066 0"}));
}

TEST_F(Routing, each_input_uses_the_descriptor_of_its_own_slot) {
    Devices::devices[14].selection = 0;
    Input::fileDescriptors[2] = 14;
    input_.setupCameraInput(2);
    EXPECT_EQ(calls(), (Calls{"VIDIOC_G_CTRL 14 9968066 0", "VIDIOC_S_CTRL 14 9968066 1"}));
}

}  // namespace
}  // namespace ZR::test
