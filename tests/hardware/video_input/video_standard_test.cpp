#include <cerrno>
#include <cstdio>
#include <iomanip>
#include <iostream>
#include <string>

#include "tests/hardware/video_input/capture_board.h"
#include "tests/support/output_capture.h"

namespace ZR::test {
namespace {

using Input = ZRGstreamerVideoInput;

constexpr int sharedDecoder = 12;
constexpr int secondDecoder = 13;

class VideoStandard : public CaptureTest {
  protected:
    VideoStandard() { discover(false); }

    static void setSignal(v4l2_std_id mask) {
        Devices::devices[sharedDecoder].signal = mask;
        Devices::devices[secondDecoder].signal = mask;
    }

    /// What an operation has printed, which it has flushed.
    template <typename Operation>
    static std::string printed(Operation operation) {
        OutputCapture capture;
        operation();
        std::string text = capture.output() + capture.errors();
        capture.release();
        return text;
    }

    static std::string detecting(int input, int expected) {
        int result = -1;
        std::string text = printed([&] { result = Input::detectVideoStandard(input); });
        EXPECT_EQ(result, expected) << input;
        return text;
    }
};

using DetectVideoStandard = VideoStandard;
using SetVideoStandard = VideoStandard;

TEST_F(DetectVideoStandard, returns_0_for_pal_and_1_for_ntsc_without_a_word) {
    setSignal(0xFF);
    for (int input = 0; input < 3; ++input)
        EXPECT_EQ(detecting(input, 0), "");
    setSignal(0xB000);
    for (int input = 0; input < 3; ++input)
        EXPECT_EQ(detecting(input, 1), "");
}

TEST_F(DetectVideoStandard, returns_0_for_an_empty_mask_without_a_word) {
    setSignal(0);
    EXPECT_EQ(detecting(0, 0), "");
}

TEST_F(DetectVideoStandard, returns_1_for_ntsc_m_only_and_for_ntsc_with_pal) {
    setSignal(0x1000);
    EXPECT_EQ(detecting(0, 1), "");
    setSignal(0xB0FF);
    EXPECT_EQ(detecting(1, 1), "");
}

TEST_F(DetectVideoStandard, asks_the_inputs_decoder_once_with_an_empty_mask) {
    setSignal(0xFF);
    for (int input = 0; input < 3; ++input)
        (void)Input::detectVideoStandard(input);
    EXPECT_EQ(calls(),
              (Calls{"VIDIOC_QUERYSTD 12 0", "VIDIOC_QUERYSTD 13 0", "VIDIOC_QUERYSTD 12 0"}));
}

TEST_F(DetectVideoStandard, prints_an_unsupported_mask_without_a_line_end_and_without_a_flush) {
    setSignal(0xFF0000);
    const OutputCapture capture;
    EXPECT_EQ(Input::detectVideoStandard(0), 0);
    EXPECT_EQ(capture.output(), "");
    std::cout.flush();
    EXPECT_EQ(capture.output(), "CAM 1: UNSUPPORTED video standard detected: 16711680");
    EXPECT_EQ(capture.errors(), "");
}

TEST_F(DetectVideoStandard, counts_inputs_from_1_in_the_unsupported_message) {
    setSignal(0x100);
    const OutputCapture capture;
    for (int input = 0; input < 3; ++input)
        EXPECT_EQ(Input::detectVideoStandard(input), 0);
    std::cout.flush();
    EXPECT_EQ(capture.output(),
              "CAM 1: UNSUPPORTED video standard detected: 256"
              "CAM 2: UNSUPPORTED video standard detected: 256"
              "CAM 3: UNSUPPORTED video standard detected: 256");
}

TEST_F(DetectVideoStandard, prints_a_mask_of_64_bits_as_an_unsigned_number) {
    setSignal(0xFFFFFFFF00000000);
    const OutputCapture capture;
    EXPECT_EQ(Input::detectVideoStandard(1), 0);
    std::cout.flush();
    EXPECT_EQ(capture.output(), "CAM 2: UNSUPPORTED video standard detected: 18446744069414584320");
}

TEST_F(DetectVideoStandard, prints_the_mask_in_decimal_whatever_the_stream_is_set_to) {
    setSignal(0xFF0000);
    const OutputCapture capture;
    std::cout << std::hex << std::showbase << std::setfill('*') << std::setw(70);
    EXPECT_EQ(Input::detectVideoStandard(2), 0);
    std::cout.flush();
    EXPECT_EQ(capture.output(), "CAM 3: UNSUPPORTED video standard detected: 16711680");
}

TEST_F(DetectVideoStandard, the_next_line_follows_an_unsupported_mask_at_once) {
    setSignal(0x4000);
    const OutputCapture capture;
    EXPECT_EQ(Input::detectVideoStandard(0), 0);
    Devices::fail("VIDIOC_S_STD", EBUSY);
    Input::setVideoStandard(0, 0);
    EXPECT_EQ(capture.output(),
              "CAM 1: UNSUPPORTED video standard detected: 16384"
              "0: FAILED to set STD to 0\n");
}

TEST_F(DetectVideoStandard, returns_2_and_prints_when_the_decoder_is_not_open) {
    for (int input = 0; input < 3; ++input) {
        Input::fileDescriptorsSub[input] = -1;
        Input::videoSubDevices[input] = "/dev/v4l-subdev" + std::to_string(input);
    }
    const std::string begin = "ERROR OPENING VIDEO SUB DEVICE/dev/v4l-subdev";
    errno = ENODEV;
    EXPECT_EQ(detecting(0, 2), begin + "0: No such device\n");
    errno = EACCES;
    EXPECT_EQ(detecting(1, 2), begin + "1: Permission denied\n");
    errno = ENOENT;
    EXPECT_EQ(detecting(2, 2), begin + "2: No such file or directory\n");
    EXPECT_EQ(calls(), Calls{});
}

TEST_F(DetectVideoStandard, shows_errno_as_it_stands_also_when_nothing_failed) {
    Input::fileDescriptorsSub[0] = -1;
    Input::videoSubDevices[0] = "";
    errno = 0;
    EXPECT_EQ(detecting(0, 2), "ERROR OPENING VIDEO SUB DEVICE: Success\n");
}

TEST_F(DetectVideoStandard, a_descriptor_of_0_counts_as_not_open) {
    Devices::devices[0].signal = 0xB000;
    Input::fileDescriptorsSub[1] = 0;
    errno = EIO;
    EXPECT_EQ(detecting(1, 2),
              "ERROR OPENING VIDEO SUB DEVICE/dev/v4l-subdev9: Input/output error\n");
    EXPECT_EQ(calls(), Calls{});
}

TEST_F(DetectVideoStandard, a_descriptor_of_1_counts_as_open) {
    Devices::devices[1].signal = 0xB000;
    Input::fileDescriptorsSub[1] = 1;
    EXPECT_EQ(Input::detectVideoStandard(1), 1);
    EXPECT_EQ(calls(), Calls{"VIDIOC_QUERYSTD 1 0"});
}

TEST_F(DetectVideoStandard, returns_2_and_prints_when_the_query_fails) {
    const std::string begin = "ERROR QUERY VIDEO STANDARD FOR /dev/v4l-subdev";
    Devices::fail("VIDIOC_QUERYSTD", ENODATA);
    EXPECT_EQ(detecting(0, 2), begin + "3: No data available\n");
    Devices::fail("VIDIOC_QUERYSTD", EIO);
    EXPECT_EQ(detecting(1, 2), begin + "9: Input/output error\n");
    Devices::fail("VIDIOC_QUERYSTD", ENOTTY);
    EXPECT_EQ(detecting(2, 2), begin + "3: Inappropriate ioctl for device\n");
    EXPECT_EQ(calls().size(), 3U);
}

TEST_F(DetectVideoStandard, repeats_an_interrupted_query) {
    setSignal(0x2000);
    Devices::fail("VIDIOC_QUERYSTD", EINTR, 3);
    EXPECT_EQ(detecting(0, 1), "");
    EXPECT_EQ(calls(), Calls(4, "VIDIOC_QUERYSTD 12 0"));
}

TEST_F(DetectVideoStandard, changes_nothing_on_the_decoder) {
    setSignal(0xB000);
    (void)Input::detectVideoStandard(0);
    EXPECT_EQ(callsOf("VIDIOC_S"), Calls{});
    EXPECT_EQ(Input::lastSetStandard[0], 2);
}

TEST_F(SetVideoStandard, of_1_forces_ntsc) {
    Input::setVideoStandard(0, 1);
    Input::setVideoStandard(1, 1);
    EXPECT_EQ(calls(), (Calls{"VIDIOC_S_STD 12 45056", "VIDIOC_S_STD 13 45056"}));
}

TEST_F(SetVideoStandard, of_0_forces_pal) {
    Input::setVideoStandard(1, 0);
    Input::setVideoStandard(2, 0);
    EXPECT_EQ(calls(), (Calls{"VIDIOC_S_STD 13 255", "VIDIOC_S_STD 12 255"}));
}

TEST_F(SetVideoStandard, of_2_and_of_any_other_number_forces_pal) {
    for (const int standard : {2, 3, -1, 0x7FFFFFFF})
        Input::setVideoStandard(0, standard);
    EXPECT_EQ(calls(), Calls(4, "VIDIOC_S_STD 12 255"));
}

TEST_F(SetVideoStandard, does_nothing_when_the_decoder_is_not_open) {
    Devices::devices[0] = {};
    EXPECT_EQ(printed([] {
                  for (const int descriptor : {-1, 0}) {
                      Input::fileDescriptorsSub[0] = descriptor;
                      Input::setVideoStandard(0, 1);
                  }
              }),
              "");
    EXPECT_EQ(calls(), Calls{});
}

TEST_F(SetVideoStandard, on_a_descriptor_of_1_is_made) {
    Devices::devices[1] = {};
    Input::fileDescriptorsSub[2] = 1;
    Input::setVideoStandard(2, 1);
    EXPECT_EQ(calls(), Calls{"VIDIOC_S_STD 1 45056"});
}

TEST_F(SetVideoStandard, prints_a_refusal_with_the_input_counted_from_0_and_tries_once) {
    Devices::fail("VIDIOC_S_STD", EBUSY, 10);
    const auto setting = [](int input, int standard) {
        return printed([=] { Input::setVideoStandard(input, standard); });
    };
    EXPECT_EQ(setting(0, 0), "0: FAILED to set STD to 0\n");
    EXPECT_EQ(setting(1, 1), "1: FAILED to set STD to 1\n");
    EXPECT_EQ(setting(2, 2), "2: FAILED to set STD to 2\n");
    EXPECT_EQ(setting(0, -7), "0: FAILED to set STD to -7\n");
    EXPECT_EQ(calls().size(), 4U);
}

TEST_F(SetVideoStandard, succeeds_without_a_word) {
    EXPECT_EQ(printed([] { Input::setVideoStandard(0, 1); }), "");
}

TEST_F(SetVideoStandard, counts_an_interrupted_call_as_refused) {
    Devices::fail("VIDIOC_S_STD", EINTR);
    EXPECT_EQ(printed([] { Input::setVideoStandard(1, 1); }), "1: FAILED to set STD to 1\n");
    EXPECT_EQ(calls(), Calls{"VIDIOC_S_STD 13 45056"});
}

TEST_F(SetVideoStandard, leaves_the_record_of_the_last_one_to_its_caller) {
    Input::setVideoStandard(0, 1);
    EXPECT_EQ(Input::lastSetStandard[0], 2);
}

TEST(VideoStandardBeforeDiscovery, finds_no_decoder_open) {
    Input::fileDescriptorsSub[0] = -1;
    Input::videoSubDevices[0].clear();
    OutputCapture capture;
    errno = ENXIO;
    const int result = Input::detectVideoStandard(0);
    Input::setVideoStandard(0, 1);
    capture.release();
    EXPECT_EQ(result, 2);
    EXPECT_EQ(capture.output(), "ERROR OPENING VIDEO SUB DEVICE: No such device or address\n");
}

}  // namespace
}  // namespace ZR::test
