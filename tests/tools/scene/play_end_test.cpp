// How zrctl video play ends when there is no picture.

#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include "tests/scene/support/streams.h"
#include "tests/tools/scene/running_tool.h"

namespace ZR::test {
namespace {

class PlayEnd : public testing::Test {
  protected:
    void play(const QStringList& options) {
        tool_.play(QStringList{"--type", "udp-jpeg", "--port", QString::number(port_), "--json"} +
                   options);
    }

    /// What the one line on standard error and the last document have to say.
    void expectError(const std::string& text) {
        EXPECT_EQ(tool_.errors(), "zrctl: " + text + "\n");
        EXPECT_EQ(tool_.lastDocument()["error"].toString().toStdString(), text);
    }

    int port_ = freeUdpPort();
    RunningTool tool_;
};

TEST_F(PlayEnd, of_a_snapshot_without_a_sender_comes_with_the_time) {
    play({"--snapshot", "none.png", "--seconds", "3"});
    EXPECT_EQ(tool_.wait(), 1);
    expectError(
        "no picture within 3 s; check that JPEG in RTP, payload type 26, is sent to UDP port " +
        std::to_string(port_));
    EXPECT_EQ(tool_.leftFiles(), QStringList());
}

TEST_F(PlayEnd, of_a_stream_without_a_sender_is_a_failure_too) {
    play({"--seconds", "2"});
    EXPECT_EQ(tool_.wait(), 1);
    EXPECT_EQ(tool_.lastDocument()["pictures"].toInt(-1), 0);
    EXPECT_TRUE(tool_.lastDocument()["firstPictureMilliseconds"].isNull());
}

TEST_F(PlayEnd, by_a_signal_before_the_first_picture_is_a_failure) {
    play({});
    (void)tool_.awaitState("starting");
    tool_.sendSignal(SIGINT);
    EXPECT_EQ(tool_.wait(), 1);
    expectError("ended before a picture was shown");
}

TEST_F(PlayEnd, comes_at_once_on_a_display_that_is_none) {
    tool_.setVariable("DISPLAY", "/nowhere/display:1");
    play({});
    EXPECT_EQ(tool_.wait(), 1);
    expectError(
        "no window can be opened on this display; set DISPLAY (or QT_QPA_PLATFORM) to one "
        "that works, or unset it");
}

TEST_F(PlayEnd, comes_at_once_without_a_display_and_without_a_server_for_one) {
    for (const char* const name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        tool_.unsetVariable(name);
    tool_.setVariable("PATH", tool_.folder());
    play({});
    EXPECT_EQ(tool_.wait(), 1);
    expectError("there is no display, and no Xvfb to do without; install xvfb, or set DISPLAY");
}

TEST_F(PlayEnd, comes_at_once_without_the_elements_of_the_stream) {
    tool_.unsetVariable("GST_PLUGIN_PATH");
    tool_.setVariable("GST_PLUGIN_SYSTEM_PATH_1_0", "/nowhere");
    tool_.setVariable("GST_REGISTRY", tool_.folder() + "/registry");
    play({});
    EXPECT_EQ(tool_.wait(), 1);
    expectError(
        "GStreamer lacks udpsrc, rtpjpegdepay, jpegparse, v4l2jpegdec, glupload, "
        "glcolorconvert, qmlglsink; install what holds it, or name its folder in "
        "GST_PLUGIN_PATH");
}

}  // namespace
}  // namespace ZR::test
