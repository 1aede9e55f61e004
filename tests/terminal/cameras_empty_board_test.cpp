#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "camera_board.h"
#include "tests/support/output_capture.h"

namespace ZR::test {
namespace {

using Input = ZRGstreamerVideoInput;

}  // namespace

TEST(CamerasEmptyBoard, discovery_without_a_media_device_finds_nothing_and_prints_nothing) {
    ASSERT_EQ("(cat failed)", seenByCat("/dev/media0"));
    OutputCapture capture;
    Input::doInitialSetup();
    capture.release();
    EXPECT_EQ("", capture.output() + capture.errors());
    EXPECT_FALSE(Input::runningOnQuadCore);
    EXPECT_EQ("", Input::twName + Input::advName);
    for (int input = 0; input < Input::inputCount; ++input) {
        EXPECT_EQ("", Input::videoDevices[input] + Input::videoSubDevices[input]);
        EXPECT_EQ(-1, Input::fileDescriptors[input]);
        EXPECT_EQ(-1, Input::fileDescriptorsSub[input]);
    }
}

TEST(CamerasEmptyBoard, a_start_prints_what_is_not_open_and_changes_no_standard) {
    Cameras cameras;
    const std::string reason = ": No such file or directory\n";
    const std::string decoder = "ERROR OPENING VIDEO SUB DEVICE" + reason;
    for (const int input : {0, 1, 2}) {
        errno = ENOENT;
        EXPECT_EQ((input == 1 ? "" : "ERROR OPENING VIDEO DEVICE " + reason) + decoder,
                  cameras.printedBySetup(input));
        EXPECT_EQ(2, cameras.standardOf(input));
    }
}

}  // namespace ZR::test
