// What zrctl video play leaves as a picture.

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <QImage>
#include <cerrno>

#include "tests/scene/support/picture.h"
#include "tests/scene/support/stream_source.h"
#include "tests/scene/support/streams.h"
#include "tests/tools/scene/running_tool.h"

namespace ZR::test {
namespace {

constexpr char pictureFile[] = "picture.png";

QStringList streamOptions(ZRVideoStreamType type, int port) {
    switch (type) {
        case StreamUdpH264:
            return {"--type", "udp-h264", "--port", QString::number(port)};
        case StreamUdpJpeg:
            return {"--type", "udp-jpeg", "--port", QString::number(port)};
        default:
            return {"--type", "rtsp", "--url", QString::fromStdString(rtspUrl(port))};
    }
}

QImage pictureOf(const RunningTool& tool) {
    return QImage(tool.folder() + "/" + pictureFile);
}

class PlaySnapshot : public testing::TestWithParam<ZRVideoStreamType> {
  protected:
    StreamSource source_{GetParam()};
    RunningTool tool_;
};

INSTANTIATE_TEST_SUITE_P(Stream, PlaySnapshot, testing::ValuesIn(networkStreams), streamName);

TEST_P(PlaySnapshot, is_the_picture_upright_in_the_whole_window) {
    tool_.play(streamOptions(GetParam(), source_.port()) +
               QStringList{"--snapshot", pictureFile, "--seconds", "50"});
    EXPECT_EQ(tool_.wait(), 0) << tool_.errors();
    const QImage picture = pictureOf(tool_);
    EXPECT_EQ(picture.size(), QSize(800, 480));
    EXPECT_EQ(quartersOf(picture, picture.rect()), upright);
    EXPECT_EQ(pictureArea(picture), picture.rect());
    EXPECT_EQ(tool_.errors(), "");
}

class PlayPicture : public testing::Test {
  protected:
    void takeSnapshot(const QStringList& options) {
        tool_.play(QStringList{"--type", "udp-jpeg", "--port", QString::number(port_), "--snapshot",
                               pictureFile, "--seconds", "50"} +
                   options);
        status_ = tool_.wait();
        picture_ = pictureOf(tool_);
    }

    int port_ = freeUdpPort();
    std::unique_ptr<ChildProcess> sender_ = sendJpeg(port_);
    RunningTool tool_;
    int status_ = -1;
    QImage picture_;
};

TEST_F(PlayPicture, is_turned_and_as_large_as_asked_for) {
    takeSnapshot({"--rotation", "90", "--size", "400x300"});
    ASSERT_EQ(status_, 0) << tool_.errors();
    EXPECT_EQ(picture_.size(), QSize(400, 300));
    EXPECT_EQ(quartersOf(picture_, picture_.rect()), turned(upright, 90));
    EXPECT_EQ(pictureArea(picture_), picture_.rect());
}

TEST_F(PlayPicture, is_mirrored_before_it_is_turned) {
    takeSnapshot({"--rotation", "-90", "--mirror", "1"});
    ASSERT_EQ(status_, 0) << tool_.errors();
    EXPECT_EQ(quartersOf(picture_, picture_.rect()), turned(mirrored(upright), 270));
}

TEST_F(PlayPicture, is_the_only_file_that_stays) {
    takeSnapshot({});
    ASSERT_EQ(status_, 0) << tool_.errors();
    EXPECT_EQ(tool_.leftFiles(), QStringList{pictureFile});
}

TEST_F(PlayPicture, comes_without_a_display_too_and_no_server_stays) {
    // Whatever the tool leaves behind becomes a child of this process.
    ASSERT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
    for (const char* const name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        tool_.unsetVariable(name);
    takeSnapshot({});
    ASSERT_EQ(status_, 0) << tool_.errors();
    EXPECT_EQ(quartersOf(picture_, picture_.rect()), upright);
    sender_.reset();
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a process was left";
    EXPECT_EQ(errno, ECHILD);
}

}  // namespace
}  // namespace ZR::test
