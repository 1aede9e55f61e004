// The launch texts in a bare pipeline, without the video service: what the rest of this level stands on.

#include <gst/gst.h>
#include <gtest/gtest.h>

#include <QQmlComponent>
#include <QQmlEngine>

#include "tests/scene/support/picture.h"
#include "tests/scene/support/scene.h"
#include "tests/scene/support/streams.h"

namespace {

using namespace ZR::test;

constexpr char udpText[] = "udpsrc timeout=1000000000 buffer-size=2097152 name=udp port=";
constexpr char h264Text[] =
    " caps=\"application/x-rtp, media=(string)video, clock-rate=(int)90000, "
    "encoding-name=(string)H264, payload=(int)96\" ! rtpjitterbuffer do-lost=true ! rtph264depay "
    "! h264parse ! v4l2h264dec ! glupload ! glcolorconvert ! qmlglsink name=videoSink sync=false";
constexpr char jpegText[] =
    " caps=\"application/x-rtp, media=(string)video, clock-rate=(int)90000, "
    "encoding-name=(string)JPEG, payload=(int)26\" ! rtpjpegdepay ! jpegparse ! v4l2jpegdec ! "
    "glupload ! glcolorconvert ! qmlglsink name=videoSink sync=false";
constexpr char rtspText[] =
    "rtspsrc name=myRTSPSource udp-buffer-size=2000000 timeout=1000000 latency=0 "
    "drop-on-latency=true protocols=0x00000001 location=";
constexpr char rtspDecoderText[] =
    " ! rtph264depay ! h264parse ! v4l2h264dec ! glupload ! glcolorconvert ! qmlglsink "
    "name=videoSink sync=false";

/// A pipeline whose sink draws into the video item of "video.qml".
class BarePipeline {
  public:
    BarePipeline(Scene& scene, QQuickItem* parent, const std::string& text)
        : pipeline_(gst_parse_launch(text.c_str(), nullptr)) {
        QQmlComponent component(&engine_, QUrl::fromLocalFile("video.qml"));
        root_.reset(qobject_cast<QQuickItem*>(component.create()));
        video_ = root_->findChild<QQuickItem*>("videoItem");
        video_->setParentItem(parent);
        video_->setSize(parent->size());
        GstElement* sink = gst_bin_get_by_name(GST_BIN(pipeline_), "videoSink");
        g_object_set(sink, "widget", video_, "force-aspect-ratio", FALSE, nullptr);
        gst_object_unref(sink);
        scene.renderFrame();
        gst_element_set_state(pipeline_, GST_STATE_PLAYING);
    }

    ~BarePipeline() {
        gst_element_set_state(pipeline_, GST_STATE_NULL);
        gst_object_unref(pipeline_);
        video_->setParentItem(nullptr);
    }

    QQuickItem& video() { return *video_; }
    GstElement* pipeline() { return pipeline_; }

  private:
    QQmlEngine engine_;
    GstElement* pipeline_;
    std::unique_ptr<QQuickItem> root_;
    QQuickItem* video_ = nullptr;
};

class BarePipelineTest : public testing::Test {
  protected:
    BarePipelineTest() {
        gst_init(nullptr, nullptr);
        gst_object_unref(gst_element_factory_make("qmlglsink", nullptr));
    }

    bool shows(const Quarters& expected) {
        return scene_.waitUntil([&] { return quartersOf(scene_.grab(), area_) == expected; });
    }

    Scene scene_;
    QRect area_{100, 60, 600, 360};
    QQuickItem* item_ = scene_.addItem(area_);
};

TEST_F(BarePipelineTest, h264_over_udp_is_shown_upright) {
    const int port = freeUdpPort();
    const auto sender = sendH264(port);
    BarePipeline pipeline(scene_, item_, udpText + std::to_string(port) + h264Text);
    EXPECT_TRUE(shows(upright));
    EXPECT_EQ(pictureArea(scene_.grab()), area_);
}

TEST_F(BarePipelineTest, jpeg_over_udp_is_shown_upright) {
    const int port = freeUdpPort();
    const auto sender = sendJpeg(port);
    BarePipeline pipeline(scene_, item_, udpText + std::to_string(port) + jpegText);
    EXPECT_TRUE(shows(upright));
}

TEST_F(BarePipelineTest, h264_from_an_rtsp_server_is_shown_upright) {
    const int port = freeTcpPort();
    const auto server = serveRtsp("good", port);
    BarePipeline pipeline(scene_, item_, rtspText + rtspUrl(port) + rtspDecoderText);
    EXPECT_TRUE(shows(upright));
}

TEST_F(BarePipelineTest, the_video_item_mirrors_and_turns) {
    const int port = freeUdpPort();
    const auto sender = sendJpeg(port);
    BarePipeline pipeline(scene_, item_, udpText + std::to_string(port) + jpegText);
    ASSERT_TRUE(shows(upright));
    for (const int rotation : {90, 180, 270}) {
        const bool quarter = rotation != 180;
        pipeline.video().setSize(quarter ? QSizeF(360, 600) : QSizeF(600, 360));
        QMetaObject::invokeMethod(&pipeline.video(), "setTransformation", Q_ARG(QVariant, 0),
                                  Q_ARG(QVariant, rotation));
        EXPECT_TRUE(shows(turned(upright, rotation))) << rotation;
        EXPECT_EQ(pictureArea(scene_.grab()), area_) << rotation;
    }
    pipeline.video().setSize({600, 360});
    QMetaObject::invokeMethod(&pipeline.video(), "setTransformation", Q_ARG(QVariant, 1),
                              Q_ARG(QVariant, 0));
    EXPECT_TRUE(shows(mirrored(upright)));
}

}  // namespace
