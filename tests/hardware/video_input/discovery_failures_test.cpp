#include <fcntl.h>

#include <cerrno>
#include <string>

#include "tests/hardware/video_input/capture_board.h"
#include "tests/support/output_capture.h"

// Whatever is missing, the rest of the discovery goes on, without a word.

namespace ZR::test {
namespace {

using Input = ZRGstreamerVideoInput;

class DiscoveryFailures : public CaptureTest {
  protected:
    void TearDown() override {
        capture_.release();
        EXPECT_EQ(capture_.output() + capture_.errors(), "");
    }

    /// What follows the look at the entities when there are none.
    static Calls endingWithoutEntities() {
        Calls expected = openingNodes("", "", "", "");
        const Calls links{"media_parse_setup_link '':0 -> 'ipu1_csi1_mux':4[1]",
                          "media_parse_setup_link 'ipu1_csi1_mux':5 -> 'ipu1_csi1':0[1]",
                          "media_parse_setup_link 'ipu1_csi1':2 -> 'ipu1_csi1 capture':0[1]",
                          "media_parse_setup_link '':0 -> 'imx6-mipi-csi2':0[1]",
                          "media_parse_setup_link 'imx6-mipi-csi2':1 -> 'ipu1_csi0_mux':0[1]",
                          "media_parse_setup_link 'ipu1_csi0_mux':5 -> 'ipu1_csi0':0[1]",
                          "media_parse_setup_link 'ipu1_csi0':2 -> 'ipu1_csi0 capture':0[1]"};
        expected.insert(expected.end(), links.begin(), links.end());
        return expected;
    }

    /// The calls from the first open on.
    static Calls ending() {
        const Calls all = calls();
        auto first = all.begin();
        while (first != all.end() && first->compare(0, 4, "open") != 0)
            ++first;
        return {first, all.end()};
    }

    OutputCapture capture_;
};

TEST_F(DiscoveryFailures, an_unreadable_device_tree_keeps_the_routing_of_the_dual_lite) {
    FileReadSubstitute::files.clear();
    Input::doInitialSetup();
    EXPECT_FALSE(Input::runningOnQuadCore);
    EXPECT_EQ(Input::videoDevices[0], "/dev/video1");
}

TEST_F(DiscoveryFailures, an_unreadable_device_tree_keeps_the_routing_of_the_quad) {
    FileReadSubstitute::files.clear();
    Input::runningOnQuadCore = true;
    Input::doInitialSetup();
    EXPECT_TRUE(Input::runningOnQuadCore);
    EXPECT_EQ(Input::videoDevices[0], "/dev/video5");
}

TEST_F(DiscoveryFailures, the_text_of_a_read_that_failed_is_not_used) {
    setDeviceTree(treeText(quadTree));
    FileReadSubstitute::next = FileReadFault::Fail;
    Input::doInitialSetup();
    EXPECT_FALSE(Input::runningOnQuadCore);
}

TEST_F(DiscoveryFailures, a_file_service_that_raises_counts_as_unreadable) {
    setDeviceTree(treeText(quadTree));
    FileReadSubstitute::next = FileReadFault::ThrowStandardException;
    EXPECT_NO_THROW(Input::doInitialSetup());
    EXPECT_FALSE(Input::runningOnQuadCore);
    EXPECT_EQ(Input::fileDescriptors[0], 10);
}

TEST_F(DiscoveryFailures, without_a_media_device_its_library_is_left_alone_and_nodes_are_opened) {
    Media::canBeMade = false;
    Input::doInitialSetup();
    Calls expected{"readStringFromFile /proc/device-tree/compatible",
                   "media_device_new /dev/media0"};
    const Calls opening = openingNodes("", "", "", "");
    expected.insert(expected.end(), opening.begin(), opening.end());
    EXPECT_EQ(calls(), expected);
    EXPECT_EQ(Input::mediaDevice, nullptr);
}

TEST_F(DiscoveryFailures, a_failed_enumeration_still_opens_and_links_with_empty_names) {
    for (const int result : {-ENOENT, -1, 1}) {
        Input::initialSetupPending = true;
        Media::enumerationResult = result;
        (void)takeCalls();
        Input::doInitialSetup();
        EXPECT_EQ(callsOf("media_get_entit"), Calls{}) << result;
        EXPECT_EQ(ending(), endingWithoutEntities()) << result;
    }
}

TEST_F(DiscoveryFailures, a_media_device_without_entities_still_opens_and_links) {
    Media::entities.clear();
    Input::doInitialSetup();
    EXPECT_EQ(callsOf("media_get_entit"), Calls{"media_get_entities_count"});
    EXPECT_EQ(ending(), endingWithoutEntities());
}

TEST_F(DiscoveryFailures, a_null_entity_is_skipped) {
    Media::entities[1].isNull = true;
    Input::doInitialSetup();
    EXPECT_EQ(Input::twName, "");
    EXPECT_EQ(callsOf("media_entity_get_info").size(), 5U);
    EXPECT_EQ(Input::advName, "adv7180 2-0021");
    EXPECT_EQ(Input::fileDescriptorsSub[0], -1);
    EXPECT_EQ(Input::fileDescriptorsSub[1], 13);
}

TEST_F(DiscoveryFailures, an_entity_without_information_is_skipped) {
    Media::entities[3].hasInfo = false;
    Input::doInitialSetup();
    EXPECT_EQ(Input::videoDevices[1], "");
    EXPECT_EQ(callsOf("media_entity_get_devname").size(), 5U);
    EXPECT_EQ(Input::fileDescriptors[1], -1);
    EXPECT_EQ(Input::advName, "adv7180 2-0021");
}

TEST_F(DiscoveryFailures, an_entity_without_a_path_keeps_its_name_and_an_empty_path) {
    Input::videoSubDevices[0] = Input::videoSubDevices[2] = "/dev/older";
    Media::entities[1].hasNode = false;
    Media::entities[4].node = "";
    Input::doInitialSetup();
    EXPECT_EQ(Input::twName, "tw9912 1-0044");
    EXPECT_EQ(Input::advName, "adv7180 2-0021");
    for (const std::string& path : Input::videoSubDevices)
        EXPECT_EQ(path, "");
}

TEST_F(DiscoveryFailures, a_name_that_fills_its_field_ends_there) {
    const std::string name = "tw9912 with a name of 32 letters";
    ASSERT_EQ(name.size(), 32U);
    Media::entities = {{name, "/dev/v4l-subdev3"}};
    Input::doInitialSetup();
    EXPECT_EQ(Input::twName, name);
    EXPECT_EQ(callsOf("media_parse_setup_link")[0],
              "media_parse_setup_link 'tw9912 with a name of 32 letters':0 -> "
              "'ipu1_csi1_mux':4[1]");
}

TEST_F(DiscoveryFailures, a_board_without_an_adv7180_still_has_inputs_0_and_2) {
    Media::entities.erase(Media::entities.begin() + 4);
    Input::doInitialSetup();
    EXPECT_EQ(Input::videoSubDevices[1], "");
    EXPECT_EQ(Input::fileDescriptorsSub[1], -1);
    EXPECT_EQ(Input::fileDescriptors[0], 10);
    EXPECT_EQ(Input::fileDescriptorsSub[0], 12);
    EXPECT_EQ(Input::fileDescriptorsSub[2], 12);
    EXPECT_EQ(callsOf("media_parse_setup_link").size(), 7U);
}

TEST_F(DiscoveryFailures, a_board_without_a_tw9912_still_has_input_1) {
    Media::entities.erase(Media::entities.begin() + 1);
    Input::doInitialSetup();
    EXPECT_EQ(Input::videoSubDevices[0] + Input::videoSubDevices[2], "");
    EXPECT_EQ(Input::fileDescriptorsSub[0], -1);
    EXPECT_EQ(Input::fileDescriptorsSub[2], -1);
    EXPECT_EQ(Input::fileDescriptors[1], 11);
    EXPECT_EQ(Input::fileDescriptorsSub[1], 13);
}

TEST_F(DiscoveryFailures, each_node_that_does_not_open_leaves_the_others) {
    const Calls paths{"/dev/video1", "/dev/v4l-subdev3", "/dev/video0", "/dev/v4l-subdev9"};
    const auto openable = Devices::paths;
    for (const std::string& path : paths) {
        Input::initialSetupPending = true;
        Devices::paths = openable;
        Devices::paths.erase(path);
        (void)takeCalls();
        Input::doInitialSetup();
        EXPECT_EQ(Input::fileDescriptors[0], path == paths[0] ? -1 : 10) << path;
        EXPECT_EQ(Input::fileDescriptors[2], path == paths[0] ? -1 : 10) << path;
        EXPECT_EQ(Input::fileDescriptorsSub[0], path == paths[1] ? -1 : 12) << path;
        EXPECT_EQ(Input::fileDescriptorsSub[2], path == paths[1] ? -1 : 12) << path;
        EXPECT_EQ(Input::fileDescriptors[1], path == paths[2] ? -1 : 11) << path;
        EXPECT_EQ(Input::fileDescriptorsSub[1], path == paths[3] ? -1 : 13) << path;
        EXPECT_EQ(callsOf("open").size(), 4U) << path;
        EXPECT_EQ(callsOf("media_parse_setup_link").size(), 7U) << path;
    }
}

TEST_F(DiscoveryFailures, an_interrupted_open_is_repeated) {
    Devices::fail("open", EINTR, 3);
    Input::doInitialSetup();
    const Calls opens = callsOf("open");
    ASSERT_EQ(opens.size(), 7U);
    for (std::size_t i = 1; i < 4; ++i)
        EXPECT_EQ(opens[i], opens[0]);
    EXPECT_EQ(Input::fileDescriptors[0], 10);
    EXPECT_EQ(Input::fileDescriptors[2], 10);
}

TEST_F(DiscoveryFailures, an_open_that_fails_otherwise_is_not_repeated) {
    for (const int error : {EACCES, EBUSY, ENODEV, EAGAIN}) {
        Input::initialSetupPending = true;
        Devices::fail("open", error);
        (void)takeCalls();
        Input::doInitialSetup();
        EXPECT_EQ(callsOf("open").size(), 4U) << error;
        EXPECT_EQ(Input::fileDescriptors[0], -1) << error;
    }
}

TEST_F(DiscoveryFailures, links_that_are_refused_are_ignored_one_by_one) {
    for (const int result : {-EINVAL, -EBUSY, -1, 1}) {
        Input::initialSetupPending = true;
        Media::linkResult = result;
        (void)takeCalls();
        Input::doInitialSetup();
        EXPECT_EQ(callsOf("media_parse_setup_link '").size(), 7U) << result;
        EXPECT_EQ(Input::fileDescriptors[0], 10) << result;
    }
}

}  // namespace
}  // namespace ZR::test
