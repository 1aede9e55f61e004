#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "camera_board.h"
#include "camera_stream.h"

/// A board that has no adv7180, and a tw9912 whose name goes on where others have an address.

namespace ZR::test {
namespace {

class CamerasWithoutAdv7180 : public CameraBoard {};

constexpr char longName[] = "tw9912_front_and_rear";

}  // namespace

TEST_F(CamerasWithoutAdv7180, input_1_keeps_an_empty_path_and_no_descriptor) {
    ASSERT_EQ("", decoderEntity(1));
    Cameras::doInitialSetup();
    EXPECT_EQ("", Cameras::advName);
    EXPECT_EQ("", Cameras::videoSubDevices[1]);
    EXPECT_EQ(-1, Cameras::fileDescriptorsSub[1]);
    EXPECT_EQ(nodeOf(captureEntity(1)), Cameras::videoDevices[1]);
    EXPECT_LT(0, Cameras::fileDescriptors[1]);
}

TEST_F(CamerasWithoutAdv7180, a_longer_name_matches_and_stands_whole_in_the_first_link) {
    Cameras::doInitialSetup();
    EXPECT_EQ(longName, Cameras::twName);
    EXPECT_EQ(saidBy(std::string("media-ctl -e ") + longName), Cameras::videoSubDevices[0]);
    EXPECT_EQ(Cameras::videoSubDevices[0], Cameras::videoSubDevices[2]);
    const Lines seen = logLines();
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ("tw9912 link 0 -> ipu1_csi1_mux:4 1", seen.front());
}

TEST_F(CamerasWithoutAdv7180, the_links_that_are_there_are_those_that_media_ctl_sets) {
    for (const std::string& link : pathLinks())
        (void)saidBy("media-ctl -l \"" + link + "\" 2>&1");
    const std::string expected = graphByMediaCtl();
    ASSERT_NE(std::string::npos, expected.find("\"ipu1_csi0_mux\":5 [ENABLED]"));
    renewGraph();
    clearLog();
    Cameras::doInitialSetup();
    EXPECT_EQ(expected, graphByMediaCtl());
    EXPECT_EQ(6U, logLines().size());
}

TEST_F(CamerasWithoutAdv7180, inputs_0_and_2_still_work_and_stream) {
    plugInCamera(2, "ntsc");
    Cameras cameras;
    EXPECT_EQ("", cameras.printedBySetup(0));
    EXPECT_EQ("input 0 PAL 720x576", shownAt(Cameras::videoDevices[0]));
    EXPECT_EQ("", cameras.printedBySetup(2));
    EXPECT_EQ("input 2 NTSC 720x480", shownAt(Cameras::videoDevices[2]));
}

TEST_F(CamerasWithoutAdv7180, a_start_of_input_1_prints_that_its_decoder_is_not_open) {
    Cameras cameras;
    clearLog();
    errno = ENOENT;
    EXPECT_EQ("ERROR OPENING VIDEO SUB DEVICE: No such file or directory\n",
              cameras.printedBySetup(1));
    EXPECT_EQ(2, cameras.standardOf(1));
    EXPECT_EQ(2, Cameras::lastSetStandard[1]);
    EXPECT_EQ(Lines{}, logLines());
    EXPECT_EQ("ENOLINK", shownAt(Cameras::videoDevices[1]));
}

}  // namespace ZR::test
