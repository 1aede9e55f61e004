#pragma once

#include <QGuiApplication>
#include <QImage>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QTimer>
#include <functional>
#include <memory>
#include <vector>

namespace ZR::test {

/// A QML scene of 800 x 480 pixels in a window of its own, whose first frame is already rendered, and
/// the Qt application around it. The process's working folder is a new one that holds a "video.qml"
/// with a video item that turns and mirrors as asked and a wait item in one colour.
///
/// One per process, made and used on the main thread.
class Scene {
  public:
    static constexpr int width = 800;
    static constexpr int height = 480;

    Scene();
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;
    virtual ~Scene();

    QQuickWindow& window() { return *window_; }

    /// A new item of the application, empty and visible.
    /// @param area  in the window; its item lives as long as the window, unless deleted before
    QQuickItem* addItem(const QRect& area);

    /// Runs what the application does about every 10 ms while the scene runs.
    void addTick(std::function<void()> work) { ticks_.push_back(std::move(work)); }

    /// Lets the application run until a condition holds.
    /// @return whether it does; false after that many seconds
    bool waitUntil(const std::function<bool()>& condition, double seconds = 20);
    /// Lets the application run for a time, to see that something does not happen.
    void runFor(double seconds);

    /// Renders one frame: a new video item has to be through one before its stream is started.
    void renderFrame();

    /// What the window shows now.
    QImage grab();

  protected:
    /// Closes the window and ends the application. What still draws into the window has to be stopped
    /// before; whoever derives from this calls it when that is done.
    void close();

  private:
    QTemporaryDir folder_;
    std::unique_ptr<QGuiApplication> application_;
    std::unique_ptr<QQuickWindow> window_;
    QTimer* timer_ = nullptr;
    std::vector<std::function<void()>> ticks_;
};

}  // namespace ZR::test
