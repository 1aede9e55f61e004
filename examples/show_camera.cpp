// Shows an analog camera in a QML scene: show_camera 1|2|3 [SECONDS]
//
// To be run in the folder that holds show_camera.qml and video.qml.

#include <cstdlib>
#include <iostream>
#include <string>
#include <utility>

#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickView>
#include <QTimer>

#include <hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h>

namespace {

constexpr int commandPeriod = 50;  // ms

/// Starts the input once its items were through a frame. The first one may have begun without them.
void startAfterFrame(ZR::ZRGstreamerVideoInput& input, QQuickView& view) {
    QObject::connect(&view, &QQuickView::frameSwapped, &view, [&, frames = 0]() mutable {
        if (++frames == 2)
            (void)input.start(0);
        else if (frames < 2)
            view.update();
    });
    view.update();
}

/// Places the input once GStreamer is ready, and carries out its commands: nothing happens without.
void playIn(QQuickItem* place, ZR::ZRGstreamerVideoInput& input, QQuickView& view) {
    auto* const commands = new QTimer(&view);
    QObject::connect(commands, &QTimer::timeout, &view, [&, place, placed = false]() mutable {
        if (!ZR::ZRGstreamerVideoInput::gstInitDone)
            return;
        if (!std::exchange(placed, true)) {
            input.setVideoItem(place, ZR::ZRColor());
            startAfterFrame(input, view);
        }
        input.handleQueuedCommands();
    });
    commands->start(commandPeriod);
}

/// The order matters: the stream, its items, the library's threads, then the window.
void leave(ZR::ZRGstreamerVideoInput& input) {
    (void)input.stop(0);
    input.handleQueuedCommands();
    ZR::ZRVideoInputInterface::setMainWindow(nullptr);
    input.removeVideoItem();
    ZR::ZRVideoInputInterface::doQuit();
}

}  // namespace

int main(int argc, char** argv) {
    const std::string camera = argc >= 2 ? argv[1] : "";
    const int seconds = argc == 3 ? std::atoi(argv[2]) : 0;
    if (argc > 3 || camera < "1" || camera > "3" || camera.size() != 1 ||
        (argc == 3 && seconds <= 0)) {
        std::cerr << "usage: show_camera 1|2|3 [SECONDS]\n";
        return 2;
    }

    QGuiApplication application(argc, argv);
    QQuickView view(QUrl::fromLocalFile("show_camera.qml"));
    auto* const place =
        view.rootObject() != nullptr ? view.rootObject()->findChild<QQuickItem*>("place") : nullptr;
    if (place == nullptr) {
        std::cerr << "run show_camera in the folder that holds its QML files\n";
        return 1;
    }

    ZR::ZRVideoInputInterface::setMainWindow(view.contentItem());
    // Finds the capture devices, and starts a thread that prepares GStreamer a second later.
    auto& input = *ZR::ZRGstreamerVideoInput::getInstance("camera");
    input.setStreamType(ZR::StreamCamera);
    (void)input.setCurrentInterface(camera[0] - '0');

    view.show();
    playIn(place, input, view);

    if (seconds > 0)
        QTimer::singleShot(seconds * 1000, &view, SLOT(close()));
    (void)QGuiApplication::exec();

    const bool shown = input.isRunning(0);
    std::cout << "camera " << camera << (shown ? " was shown\n" : " gives no picture\n");

    leave(input);
    return shown ? 0 : 1;
}
