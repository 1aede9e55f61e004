#include "tests/tools/camera_graph.h"

#include <linux/media-bus-format.h>
#include <linux/media.h>
#include <linux/videodev2.h>

namespace ZR::test {
namespace {

using zrctl::MediaNode;

constexpr zrctl::FrameFormat pal{MEDIA_BUS_FMT_UYVY8_2X8, 720, 576, V4L2_FIELD_NONE};
constexpr zrctl::FrameFormat processed{MEDIA_BUS_FMT_AYUV8_1X32, 720, 576, V4L2_FIELD_ANY};
constexpr zrctl::FrameFormat captured{V4L2_PIX_FMT_UYVY, 720, 576, V4L2_FIELD_NONE};
constexpr zrctl::FrameInterval fields{1, 50};

}  // namespace

zrctl::MediaGraph cameraGraph() {
    zrctl::MediaGraph graph{"/dev/media0", "cameras", "Camera graph", "", "platform:cameras"};
    graph.entities = {{1,
                       "ipu1_csi1 capture",
                       MEDIA_ENT_F_IO_V4L,
                       MediaNode::Video,
                       "/dev/video1",
                       {{0, true}},
                       captured},
                      {4,
                       "tw9912 1-0044",
                       MEDIA_ENT_F_ATV_DECODER,
                       MediaNode::Subdevice,
                       "/dev/v4l-subdev0",
                       {{0, false, pal}}},
                      {6, "other", 0x12345, MediaNode::None, "", {{0, false}}},
                      {8,
                       "mux",
                       MEDIA_ENT_F_VID_MUX,
                       MediaNode::Subdevice,
                       "/dev/v4l-subdev2",
                       {{0, true}, {4, true, pal}, {5, false, pal}}},
                      {12,
                       "csi",
                       MEDIA_ENT_F_VID_IF_BRIDGE,
                       MediaNode::Subdevice,
                       "/dev/v4l-subdev3",
                       {{0, true, pal, fields}, {2, false, processed, fields}}}};
    graph.links = {{{1, 0}, {3, 1}, true},
                   {{2, 0}, {3, 0}, false, false, true},
                   {{3, 2}, {4, 0}, true, true},
                   {{4, 1}, {0, 0}, true}};
    return graph;
}

zrctl::MediaGraph oddlyNamedGraph() {
    zrctl::MediaGraph graph = cameraGraph();
    graph.model = "<b>\\N & \"model\"";
    graph.entities[1].name = "a\"b'c\\d<e>&f{g|h}\n\x1b[2J\xff";
    graph.entities[3].name = "]>> }";
    graph.entities[4].name = "";
    return graph;
}

}  // namespace ZR::test
