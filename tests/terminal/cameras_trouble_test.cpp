#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "camera_board.h"
#include "camera_stream.h"

namespace ZR::test {
namespace {

class CameraTrouble : public CameraBoard {};

/// Whether the whole path of the inputs 0 and 2 was given a size.
bool pathHas(const std::string& size, const Lines& lines) {
    const std::string interface = isQuadBoard() ? "ipu2_csi1" : "ipu1_csi1";
    return !beginningWith(interface + " format 2 AYUV8_1X32/" + size, lines).empty();
}

}  // namespace

TEST_F(CameraTrouble, a_selection_that_cannot_be_read_is_skipped_silently) {
    Cameras cameras;
    turn(captureKnobs(0) + "/fail_g_ctrl", "EIO");
    clearLog();
    EXPECT_EQ("", cameras.printedBySetup(2));
    const Lines lines = logLines();
    EXPECT_EQ(Lines{}, beginningWith(captureKnobs(0) + " input_select", lines));
    EXPECT_TRUE(pathHas(pal, lines));
}

TEST_F(CameraTrouble, a_refused_selection_is_printed_and_the_path_is_set_up_all_the_same) {
    Cameras cameras;
    turn(captureKnobs(0) + "/fail_s_ctrl", "EIO 2");
    clearLog();
    EXPECT_EQ("2: FAIL: SET INPUT 1\n", cameras.printedBySetup(2));
    EXPECT_TRUE(pathHas(pal, logLines()));
    run("v4l2-ctl -d " + nodeOf(captureEntity(0)) + " -c input_select=1 2>/dev/null || true");
    turn(captureKnobs(0) + "/fail_s_ctrl", "0");
    run("v4l2-ctl -d " + nodeOf(captureEntity(0)) + " -c input_select=1");
    turn(captureKnobs(0) + "/fail_s_ctrl", "EIO");
    EXPECT_EQ("0: FAIL: SET INPUT 0\n", cameras.printedBySetup(0));
}

TEST_F(CameraTrouble, a_capture_node_that_is_not_open_is_printed_and_the_path_is_set_up) {
    turn(captureKnobs(0) + "/fail_open", "EACCES");
    Cameras cameras;
    for (const int input : {0, 2}) {
        clearLog();
        errno = EXDEV;
        EXPECT_EQ("ERROR OPENING VIDEO DEVICE " + nodeOf(captureEntity(0)) +
                      ": Invalid cross-device link\n",
                  cameras.printedBySetup(input));
        EXPECT_TRUE(pathHas(pal, logLines()));
    }
}

TEST_F(CameraTrouble, a_decoder_that_went_after_discovery_is_printed_by_both_steps) {
    Cameras cameras;
    const std::string node = nodeOf(decoderEntity(0));
    turn("tw9912/present", "0");
    EXPECT_EQ(
        "ERROR QUERY VIDEO STANDARD FOR " + node + ": No such device\n0: FAILED to set STD to 2\n",
        cameras.printedBySetup(0));
    EXPECT_EQ(2, cameras.standardOf(0));
    EXPECT_EQ("ENOLINK", shownAt(nodeOf(captureEntity(0))));
    turn("tw9912/present", "1");
}

TEST_F(CameraTrouble, a_capture_node_that_went_after_discovery_is_skipped_silently) {
    Cameras cameras;
    turn(captureKnobs(0) + "/present", "0");
    clearLog();
    EXPECT_EQ("", cameras.printedBySetup(2));
    EXPECT_EQ(0, cameras.standardOf(2));
    EXPECT_TRUE(pathHas(pal, logLines()));
    turn(captureKnobs(0) + "/present", "1");
}

TEST_F(CameraTrouble, refused_formats_are_ignored_silently_and_end_there) {
    Cameras cameras;
    turn(muxKnobs(1) + "/fail_s_fmt", "EIO -1");
    clearLog();
    EXPECT_EQ("", cameras.printedBySetup(1));
    const Lines lines = logLines();
    EXPECT_FALSE(beginningWith("imx6-mipi-csi2 format 1", lines).empty());
    EXPECT_EQ(Lines{}, beginningWith("ipu1_csi0 format", lines));
    EXPECT_EQ(0, cameras.standardOf(1));
}

TEST_F(CameraTrouble, a_media_controller_that_went_after_discovery_stops_nothing) {
    Cameras cameras;
    turn("media/present", "0");
    EXPECT_NE(std::string::npos, cameras.printedBySetup(0).find("0: FAILED to set STD to 2\n"));
    EXPECT_NE(std::string::npos, cameras.printedBySetup(1).find("1: FAILED to set STD to 2\n"));
    turn("media/present", "1");
}

}  // namespace ZR::test
