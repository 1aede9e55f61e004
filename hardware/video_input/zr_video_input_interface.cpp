#include "hardware/video_input/zr_video_input_interface.h"

#include <QQuickItem>

#include "hardware/video_input/command_queue_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

namespace ZR {

QQuickItem* ZRVideoInputInterface::mainWindow = nullptr;

ZRVideoInputInterface::~ZRVideoInputInterface() = default;

ZRVideoInputInterface* ZRVideoInputInterface::getInstance(ZRVideoInputType type,
                                                          const std::string& name) {
    if (type != VideoInputGstreamer)
        return nullptr;
    return ZRGstreamerVideoInput::getInstance(name);
}

void ZRVideoInputInterface::setMainWindow(QQuickItem* item) {
    // Items that are parked under one that is gone would take the process with them.
    static QMetaObject::Connection watch;
    QObject::disconnect(watch);
    mainWindow = item;
    if (item != nullptr)
        watch = QObject::connect(item, &QObject::destroyed, [] { mainWindow = nullptr; });
}

void ZRVideoInputInterface::doQuit() {
    ZRGstreamerVideoInput::doQuit();
}

void ZRVideoInputInterface::pushCommandToQueue(int command) {
    { const std::lock_guard<std::mutex> lock(commandMutex); }
    appendCommand(commandQueue, command);
}

bool ZRVideoInputInterface::isStopRequested() {
    { const std::lock_guard<std::mutex> lock(commandMutex); }
    return holdsStop(commandQueue);
}

}  // namespace ZR
