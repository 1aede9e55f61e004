#pragma once

#include <QGuiApplication>
#include <QObject>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTimer>
#include <memory>
#include <string>

#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"
#include "tools/zrctl/picture_counter.h"
#include "tools/zrctl/video_play.h"

namespace zrctl {

/// Lets what Qt says by itself through only when it is asked for, and keeps the last warning. Qt
/// ends the process when it has no display: that gives one line, and with @p json a document.
void takeQtMessages(bool audible, bool json);

/// @return the last warning of Qt, empty without one
std::string lastQtWarning();

/// A Qt application with a window in which one input shows its stream.
class PlayWindow : private QObject {
  public:
    explicit PlayWindow(const PlayRequest& request);
    PlayWindow(const PlayWindow&) = delete;
    PlayWindow& operator=(const PlayWindow&) = delete;
    /// The input must have been taken out of it.
    ~PlayWindow() override;

    /// Lets Qt do what there is to do; returns at the latest after some milliseconds.
    void runFor();

    /// Places the input: the library reads "video.qml" from the working folder, which for that time
    /// is one of this tool's own.
    /// @param key  interface number whose settings the library uses for the stream
    /// @return false when QML refused it; lastQtWarning() says why
    bool place(ZR::ZRGstreamerVideoInput& input, unsigned short key);

    /// Whether the user has closed it.
    bool isClosed() const { return closed_; }

    /// Counts from then on what this input shows.
    void watch(GstElement* pipeline) { counter_->watch(video_, wait_, pipeline); }
    const PictureCounter& counter() const { return *counter_; }

    /// Writes what the window shows as a PNG file.
    /// @return empty, or why it could not
    std::string save(const std::string& path);

    QQuickItem* contentItem() { return window_->contentItem(); }

  private:
    bool eventFilter(QObject* object, QEvent* event) override;
    void fit();

    std::unique_ptr<QGuiApplication> application_;
    std::unique_ptr<QQuickWindow> window_;
    std::unique_ptr<PictureCounter> counter_;
    QQuickItem* host_ = nullptr;   ///< the item that carries the input, owned by the window
    QQuickItem* video_ = nullptr;  ///< the library's, as the next
    QQuickItem* wait_ = nullptr;
    ZR::ZRGstreamerVideoInput* input_ = nullptr;
    unsigned short key_ = 0;
    QTimer tick_;
    bool closed_ = false;
};

}  // namespace zrctl
