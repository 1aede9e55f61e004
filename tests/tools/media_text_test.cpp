#include <gtest/gtest.h>
#include <linux/videodev2.h>

#include <string>

#include "tests/tools/camera_graph.h"
#include "tools/zrctl/media_drawing.h"
#include "tools/zrctl/media_names.h"

namespace ZR::test {
namespace {

TEST(MediaText_pure, shows_the_enabled_paths_and_then_everything) {
    EXPECT_EQ(zrctl::mediaText(cameraGraph()),
              R"(/dev/media0: driver cameras, model Camera graph, bus platform:cameras

Enabled: tw9912 1-0044 to ipu1_csi1 capture, /dev/video1
  tw9912 1-0044      0  UYVY8_2X8/720x576 field:none
  mux                4  UYVY8_2X8/720x576 field:none
                     5  UYVY8_2X8/720x576 field:none
  csi                0  UYVY8_2X8/720x576@1/50 field:none
                     2  AYUV8_1X32/720x576@1/50 field:any
  ipu1_csi1 capture  0  UYVY/720x576 field:none

All entities (==> enabled link, --> link that is off)
ipu1_csi1 capture: video node, /dev/video1
  0  sink    UYVY/720x576 field:none            <== csi:2
tw9912 1-0044: analog video decoder, /dev/v4l-subdev0
  0  source  UYVY8_2X8/720x576 field:none       ==> mux:4
other: 0x12345, -
  0  source  -                                  --> mux:0 dynamic
mux: video multiplexer, /dev/v4l-subdev2
  0  sink    -                                  <-- other:0 dynamic
  4  sink    UYVY8_2X8/720x576 field:none       <== tw9912 1-0044:0
  5  source  UYVY8_2X8/720x576 field:none       ==> csi:0 immutable
csi: video interface bridge, /dev/v4l-subdev3
  0  sink    UYVY8_2X8/720x576@1/50 field:none  <== mux:5 immutable
  2  source  AYUV8_1X32/720x576@1/50 field:any  ==> ipu1_csi1 capture:0
)");
}

TEST(MediaText_pure, says_that_nothing_is_enabled) {
    zrctl::MediaGraph graph = cameraGraph();
    graph.links.clear();
    EXPECT_NE(zrctl::mediaText(graph).find("\nEnabled: nothing\n"), std::string::npos);
}

TEST(MediaText_pure, shows_several_links_of_a_pad_one_below_the_other) {
    zrctl::MediaGraph graph = cameraGraph();
    graph.links.push_back({{1, 0}, {4, 0}, false});
    EXPECT_NE(
        zrctl::mediaText(graph).find("  0  source  UYVY8_2X8/720x576 field:none       ==> mux:4\n"
                                     "                                                --> csi:0\n"),
        std::string::npos);
}

TEST(MediaText_pure, holds_nothing_that_a_screen_would_obey) {
    const std::string text = zrctl::mediaText(oddlyNamedGraph());
    EXPECT_NE(text.find("\na\"b'c\\d<e>&f{g|h}??[2J?: analog video decoder"), std::string::npos);
    for (const char character : text)
        EXPECT_TRUE(character == '\n' || (character >= 0x20 && character < 0x7F));
}

TEST(MediaText_pure, of_an_empty_graph_is_its_head) {
    EXPECT_EQ(zrctl::mediaText({"/dev/media1", "driver", "", "", ""}),
              "/dev/media1: driver driver\n\nEnabled: nothing\n\n"
              "All entities (==> enabled link, --> link that is off)\n");
}

TEST(MediaNames_pure, are_numbers_where_there_is_no_name) {
    EXPECT_EQ(zrctl::busCodeText(0x2006), "UYVY8_2X8");
    EXPECT_EQ(zrctl::busCodeText(0x100a), "RGB888_1X24");
    EXPECT_EQ(zrctl::busCodeText(0x7), "0x0007");
    EXPECT_EQ(zrctl::entityFunctionText(0x5001), "video multiplexer");
    EXPECT_EQ(zrctl::fieldText(99), "0x0063");
}

TEST(MediaNames_pure, of_pixel_formats_are_their_letters) {
    EXPECT_EQ(zrctl::pixelFormatText(V4L2_PIX_FMT_YUYV), "YUYV");
    EXPECT_EQ(zrctl::pixelFormatText(v4l2_fourcc('Y', '8', ' ', ' ')), "Y8");
    EXPECT_EQ(zrctl::pixelFormatText(v4l2_fourcc_be('Y', '1', '6', ' ')), "Y16-BE");
    EXPECT_EQ(zrctl::pixelFormatText(0), "0x0000");
    EXPECT_EQ(zrctl::pixelFormatText(0x20202020), "0x20202020");
}

}  // namespace
}  // namespace ZR::test
