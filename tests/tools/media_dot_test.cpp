#include <gtest/gtest.h>

#include <string>

#include "tests/support/private_root.h"
#include "tests/tools/camera_graph.h"
#include "tests/tools/tool_process.h"
#include "tools/zrctl/graphviz.h"
#include "tools/zrctl/media_drawing.h"

namespace ZR::test {
namespace {

constexpr char graphviz[] = "/usr/bin/dot";
constexpr char graphFile[] = "/dev/graph";

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

/// The line of a text that begins with @p start.
std::string lineOf(const std::string& text, const std::string& start) {
    const std::size_t begin = text.find("\n" + start);
    return begin == std::string::npos
               ? ""
               : text.substr(begin + 1, text.find('\n', begin + 1) - begin - 1);
}

TEST(MediaDot_pure, draws_each_entity_with_its_pads) {
    const std::string mux = lineOf(zrctl::mediaDot(cameraGraph()), "  e3 [");
    EXPECT_TRUE(contains(mux, "<b>mux</b><br/>video multiplexer<br/>/dev/v4l-subdev2</td>"));
    EXPECT_TRUE(contains(mux, R"(<td port="p0" align="left">0 sink -</td>)"));
    EXPECT_TRUE(contains(mux, ">4 sink UYVY8_2X8/720x576 field:none</td>"));
    EXPECT_TRUE(contains(mux, R"(<td port="p2" align="right">5 source UYVY8_2X8/)"));
    EXPECT_TRUE(contains(lineOf(zrctl::mediaDot(cameraGraph()), "  e0 ["),
                         "/dev/video1<br/>UYVY/720x576 field:none</td>"));
}

TEST(MediaDot_pure, draws_what_is_enabled_in_another_way) {
    const std::string dot = zrctl::mediaDot(cameraGraph());
    EXPECT_EQ(lineOf(dot, "  e1:p0:e "), R"(  e1:p0:e -> e3:p1:w [style="bold" color="#1a7f37"])");
    EXPECT_EQ(lineOf(dot, "  e2:p0:e "),
              R"(  e2:p0:e -> e3:p0:w [style="dashed" color="#a0a0a0" label="dynamic"])");
    EXPECT_EQ(lineOf(dot, "  e3:p2:e "),
              R"(  e3:p2:e -> e4:p0:w [style="bold" color="#1a7f37" label="immutable"])");
    EXPECT_TRUE(contains(lineOf(dot, "  e1 ["), "#d8f3dc"));
    EXPECT_TRUE(contains(lineOf(dot, "  e2 ["), "#eeeeee"));
}

TEST(MediaDot_pure, escapes_what_labels_have_a_meaning_for) {
    const std::string dot = zrctl::mediaDot(oddlyNamedGraph());
    EXPECT_TRUE(
        contains(lineOf(dot, "  e1 ["), "<b>a&#34;b&#39;c&#92;d&#60;e&#62;&#38;f{g|h}??[2J?</b>"));
    EXPECT_TRUE(contains(lineOf(dot, "  e3 ["), "<b>]&#62;&#62; }</b>"));
}

class Graphviz : public testing::Test {
  protected:
    void SetUp() override {
        if (!exists(graphviz))
            GTEST_SKIP() << "Graphviz's program 'dot' is not installed";
    }
};

/// In its plain form dot tells what it understood.
TEST_F(Graphviz, accepts_the_drawing_and_sees_all_of_it) {
    makeFile(graphFile, zrctl::mediaDot(cameraGraph()));
    const ToolResult result = runTool(graphviz, {"-Tplain", graphFile});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    for (const char* const part : {"\nnode e0 ", "\nnode e4 ", "\nedge e1 e3 ", "\nedge e4 e0 "})
        EXPECT_TRUE(contains(result.output, part)) << part;
    EXPECT_FALSE(contains(result.output, "\nnode e5 "));
}

TEST_F(Graphviz, draws_a_picture) {
    const std::string picture = zrctl::drawSvg(zrctl::mediaDot(cameraGraph()));
    EXPECT_TRUE(contains(picture, "<svg "));
    EXPECT_TRUE(contains(picture, ">ipu1_csi1 capture</text>"));
    EXPECT_TRUE(contains(picture, "#1a7f37"));
    EXPECT_EQ(picture.substr(picture.size() - 7), "</svg>\n");
}

TEST_F(Graphviz, draws_names_as_they_are) {
    const std::string picture = zrctl::drawSvg(zrctl::mediaDot(oddlyNamedGraph()));
    EXPECT_TRUE(contains(picture, "&#39;c\\d&lt;e&gt;&amp;f{g|h}??[2J?</text>")) << picture;
    EXPECT_TRUE(contains(picture, ">]&gt;&gt; }</text>"));
}

TEST_F(Graphviz, draws_more_than_a_pipe_holds) {
    zrctl::MediaGraph graph = cameraGraph();
    const std::string longName(4000, 'x');
    for (int entity = 0; entity < 20; ++entity)
        graph.entities.push_back({0, longName, 0});
    const std::string dot = zrctl::mediaDot(graph);
    ASSERT_GT(dot.size(), 65536U);
    EXPECT_GT(zrctl::drawSvg(dot).size(), 65536U);
}

TEST_F(Graphviz, fails_with_the_reason_when_dot_does) {
    try {
        (void)zrctl::drawSvg("no graph");
        FAIL() << "a picture of what is no graph";
    } catch (const zrctl::GraphvizError& error) {
        EXPECT_STREQ(error.what(),
                     "Graphviz's program 'dot' failed; draw what --dot writes elsewhere");
    }
}

TEST(WithoutGraphviz, the_reason_says_what_to_install) {
    ::setenv("PATH", "/dev", 1);
    try {
        (void)zrctl::drawSvg(zrctl::mediaDot(cameraGraph()));
        FAIL() << "a picture without the program";
    } catch (const zrctl::GraphvizError& error) {
        EXPECT_STREQ(error.what(),
                     "Graphviz's program 'dot' is not installed; install graphviz, or draw what "
                     "--dot writes elsewhere");
    }
}

}  // namespace
}  // namespace ZR::test
