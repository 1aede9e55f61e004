#include "hardware/video_input/zr_video_input_interface.h"

#include <QQuickItem>
#include <new>

#include "hardware/video_input/command_queue_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/gstreamer_start_internal.h"
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
    if (item == nullptr)
        return;
    keepLibraryLoaded();
    watch = QObject::connect(item, &QObject::destroyed, [] { mainWindow = nullptr; });
}

void ZRVideoInputInterface::doQuit() {
    ZRGstreamerVideoInput::doQuit();
}

void ZRVideoInputInterface::pushCommandToQueue(int command) try {
    { const std::lock_guard<std::mutex> lock(commandMutex); }
    appendCommand(commandQueue, command);
} catch (const std::bad_alloc&) {
    // Lost. It may come from the thread that watches the streams, where nobody could catch it.
}

bool ZRVideoInputInterface::isStopRequested() {
    { const std::lock_guard<std::mutex> lock(commandMutex); }
    return holdsStop(commandQueue);
}

}  // namespace ZR
