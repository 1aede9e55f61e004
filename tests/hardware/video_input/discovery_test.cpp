#include <array>
#include <string>
#include <utility>
#include <vector>

#include "tests/hardware/video_input/capture_board.h"
#include "tests/support/output_capture.h"

namespace ZR::test {
namespace {

using Input = ZRGstreamerVideoInput;

const Calls dualLiteLinks{"media_parse_setup_link 'tw9912 1-0044':0 -> 'ipu1_csi1_mux':4[1]",
                          "media_parse_setup_link 'ipu1_csi1_mux':5 -> 'ipu1_csi1':0[1]",
                          "media_parse_setup_link 'ipu1_csi1':2 -> 'ipu1_csi1 capture':0[1]",
                          "media_parse_setup_link 'adv7180 2-0021':0 -> 'imx6-mipi-csi2':0[1]",
                          "media_parse_setup_link 'imx6-mipi-csi2':1 -> 'ipu1_csi0_mux':0[1]",
                          "media_parse_setup_link 'ipu1_csi0_mux':5 -> 'ipu1_csi0':0[1]",
                          "media_parse_setup_link 'ipu1_csi0':2 -> 'ipu1_csi0 capture':0[1]"};

const Calls quadLinks{"media_parse_setup_link 'tw9912 1-0044':0 -> 'ipu2_csi1_mux':1[1]",
                      "media_parse_setup_link 'ipu2_csi1_mux':2 -> 'ipu2_csi1':0[1]",
                      "media_parse_setup_link 'ipu2_csi1':2 -> 'ipu2_csi1 capture':0[1]",
                      "media_parse_setup_link 'adv7180 2-0021':0 -> 'imx6-mipi-csi2':0[1]",
                      "media_parse_setup_link 'imx6-mipi-csi2':1 -> 'ipu1_csi0_mux':0[1]",
                      "media_parse_setup_link 'ipu1_csi0_mux':2 -> 'ipu1_csi0':0[1]",
                      "media_parse_setup_link 'ipu1_csi0':2 -> 'ipu1_csi0 capture':0[1]"};

class Discovery : public CaptureTest {};

Calls joined(Calls first, const Calls& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/// The calls that every discovery of the whole terminal begins with.
Calls lookingAtEntities() {
    Calls expected{"readStringFromFile /proc/device-tree/compatible",
                   "media_device_new /dev/media0", "media_device_enumerate",
                   "media_get_entities_count"};
    const auto& entities = Media::entities;
    for (std::size_t i = 0; i < entities.size(); ++i) {
        expected.push_back("media_get_entity " + std::to_string(i));
        expected.push_back("media_entity_get_info " + entities[i].name);
        expected.push_back("media_entity_get_devname " + entities[i].name);
    }
    return expected;
}

void expectPaths(const std::array<std::string, 3>& nodes,
                 const std::array<std::string, 3>& decoders) {
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        EXPECT_EQ(Input::videoDevices[i], nodes[i]) << i;
        EXPECT_EQ(Input::videoSubDevices[i], decoders[i]) << i;
    }
}

void expectDescriptors(const std::array<int, 3>& nodes, const std::array<int, 3>& decoders) {
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        EXPECT_EQ(Input::fileDescriptors[i], nodes[i]) << i;
        EXPECT_EQ(Input::fileDescriptorsSub[i], decoders[i]) << i;
    }
}

TEST_F(Discovery, finds_opens_and_links_the_dual_lites_devices_in_order) {
    Input::doInitialSetup();
    const Calls opening =
        openingNodes("/dev/video1", "/dev/v4l-subdev3", "/dev/video0", "/dev/v4l-subdev9");
    EXPECT_EQ(calls(), joined(joined(lookingAtEntities(), opening), dualLiteLinks));
}

TEST_F(Discovery, finds_opens_and_links_the_quads_devices_in_order) {
    setDeviceTree(treeText(quadTree));
    Input::doInitialSetup();
    const Calls opening =
        openingNodes("/dev/video5", "/dev/v4l-subdev3", "/dev/video0", "/dev/v4l-subdev9");
    EXPECT_EQ(calls(), joined(joined(lookingAtEntities(), opening), quadLinks));
}

TEST_F(Discovery, records_paths_and_names_of_the_dual_lite) {
    Input::doInitialSetup();
    EXPECT_FALSE(Input::runningOnQuadCore);
    EXPECT_EQ(Input::twName, "tw9912 1-0044");
    EXPECT_EQ(Input::advName, "adv7180 2-0021");
    expectPaths({"/dev/video1", "/dev/video0", "/dev/video1"},
                {"/dev/v4l-subdev3", "/dev/v4l-subdev9", "/dev/v4l-subdev3"});
    EXPECT_NE(Input::mediaDevice, nullptr);
}

TEST_F(Discovery, records_paths_and_names_of_the_quad) {
    setDeviceTree(treeText(quadTree));
    Input::doInitialSetup();
    EXPECT_TRUE(Input::runningOnQuadCore);
    EXPECT_EQ(Input::twName, "tw9912 1-0044");
    EXPECT_EQ(Input::advName, "adv7180 2-0021");
    expectPaths({"/dev/video5", "/dev/video0", "/dev/video5"},
                {"/dev/v4l-subdev3", "/dev/v4l-subdev9", "/dev/v4l-subdev3"});
}

TEST_F(Discovery, shares_the_descriptors_of_input_0_with_input_2) {
    Input::doInitialSetup();
    expectDescriptors({10, 11, 10}, {12, 13, 12});
    EXPECT_EQ(callsOf("open").size(), 4U);
}

TEST_F(Discovery, takes_the_routing_from_the_last_component) {
    const std::string nul(1, '\0');
    const std::vector<std::pair<std::string, bool>> texts{{"fsl,imx6dl", false},
                                                          {"fsl,imx6dl" + nul, false},
                                                          {"imx6dl", false},
                                                          {"fsl,imx6dl\n", false},
                                                          {"fsl,imx6q" + nul, true},
                                                          {"fsl,imx6ull" + nul, true},
                                                          {"fsl,imx6dl,", true},
                                                          {"", true},
                                                          {nul, true},
                                                          {"fsl,imx6dl-board", true},
                                                          {"fsl,ximx6dl", true},
                                                          {"fsl,IMX6DL", true},
                                                          {"fsl,imx6dl" + nul + "a,b", true}};
    for (const auto& [text, quad] : texts) {
        Input::initialSetupPending = true;
        Input::runningOnQuadCore = !quad;
        setDeviceTree(text);
        Input::doInitialSetup();
        EXPECT_EQ(Input::runningOnQuadCore, quad) << text;
    }
}

TEST_F(Discovery, matches_decoders_by_the_beginning_of_their_names_and_keeps_them_whole) {
    Media::entities = {{"tw9912x [a] {b}", "/dev/v4l-subdev3"}, {"adv71802", "/dev/v4l-subdev9"}};
    Input::doInitialSetup();
    EXPECT_EQ(Input::twName, "tw9912x [a] {b}");
    EXPECT_EQ(Input::advName, "adv71802");
    const Calls links = callsOf("media_parse_setup_link");
    ASSERT_EQ(links.size(), 7U);
    EXPECT_EQ(links[0], "media_parse_setup_link 'tw9912x [a] {b}':0 -> 'ipu1_csi1_mux':4[1]");
    EXPECT_EQ(links[3], "media_parse_setup_link 'adv71802':0 -> 'imx6-mipi-csi2':0[1]");
}

TEST_F(Discovery, keeps_the_last_visited_of_two_entities_with_one_prefix) {
    Media::entities.push_back({"tw9912 3-0044", "/dev/v4l-subdev20"});
    Media::entities.push_back({"adv7180 3-0021", "/dev/v4l-subdev21"});
    Media::entities.push_back({"ipu1_csi0 capture", "/dev/video20"});
    Media::entities.push_back({"ipu1_csi1 capture", "/dev/video21"});
    Input::doInitialSetup();
    EXPECT_EQ(Input::twName, "tw9912 3-0044");
    EXPECT_EQ(Input::advName, "adv7180 3-0021");
    expectPaths({"/dev/video21", "/dev/video20", "/dev/video21"},
                {"/dev/v4l-subdev20", "/dev/v4l-subdev21", "/dev/v4l-subdev20"});
}

TEST_F(Discovery, touches_neither_formats_nor_standards_and_issues_no_ioctl) {
    Input::doInitialSetup();
    EXPECT_EQ(callsOf("v4l2_subdev_parse_setup_formats"), Calls{});
    EXPECT_EQ(callsOf("VIDIOC"), Calls{});
    EXPECT_EQ(callsOf("ioctl"), Calls{});
    for (const int standard : Input::lastSetStandard)
        EXPECT_EQ(standard, 2);
}

TEST_F(Discovery, does_nothing_a_second_time) {
    Input::doInitialSetup();
    (void)takeCalls();
    Media::entities.clear();
    setDeviceTree(treeText(quadTree));
    Input::doInitialSetup();
    EXPECT_EQ(calls(), Calls{});
    EXPECT_FALSE(Input::runningOnQuadCore);
    EXPECT_EQ(Input::twName, "tw9912 1-0044");
}

TEST_F(Discovery, does_nothing_a_second_time_also_when_it_first_found_nothing) {
    const std::vector<SimulatedEntity> there = std::exchange(Media::entities, {});
    FileReadSubstitute::files.clear();
    Input::doInitialSetup();
    (void)takeCalls();
    Media::entities = there;
    Input::doInitialSetup();
    EXPECT_EQ(calls(), Calls{});
    EXPECT_EQ(Input::twName, "");
    expectDescriptors({-1, -1, -1}, {-1, -1, -1});
}

TEST_F(Discovery, is_over_as_soon_as_it_has_begun) {
    EXPECT_TRUE(Input::initialSetupPending);
    Media::canBeMade = false;
    Input::doInitialSetup();
    EXPECT_FALSE(Input::initialSetupPending);
}

TEST_F(Discovery, is_silent) {
    const OutputCapture capture;
    Input::doInitialSetup();
    EXPECT_EQ(capture.output() + capture.errors(), "");
}

}  // namespace
}  // namespace ZR::test
