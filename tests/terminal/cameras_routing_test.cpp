#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "camera_board.h"

namespace ZR::test {
namespace {

class CameraRouting : public CameraBoard {
  protected:
    /// Compares the graph after a set-up with the one that media-ctl and v4l2-ctl make of the texts.
    static void expectGraphOfTheTexts(int input, const std::string& standard,
                                      const std::string& size);
};

/// The format that the interface of an input's path gives the capture node, as the board sees it.
std::string sourceFormat(int input) {
    const std::string entity = captureEntity(input);
    std::ifstream formats("/sys/kernel/debug/zr_terminal/" + entity.substr(0, entity.find(' ')) +
                          "/formats");
    std::string line;
    while (std::getline(formats, line) && line.compare(0, 2, "2 ") != 0) {
    }
    return line;
}

/// What sets an input up without the library, for the shell. The comma at the end of input 1's text
/// makes media-ctl complain when all is done.
std::string byTools(int input, const std::string& standard, const std::string& size) {
    return "v4l2-ctl -d " + nodeOf(decoderEntity(input)) + " -s " + standard +
           " >/dev/null && { media-ctl -V \"" + pathFormats(input, size) + "\"" +
           (input == 1 ? " 2>/dev/null || true; }" : "; }");
}

std::string linksByTools() {
    return "media-ctl -l \"" + joined(pathLinks()) + "\" && ";
}

void CameraRouting::expectGraphOfTheTexts(int input, const std::string& standard,
                                          const std::string& size) {
    plugInCamera(input, standard);
    run(linksByTools() + byTools(input, standard, size));
    const std::string expected = graphByMediaCtl();
    ASSERT_NE(std::string::npos, expected.find("AYUV8_1X32/" + size + "@1/50"));
    renewGraph();
    ASSERT_EQ(std::string::npos, sourceFormat(input).find(size));
    Cameras().setupCameraInput(input);
    ASSERT_NE(std::string::npos, sourceFormat(input).find(size));
    EXPECT_EQ(expected, graphByMediaCtl());
}

/// What the kernel is asked to select on the node of the inputs 0 and 2.
Lines selections(const Lines& lines) {
    return beginningWith(captureKnobs(0) + " input_select", lines);
}

std::string selected(int value) {
    return captureKnobs(0) + " input_select " + std::to_string(value);
}

/// How many pads were given a size.
std::size_t countOf(const std::string& size, const Lines& lines) {
    std::size_t count = 0;
    for (const std::string& line : lines)
        count += line.find(" format ") != std::string::npos && line.find(size) != std::string::npos;
    return count;
}

const Lines palIsForced{"tw9912 standard 0xff"};
const Lines ntscIsForced{"tw9912 standard 0xb000"};

}  // namespace

TEST_F(CameraRouting, input_0_with_PAL_leaves_the_graph_that_media_ctl_makes) {
    expectGraphOfTheTexts(0, "pal", pal);
}

TEST_F(CameraRouting, input_0_with_NTSC_leaves_the_graph_that_media_ctl_makes) {
    expectGraphOfTheTexts(0, "ntsc", ntsc);
}

TEST_F(CameraRouting, input_1_with_PAL_leaves_the_graph_that_media_ctl_makes) {
    expectGraphOfTheTexts(1, "pal", pal);
}

TEST_F(CameraRouting, input_1_with_NTSC_leaves_the_graph_that_media_ctl_makes) {
    expectGraphOfTheTexts(1, "ntsc", ntsc);
}

TEST_F(CameraRouting, input_2_leaves_the_graph_that_media_ctl_makes) {
    expectGraphOfTheTexts(2, "pal", pal);
}

TEST_F(CameraRouting, all_inputs_in_turn_leave_the_graph_that_media_ctl_makes) {
    plugInCamera(2, "ntsc");
    run(linksByTools() + byTools(0, "pal", pal) + " && " + byTools(1, "pal", pal) + " && " +
        byTools(2, "ntsc", ntsc));
    const std::string expected = graphByMediaCtl();
    renewGraph();
    Cameras cameras;
    for (const int input : {0, 1, 2})
        cameras.setupCameraInput(input);
    ASSERT_NE(std::string::npos, sourceFormat(1).find(pal));
    ASSERT_NE(std::string::npos, sourceFormat(2).find(ntsc));
    EXPECT_EQ(expected, graphByMediaCtl());
}

TEST_F(CameraRouting, the_second_start_of_input_1_sets_neither_standard_nor_formats) {
    Cameras cameras;
    const Lines first = cameras.loggedBySetup(1);
    EXPECT_EQ(Lines{"adv7180 standard 0xff"}, beginningWith("adv7180 standard", first));
    EXPECT_LT(5U, countOf(pal, first));
    EXPECT_EQ(Lines{}, cameras.loggedBySetup(1));
}

TEST_F(CameraRouting, input_1_keeps_its_formats_when_its_camera_changes_the_standard) {
    Cameras cameras;
    cameras.setupCameraInput(1);
    plugInCamera(1, "ntsc");
    EXPECT_EQ(Lines{}, cameras.loggedBySetup(1));
    EXPECT_EQ(0, cameras.standardOf(1));
}

TEST_F(CameraRouting, input_0_returns_before_touching_the_decoder_once_input_2_has_its_standard) {
    Cameras cameras;
    cameras.setupCameraInput(0);
    cameras.setupCameraInput(2);
    EXPECT_EQ(Lines{selected(0)}, cameras.loggedBySetup(0));
    EXPECT_EQ(Lines{}, cameras.loggedBySetup(0));
}

TEST_F(CameraRouting, input_0_is_applied_again_each_time_while_input_2_was_never_started) {
    Cameras cameras;
    const Lines first = cameras.loggedBySetup(0);
    ASSERT_EQ(palIsForced, beginningWith("tw9912 standard", first));
    ASSERT_LT(3U, countOf(pal, first));
    EXPECT_EQ(first, cameras.loggedBySetup(0));
    EXPECT_EQ(first, cameras.loggedBySetup(0));
    EXPECT_EQ(2, cameras.standardOf(2));
}

TEST_F(CameraRouting, a_switch_from_PAL_on_input_0_to_NTSC_on_input_2_rebuilds_the_path) {
    plugInCamera(2, "ntsc");
    Cameras cameras;
    EXPECT_EQ(Lines{}, selections(cameras.loggedBySetup(0)));
    const Lines lines = cameras.loggedBySetup(2);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(selected(1), lines.front());
    EXPECT_EQ(ntscIsForced, beginningWith("tw9912 standard", lines));
    EXPECT_LT(3U, countOf(ntsc, lines));
    EXPECT_EQ(0U, countOf(pal, lines));
    EXPECT_EQ(1, cameras.standardOf(2));
}

TEST_F(CameraRouting, a_switch_back_to_PAL_forces_what_is_known_without_detecting_again) {
    plugInCamera(2, "ntsc");
    Cameras cameras;
    cameras.setupCameraInput(0);
    cameras.setupCameraInput(2);
    plugInCamera(0, "ntsc");
    const Lines lines = cameras.loggedBySetup(0);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(selected(0), lines.front());
    EXPECT_EQ(palIsForced, beginningWith("tw9912 standard", lines));
    EXPECT_LT(3U, countOf(pal, lines));
    EXPECT_EQ(0U, countOf(ntsc, lines));
}

TEST_F(CameraRouting, input_2_on_a_new_board_is_selected_and_input_0_is_left_alone) {
    Cameras cameras;
    EXPECT_EQ(Lines{selected(1)}, selections(cameras.loggedBySetup(2)));
    EXPECT_EQ(Lines{}, selections(cameras.loggedBySetup(2)));
}

TEST_F(CameraRouting, a_selection_that_is_neither_0_nor_1_is_left_alone) {
    Cameras cameras;
    run("v4l2-ctl -d " + nodeOf(captureEntity(0)) + " -c input_select=2");
    EXPECT_EQ(Lines{}, selections(cameras.loggedBySetup(2)));
    EXPECT_EQ(Lines{}, selections(cameras.loggedBySetup(0)));
    EXPECT_EQ("input_select: 2",
              saidBy("v4l2-ctl -d " + nodeOf(captureEntity(0)) + " -C input_select"));
}

TEST_F(CameraRouting, input_1_selects_nothing_on_its_node) {
    Cameras cameras;
    run("v4l2-ctl -d " + nodeOf(captureEntity(1)) + " -c input_select=1");
    const Lines lines = cameras.loggedBySetup(1);
    EXPECT_EQ(Lines{}, beginningWith(captureKnobs(1), lines));
    EXPECT_EQ(Lines{}, selections(lines));
}

TEST_F(CameraRouting, each_input_leaves_the_other_path_alone) {
    Cameras cameras;
    for (const std::string& line : cameras.loggedBySetup(0))
        EXPECT_EQ(std::string::npos, line.find("csi0")) << line;
    for (const std::string& line : cameras.loggedBySetup(1))
        EXPECT_EQ(std::string::npos, line.find("csi1")) << line;
}

}  // namespace ZR::test
