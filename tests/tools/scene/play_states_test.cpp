// What zrctl video play tells of a stream.

#include <gtest/gtest.h>

#include <csignal>

#include "tests/scene/support/streams.h"
#include "tests/tools/scene/running_tool.h"

namespace ZR::test {
namespace {

class PlayStates : public testing::Test {
  protected:
    void play(const QStringList& options) {
        tool_.play(QStringList{"--type", "udp-h264", "--port", QString::number(port_), "--json"} +
                   options);
    }

    int port_ = freeUdpPort();
    RunningTool tool_;
};

TEST_F(PlayStates, tell_of_the_start_and_of_the_first_picture) {
    const auto sender = sendH264(port_);
    play({});
    EXPECT_EQ(tool_.awaitState("starting")["milliseconds"].toInt(-1), 0);
    const int playing = tool_.awaitState("playing")["milliseconds"].toInt();
    tool_.sendSignal(SIGINT);
    EXPECT_EQ(tool_.wait(), 0) << tool_.errors();
    const QJsonObject summary = tool_.lastDocument();
    EXPECT_EQ(summary["type"].toString(), "udp-h264");
    EXPECT_GT(summary["firstPictureMilliseconds"].toInt(), 0);
    EXPECT_LE(summary["firstPictureMilliseconds"].toInt(), playing);
    EXPECT_GE(summary["pictures"].toInt(), 1);
    EXPECT_TRUE(summary["snapshot"].isNull());
}

TEST_F(PlayStates, count_no_more_pictures_than_were_sent) {
    const auto sender = sendH264(port_);
    play({"--seconds", "6"});
    EXPECT_EQ(tool_.wait(), 0) << tool_.errors();
    const QJsonObject summary = tool_.lastDocument();
    const int shown = summary["shownMilliseconds"].toInt();
    const int pictures = summary["pictures"].toInt();
    // 25 pictures a second, of which a busy machine skips some, and a few that wait at the start.
    EXPECT_GT(pictures, 5);
    EXPECT_LE(pictures, shown / 40 + 25);
    EXPECT_LE(shown, 6000 + 1000);
}

TEST_F(PlayStates, tell_of_a_restart_when_the_sender_is_gone_and_back) {
    auto sender = sendH264(port_);
    play({});
    (void)tool_.awaitState("playing");
    sender.reset();
    EXPECT_EQ(tool_.awaitState("restarting")["detail"].toString(),
              "in 1000 ms, the sender is silent");
    EXPECT_EQ(tool_.awaitState("starting")["detail"].toString(), "restart 1");
    sender = sendH264(port_);
    (void)tool_.awaitState("playing");
    tool_.sendSignal(SIGTERM);
    EXPECT_EQ(tool_.wait(), 0) << tool_.errors();
    EXPECT_GE(tool_.lastDocument()["restarts"].toInt(), 1);
}

TEST_F(PlayStates, tell_that_a_stream_stands_still_before_it_is_restarted_or_not) {
    // Junk keeps the library's time-out away; the last picture stays.
    auto sender = sendH264(port_);
    play({});
    (void)tool_.awaitState("playing");
    const auto junk = sendJunk(port_);
    sender.reset();
    (void)tool_.awaitState("waiting");
    tool_.sendSignal(SIGINT);
    EXPECT_EQ(tool_.wait(), 0) << tool_.errors();
}

TEST_F(PlayStates, end_when_the_library_gives_up) {
    tool_.play(
        {"--type", "rtsp", "--url", QString::fromStdString(rtspUrl(freeTcpPort())), "--json"});
    (void)tool_.awaitState("gave up");
    EXPECT_EQ(tool_.wait(), 1);
    EXPECT_EQ(tool_.lastDocument()["restarts"].toInt(), 10);
    EXPECT_EQ(tool_.lastDocument()["pictures"].toInt(-1), 0);
    EXPECT_EQ(
        tool_.errors().rfind("zrctl: the library gave up after 10 restarts; check that rtsp:", 0),
        0U)
        << tool_.errors();
}

}  // namespace
}  // namespace ZR::test
