#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "camera_board.h"
#include "camera_picture.h"
#include "camera_stream.h"

namespace ZR::test {
namespace {

class CameraPictures : public CameraBoard {};

constexpr std::streamsize palFrameSize = std::streamsize{720} * 576 * 2;
constexpr char file[] = "/tmp/frames";
constexpr char plugins[] = "/usr/lib/x86_64-linux-gnu/gstreamer-1.0";

/// Frames of a PAL stream that a program wrote to a file.
std::vector<Frame> framesInFile() {
    std::ifstream stream(file, std::ios::binary);
    std::vector<Frame> frames;
    for (;;) {
        Frame frame{720, 576, std::vector<std::uint8_t>(palFrameSize)};
        stream.read(reinterpret_cast<char*>(frame.bytes.data()), palFrameSize);
        if (!stream)
            return frames;
        frames.push_back(std::move(frame));
    }
}

/// gst-launch with the plugins of one pipeline alone: it would look at all that are installed, which
/// takes longer than everything else here.
std::string launcher() {
    std::string command = "GST_PLUGIN_SYSTEM_PATH=/run GST_REGISTRY_FORK=no gst-launch-1.0 -q";
    for (const char* plugin : {"coreelements", "video4linux2"})
        command += std::string(" --gst-plugin-load=") + plugins + "/libgst" + plugin + ".so";
    return command;
}

/// Sets an input up and looks at what its node then shows.
std::string shownAfterSetup(Cameras& cameras, int input) {
    cameras.setupCameraInput(input);
    return shownAt(Cameras::videoDevices[input]);
}

}  // namespace

TEST_F(CameraPictures, without_a_set_up_no_node_streams) {
    EXPECT_EQ("ENOLINK", shownAt(nodeOf(captureEntity(0))));
    EXPECT_EQ("ENOLINK", shownAt(nodeOf(captureEntity(1))));
    const Cameras linked;
    EXPECT_EQ("EPIPE", shownAt(nodeOf(captureEntity(0))));
    EXPECT_EQ("EPIPE", shownAt(nodeOf(captureEntity(1))));
}

TEST_F(CameraPictures, each_input_shows_its_own_camera_in_PAL) {
    Cameras cameras;
    EXPECT_EQ("input 0 PAL 720x576", shownAfterSetup(cameras, 0));
    EXPECT_EQ("input 1 PAL 720x576", shownAfterSetup(cameras, 1));
    EXPECT_EQ("input 2 PAL 720x576", shownAfterSetup(cameras, 2));
    EXPECT_EQ("input 0 PAL 720x576", shownAfterSetup(cameras, 0));
}

TEST_F(CameraPictures, each_input_shows_its_own_camera_in_NTSC) {
    for (const int input : {0, 1, 2})
        plugInCamera(input, "ntsc");
    Cameras cameras;
    EXPECT_EQ("input 2 NTSC 720x480", shownAfterSetup(cameras, 2));
    EXPECT_EQ("input 1 NTSC 720x480", shownAfterSetup(cameras, 1));
    EXPECT_EQ("input 0 NTSC 720x480", shownAfterSetup(cameras, 0));
}

TEST_F(CameraPictures, each_input_has_the_size_of_its_own_standard) {
    plugInCamera(2, "ntsc");
    plugInCamera(1, "ntsc");
    Cameras cameras;
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ("input 0 PAL 720x576", shownAfterSetup(cameras, 0));
        EXPECT_EQ("input 2 NTSC 720x480", shownAfterSetup(cameras, 2));
        EXPECT_EQ("input 1 NTSC 720x480", shownAfterSetup(cameras, 1));
    }
}

TEST_F(CameraPictures, input_0_shows_nothing_of_camera_2_and_a_wrong_selection_is_seen) {
    Cameras cameras;
    cameras.setupCameraInput(2);
    cameras.setupCameraInput(0);
    const std::string node = nodeOf(captureEntity(0));
    {
        CameraStream stream(node);
        for (int frame = 0; frame < 5; ++frame)
            EXPECT_EQ("input 0 PAL 720x576", shownBy(stream.next()));
    }
    run("v4l2-ctl -d " + node + " -c input_select=1");
    EXPECT_EQ("input 2 PAL 720x576", shownAt(node));
}

TEST_F(CameraPictures, two_inputs_stream_side_by_side) {
    Cameras cameras;
    cameras.setupCameraInput(2);
    cameras.setupCameraInput(1);
    CameraStream shared(nodeOf(captureEntity(2)));
    CameraStream second(nodeOf(captureEntity(1)));
    EXPECT_EQ("input 2 PAL 720x576", shownBy(shared.next()));
    EXPECT_EQ("input 1 PAL 720x576", shownBy(second.next()));
}

TEST_F(CameraPictures, the_frames_that_v4l2_ctl_takes_are_the_inputs_own) {
    Cameras cameras;
    cameras.setupCameraInput(2);
    run("v4l2-ctl -d " + nodeOf(captureEntity(2)) +
        " -v pixelformat=UYVY --stream-mmap --stream-count=3 --stream-to=" + file +
        " >/dev/null 2>&1");
    const std::vector<Frame> frames = framesInFile();
    ASSERT_EQ(3U, frames.size());
    for (const Frame& frame : frames)
        EXPECT_EQ("input 2 PAL 720x576", shownBy(frame));
    EXPECT_LT(pictureOf(frames.front()).number, pictureOf(frames.back()).number);
    std::filesystem::remove(file);
}

TEST_F(CameraPictures, v4l2src_takes_25_frames_a_second_as_its_format) {
    Cameras cameras;
    cameras.setupCameraInput(1);
    run(launcher() + " v4l2src num-buffers=5 device=" + nodeOf(captureEntity(1)) +
        " ! video/x-raw,framerate=25/1 ! capsfilter caps=video/x-raw,format=UYVY ! filesink "
        "location=" +
        file);
    const std::vector<Frame> frames = framesInFile();
    ASSERT_EQ(5U, frames.size());
    for (const Frame& frame : frames)
        EXPECT_EQ("input 1 PAL 720x576", shownBy(frame));
    EXPECT_LT(pictureOf(frames.front()).number, pictureOf(frames.back()).number);
    std::filesystem::remove(file);
}

}  // namespace ZR::test
