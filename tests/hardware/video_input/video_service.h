#pragma once

#include <QGuiApplication>
#include <QQuickItem>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"
#include "tests/hardware/video_input/capture_board.h"
#include "tests/hardware/video_input/gst_call_substitute.h"
#include "tests/hardware/video_input/recording_elements.h"
#include "tests/support/output_capture.h"

namespace ZR::test {

using Input = ZRGstreamerVideoInput;

/// An input whose members the tests can see.
struct TestInput : ZRGstreamerVideoInput {
    explicit TestInput(const std::string& key = "input") : ZRGstreamerVideoInput(key) {}

    using ZRGstreamerVideoInput::capsFilter;
    using ZRGstreamerVideoInput::currentInput;
    using ZRGstreamerVideoInput::glColorConvert;
    using ZRGstreamerVideoInput::glUpload;
    using ZRGstreamerVideoInput::height;
    using ZRGstreamerVideoInput::initialized;
    using ZRGstreamerVideoInput::name;
    using ZRGstreamerVideoInput::parentItem;
    using ZRGstreamerVideoInput::pipeline;
    using ZRGstreamerVideoInput::restartCount;
    using ZRGstreamerVideoInput::restartPending;
    using ZRGstreamerVideoInput::rtspStartTick;
    using ZRGstreamerVideoInput::rtspURL;
    using ZRGstreamerVideoInput::streaming;
    using ZRGstreamerVideoInput::streamType;
    using ZRGstreamerVideoInput::transparentColor;
    using ZRGstreamerVideoInput::udpPort;
    using ZRGstreamerVideoInput::videoItem;
    using ZRGstreamerVideoInput::videoSettings;
    using ZRGstreamerVideoInput::videoSink;
    using ZRGstreamerVideoInput::videoSource;
    using ZRGstreamerVideoInput::waitItem;
    using ZRGstreamerVideoInput::width;
    using ZRGstreamerVideoInput::xPosition;
    using ZRGstreamerVideoInput::yPosition;
    using ZRVideoInputInterface::commandQueue;

    bool isPlaying() { return isRunning(0); }
};

/// What an input's signals have carried, in their order: "errorDetected 1000", "showVideoItem 1".
class SignalLog {
  public:
    explicit SignalLog(ZRGstreamerVideoInput& input);

    /// The signals up to now; the log is empty then.
    std::vector<std::string> take();

  private:
    std::vector<std::string> signals_;
    QObject receiver_;
};

/// A process as it is once GStreamer is up: recording elements, no thread, a Qt application without a
/// display. Its folder is empty.
class VideoServiceTest : public CaptureTest {
  protected:
    VideoServiceTest();
    ~VideoServiceTest() override;

    /// The calls up to now that begin with one of these words.
    static Calls takeCallsOf(const std::vector<std::string>& words);

    /// Delivers what was queued, also what this queues.
    static void deliverSignals();

    /// Runs the event loop until @p isDone, at most 20 s.
    template <typename Condition>
    static bool waitFor(Condition isDone) {
        for (int i = 0; i < 20000 && !isDone(); ++i)
            passTime();
        return isDone();
    }

    /// An application's item with this name and this size.
    static std::unique_ptr<QQuickItem> makeItem(const std::string& name, qreal width = 800,
                                                qreal height = 480);

  private:
    /// Runs the event loop for a millisecond.
    static void passTime();

    std::unique_ptr<QGuiApplication> application_;
};

/// An input with the items of a scene, which "video.qml" has nothing to do with.
class PlacedVideoTest : public VideoServiceTest {
  protected:
    PlacedVideoTest();
    ~PlacedVideoTest() override;

    std::unique_ptr<QQuickItem> parent_ = makeItem("parent");
    std::unique_ptr<QQuickItem> video_ = makeItem("videoItem");
    std::unique_ptr<QQuickItem> wait_ = makeItem("waitItemCamera");
    std::unique_ptr<TestInput> made_ = std::make_unique<TestInput>();
    TestInput& input_ = *made_;
};

}  // namespace ZR::test
