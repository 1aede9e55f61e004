#include <gtest/gtest.h>

#include <string>

#include "camera_board.h"
#include "camera_stream.h"
#include "tests/support/output_capture.h"

namespace ZR::test {
namespace {

class CameraStandard : public CameraBoard {};

/// The mask that a decoder is set to, by v4l2-ctl.
std::string standardByTool(int input) {
    const std::string text = saidBy("v4l2-ctl -d " + nodeOf(decoderEntity(input)) + " -S");
    const std::size_t begin = text.find("0x");
    return begin == std::string::npos ? text : text.substr(begin, text.find('\n') - begin);
}

constexpr char palMask[] = "0x000000ff";
constexpr char ntscMask[] = "0x0000b000";

}  // namespace

TEST_F(CameraStandard, what_the_camera_sends_is_detected_and_forced) {
    plugInCamera(1, "ntsc");
    Cameras cameras;
    EXPECT_EQ("", cameras.printedBySetup(0));
    EXPECT_EQ("", cameras.printedBySetup(1));
    EXPECT_EQ(0, cameras.standardOf(0));
    EXPECT_EQ(1, cameras.standardOf(1));
    EXPECT_EQ(palMask, standardByTool(0));
    EXPECT_EQ(ntscMask, standardByTool(1));
    EXPECT_EQ(0, Cameras::lastSetStandard[0]);
    EXPECT_EQ(1, Cameras::lastSetStandard[1]);
    EXPECT_EQ(2, Cameras::lastSetStandard[2]);
}

TEST_F(CameraStandard, no_signal_is_PAL_without_a_message) {
    plugInCamera(0, "none");
    Cameras cameras;
    EXPECT_EQ("", cameras.printedBySetup(0));
    EXPECT_EQ(0, cameras.standardOf(0));
}

TEST_F(CameraStandard, NTSC_M_alone_is_NTSC) {
    plugInCamera(0, "0x1000");
    EXPECT_EQ(1, (Cameras::doInitialSetup(), Cameras::detectVideoStandard(0)));
}

TEST_F(CameraStandard, a_mask_of_both_is_NTSC) {
    plugInCamera(1, "0xb0ff");
    EXPECT_EQ(1, (Cameras::doInitialSetup(), Cameras::detectVideoStandard(1)));
}

TEST_F(CameraStandard, SECAM_is_PAL_and_prints_the_mask_as_a_decimal_number) {
    plugInCamera(2, "secam");
    Cameras cameras;
    EXPECT_EQ("CAM 3: UNSUPPORTED video standard detected: 16711680", cameras.printedBySetup(2));
    EXPECT_EQ(0, cameras.standardOf(2));
    EXPECT_EQ(palMask, standardByTool(2));
}

TEST_F(CameraStandard, a_failed_query_prints_its_reason_and_forces_PAL_at_its_size) {
    plugInCamera(0, "ntsc");
    Cameras cameras;
    turn("tw9912/fail_querystd", "EIO");
    clearLog();
    EXPECT_EQ(
        "ERROR QUERY VIDEO STANDARD FOR " + nodeOf(decoderEntity(0)) + ": Input/output error\n",
        cameras.printedBySetup(0));
    EXPECT_EQ(2, cameras.standardOf(0));
    EXPECT_EQ(Lines{"tw9912 standard 0xff"}, beginningWith("tw9912 standard", logLines()));
    EXPECT_EQ("input 0 PAL 720x576", shownAt(nodeOf(captureEntity(0))));
}

TEST_F(CameraStandard, a_standard_that_could_not_be_detected_is_asked_for_by_the_next_start) {
    plugInCamera(1, "ntsc");
    Cameras cameras;
    turn("adv7180/fail_querystd", "EIO");
    (void)cameras.printedBySetup(1);
    EXPECT_EQ("", cameras.printedBySetup(1));
    EXPECT_EQ(1, cameras.standardOf(1));
    EXPECT_EQ("input 1 NTSC 720x480", shownAt(nodeOf(captureEntity(1))));
}

TEST_F(CameraStandard, an_unknown_standard_forces_PAL) {
    Cameras::doInitialSetup();
    Cameras::setVideoStandard(0, 1);
    ASSERT_EQ(ntscMask, standardByTool(0));
    Cameras::setVideoStandard(0, 2);
    EXPECT_EQ(palMask, standardByTool(0));
}

TEST_F(CameraStandard, a_decoder_that_streams_refuses_the_standard_which_is_printed) {
    Cameras cameras;
    cameras.setupCameraInput(0);
    cameras.setupCameraInput(1);
    const CameraStream shared(nodeOf(captureEntity(0)));
    const CameraStream second(nodeOf(captureEntity(1)));
    ASSERT_EQ(0, shared.error());
    ASSERT_EQ(0, second.error());
    clearLog();
    EXPECT_EQ("0: FAILED to set STD to 0\n", cameras.printedBySetup(0));
    EXPECT_EQ(Lines{"tw9912 standard 0xff error EBUSY"},
              beginningWith("tw9912 standard", logLines()));
    OutputCapture capture;
    Cameras::setVideoStandard(1, 1);
    capture.release();
    EXPECT_EQ("1: FAILED to set STD to 1\n", capture.output());
}

TEST_F(CameraStandard, a_refused_standard_is_printed_and_the_formats_follow) {
    Cameras cameras;
    turn("adv7180/fail_s_std", "EIO");
    clearLog();
    EXPECT_EQ("1: FAILED to set STD to 0\n", cameras.printedBySetup(1));
    EXPECT_EQ(1U, beginningWith("ipu1_csi0 format 2 AYUV8_1X32/720x576", logLines()).size());
}

}  // namespace ZR::test
