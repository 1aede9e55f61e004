#include "tools/zrctl/picture_counter.h"

namespace zrctl {
namespace {

/// The pipeline's sink, by what it is: only the library's launch texts give it a name.
Element sinkOf(GstElement* pipeline) {
    if (pipeline == nullptr || GST_IS_BIN(pipeline) == FALSE)
        return nullptr;
    GstIterator* const sinks = gst_bin_iterate_sinks(GST_BIN(pipeline));
    GValue value = G_VALUE_INIT;
    Element sink;
    if (gst_iterator_next(sinks, &value) == GST_ITERATOR_OK) {
        sink.reset(GST_ELEMENT(g_value_dup_object(&value)));
        g_value_unset(&value);
    }
    gst_iterator_free(sinks);
    return sink;
}

/// Pictures that the sink has handed to its item since it was last set to playing.
long long renderedBy(GstElement* sink) {
    GstStructure* stats = nullptr;
    g_object_get(sink, "stats", &stats, nullptr);
    if (stats == nullptr)
        return 0;
    guint64 rendered = 0;
    (void)gst_structure_get_uint64(stats, "rendered", &rendered);
    gst_structure_free(stats);
    return static_cast<long long>(rendered);
}

}  // namespace

PictureCounter::PictureCounter(QQuickWindow& window)
    : synchronizing_(QObject::connect(
          &window, &QQuickWindow::beforeSynchronizing, &window, [this] { synchronize(); },
          Qt::DirectConnection)),
      swapped_(QObject::connect(
          &window, &QQuickWindow::frameSwapped, &window, [this] { swap(); },
          Qt::DirectConnection)) {}

PictureCounter::~PictureCounter() {
    QObject::disconnect(synchronizing_);
    QObject::disconnect(swapped_);
}

void PictureCounter::watch(QQuickItem* video, QQuickItem* wait, GstElement* pipeline) {
    video_ = video;
    wait_ = wait;
    const std::lock_guard<std::mutex> lock(mutex_);
    sink_ = sinkOf(pipeline);
    onScreen_ = 0;
}

bool PictureCounter::isOpen() const {
    return video_ != nullptr && video_->isVisible() && (wait_ == nullptr || !wait_->isVisible());
}

std::optional<std::chrono::steady_clock::time_point> PictureCounter::firstPicture() const {
    using std::chrono::steady_clock;
    if (pictures_ == 0)
        return std::nullopt;
    return steady_clock::time_point(steady_clock::duration(firstPicture_));
}

void PictureCounter::synchronize() {
    const std::lock_guard<std::mutex> lock(mutex_);
    drawn_ = sink_ ? renderedBy(sink_.get()) : 0;
    // The sink counts anew after each start.
    if (drawn_ < onScreen_)
        onScreen_ = 0;
    isNew_ = isOpen() && drawn_ > onScreen_;
}

void PictureCounter::swap() {
    ++frames_;
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!isNew_)
        return;
    isNew_ = false;
    onScreen_ = drawn_;
    if (pictures_ == 0)
        firstPicture_ = std::chrono::steady_clock::now().time_since_epoch().count();
    ++pictures_;
}

}  // namespace zrctl
