// Plays a network stream in a QML scene and comes back to it whenever it fails:
// play_network_stream udp-h264|udp-jpeg PORT [SECONDS], play_network_stream rtsp URL [SECONDS]
//
// To be run in the folder that holds play_network_stream.qml and video.qml.

#include <cstdlib>
#include <iostream>
#include <map>
#include <string>
#include <utility>

#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickView>
#include <QTimer>

#include <hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h>

namespace {

constexpr int commandPeriod = 50;      // ms
constexpr int patiencePeriod = 60000;  // ms; ten restarts that fail take about 20 s
const std::map<std::string, int> types = {
    {"udp-h264", ZR::StreamUdpH264}, {"udp-jpeg", ZR::StreamUdpJpeg}, {"rtsp", ZR::StreamRtsp}};

/// Places the input once GStreamer is ready, starts it once its items were through a frame, and
/// carries out its commands: nothing happens without.
void playIn(QQuickItem* place, ZR::ZRGstreamerVideoInput& input, QQuickView& view) {
    auto* const commands = new QTimer(&view);
    QObject::connect(commands, &QTimer::timeout, &view, [&, place, placed = false]() mutable {
        if (!ZR::ZRGstreamerVideoInput::gstInitDone)
            return;
        if (!std::exchange(placed, true)) {
            input.setVideoItem(place, ZR::ZRColor());
            QObject::connect(&view, &QQuickView::frameSwapped, &view, [&, frames = 0]() mutable {
                if (++frames == 2)  // the first may have begun without the items
                    (void)input.start(0);
                else if (frames == 1)
                    view.update();
            });
            view.update();
        }
        input.handleQueuedCommands();
    });
    commands->start(commandPeriod);
}

}  // namespace

int main(int argc, char** argv) {
    const auto type = types.find(argc >= 3 ? argv[1] : "");
    const int port = argc >= 3 ? std::atoi(argv[2]) : 0;
    const int seconds = argc == 4 ? std::atoi(argv[3]) : 0;
    if (type == types.end() || (type->second != ZR::StreamRtsp && port <= 0) || argc > 4 ||
        (argc == 4 && seconds <= 0)) {
        std::cerr << "usage: play_network_stream udp-h264|udp-jpeg|rtsp PORT|URL [SECONDS]\n";
        return 2;
    }
    QGuiApplication application(argc, argv);
    QQuickView view(QUrl::fromLocalFile("play_network_stream.qml"));
    QQuickItem* const root = view.rootObject();
    if (root == nullptr) {
        std::cerr << "run play_network_stream in the folder that holds its QML files\n";
        return 1;
    }
    auto* const place = root->findChild<QQuickItem*>("place");
    ZR::ZRVideoInputInterface::setMainWindow(view.contentItem());
    auto& input = *ZR::ZRGstreamerVideoInput::getInstance("network");
    input.setStreamType(type->second);
    input.setRTSPURL(argv[2]);
    (void)input.setCurrentInterface(port);
    view.show();
    playIn(place, input, view);
    bool playing = false;
    QObject::connect(&input, &ZR::ZRGstreamerVideoInput::showVideoItem, root, [&](bool show) {
        playing = show;
        root->setProperty("playing", show);
    });
    // The library restarts a failed stream by itself, ten times. To place an input where it is
    // begins the count anew, and to start one that plays does nothing.
    QTimer patience;
    QObject::connect(&patience, &QTimer::timeout, [&] {
        input.setVideoItem(place, ZR::ZRColor());
        (void)input.start(0);
    });
    patience.start(patiencePeriod);
    if (seconds > 0)
        QTimer::singleShot(seconds * 1000, &view, SLOT(close()));
    (void)QGuiApplication::exec();

    // The order matters: the stream, its items, the library's threads, then the window.
    (void)input.stop(0);
    input.handleQueuedCommands();
    ZR::ZRVideoInputInterface::setMainWindow(nullptr);
    input.removeVideoItem();
    ZR::ZRVideoInputInterface::doQuit();
    std::cout << (playing ? "it played to the end\n" : "there is no picture\n");
    return playing ? 0 : 1;
}
