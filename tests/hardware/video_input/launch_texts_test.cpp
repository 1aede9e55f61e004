#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "hardware/video_input/gstreamer_video_input/functional/stream_pipelines_internal.h"

namespace ZR {
namespace {

TEST(LaunchTexts_pure, h264_over_udp_has_its_text) {
    EXPECT_EQ(udpLaunchText(StreamUdpH264, 5004),
              "udpsrc timeout=1000000000 buffer-size=2097152 name=udp port=5004 "
              "caps=\"application/x-rtp, media=(string)video, clock-rate=(int)90000, "
              "encoding-name=(string)H264, payload=(int)96\" ! rtpjitterbuffer do-lost=true ! "
              "rtph264depay ! h264parse ! v4l2h264dec ! glupload ! glcolorconvert ! qmlglsink "
              "name=videoSink sync=false");
}

TEST(LaunchTexts_pure, jpeg_over_udp_has_its_text_and_no_jitter_buffer) {
    EXPECT_EQ(udpLaunchText(StreamUdpJpeg, 5006),
              "udpsrc timeout=1000000000 buffer-size=2097152 name=udp port=5006 "
              "caps=\"application/x-rtp, media=(string)video, clock-rate=(int)90000, "
              "encoding-name=(string)JPEG, payload=(int)26\" ! rtpjpegdepay ! jpegparse ! "
              "v4l2jpegdec ! glupload ! glcolorconvert ! qmlglsink name=videoSink sync=false");
}

TEST(LaunchTexts_pure, a_port_stands_in_the_text_in_decimal_whatever_it_is) {
    for (const int port :
         {0, 1, -1, 65536, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        const std::string wanted = " port=" + std::to_string(port) + " caps=";
        EXPECT_NE(udpLaunchText(StreamUdpH264, port).find(wanted), std::string::npos) << port;
        EXPECT_NE(udpLaunchText(StreamUdpJpeg, port).find(wanted), std::string::npos) << port;
    }
}

TEST(LaunchTexts_pure, rtsp_has_its_text) {
    EXPECT_EQ(rtspLaunchText("rtsp://192.168.1.20:554/stream"),
              "rtspsrc name=myRTSPSource udp-buffer-size=2000000 timeout=1000000 latency=0 "
              "drop-on-latency=true protocols=0x00000001 location=rtsp://192.168.1.20:554/stream "
              "! rtph264depay ! h264parse ! v4l2h264dec ! glupload ! glcolorconvert ! qmlglsink "
              "name=videoSink sync=false");
}

TEST(LaunchTexts_pure, an_address_stands_in_the_text_as_it_is) {
    for (const std::string url : {"", "a b", "a ! b", "\"", "rtsp://h/s?a=b&c"})
        EXPECT_NE(rtspLaunchText(url).find(" location=" + url + " ! rtph264depay ! "),
                  std::string::npos)
            << url;
}

TEST(LaunchTexts_pure, an_address_of_many_bytes_is_not_cut) {
    const std::string url(100000, 'u');
    EXPECT_EQ(rtspLaunchText(url).size(), rtspLaunchText("").size() + url.size());
}

TEST(LaunchTexts_pure, elements_have_the_names_that_are_looked_up) {
    EXPECT_STREQ(udpSourceName, "udp");
    EXPECT_STREQ(rtspSourceName, "myRTSPSource");
    EXPECT_STREQ(cameraSourceName, "v4l2VideoSource");
}

TEST(LaunchTexts_pure, three_numbers_are_those_of_cameras) {
    EXPECT_TRUE(isCameraInput(0));
    EXPECT_TRUE(isCameraInput(1));
    EXPECT_TRUE(isCameraInput(2));
    EXPECT_FALSE(isCameraInput(-1));
    EXPECT_FALSE(isCameraInput(3));
    EXPECT_FALSE(isCameraInput(std::numeric_limits<int>::min()));
    EXPECT_FALSE(isCameraInput(std::numeric_limits<int>::max()));
}

TEST(LaunchTexts_pure, stream_types_have_their_codes) {
    EXPECT_EQ(static_cast<int>(StreamUdpH264), 0);
    EXPECT_EQ(static_cast<int>(StreamUdpJpeg), 1);
    EXPECT_EQ(static_cast<int>(StreamRtsp), 2);
    EXPECT_EQ(static_cast<int>(StreamCamera), 3);
    EXPECT_EQ(static_cast<int>(StreamNone), 4);
}

}  // namespace
}  // namespace ZR
