#include "tests/scene/support/video_scene.h"

#include <algorithm>
#include <stdexcept>

namespace ZR::test {

namespace {

// An emulated machine looks at its plug-ins for long.
constexpr double gstreamerLimit = 120;

}  // namespace

VideoScene::VideoScene() {
    ZRVideoInputInterface::setMainWindow(window().contentItem());
    addTick([this] {
        for (ZRGstreamerVideoInput* input : inputs_)
            input->handleQueuedCommands();
    });
}

VideoScene::~VideoScene() {
    stopInputs();
    quit();
}

ZRGstreamerVideoInput& VideoScene::input(const std::string& name) {
    ZRGstreamerVideoInput* input = ZRGstreamerVideoInput::getInstance(name);
    if (std::find(inputs_.begin(), inputs_.end(), input) == inputs_.end())
        inputs_.push_back(input);
    if (!waitUntil([] { return ZRGstreamerVideoInput::gstInitDone; }, gstreamerLimit))
        throw std::runtime_error("GStreamer is not up");
    return *input;
}

QQuickItem* VideoScene::place(ZRGstreamerVideoInput& input, const QRect& area) {
    QQuickItem* item = addItem(area);
    input.setVideoItem(item, 0);
    renderFrame();
    return item;
}

void VideoScene::stopInputs() {
    for (ZRGstreamerVideoInput* input : inputs_) {
        input->stop(0);
        input->handleQueuedCommands();
    }
    // Without a main window the items have no parent afterwards, and outlive the window.
    ZRVideoInputInterface::setMainWindow(nullptr);
    for (ZRGstreamerVideoInput* input : inputs_)
        input->removeVideoItem();
}

void VideoScene::quit() {
    if (!hasQuit_)
        ZRVideoInputInterface::doQuit();
    hasQuit_ = true;
}

bool VideoScene::waitForQuarters(const QRect& area, const Quarters& expected, double seconds) {
    return waitUntil([&] { return quartersOf(grab(), area) == expected; }, seconds);
}

bool VideoScene::waitForPictures(const QRect& area, int times, double seconds) {
    Shown last = middleOf(grab(), area);
    return waitUntil(
        [&] {
            const Shown now = middleOf(grab(), area);
            if (now != last && (now == Shown::Dark || now == Shown::Bright)) {
                last = now;
                --times;
            }
            return times <= 0;
        },
        seconds);
}

}  // namespace ZR::test
