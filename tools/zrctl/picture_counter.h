#pragma once

#include <gst/gst.h>

#include <QQuickItem>
#include <QQuickWindow>
#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>

namespace zrctl {

struct GstUnref {
    void operator()(gpointer object) const { gst_object_unref(object); }
};
/// Owner of one reference to an element.
using Element = std::unique_ptr<GstElement, GstUnref>;

/// Counts the frames of a window that brought a new picture onto the screen.
///
/// Such a frame is one that was swapped while the video item was visible, and whose scene was put
/// together after the sink had taken a picture that no frame before has shown. A picture that the
/// next one replaced before a frame was drawn is not counted, and a frame that only repeats the
/// picture is neither.
class PictureCounter {
  public:
    /// @param window  outlives this object, which is destroyed on the window's thread when nothing
    ///                is drawn any more
    explicit PictureCounter(QQuickWindow& window);
    PictureCounter(const PictureCounter&) = delete;
    PictureCounter& operator=(const PictureCounter&) = delete;
    ~PictureCounter();

    /// Watches the items and the sink of a pipeline, those of before no more. On the window's thread.
    /// @param video  the item that shows the pictures, null for none
    /// @param wait   the one that covers it meanwhile, null for none
    void watch(QQuickItem* video, QQuickItem* wait, GstElement* pipeline);

    /// Whether the items let pictures through. On the window's thread.
    bool isOpen() const;

    long long frames() const { return frames_; }
    long long pictures() const { return pictures_; }
    /// When the first was on the screen.
    std::optional<std::chrono::steady_clock::time_point> firstPicture() const;

  private:
    void synchronize();
    void swap();

    QMetaObject::Connection synchronizing_;
    QMetaObject::Connection swapped_;
    // The drawing thread looks at them while the window's stands still for it.
    QQuickItem* video_ = nullptr;
    QQuickItem* wait_ = nullptr;
    std::mutex mutex_;  ///< for the next four, between the two threads
    Element sink_;
    long long drawn_ = 0;     ///< pictures of the sink when the current frame was put together
    long long onScreen_ = 0;  ///< the same of the last frame that was counted
    bool isNew_ = false;
    std::atomic<long long> frames_ = 0;
    std::atomic<long long> pictures_ = 0;
    std::atomic<std::chrono::steady_clock::rep> firstPicture_ = 0;
};

}  // namespace zrctl
