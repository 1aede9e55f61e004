#include "benchmarks/video/stage.h"

#include <QTimer>
#include <utility>

#include "hardware/video_input/gstreamer_video_input/functional/gst_handles_internal.h"

namespace ZR::benchmarks {
namespace {

constexpr int windowWidth = 640;
constexpr int windowHeight = 480;
constexpr std::chrono::seconds patience(20);
constexpr char followedMark[] = "zr-followed";

}  // namespace

PictureWatch::PictureWatch(QQuickWindow& window, std::function<void()> seen)
    : seen_(std::move(seen)) {
    // The only time in a frame at which an item may be asked from the thread that renders.
    QObject::connect(
        &window, &QQuickWindow::afterSynchronizing, &window, [this] { synchronized(); },
        Qt::DirectConnection);
    QObject::connect(
        &window, &QQuickWindow::frameSwapped, &window, [this] { swapped(); }, Qt::DirectConnection);
}

void PictureWatch::begin(const QQuickItem& item) {
    item_ = nullptr;
    sink_ = nullptr;
    begin_ = Clock::now();
    pictures_ = 0;
    atSink_ = -1;
    onScreen_ = -1;
    item_ = &item;
}

void PictureWatch::follow(GstElement* sink) {
    sink_ = sink;
    if (g_object_get_data(G_OBJECT(sink), followedMark) != nullptr)
        return;
    g_object_set_data(G_OBJECT(sink), followedMark, sink);
    const GstOwned<GstPad> pad(gst_element_get_static_pad(sink, "sink"));
    gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, &countPicture, this, nullptr);
}

GstPadProbeReturn PictureWatch::countPicture(GstPad* pad, GstPadProbeInfo* /*info*/,
                                             gpointer watch) {
    auto& self = *static_cast<PictureWatch*>(watch);
    if (GST_PAD_PARENT(pad) == self.sink_ && ++self.pictures_ == 1)
        self.atSink_ = self.elapsed();
    return GST_PAD_PROBE_OK;
}

void PictureWatch::synchronized() {
    const QQuickItem* const item = item_;
    isInFrame_ = item != nullptr && atSink_ >= 0 && item->isVisible();
}

void PictureWatch::swapped() {
    // A frame of before begin() may still be under way.
    if (!isInFrame_ || atSink_ < 0 || onScreen_ >= 0)
        return;
    onScreen_ = elapsed();
    seen_();
}

double PictureWatch::elapsed() const {
    return std::chrono::duration<double, std::milli>(Clock::now() - begin_).count();
}

Arrival PictureWatch::arrival() const {
    return {atSink_, onScreen_};
}

Stage::Stage() : watch_(window_, [this] { wake(); }) {
    window_.resize(windowWidth, windowHeight);
    for (int number = 0; number < places; ++number) {
        auto* const place = new QQuickItem(window_.contentItem());
        // Streams beside the first lie over it: what they show is of no interest.
        place->setSize(QSizeF(windowWidth, windowHeight));
        places_.push_back(place);
    }
    window_.show();
}

void Stage::runUntilDrawn() {
    // The first frame may have been begun before.
    for (int frame = 0; frame < 2; ++frame) {
        QEventLoop loop;
        QObject::connect(&window_, &QQuickWindow::frameSwapped, &loop, &QEventLoop::quit,
                         Qt::QueuedConnection);
        window_.update();
        loop.exec();
    }
}

void Stage::wake() {
    QMetaObject::invokeMethod(&pictureLoop_, "quit", Qt::QueuedConnection);
}

bool Stage::runUntilPicture() {
    QTimer limit;
    QObject::connect(&limit, &QTimer::timeout, &pictureLoop_, &QEventLoop::quit);
    limit.start(patience);
    if (watch_.arrival().onScreen < 0)
        pictureLoop_.exec();
    return watch_.arrival().onScreen >= 0;
}

void Stage::run(std::chrono::milliseconds time) {
    QEventLoop loop;
    QTimer::singleShot(static_cast<int>(time.count()), Qt::PreciseTimer, &loop, SLOT(quit()));
    loop.exec();
}

}  // namespace ZR::benchmarks
