#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "camera_board.h"
#include "camera_stream.h"

/// A board that has no tw9912, and an adv7180 whose name goes on where others have an address.

namespace ZR::test {
namespace {

class CamerasWithoutTw9912 : public CameraBoard {};

constexpr char longName[] = "adv7180_side";

}  // namespace

TEST_F(CamerasWithoutTw9912, inputs_0_and_2_keep_an_empty_path_and_no_descriptor) {
    ASSERT_EQ("", decoderEntity(0));
    Cameras::doInitialSetup();
    EXPECT_EQ("", Cameras::twName);
    for (const int input : {0, 2}) {
        EXPECT_EQ("", Cameras::videoSubDevices[input]);
        EXPECT_EQ(-1, Cameras::fileDescriptorsSub[input]);
        EXPECT_EQ(nodeOf(captureEntity(input)), Cameras::videoDevices[input]);
        EXPECT_LT(0, Cameras::fileDescriptors[input]);
    }
}

TEST_F(CamerasWithoutTw9912, a_longer_name_matches_and_stands_whole_in_the_fourth_link) {
    Cameras::doInitialSetup();
    EXPECT_EQ(longName, Cameras::advName);
    EXPECT_EQ(saidBy(std::string("media-ctl -e ") + longName), Cameras::videoSubDevices[1]);
    EXPECT_EQ(Lines{"adv7180 link 0 -> imx6-mipi-csi2:0 1"}, beginningWith("adv7180", logLines()));
}

TEST_F(CamerasWithoutTw9912, input_1_still_works_and_streams) {
    plugInCamera(1, "ntsc");
    Cameras cameras;
    EXPECT_EQ("", cameras.printedBySetup(1));
    EXPECT_EQ("input 1 NTSC 720x480", shownAt(Cameras::videoDevices[1]));
}

TEST_F(CamerasWithoutTw9912, input_2_is_selected_and_prints_that_its_decoder_is_not_open) {
    Cameras cameras;
    clearLog();
    errno = ENOENT;
    EXPECT_EQ("ERROR OPENING VIDEO SUB DEVICE: No such file or directory\n",
              cameras.printedBySetup(2));
    EXPECT_EQ(2, cameras.standardOf(2));
    EXPECT_EQ(Lines{"ipu2_csi1_capture input_select 1"}, logLines());
    EXPECT_EQ("ENOLINK", shownAt(Cameras::videoDevices[2]));
}

}  // namespace ZR::test
