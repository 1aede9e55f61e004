#pragma once

#include <string>
#include <vector>

#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"
#include "tests/scene/support/picture.h"
#include "tests/scene/support/scene.h"

namespace ZR::test {

/// A scene whose application uses the video service: the window's content item is its main window, and
/// the queues of its inputs are drained all the time. Its end stops what plays, in the order that works.
class VideoScene : public Scene {
  public:
    VideoScene();
    ~VideoScene() override;

    /// The input of this name, which this scene then drains, and stops at its end. Returns when
    /// GStreamer is up: on a loaded machine an input's own wait for that can be too short.
    ZRGstreamerVideoInput& input(const std::string& name = "video");

    /// Places an input's picture in an item of this area, and renders the frame that it needs before
    /// it is started.
    QQuickItem* place(ZRGstreamerVideoInput& input, const QRect& area);

    /// Stops and drains all inputs and takes them off the scene, which an application does before its
    /// window closes.
    void stopInputs();
    /// Ends the service too. Without having been called before, the scene's end does it.
    void quit();
    /// Lets the scene end without the end of the service.
    void leaveWithoutQuit() { hasQuit_ = true; }

    /// Lets the application run until the quarters of an area show this.
    bool waitForQuarters(const QRect& area, const Quarters& expected, double seconds = 20);
    /// Lets the application run until pictures flow: the middle of an area changes @p times times.
    bool waitForPictures(const QRect& area, int times = 3, double seconds = 20);

  private:
    std::vector<ZRGstreamerVideoInput*> inputs_;
    bool hasQuit_ = false;
};

}  // namespace ZR::test
