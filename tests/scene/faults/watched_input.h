#pragma once

#include <atomic>

#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

namespace ZR::test {

/// An input that lets a test see what it counts and which items it has.
class WatchedInput : public ZRGstreamerVideoInput {
  public:
    explicit WatchedInput(const std::string& key);

    unsigned int restarts() const { return restartCount; }
    bool isRestartPending() const { return restartPending; }
    QQuickItem* parent() const { return parentItem; }
    QQuickItem* shownItem() const { return videoItem; }
    QQuickItem* shownWaitItem() const { return waitItem; }
    /// How often the bus thread has asked for a restart, the requests included that came too many.
    int failures() const { return failures_; }

  private:
    std::atomic<int> failures_{0};
};

}  // namespace ZR::test
