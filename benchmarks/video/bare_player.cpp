#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QTimer>
#include <QUrl>
#include <functional>
#include <memory>
#include <utility>

#include "benchmarks/video/player.h"
#include "hardware/video_input/gstreamer_video_input/functional/gst_handles_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/restart_policy_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/stream_pipelines_internal.h"

namespace ZR::benchmarks {
namespace {

void fill(QQuickItem& item, QQuickItem& place, bool visible) {
    item.setParentItem(&place);
    item.setSize(place.size());
    item.setVisible(visible);
}

class BarePlayer final : public Player {
  public:
    explicit BarePlayer(const PlayerPlan& plan)
        : launchText_(udpLaunchText(plan.streamType, plan.port)) {
        static QQmlEngine engine;
        QQmlComponent scene(&engine, QUrl::fromLocalFile("video.qml"));
        scene_.reset(scene.create());
        item_ = scene_->findChild<QQuickItem*>("videoItem");
        fill(*scene_->findChild<QQuickItem*>("waitItemCamera"), plan.place, false);
        fill(*item_, plan.place, true);
        for (QTimer* const timer : {&lossTimer_, &restartTimer_}) {
            timer->setSingleShot(true);
            timer->setTimerType(Qt::PreciseTimer);
        }
        QObject::connect(&lossTimer_, &QTimer::timeout, &lossTimer_, [this] {
            restartTimer_.start(failedStreamDelay);
            noticed_();
        });
        QObject::connect(&restartTimer_, &QTimer::timeout, &restartTimer_, [this] { restart(); });
    }
    ~BarePlayer() override {
        tearDown();
        // A scene's item that is still in a window takes its sink's graphics with it.
        item_->setParentItem(nullptr);
    }
    BarePlayer(const BarePlayer&) = delete;
    BarePlayer& operator=(const BarePlayer&) = delete;

    void build() override {
        if (pipeline_ != nullptr)
            return;
        pipeline_ = takeFloating(gst_parse_launch(launchText_.c_str(), nullptr));
        g_object_set(sink(), "widget", item_, "sync", FALSE, "force-aspect-ratio", FALSE, nullptr);
    }
    void play() override {
        build();
        (void)gst_element_set_state(pipeline_.get(), GST_STATE_PLAYING);
    }
    void stop() override {
        if (pipeline_ != nullptr)
            (void)gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
    }
    void tearDown() override {
        stop();
        pipeline_.reset();
    }
    void restartWhenLost(std::function<void()> noticed, std::function<void()> built) override {
        noticed_ = std::move(noticed);
        built_ = std::move(built);
        lossTimer_.start(lostAfter);
    }

    GstElement* sink() override { return borrowByName(pipeline_.get(), "videoSink"); }
    const QQuickItem& item() override { return *item_; }

  private:
    /// That a sender is lost shows in nothing but this time without a packet.
    static constexpr int lostAfter = 1000;  // ms

    void restart() {
        tearDown();
        build();
        built_();
        play();
    }

    QTimer lossTimer_;
    QTimer restartTimer_;
    std::function<void()> noticed_;
    std::function<void()> built_;
    std::string launchText_;
    std::unique_ptr<QObject> scene_;
    QQuickItem* item_ = nullptr;
    GstOwned<GstElement> pipeline_;
};

void startGstreamer() {
    gst_init(nullptr, nullptr);
    (void)takeFloating(gst_element_factory_make("qmlglsink", nullptr));
}

}  // namespace

Side bareSide() {
    return {&startGstreamer,
            [](const PlayerPlan& plan) { return std::make_unique<BarePlayer>(plan); }, [] {}};
}

}  // namespace ZR::benchmarks
