#include <fcntl.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>

#include "camera_scene.h"
#include "tests/scene/support/streams.h"

namespace ZR::test {
namespace {

class VideoCamerasScene : public CameraScene {};

/// What the log says of an input's selection on its capture node.
Lines selections(int input) {
    return beginningWith(captureKnobs(input) + " input_select", logLines());
}

/// What stands in the log of the picture values that reached an input's capture node.
Lines valuesOf(int input) {
    Lines values;
    for (const char* control : {"brightness", "contrast", "hue", "saturation"})
        for (const std::string& line :
             beginningWith(captureKnobs(input) + ' ' + control, logLines()))
            values.push_back(line.substr(captureKnobs(input).size() + 1));
    return values;
}

/// What v4l2-ctl reads of one control.
std::string readByV4l2Ctl(int input, const std::string& control) {
    return saidBy("v4l2-ctl -d " + nodeOf(captureEntity(input)) + " -C " + control);
}

/// The capture nodes that the process has open, one entry a descriptor.
Lines openCaptureNodes() {
    Lines nodes;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        std::string file = std::filesystem::read_symlink(entry.path(), gone).string();
        if (file.rfind("/dev/video", 0) == 0)
            nodes.push_back(std::move(file));
    }
    return nodes;
}

/// Whether all descriptors that discovery left open are closed. The decoders have others besides:
/// the media controller's library keeps its own.
bool areCaptureDevicesClosed() {
    for (const int input : {0, 1, 2})
        for (const int descriptor : {ZRGstreamerVideoInput::fileDescriptors[input],
                                     ZRGstreamerVideoInput::fileDescriptorsSub[input]})
            if (::fcntl(descriptor, F_GETFD) != -1)
                return false;
    return true;
}

/// A sender of small white JPEG pictures, four a second, that ends with this object.
class JpegSender {
  public:
    explicit JpegSender(int port) : port_(std::to_string(port)) {
        run("gst-launch-1.0 -q videotestsrc is-live=true pattern=white ! "
            "video/x-raw,format=I420,width=64,height=64,framerate=4/1 ! jpegenc ! rtpjpegpay "
            "pt=26 ! udpsink host=127.0.0.1 port=" +
            port_ + " >/dev/null 2>&1 & echo $! >/run/sender." + port_);
    }
    JpegSender(const JpegSender&) = delete;
    JpegSender& operator=(const JpegSender&) = delete;
    ~JpegSender() { (void)std::system(("kill $(cat /run/sender." + port_ + ")").c_str()); }

  private:
    std::string port_;
};

}  // namespace

TEST_F(VideoCamerasScene, a_camera_is_upright_then_mirrored_then_turned) {
    ZRGstreamerVideoInput& input = play(2, left);
    ASSERT_EQ("input 1 PAL", shownEventually("input 1 PAL", left));
    input.setMirror(2, static_cast<ZRVideoMirrorSetting>(1));
    const auto restored = [&](const QTransform& back) {
        return shownIn(scene().grab().copy(left).transformed(back), QRect({0, 0}, left.size()));
    };
    EXPECT_TRUE(
        eventually([&] { return restored(QTransform(-1, 0, 0, 1, 0, 0)) == "input 1 PAL"; }));
    EXPECT_NE("input 1 PAL", shownIn(scene().grab(), left));
    input.setMirror(2, VideoMirrorNone);
    for (const int degrees : {90, 180}) {
        input.setRotation(2, degrees);
        EXPECT_TRUE(eventually([&] {
            return restored(QTransform().rotate(-degrees)) == "input 1 PAL";
        })) << degrees;
    }
}

TEST_F(VideoCamerasScene, picture_values_reach_the_driver_while_it_plays_and_at_each_start) {
    ZRGstreamerVideoInput& input = scene().input();
    // While the stream is no camera, it is refused and lost.
    input.setStreamType(StreamUdpJpeg);
    EXPECT_EQ(11, input.setSaturation(2, 99));
    play(2, left);
    ASSERT_EQ("input 1 PAL", shownEventually("input 1 PAL", left));
    EXPECT_EQ((Lines{"brightness 0", "contrast 127", "hue 0", "saturation 127"}), valuesOf(1));
    clearLog();
    input.setBrightness(2, 11);
    input.setContrast(2, 102);
    input.setHue(2, -13);
    EXPECT_EQ(0, input.setSaturation(2, 204));
    const Lines wanted{"brightness 11", "contrast 102", "hue -13", "saturation 204"};
    EXPECT_EQ(wanted, valuesOf(1));
    EXPECT_EQ("hue: -13", readByV4l2Ctl(1, "hue"));
    EXPECT_EQ("saturation: 204", readByV4l2Ctl(1, "saturation"));
    // Another camera's are only stored.
    input.setBrightness(1, 44);
    EXPECT_EQ(Lines{}, valuesOf(0));
    input.stop(2);
    ASSERT_TRUE(eventually([&] { return !input.isRunning(2); }));
    run("v4l2-ctl -d " + nodeOf(captureEntity(1)) + " -c brightness=0,contrast=127,hue=0");
    clearLog();
    input.start(2);
    ASSERT_TRUE(eventually([&] { return input.isRunning(2); }));
    EXPECT_EQ(wanted, valuesOf(1));
    EXPECT_EQ("brightness: 11", readByV4l2Ctl(1, "brightness"));
}

TEST_F(VideoCamerasScene,
       cameras_and_network_streams_play_side_by_side_until_the_application_quits) {
    const int ports[] = {freeUdpPort(), freeUdpPort(), freeUdpPort()};
    const QRect areas[] = {{0, 200, 40, 40}, {240, 200, 40, 40}, {440, 200, 40, 40}};
    const JpegSender first(ports[0]);
    const JpegSender second(ports[1]);
    const JpegSender third(ports[2]);
    play(3, left, "rear");
    play(2, right, "side");
    EXPECT_EQ("input 2 PAL", shownEventually("input 2 PAL", left));
    EXPECT_EQ("input 1 PAL", shownEventually("input 1 PAL", right));
    for (const int stream : {0, 1, 2}) {
        ZRGstreamerVideoInput& input = scene().input("network " + std::to_string(stream));
        scene().place(input, areas[stream]);
        input.setStreamType(StreamUdpJpeg);
        input.setCurrentInterface(ports[stream]);
        input.start(1);
    }
    for (const QRect& area : areas)
        EXPECT_TRUE(eventually([&] {
            return scene().grab().pixelColor(area.center()).lightness() > 230;
        })) << area.left();
    EXPECT_TRUE(scene().input("rear").isRunning(3));
    EXPECT_TRUE(scene().input("side").isRunning(2));
    EXPECT_LE(4U, openCaptureNodes().size());
    EXPECT_FALSE(areCaptureDevicesClosed());
    scene().stopInputs();
    scene().quit();
    // GStreamer has each node open once more for as long as somebody keeps a buffer of its pool.
    EXPECT_GE(2U, openCaptureNodes().size());
    EXPECT_TRUE(areCaptureDevicesClosed());
    for (const int input : {0, 1})
        EXPECT_EQ("stopped", saidBy("sed -n 's/^stream //p' /sys/kernel/debug/zr_terminal/" +
                                    captureKnobs(input) + "/state"));
}

TEST_F(VideoCamerasScene,
       a_change_between_cameras_of_one_decoder_selects_the_other_while_it_plays) {
    ZRGstreamerVideoInput& input = play(1, left);
    ASSERT_EQ("input 0 PAL", shownEventually("input 0 PAL", left));
    clearLog();
    capture();
    input.setCurrentInterface(3);
    ASSERT_EQ("input 2 PAL", shownEventually("input 2 PAL", left));
    const std::string printed = released();
    EXPECT_EQ(Lines{captureKnobs(0) + " input_select 2"}, selections(0));
    EXPECT_EQ(1, occurrencesOf("Trigger stream restart in 100 milliseconds.\n", printed));
    EXPECT_EQ("2", saidBy("sed -n 's/^input_select //p' /sys/kernel/debug/zr_terminal/" +
                          captureKnobs(0) + "/state"));
    clearLog();
    input.setCurrentInterface(1);
    EXPECT_EQ("input 0 PAL", shownEventually("input 0 PAL", left));
    EXPECT_EQ(Lines{captureKnobs(0) + " input_select 0"}, selections(0));
}

}  // namespace ZR::test
