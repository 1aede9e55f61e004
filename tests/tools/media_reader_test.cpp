#include "tools/zrctl/media_reader.h"

#include <gtest/gtest.h>
#include <linux/version.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>

#include "tests/support/private_root.h"
#include "tests/tools/media_kernel.h"

namespace ZR::test {
namespace {

constexpr char media[] = "/dev/media0";
constexpr char decoder[] = "/dev/v4l-subdev0";
constexpr char camera[] = "/dev/video3";

media_v2_entity entity(__u32 id, const char* name, __u32 function) {
    media_v2_entity result{};
    result.id = id;
    std::strncpy(result.name, name, sizeof result.name);
    result.function = function;
    return result;
}

media_v2_interface interface(__u32 id, __u32 type, __u32 minor) {
    media_v2_interface result{};
    result.id = id;
    result.intf_type = type;
    result.devnode = {81, minor};
    return result;
}

media_v2_pad pad(__u32 id, __u32 entityId, __u32 flags, __u32 index) {
    return {id, entityId, flags, index, {}};
}

void makeNode(const std::string& path, unsigned int minor) {
    makeFile(path, "");
    makeFile("/sys/dev/char/81:" + std::to_string(minor) + "/uevent",
             "MAJOR=81\nMINOR=" + std::to_string(minor) + "\nDEVNAME=" + path.substr(5) + "\n");
}

v4l2_format videoFormat(v4l2_buf_type type) {
    v4l2_format format{};
    format.type = type;
    format.fmt.pix.width = 720;
    format.fmt.pix.height = 480;
    format.fmt.pix.pixelformat = V4L2_PIX_FMT_UYVY;
    format.fmt.pix.field = V4L2_FIELD_INTERLACED;
    return format;
}

/// A decoder with one source pad, linked to a video node.
class MediaReader : public testing::Test {
  protected:
    void SetUp() override {
        makeFile(media, "");
        makeNode(decoder, 4);
        makeNode(camera, 5);
        std::strcpy(kernel.info.driver, "cameras");
        std::strcpy(kernel.info.bus_info, "platform:cameras");
        kernel.info.media_version = KERNEL_VERSION(6, 1, 0);
        kernel.entities = {entity(1, "tw9912", MEDIA_ENT_F_ATV_DECODER),
                           entity(5, "capture", MEDIA_ENT_F_IO_V4L)};
        kernel.interfaces = {interface(20, MEDIA_INTF_T_V4L_SUBDEV, 4),
                             interface(21, MEDIA_INTF_T_V4L_VIDEO, 5)};
        kernel.pads = {pad(10, 1, MEDIA_PAD_FL_SOURCE, 0), pad(11, 5, MEDIA_PAD_FL_SINK, 3)};
        kernel.links = {{30, 10, 11, MEDIA_LNK_FL_ENABLED | MEDIA_LNK_FL_IMMUTABLE, {}},
                        {31, 20, 1, MEDIA_LNK_FL_INTERFACE_LINK | MEDIA_LNK_FL_ENABLED, {}},
                        {32, 21, 5, MEDIA_LNK_FL_INTERFACE_LINK | MEDIA_LNK_FL_ENABLED, {}}};
        v4l2_mbus_framefmt format{};
        format.width = 720;
        format.height = 576;
        format.code = 0x2006;
        format.field = V4L2_FIELD_NONE;
        kernel.padFormats[{decoder, 0}] = format;
        kernel.intervals[{decoder, 0}] = {1, 50};
        kernel.videoFormats[camera] = videoFormat(V4L2_BUF_TYPE_VIDEO_CAPTURE);
    }

    static std::string failure(const std::string& device) {
        try {
            (void)zrctl::readMediaGraph(device);
        } catch (const zrctl::MediaError& error) {
            return error.what();
        }
        return "";
    }

    MediaKernel& kernel = mediaKernel();
};

TEST_F(MediaReader, reads_entities_with_nodes_pads_and_formats) {
    const zrctl::MediaGraph graph = zrctl::readMediaGraph(media);
    EXPECT_EQ(graph.device, media);
    EXPECT_EQ(graph.driver, "cameras");
    EXPECT_EQ(graph.bus, "platform:cameras");
    ASSERT_EQ(graph.entities.size(), 2U);
    const zrctl::MediaEntity& first = graph.entities[0];
    EXPECT_EQ(first.name, "tw9912");
    EXPECT_EQ(first.node, decoder);
    ASSERT_EQ(first.pads.size(), 1U);
    EXPECT_FALSE(first.pads[0].isSink);
    ASSERT_TRUE(first.pads[0].format);
    EXPECT_EQ(first.pads[0].format->code, 0x2006U);
    EXPECT_EQ(first.pads[0].format->height, 576U);
    EXPECT_EQ(first.pads[0].format->field, static_cast<unsigned int>(V4L2_FIELD_NONE));
    ASSERT_TRUE(first.pads[0].interval);
    EXPECT_EQ(first.pads[0].interval->denominator, 50U);
    const zrctl::MediaEntity& last = graph.entities[1];
    EXPECT_EQ(last.node, camera);
    EXPECT_EQ(last.pads[0].index, 3U);
    EXPECT_TRUE(last.pads[0].isSink);
    ASSERT_TRUE(last.format);
    EXPECT_EQ(last.format->code, V4L2_PIX_FMT_UYVY);
    EXPECT_EQ(last.format->width, 720U);
}

TEST_F(MediaReader, reads_links_with_their_flags) {
    kernel.pads.push_back(pad(12, 1, MEDIA_PAD_FL_SOURCE, 1));
    kernel.links.push_back({33, 12, 11, MEDIA_LNK_FL_DYNAMIC, {}});
    const zrctl::MediaGraph graph = zrctl::readMediaGraph(media);
    ASSERT_EQ(graph.links.size(), 2U);
    EXPECT_EQ(graph.links[0].source, (zrctl::PadPlace{0, 0}));
    EXPECT_EQ(graph.links[0].sink, (zrctl::PadPlace{1, 0}));
    EXPECT_TRUE(graph.links[0].isEnabled);
    EXPECT_TRUE(graph.links[0].isImmutable);
    EXPECT_FALSE(graph.links[0].isDynamic);
    EXPECT_EQ(graph.links[1].source, (zrctl::PadPlace{0, 1}));
    EXPECT_FALSE(graph.links[1].isEnabled);
    EXPECT_FALSE(graph.links[1].isImmutable);
    EXPECT_TRUE(graph.links[1].isDynamic);
}

TEST_F(MediaReader, only_asks_and_lets_no_other_program_have_its_descriptors) {
    (void)zrctl::readMediaGraph(media);
    EXPECT_EQ(kernel.calls,
              (std::vector<std::string>{
                  "MEDIA_IOC_DEVICE_INFO /dev/media0", "MEDIA_IOC_G_TOPOLOGY /dev/media0",
                  "MEDIA_IOC_G_TOPOLOGY /dev/media0", "VIDIOC_SUBDEV_G_FMT /dev/v4l-subdev0",
                  "VIDIOC_SUBDEV_G_FRAME_INTERVAL /dev/v4l-subdev0", "VIDIOC_G_FMT /dev/video3"}));
    EXPECT_TRUE(kernel.allClosedOnExec);
    EXPECT_TRUE(kernel.noneWritable);
}

TEST_F(MediaReader, follows_a_graph_that_grows_between_counting_and_reading) {
    int requests = 0;
    kernel.beforeAnswer = [this, &requests](unsigned long request) {
        if (request == MEDIA_IOC_G_TOPOLOGY && ++requests == 2)
            kernel.entities.push_back(entity(7, "late", 0));
    };
    const zrctl::MediaGraph graph = zrctl::readMediaGraph(media);
    EXPECT_EQ(requests, 4);
    ASSERT_EQ(graph.entities.size(), 3U);
    EXPECT_EQ(graph.entities[2].name, "late");
}

TEST_F(MediaReader, follows_a_graph_that_shrinks_between_counting_and_reading) {
    int requests = 0;
    kernel.beforeAnswer = [this, &requests](unsigned long request) {
        if (request == MEDIA_IOC_G_TOPOLOGY && ++requests == 2)
            kernel.entities.pop_back();
    };
    const zrctl::MediaGraph graph = zrctl::readMediaGraph(media);
    EXPECT_EQ(graph.entities.size(), 1U);
    EXPECT_TRUE(graph.links.empty());
}

TEST_F(MediaReader, gives_up_on_a_graph_that_never_stops_growing) {
    kernel.beforeAnswer = [this](unsigned long request) {
        if (request == MEDIA_IOC_G_TOPOLOGY)
            kernel.links.push_back({40, 10, 11, 0, {}});
    };
    EXPECT_EQ(failure(media), "/dev/media0 grows faster than it can be read; try again");
}

TEST_F(MediaReader, asks_again_after_a_signal) {
    kernel.errors[MEDIA_IOC_G_TOPOLOGY] = {EINTR};
    kernel.errors[VIDIOC_SUBDEV_G_FMT] = {EINTR, EINTR};
    EXPECT_TRUE(zrctl::readMediaGraph(media).entities[0].pads[0].format);
}

TEST_F(MediaReader, leaves_out_what_a_node_that_cannot_be_opened_would_tell) {
    removeFile(decoder);
    const zrctl::MediaGraph graph = zrctl::readMediaGraph(media);
    EXPECT_EQ(graph.entities[0].node, decoder);
    EXPECT_FALSE(graph.entities[0].pads[0].format);
    EXPECT_FALSE(graph.entities[0].pads[0].interval);
    EXPECT_TRUE(graph.entities[1].format);
}

TEST_F(MediaReader, leaves_out_what_the_driver_refuses) {
    kernel.errors[VIDIOC_SUBDEV_G_FMT] = {EIO};
    kernel.errors[VIDIOC_SUBDEV_G_FRAME_INTERVAL] = {ENOTTY};
    kernel.errors[VIDIOC_G_FMT] = {EINVAL};
    const zrctl::MediaGraph graph = zrctl::readMediaGraph(media);
    EXPECT_FALSE(graph.entities[0].pads[0].format);
    EXPECT_FALSE(graph.entities[0].pads[0].interval);
    EXPECT_FALSE(graph.entities[1].format);
    EXPECT_EQ(graph.links.size(), 1U);
}

TEST_F(MediaReader, takes_an_interval_of_0_by_0_for_none) {
    kernel.intervals[{decoder, 0}] = {0, 0};
    EXPECT_FALSE(zrctl::readMediaGraph(media).entities[0].pads[0].interval);
}

TEST_F(MediaReader, leaves_the_path_out_that_the_kernel_does_not_name) {
    removeFile("/sys/dev/char/81:4");
    makeFile("/sys/dev/char/81:5/uevent", "MAJOR=81\nMINOR=5\n");
    const zrctl::MediaGraph graph = zrctl::readMediaGraph(media);
    EXPECT_EQ(graph.entities[0].node, "");
    EXPECT_EQ(graph.entities[1].node, "");
    EXPECT_EQ(graph.entities[1].nodeKind, zrctl::MediaNode::Video);
}

TEST_F(MediaReader, asks_an_output_node_for_what_it_puts_out) {
    kernel.pads[1].flags = MEDIA_PAD_FL_SOURCE;
    kernel.videoFormats[camera] = videoFormat(V4L2_BUF_TYPE_VIDEO_OUTPUT);
    EXPECT_TRUE(zrctl::readMediaGraph(media).entities[1].format);
}

TEST_F(MediaReader, asks_no_other_kind_of_node) {
    kernel.interfaces[1].intf_type = MEDIA_INTF_T_V4L_VBI;
    EXPECT_EQ(zrctl::readMediaGraph(media).entities[1].nodeKind, zrctl::MediaNode::Other);
    EXPECT_EQ(std::count(kernel.calls.begin(), kernel.calls.end(), "VIDIOC_G_FMT /dev/video3"), 0);
}

TEST_F(MediaReader, counts_the_pads_of_kernels_that_do_not_number_them) {
    kernel.info.media_version = KERNEL_VERSION(4, 14, 0);
    kernel.pads = {pad(10, 1, MEDIA_PAD_FL_SINK, 0), pad(11, 1, MEDIA_PAD_FL_SOURCE, 0)};
    const zrctl::MediaGraph graph = zrctl::readMediaGraph(media);
    EXPECT_EQ(graph.entities[0].pads[0].index, 0U);
    EXPECT_EQ(graph.entities[0].pads[1].index, 1U);
}

TEST_F(MediaReader, ignores_what_refers_to_nothing) {
    kernel.pads.push_back(pad(12, 99, MEDIA_PAD_FL_SINK, 0));
    kernel.links.push_back({33, 10, 12, MEDIA_LNK_FL_ENABLED, {}});
    kernel.links.push_back({34, 98, 97, MEDIA_LNK_FL_INTERFACE_LINK, {}});
    kernel.links.push_back({35, 10, 11, 2U << 28, {}});
    const zrctl::MediaGraph graph = zrctl::readMediaGraph(media);
    EXPECT_EQ(graph.entities.size(), 2U);
    EXPECT_EQ(graph.links.size(), 1U);
}

TEST_F(MediaReader, takes_names_that_fill_their_field) {
    std::memset(kernel.entities[0].name, 'x', sizeof kernel.entities[0].name);
    EXPECT_EQ(zrctl::readMediaGraph(media).entities[0].name,
              std::string(sizeof kernel.entities[0].name, 'x'));
}

TEST_F(MediaReader, fails_without_the_device) {
    EXPECT_EQ(failure("/dev/media7"),
              "/dev/media7 is missing; check that the board has this device and its driver is "
              "loaded");
}

TEST_F(MediaReader, fails_on_a_device_that_is_no_media_controller) {
    EXPECT_EQ(failure(camera),
              "/dev/video3 is no media controller that tells its topology: Inappropriate ioctl for "
              "device; give another one by --device");
}

TEST_F(MediaReader, fails_when_the_kernel_refuses_the_topology) {
    kernel.errors[MEDIA_IOC_G_TOPOLOGY] = {EIO};
    EXPECT_EQ(failure(media),
              "/dev/media0 is no media controller that tells its topology: Input/output error; "
              "give another one by --device");
}

TEST_F(MediaReader, does_not_wait_for_a_device_that_answers_nobody) {
    removeFile(media);
    makeFifo(media);
    kernel.errors[MEDIA_IOC_DEVICE_INFO] = {ENOTTY};
    EXPECT_NE(failure(media), "");
}

}  // namespace
}  // namespace ZR::test
