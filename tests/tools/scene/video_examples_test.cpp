// The examples with a scene, in the folder that holds their QML files.

#include <gtest/gtest.h>

#include <string>

#include "tests/scene/support/streams.h"
#include "tests/tools/scene/running_tool.h"

namespace ZR::test {
namespace {

class VideoExamples : public testing::Test {
  protected:
    void SetUp() override { tool_.setFolder(EXAMPLES_SOURCES); }

    RunningTool tool_;
};

TEST_F(VideoExamples, play_network_stream_plays_to_its_end) {
    const int port = freeUdpPort();
    const auto sender = sendH264(port);
    tool_.start(EXAMPLES_FOLDER "play_network_stream", {"udp-h264", QString::number(port), "10"});
    EXPECT_EQ(tool_.wait(), 0) << tool_.output() << tool_.errors();
    EXPECT_EQ(tool_.output(), "it played to the end\n");
}

TEST_F(VideoExamples, play_network_stream_tells_that_nothing_came) {
    tool_.start(EXAMPLES_FOLDER "play_network_stream",
                {"rtsp", QString::fromStdString(rtspUrl(freeTcpPort())), "4"});
    EXPECT_EQ(tool_.wait(), 1);
    EXPECT_NE(tool_.output().find("Trigger stream restart in 1000 milliseconds.\n"),
              std::string::npos);
    EXPECT_NE(tool_.output().find("there is no picture\n"), std::string::npos);
}

TEST_F(VideoExamples, show_camera_tells_that_there_is_no_camera) {
    tool_.start(EXAMPLES_FOLDER "show_camera", {"2", "4"});
    EXPECT_EQ(tool_.wait(), 1);
    EXPECT_NE(tool_.output().find("camera 2 gives no picture\n"), std::string::npos);
}

TEST_F(VideoExamples, that_do_not_find_their_scene_say_where_to_run_them) {
    for (const auto& [name, arguments] :
         {std::pair<std::string, QStringList>{"show_camera", {"1"}},
          std::pair<std::string, QStringList>{"play_network_stream", {"udp-jpeg", "5004"}}}) {
        RunningTool elsewhere;
        elsewhere.start(EXAMPLES_FOLDER + QString::fromStdString(name), arguments);
        EXPECT_EQ(elsewhere.wait(), 1);
        EXPECT_NE(
            elsewhere.errors().find("run " + name + " in the folder that holds its QML files\n"),
            std::string::npos);
    }
}

}  // namespace
}  // namespace ZR::test
