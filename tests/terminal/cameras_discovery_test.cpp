#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <string>

#include "camera_board.h"
#include "tests/support/output_capture.h"

namespace ZR::test {
namespace {

using Input = ZRGstreamerVideoInput;

class CameraDiscovery : public CameraBoard {};

std::string nodeByMediaCtl(const std::string& entity) {
    return saidBy("media-ctl -e '" + entity + "'");
}

/// What a descriptor of this process is open on; empty when it is not open.
std::string openedAt(int descriptor) {
    std::array<char, 64> target{};
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    (void)::readlink(link.c_str(), target.data(), target.size() - 1);
    return target.data();
}

void expectNothingFound() {
    EXPECT_EQ("", Input::twName);
    EXPECT_EQ("", Input::advName);
    for (int input = 0; input < Input::inputCount; ++input) {
        EXPECT_EQ("", Input::videoDevices[input]);
        EXPECT_EQ("", Input::videoSubDevices[input]);
        EXPECT_EQ(-1, Input::fileDescriptors[input]);
        EXPECT_EQ(-1, Input::fileDescriptorsSub[input]);
    }
}

/// The processor that the board has not got.
std::string otherCompatible() {
    return std::string("zr,terminal") + '\0' + (isQuadBoard() ? "fsl,imx6dl" : "fsl,imx6ull") +
           '\0';
}

/// The text of the device tree as it was, for the next case.
class CompatibleText {
  public:
    ~CompatibleText() { turn("device_tree/compatible/value", before_); }

  private:
    std::string before_ = seenByCat("/proc/device-tree/compatible");
};

}  // namespace

TEST_F(CameraDiscovery, the_names_and_nodes_are_those_that_media_ctl_shows) {
    Input::doInitialSetup();
    EXPECT_EQ(decoderEntity(0), Input::twName);
    EXPECT_EQ(decoderEntity(1), Input::advName);
    const std::string sharedNode = nodeByMediaCtl(captureEntity(0));
    ASSERT_EQ(0U, sharedNode.find("/dev/video"));
    EXPECT_EQ(sharedNode, Input::videoDevices[0]);
    EXPECT_EQ(sharedNode, Input::videoDevices[2]);
    EXPECT_EQ(nodeByMediaCtl(captureEntity(1)), Input::videoDevices[1]);
    const std::string sharedDecoder = nodeByMediaCtl(Input::twName);
    ASSERT_EQ(0U, sharedDecoder.find("/dev/v4l-subdev"));
    EXPECT_EQ(sharedDecoder, Input::videoSubDevices[0]);
    EXPECT_EQ(sharedDecoder, Input::videoSubDevices[2]);
    EXPECT_EQ(nodeByMediaCtl(Input::advName), Input::videoSubDevices[1]);
}

TEST_F(CameraDiscovery, inputs_0_and_2_share_the_descriptors_of_their_nodes) {
    Input::doInitialSetup();
    EXPECT_EQ(Input::fileDescriptors[0], Input::fileDescriptors[2]);
    EXPECT_EQ(Input::fileDescriptorsSub[0], Input::fileDescriptorsSub[2]);
    for (int input = 0; input < Input::inputCount; ++input) {
        EXPECT_EQ(nodeOf(captureEntity(input)), openedAt(Input::fileDescriptors[input]));
        EXPECT_EQ(nodeOf(decoderEntity(input)), openedAt(Input::fileDescriptorsSub[input]));
    }
}

TEST_F(CameraDiscovery, the_graph_after_it_is_the_one_that_media_ctl_makes_of_the_same_texts) {
    const std::string fresh = graphByMediaCtl();
    run("media-ctl -l \"" + joined(pathLinks()) + '"');
    const std::string expected = graphByMediaCtl();
    ASSERT_NE(fresh, expected);
    renewGraph();
    ASSERT_EQ(fresh, graphByMediaCtl());
    Input::doInitialSetup();
    EXPECT_EQ(expected, graphByMediaCtl());
}

TEST_F(CameraDiscovery, the_board_sees_the_seven_links_in_their_order_and_nothing_else) {
    Input::doInitialSetup();
    const Lines shared =
        isQuadBoard()
            ? Lines{"tw9912 link 0 -> ipu2_csi1_mux:1 1", "ipu2_csi1_mux link 2 -> ipu2_csi1:0 1",
                    "ipu2_csi1 link 2 -> ipu2_csi1_capture:0 1"}
            : Lines{"tw9912 link 0 -> ipu1_csi1_mux:4 1", "ipu1_csi1_mux link 5 -> ipu1_csi1:0 1",
                    "ipu1_csi1 link 2 -> ipu1_csi1_capture:0 1"};
    Lines expected = shared;
    expected.insert(expected.end(), {"adv7180 link 0 -> imx6-mipi-csi2:0 1",
                                     "imx6-mipi-csi2 link 1 -> ipu1_csi0_mux:0 1",
                                     isQuadBoard() ? "ipu1_csi0_mux link 2 -> ipu1_csi0:0 1"
                                                   : "ipu1_csi0_mux link 5 -> ipu1_csi0:0 1",
                                     "ipu1_csi0 link 2 -> ipu1_csi0_capture:0 1"});
    EXPECT_EQ(expected, logLines());
}

TEST_F(CameraDiscovery, the_device_tree_decides_which_routing_it_is) {
    Input::doInitialSetup();
    EXPECT_EQ(isQuadBoard(), Input::runningOnQuadCore);
}

TEST_F(CameraDiscovery, another_processor_in_the_device_tree_gives_the_other_routing) {
    const CompatibleText restored;
    turn("device_tree/compatible/value", otherCompatible());
    Input::doInitialSetup();
    EXPECT_NE(isQuadBoard(), Input::runningOnQuadCore);
    // The quad board has the DualLite's node too, the other way round it is not so.
    const std::string node = isQuadBoard() ? nodeOf("ipu1_csi1 capture") : "";
    EXPECT_EQ(node, Input::videoDevices[0]);
    EXPECT_EQ(node, Input::videoDevices[2]);
    EXPECT_EQ(nodeOf("ipu1_csi0 capture"), Input::videoDevices[1]);
    EXPECT_EQ(Lines{}, beginningWith("tw9912", logLines()));
}

TEST_F(CameraDiscovery, a_device_tree_that_cannot_be_read_gives_the_routing_of_the_DualLite) {
    turn("device_tree/compatible/fail_read", "EIO -1");
    Input::doInitialSetup();
    turn("device_tree/compatible/fail_read", "0");
    EXPECT_FALSE(Input::runningOnQuadCore);
    EXPECT_EQ(nodeOf("ipu1_csi1 capture"), Input::videoDevices[0]);
}

TEST_F(CameraDiscovery, a_second_call_does_nothing_even_if_the_first_found_nothing) {
    turn("media/present", "0");
    Input::doInitialSetup();
    turn("media/present", "1");
    clearLog();
    Input::doInitialSetup();
    Input::getInstance("camera");
    expectNothingFound();
    EXPECT_EQ(Lines{}, logLines());
}

TEST_F(CameraDiscovery, a_second_call_after_a_good_one_sets_no_link_again) {
    Input::getInstance("camera 1");
    turn("media/present", "0");
    turn("media/present", "1");
    clearLog();
    Input::getInstance("camera 2");
    EXPECT_EQ(Lines{}, logLines());
}

TEST_F(CameraDiscovery, a_failing_enumeration_finds_nothing_and_prints_nothing) {
    turn("media/fail_entities", "EIO -1");
    OutputCapture capture;
    Input::doInitialSetup();
    capture.release();
    EXPECT_EQ("", capture.output() + capture.errors());
    expectNothingFound();
    EXPECT_EQ(Lines{}, logLines());
}

TEST_F(CameraDiscovery, a_link_that_the_kernel_refuses_leaves_the_others_and_prints_nothing) {
    turn("tw9912/fail_link", "EIO");
    OutputCapture capture;
    Input::doInitialSetup();
    capture.release();
    EXPECT_EQ("", capture.output() + capture.errors());
    const Lines seen = logLines();
    ASSERT_EQ(7U, seen.size());
    EXPECT_EQ(Lines{seen.front()}, beginningWith("tw9912 link", seen));
    EXPECT_NE(std::string::npos, seen.front().find("error EIO"));
    EXPECT_EQ(1U, beginningWith("ipu1_csi0 link 2 -> ipu1_csi0_capture:0 1", seen).size());
}

TEST_F(CameraDiscovery, a_node_that_does_not_open_leaves_its_path_and_no_descriptor) {
    turn(captureKnobs(0) + "/fail_open", "EIO");
    Input::doInitialSetup();
    EXPECT_EQ(nodeOf(captureEntity(0)), Input::videoDevices[0]);
    EXPECT_EQ(-1, Input::fileDescriptors[0]);
    EXPECT_EQ(-1, Input::fileDescriptors[2]);
    EXPECT_EQ(nodeOf(captureEntity(1)), openedAt(Input::fileDescriptors[1]));
}

}  // namespace ZR::test
