#include <gtest/gtest.h>

#include <string>

#include "tests/tools/camera_graph.h"
#include "tests/tools/json_check.h"
#include "tools/zrctl/media_drawing.h"

namespace ZR::test {
namespace {

std::string ask(const zrctl::MediaGraph& graph, const std::string& filter) {
    return query(zrctl::mediaJson(graph).text(), filter);
}

TEST(MediaJson, names_the_media_controller) {
    EXPECT_EQ(ask(cameraGraph(), "[.device, .driver, .model, .serial, .bus]"),
              R"(["/dev/media0","cameras","Camera graph","","platform:cameras"])"
              "\n");
}

TEST(MediaJson, tells_what_an_entity_is) {
    EXPECT_EQ(ask(cameraGraph(), ".entities[3] | [.id, .name, .function, .functionNumber, .node]"),
              "[8,\"mux\",\"video multiplexer\",20481,\"/dev/v4l-subdev2\"]\n");
    EXPECT_EQ(ask(cameraGraph(), ".entities[2] | [.function, .node, .format]"),
              "[\"0x12345\",null,null]\n");
}

TEST(MediaJson, tells_what_passes_a_pad) {
    EXPECT_EQ(ask(cameraGraph(), ".entities[4].pads[1]"),
              R"({"index":2,"direction":"source","format":{"code":"AYUV8_1X32","codeNumber":8215,)"
              R"("width":720,"height":576,"field":"any"},)"
              R"("interval":{"numerator":1,"denominator":50}})"
              "\n");
    EXPECT_EQ(ask(cameraGraph(), ".entities[3].pads[0]"),
              R"({"index":0,"direction":"sink","format":null,"interval":null})"
              "\n");
}

TEST(MediaJson, tells_what_a_video_node_captures) {
    EXPECT_EQ(ask(cameraGraph(), ".entities[0].format | [.code, .width, .height, .field]"),
              "[\"UYVY\",720,576,\"none\"]\n");
}

TEST(MediaJson, tells_what_links_join) {
    EXPECT_EQ(ask(cameraGraph(), ".links[0]"),
              R"({"source":{"id":4,"name":"tw9912 1-0044","pad":0},)"
              R"("sink":{"id":8,"name":"mux","pad":4},)"
              R"("enabled":true,"immutable":false,"dynamic":false})"
              "\n");
    EXPECT_EQ(ask(cameraGraph(), ".links[1:3] | map([.enabled, .immutable, .dynamic])"),
              "[[false,false,true],[true,true,false]]\n");
}

TEST(MediaJson, is_valid_whatever_the_names_hold) {
    EXPECT_EQ(ask(oddlyNamedGraph(), ".model"), "\"<b>\\\\N & \\\"model\\\"\"\n");
    EXPECT_EQ(ask(oddlyNamedGraph(), ".links[0].source.name"),
              "\"a\\\"b'c\\\\d<e>&f{g|h}??[2J?\"\n");
}

TEST(MediaJson, of_an_empty_graph_has_empty_lists) {
    EXPECT_EQ(ask({"/dev/media1", "driver", "", "", ""}, "[.entities, .links]"), "[[],[]]\n");
}

}  // namespace
}  // namespace ZR::test
