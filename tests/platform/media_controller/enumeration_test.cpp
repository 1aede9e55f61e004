#include <fcntl.h>

#include <algorithm>
#include <cerrno>

#include "mediactl/v4l2subdev.h"
#include "tests/platform/media_controller/media_device_test.h"

namespace ZR::test {
namespace {

class MediaEnumeration : public MediaDeviceTest {
  protected:
    const char* nodeOf(unsigned int index) {
        return media_entity_get_devname(media_get_entity(media_.get(), index));
    }
};

TEST_F(MediaEnumeration, asks_for_the_device_all_entities_and_then_all_links) {
    mediaKernel().entities.resize(2);
    mediaKernel().links.clear();
    EXPECT_EQ(enumerate(), 0);
    EXPECT_EQ(calls(),
              (Calls{"open /dev/media0", "DEVICE_INFO /dev/media0",
                     "ENUM_ENTITIES /dev/media0 after 0", "readlink /sys/dev/char/81:11",
                     "stat /dev/v4l-subdev1", "ENUM_ENTITIES /dev/media0 after 1",
                     "readlink /sys/dev/char/81:12", "stat /dev/v4l-subdev2",
                     "ENUM_ENTITIES /dev/media0 after 2", "ENUM_LINKS /dev/media0 1 pads links",
                     "ENUM_LINKS /dev/media0 2 pads links", "close /dev/media0"}));
}

TEST_F(MediaEnumeration, takes_2_ioctls_an_entity_and_2_more) {
    const std::size_t entities = mediaKernel().entities.size();
    EXPECT_EQ(enumerate(), 0);
    EXPECT_EQ(count("ENUM_ENTITIES"), entities + 1);
    EXPECT_EQ(count("ENUM_LINKS"), entities);
    EXPECT_EQ(count("DEVICE_INFO"), 1U);
    EXPECT_EQ(count("open"), 1U);
}

TEST_F(MediaEnumeration, opens_the_node_for_reading_and_writing_and_for_no_child) {
    EXPECT_EQ(enumerate(), 0);
    EXPECT_EQ(mediaKernel().openFlags, (std::vector<int>{O_RDWR | O_CLOEXEC}));
}

TEST_F(MediaEnumeration, shows_the_entities_in_the_kernels_order) {
    mediaKernel() = oddGraph();
    EXPECT_EQ(enumerate(), 0);
    ASSERT_EQ(media_get_entities_count(media_.get()), mediaKernel().entities.size());
    for (unsigned int i = 0; i < mediaKernel().entities.size(); ++i) {
        const media_entity_desc* const info =
            media_entity_get_info(media_get_entity(media_.get(), i));
        EXPECT_EQ(info->id, mediaKernel().entities[i].id);
        EXPECT_EQ(info->name, mediaKernel().entities[i].name.substr(0, 31));
        EXPECT_EQ(info->pads, mediaKernel().entities[i].pads.size());
    }
}

TEST_F(MediaEnumeration, shows_the_nodes_of_video_and_sub_devices) {
    mediaKernel() = oddGraph();
    EXPECT_EQ(enumerate(), 0);
    EXPECT_STREQ(nodeOf(0), "/dev/v4l-subdev0");
    EXPECT_STREQ(nodeOf(6), "/dev/video0");
}

TEST_F(MediaEnumeration, shows_no_node_of_an_entity_that_has_none) {
    mediaKernel() = oddGraph();
    EXPECT_EQ(enumerate(), 0);
    EXPECT_STREQ(nodeOf(1), "");  // neither a device node nor a sub-device
    EXPECT_STREQ(nodeOf(3), "");  // no device number
    EXPECT_STREQ(nodeOf(5), "");  // the path is another device's
}

TEST_F(MediaEnumeration, shows_no_node_whose_link_leads_nowhere) {
    const std::string tooLong = std::string(1020, 'x') + "/v4l-subdev1";
    for (const std::string& target : {std::string("node"), std::string("folder/"), tooLong}) {
        mediaKernel() = cameraGraph(false);
        mediaKernel().entities[0].linkTarget = target;
        const std::unique_ptr<media_device, UnrefDevice> media(media_device_new("/dev/media0"));
        EXPECT_EQ(media_device_enumerate(media.get()), 0);
        EXPECT_STREQ(media_entity_get_devname(media_get_entity(media.get(), 0)), "") << target;
        EXPECT_STREQ(media_entity_get_devname(media_get_entity(media.get(), 1)),
                     "/dev/v4l-subdev2");
    }
}

TEST_F(MediaEnumeration, goes_on_without_a_node_that_cannot_be_found) {
    mediaKernel().fail("readlink", EACCES);
    mediaKernel().fail("stat", ENOENT);
    EXPECT_EQ(enumerate(), 0);
    EXPECT_STREQ(nodeOf(0), "");
    EXPECT_STREQ(nodeOf(1), "");
    EXPECT_STREQ(nodeOf(2), "/dev/v4l-subdev3");
}

TEST_F(MediaEnumeration, gives_the_error_of_each_call_and_then_knows_no_entity) {
    const std::size_t entities = mediaKernel().entities.size();
    const std::vector<std::pair<std::string, unsigned int>> steps{
        {"open", 1},          {"DEVICE_INFO", 1},
        {"ENUM_ENTITIES", 1}, {"ENUM_ENTITIES", static_cast<unsigned int>(entities) + 1},
        {"ENUM_LINKS", 1},    {"ENUM_LINKS", static_cast<unsigned int>(entities)}};
    for (const auto& [call, occurrence] : steps) {
        mediaKernel() = cameraGraph(false);
        mediaKernel().fail(call, EIO, occurrence);
        EXPECT_EQ(enumerate(), -EIO) << call;
        EXPECT_EQ(media_get_entities_count(media_.get()), 0U);
        EXPECT_EQ(count(call), occurrence);
        EXPECT_FALSE(mediaKernel().hasOpenDescriptors());
    }
}

TEST_F(MediaEnumeration, can_be_tried_again_after_an_error) {
    mediaKernel().fail("ENUM_LINKS", EIO);
    EXPECT_EQ(enumerate(), -EIO);
    EXPECT_EQ(enumerate(), 0);
    EXPECT_EQ(media_get_entities_count(media_.get()), mediaKernel().entities.size());
}

TEST_F(MediaEnumeration, is_made_once) {
    enumerateSilently();
    EXPECT_EQ(enumerate(), 0);
    EXPECT_EQ(calls(), Calls{});
}

TEST_F(MediaEnumeration, makes_an_interrupted_call_again) {
    for (const std::string call : {"open", "DEVICE_INFO", "ENUM_ENTITIES", "ENUM_LINKS"})
        mediaKernel().fail(call, EINTR);
    EXPECT_EQ(enumerate(), 0);
    EXPECT_EQ(count("open"), 2U);
    EXPECT_EQ(count("DEVICE_INFO"), 2U);
    EXPECT_EQ(media_get_entities_count(media_.get()), mediaKernel().entities.size());
}

TEST_F(MediaEnumeration, an_interrupted_close_is_a_close) {
    mediaKernel().fail("close", EINTR);
    EXPECT_EQ(enumerate(), 0);
    EXPECT_EQ(count("close"), 1U);
}

TEST_F(MediaEnumeration, of_a_device_without_entities_succeeds) {
    mediaKernel().entities.clear();
    EXPECT_EQ(enumerate(), 0);
    EXPECT_EQ(media_get_entities_count(media_.get()), 0U);
    EXPECT_EQ(media_get_entity(media_.get(), 0), nullptr);
}

TEST_F(MediaEnumeration, refuses_a_link_to_an_entity_that_is_not_there) {
    mediaKernel().links.push_back({1, 0, 77, 0, 0});
    EXPECT_EQ(enumerate(), -EINVAL);
    EXPECT_EQ(count("ENUM_LINKS"), mediaKernel().entities.size());
    EXPECT_EQ(media_get_entities_count(media_.get()), 0U);
}

TEST_F(MediaEnumeration, passes_over_a_link_of_a_pad_that_is_not_there) {
    mediaKernel().links.push_back({1, 9, 5, 0, MEDIA_LNK_FL_ENABLED});
    mediaKernel().links.push_back({1, 0, 5, 5000, MEDIA_LNK_FL_ENABLED});
    EXPECT_EQ(enumerate(), 0);
    EXPECT_NE(media_get_entities_count(media_.get()), 0U);
}

TEST_F(MediaEnumeration, takes_an_entity_with_65535_pads) {
    mediaKernel().entities[0].pads.resize(65535);
    EXPECT_EQ(enumerate(), 0);
    EXPECT_EQ(media_entity_get_info(media_get_entity(media_.get(), 0))->pads, 65535);
}

TEST_F(MediaEnumeration, ends_at_more_pads_than_any_board_has) {
    for (SimulatedEntity& entity : mediaKernel().entities)
        entity.pads.resize(65535);
    EXPECT_EQ(enumerate(), -EOVERFLOW);
    EXPECT_EQ(count("ENUM_LINKS"), 0U);
}

TEST_F(MediaEnumeration, ends_at_more_entities_than_any_board_has) {
    SimulatedEntity entity = mediaKernel().entities[0];
    for (entity.id = 100; entity.id < 2000; ++entity.id)
        mediaKernel().entities.push_back(entity);
    EXPECT_EQ(enumerate(), -EOVERFLOW);
    EXPECT_EQ(count("ENUM_ENTITIES"), 1025U);
}

TEST_F(MediaEnumeration, ends_when_the_kernel_gives_an_entity_twice) {
    mediaKernel().repeatsEntities = true;
    EXPECT_EQ(enumerate(), -EOVERFLOW);
    EXPECT_EQ(count("ENUM_ENTITIES"), 2U);
}

TEST_F(MediaEnumeration, refuses_an_entity_number_that_carries_the_mark_for_the_next) {
    mediaKernel().entities.back().id = 0x80000005;
    EXPECT_EQ(enumerate(), -EOVERFLOW);
}

TEST(MediaHandle_pure, takes_null_everywhere) {
    char* end = nullptr;
    EXPECT_EQ(media_device_new(nullptr), nullptr);
    media_device_unref(nullptr);
    EXPECT_EQ(media_device_enumerate(nullptr), -EINVAL);
    EXPECT_EQ(media_get_entities_count(nullptr), 0U);
    EXPECT_EQ(media_get_entity(nullptr, 0), nullptr);
    EXPECT_EQ(media_entity_get_info(nullptr), nullptr);
    EXPECT_STREQ(media_entity_get_devname(nullptr), "");
    const char text[] = "1:0->2:0[1]";
    EXPECT_EQ(media_parse_setup_link(nullptr, text, &end), -EINVAL);
    EXPECT_EQ(end, text);
    EXPECT_EQ(media_parse_setup_link(nullptr, text, nullptr), -EINVAL);
    EXPECT_EQ(media_parse_setup_link(nullptr, nullptr, &end), -EINVAL);
    EXPECT_EQ(end, nullptr);
    EXPECT_EQ(v4l2_subdev_parse_setup_formats(nullptr, text), -EINVAL);
}

TEST(MediaHandle_pure, copies_the_path_and_touches_no_device) {
    mediaKernel() = cameraGraph(false);
    std::string path = "/dev/media0";
    const std::unique_ptr<media_device, UnrefDevice> media(media_device_new(path.c_str()));
    path = "/dev/other0";
    EXPECT_EQ(mediaKernel().calls, Calls{});
    EXPECT_EQ(media_device_enumerate(media.get()), 0);
    EXPECT_EQ(mediaKernel().calls.front(), "open /dev/media0");
}

}  // namespace
}  // namespace ZR::test
