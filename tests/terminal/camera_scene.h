#pragma once

#include <QImage>
#include <QRect>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "camera_board.h"
#include "tests/scene/support/video_scene.h"
#include "tests/support/output_capture.h"

namespace ZR::test {

/// What an area of a scene shows of the cameras, in words: "input 2 NTSC", "the wait item", else what
/// is wrong with the picture.
std::string shownIn(const QImage& image, const QRect& area);

/// The board behind a QML scene of an application that plays its cameras.
class CameraScene : public CameraBoard {
  protected:
    /// Areas in the window, side by side.
    const QRect left{0, 0, 240, 240};
    const QRect right{240, 0, 240, 240};

    void SetUp() override;
    void TearDown() override;

    VideoScene& scene() { return *scene_; }

    /// The input of this name, placed in an area, which plays a camera from the next turn on.
    /// @param camera  1-based
    ZRGstreamerVideoInput& play(int camera, const QRect& area, const std::string& name = "video");

    /// Lets the application run until a condition holds.
    /// @return whether it does, before an emulated machine that is busy besides would have come to it
    bool eventually(const std::function<bool()>& condition);
    /// Lets the application run until an area shows this; what it shows then.
    std::string shownEventually(const std::string& expected, const QRect& area);

    /// From here on what the process prints is kept, until released() gives it back.
    void capture() { capture_.emplace(); }
    /// Lets the application run until this was printed, as often; what was printed.
    std::string printedEventually(const std::string& text, int times = 1);
    /// Ends the capture; all that was printed, standard error last.
    std::string released();

  private:
    std::unique_ptr<VideoScene> scene_;
    std::optional<OutputCapture> capture_;
};

/// How often a text holds another one.
int occurrencesOf(const std::string& searched, const std::string& text);

}  // namespace ZR::test
