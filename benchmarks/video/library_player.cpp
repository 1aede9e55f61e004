#include <QQuickItem>
#include <QTimer>
#include <chrono>
#include <string>
#include <thread>
#include <utility>

#include "benchmarks/video/player.h"
#include "hardware/video_input/gstreamer_video_input/functional/gst_handles_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

namespace ZR::benchmarks {
namespace {

/// How often an application looks at the queue.
constexpr std::chrono::milliseconds drainPeriod(50);
/// The same where it is part of what is measured.
constexpr std::chrono::milliseconds shortDrainPeriod(5);

class LibraryPlayer final : public Player {
  public:
    explicit LibraryPlayer(const PlayerPlan& plan)
        : input_(*ZRGstreamerVideoInput::getInstance("video " + std::to_string(plan.number))),
          place_(plan.place) {
        input_.setStreamType(plan.streamType);
        input_.setVideoItem(&plan.place, ZRColor());
        for (const QQuickItem* const child : plan.place.childItems()) {
            if (child->objectName() == "videoItem")
                item_ = child;
        }
        input_.setCurrentInterface(plan.port);
        drain();
        QObject::connect(&drainTimer_, &QTimer::timeout, &drainTimer_, [this] { drain(); });
        drainTimer_.start(drainPeriod);
    }
    ~LibraryPlayer() override {
        stop();
        input_.removeVideoItem();
    }
    LibraryPlayer(const LibraryPlayer&) = delete;
    LibraryPlayer& operator=(const LibraryPlayer&) = delete;

    void build() override { input_.init(); }
    void play() override {
        input_.start(0);
        drain();
    }
    void stop() override {
        QObject::disconnect(failure_);
        drainTimer_.setInterval(drainPeriod);
        built_ = nullptr;
        input_.stop(0);
        drain();
    }
    void tearDown() override { input_.reset(); }
    void restartWhenLost(std::function<void()> noticed, std::function<void()> built) override {
        // Placed again where it is: clears the count of restarts, so that none is refused.
        input_.setVideoItem(&place_, ZRColor());
        built_ = std::move(built);
        lost_ = input_.getPipeline();
        drainTimer_.setInterval(shortDrainPeriod);
        failure_ = QObject::connect(
            &input_, &ZRGstreamerVideoInput::errorDetected, &drainTimer_,
            [noticed = std::move(noticed)](int /*delay*/) { noticed(); }, Qt::QueuedConnection);
    }

    GstElement* sink() override { return borrowByName(input_.getPipeline(), "videoSink"); }
    const QQuickItem& item() override { return *item_; }

  private:
    void drain() {
        if (built_ && input_.getPipeline() != lost_)
            std::exchange(built_, nullptr)();
        input_.handleQueuedCommands();
    }

    ZRGstreamerVideoInput& input_;
    const QQuickItem* item_ = nullptr;
    QQuickItem& place_;
    QTimer drainTimer_;
    QMetaObject::Connection failure_;
    std::function<void()> built_;
    const GstElement* lost_ = nullptr;
};

void waitForGstreamer() {
    (void)ZRGstreamerVideoInput::getInstance("video 0");
    // A second by contract, and what the plug-ins take.
    while (!ZRGstreamerVideoInput::gstInitDone)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

}  // namespace

Side librarySide() {
    return {&waitForGstreamer,
            [](const PlayerPlan& plan) { return std::make_unique<LibraryPlayer>(plan); },
            [] { ZRVideoInputInterface::doQuit(); }};
}

}  // namespace ZR::benchmarks
