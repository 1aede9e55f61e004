#pragma once

#include <gst/gst.h>

#include <QEventLoop>
#include <QQuickItem>
#include <QQuickWindow>
#include <atomic>
#include <chrono>
#include <functional>
#include <vector>

namespace ZR::benchmarks {

using Clock = std::chrono::steady_clock;

/// When a stream's first picture came to its sink, and when it was on the screen. Milliseconds after
/// the watch began; negative as long as it is not there.
struct Arrival {
    double atSink = -1;
    double onScreen = -1;
};

/// Waits for the first picture of one sink after another, and counts pictures.
class PictureWatch {
  public:
    /// @param seen  called once a begin(), on the thread that renders, with the picture on the screen
    PictureWatch(QQuickWindow& window, std::function<void()> seen);

    /// Counts from here on, for an item that has to be visible with the picture. What is followed is
    /// named afterwards.
    void begin(const QQuickItem& item);
    /// Looks at what this sink gets from now on, and at no other one.
    void follow(GstElement* sink);

    Arrival arrival() const;
    long pictures() const { return pictures_; }

  private:
    static GstPadProbeReturn countPicture(GstPad* pad, GstPadProbeInfo* info, gpointer watch);
    void synchronized();
    void swapped();
    double elapsed() const;

    std::function<void()> seen_;
    Clock::time_point begin_;
    std::atomic<const QQuickItem*> item_{nullptr};
    std::atomic<const GstElement*> sink_{nullptr};
    std::atomic<long> pictures_{0};
    std::atomic<double> atSink_{-1};
    std::atomic<double> onScreen_{-1};
    bool isInFrame_ = false;  ///< on the rendering thread
};

/// A window with one place for each stream, and the application's event loop.
class Stage {
  public:
    static constexpr int places = 3;

    Stage();

    QQuickItem& place(int number) { return *places_[static_cast<std::size_t>(number)]; }
    QQuickWindow& window() { return window_; }
    PictureWatch& watch() { return watch_; }

    /// Runs the application until what is new in the window was drawn: a sink needs an item that was.
    void runUntilDrawn();
    /// Runs the application until the watch has seen its picture on the screen.
    /// @return false when that took too long
    bool runUntilPicture();
    /// Runs the application for a time.
    static void run(std::chrono::milliseconds time);

  private:
    void wake();

    QEventLoop pictureLoop_;
    QQuickWindow window_;
    PictureWatch watch_;
    std::vector<QQuickItem*> places_;  ///< the window's
};

}  // namespace ZR::benchmarks
