#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/private_root.h"
#include "tests/tools/json_check.h"
#include "tests/tools/tool_process.h"
#include "tools/zrctl/video_play_record.h"

namespace ZR::test {
namespace {

struct WrongPlay {
    std::vector<std::string> options;
    std::string error;
};

void PrintTo(const WrongPlay& wrong, std::ostream* out) {
    *out << "play";
    for (const std::string& option : wrong.options)
        *out << ' ' << option;
}

class ZrctlWrongPlay : public testing::TestWithParam<WrongPlay> {};

TEST_P(ZrctlWrongPlay, gives_one_line_and_status_2) {
    std::vector<std::string> words = {"video", "play"};
    words.insert(words.end(), GetParam().options.begin(), GetParam().options.end());
    const ToolResult result = runZrctl(words);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "zrctl: " + GetParam().error + "\n");
    EXPECT_EQ(result.output, "");
}

constexpr char urlForm[] =
    ": write rtsp://HOST/PATH or rtsp://HOST:PORT/PATH, without blanks, quotes and '!'";
constexpr char sizeForm[] = ": write WIDTHxHEIGHT, as in 800x480, of at most 8192 each";

INSTANTIATE_TEST_SUITE_P(
    types, ZrctlWrongPlay,
    testing::Values(
        WrongPlay{{}, "video play needs --type udp-h264, udp-jpeg, rtsp or camera"},
        WrongPlay{{"--type", "h264"},
                  "no stream type 'h264'; give udp-h264, udp-jpeg, rtsp or camera"},
        WrongPlay{{"camera"}, "video play takes options only, as in 'video play --type camera'"},
        WrongPlay{{"--type", "rtsp"},
                  "a stream of type rtsp needs --url, as in rtsp://192.168.1.20/stream"},
        WrongPlay{{"--type", "rtsp", "--port", "1"}, "a stream of type rtsp has no --port"},
        WrongPlay{{"--type", "camera", "--url", "x"}, "a stream of type camera has no --url"},
        WrongPlay{{"--type", "udp-h264", "--input", "1"},
                  "a stream of type udp-h264 has no --input"},
        WrongPlay{{"--type", "udp-jpeg", "--hue", "1"}, "a stream of type udp-jpeg has no --hue"}));

INSTANTIATE_TEST_SUITE_P(
    values, ZrctlWrongPlay,
    testing::Values(
        WrongPlay{{"--type", "udp-h264", "--port", "0"},
                  "port '0' is no whole number from 1 to 65535"},
        WrongPlay{{"--type", "udp-h264", "--port", "65536"},
                  "port '65536' is no whole number from 1 to 65535"},
        WrongPlay{{"--type", "camera", "--input", "4"}, "input '4' is no whole number from 1 to 3"},
        WrongPlay{{"--type", "camera", "--brightness", "dark"},
                  "brightness 'dark' is no whole number from -2147483648 to 2147483647"},
        WrongPlay{{"--type", "camera", "--rotation", "90deg"},
                  "rotation '90deg' is no whole number from -2147483648 to 2147483647"},
        WrongPlay{{"--type", "camera", "--seconds", "0"},
                  "seconds '0' is no whole number from 1 to 2147483647"},
        WrongPlay{{"--type", "camera", "--size", "800"}, std::string("size '800'") + sizeForm},
        WrongPlay{{"--type", "camera", "--size", "0x480"}, std::string("size '0x480'") + sizeForm},
        WrongPlay{{"--type", "camera", "--size", "800x480x2"},
                  std::string("size '800x480x2'") + sizeForm},
        WrongPlay{{"--type", "camera", "--size", "800x9000"},
                  std::string("size '800x9000'") + sizeForm},
        WrongPlay{{"--type", "camera", "--snapshot", "picture.jpg"},
                  "snapshot 'picture.jpg': give a file name that ends in .png"},
        WrongPlay{{"--type", "rtsp", "--url", "http://host/x"},
                  std::string("URL 'http://host/x'") + urlForm},
        WrongPlay{{"--type", "rtsp", "--url", "rtsp://host/a b"},
                  std::string("URL 'rtsp://host/a b'") + urlForm},
        WrongPlay{{"--type", "rtsp", "--url", "rtsp://host/!fakesink"},
                  std::string("URL 'rtsp://host/!fakesink'") + urlForm}));

TEST(ZrctlVideoPlay, of_a_camera_without_a_capture_node_says_so) {
    const ToolResult result = runZrctl({"video", "play", "--type", "camera", "--input", "3"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              "zrctl: camera 3 has no capture node; 'zrctl video topology' shows the decoders and "
              "their nodes\n");
}

TEST(ZrctlVideoPlay, with_a_snapshot_that_cannot_be_written_says_so_before_anything_else) {
    makeFile("/dev/file", "");
    for (const char* const path : {"/dev/nowhere/x.png", "/dev/file/x.png"}) {
        const ToolResult result =
            runZrctl({"video", "play", "--type", "camera", "--snapshot", path, "--json"});
        EXPECT_EQ(result.status, 1);
        const std::string text = "snapshot " + std::string(path) +
                                 " cannot be written; name a file in a folder that can be";
        EXPECT_EQ(result.errors, "zrctl: " + text + "\n");
        EXPECT_EQ(query(result.output, "[.error, .snapshot]"), "[\"" + text + "\",null]\n");
    }
}

TEST(PlayNews, of_a_scheduled_restart_has_its_time_and_its_reason) {
    zrctl::PlayNews news;
    news.add("STREAM TIMED OUT!");
    news.add("Trigger stream restart in 1000 milliseconds.");
    EXPECT_EQ(news.restartIn, 1000);
    EXPECT_EQ(news.reason, "the sender is silent");
    EXPECT_FALSE(news.gaveUp);
}

TEST(PlayNews, of_an_error_and_an_end_are_reasons_too) {
    zrctl::PlayNews news;
    news.add("GST Error : Not found");
    EXPECT_EQ(news.reason, "Not found");
    news.add("  Debugging information: none");
    EXPECT_EQ(news.reason, "Not found");
    news.add("STREAM TIMEOUT (EOS)!");
    EXPECT_EQ(news.reason, "the stream has ended");
    EXPECT_FALSE(news.restartIn);
}

TEST(PlayNews, of_giving_up_is_not_missed) {
    zrctl::PlayNews news;
    news.add("Video: Gave up after 10 automatic restarts. Please restart video manually...");
    EXPECT_TRUE(news.gaveUp);
}

class PlayRecords : public testing::Test {
  protected:
    /// What a record writes when it is told so.
    template <typename Tell>
    std::string written(const Tell& tell) {
        testing::internal::CaptureStdout();
        tell();
        return testing::internal::GetCapturedStdout();
    }

    zrctl::PlayRequest request_;
};

TEST_F(PlayRecords, tell_of_a_state_once) {
    zrctl::PlayRecord record(request_, false);
    EXPECT_EQ(written([&] {
                  record.enter(zrctl::PlayState::Starting, 0);
                  record.enter(zrctl::PlayState::Playing, 1249);
                  record.enter(zrctl::PlayState::Playing, 1300);
                  record.enter(zrctl::PlayState::Restarting, 12960, "in 1000 ms");
              }),
              "    0.0 s  starting\n    1.2 s  playing\n   13.0 s  restarting: in 1000 ms\n");
}

TEST_F(PlayRecords, add_up_the_time_in_which_pictures_were_shown) {
    zrctl::PlayRecord record(request_, true);
    (void)written([&] {
        record.enter(zrctl::PlayState::Playing, 500);
        record.enter(zrctl::PlayState::Waiting, 1500);
        record.enter(zrctl::PlayState::Playing, 4000);
        record.setPictures(60);
        record.setFirstPicture(480);
        record.countRestart();
    });
    int status = -1;
    const std::string summary = written([&] { status = record.summarize("", 6000); });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(
        query(summary,
              "[.shownMilliseconds, .pictures, .restarts, .firstPictureMilliseconds, .error]"),
        "[3000,60,1,480,null]\n");
}

TEST_F(PlayRecords, say_so_when_nothing_was_shown) {
    zrctl::PlayRecord record(request_, false);
    (void)written([&] { record.enter(zrctl::PlayState::Starting, 0); });
    int status = -1;
    EXPECT_EQ(written([&] { status = record.summarize("no picture", 100); }),
              "no picture was shown, 0 restarts\n");
    EXPECT_EQ(status, 1);
}

}  // namespace
}  // namespace ZR::test
