#include "tests/hardware/video_input/video_service.h"

#include <unistd.h>

#include <QAbstractEventDispatcher>
#include <QEventLoop>
#include <chrono>
#include <cstdlib>
#include <thread>
#include <utility>

namespace ZR::test {

SignalLog::SignalLog(ZRGstreamerVideoInput& input) {
    const auto note = [this](const char* signal, int value) {
        signals_.push_back(std::string(signal) + ' ' + std::to_string(value));
    };
    QObject::connect(
        &input, &ZRGstreamerVideoInput::errorDetected, &receiver_,
        [note](int timeout) { note("errorDetected", timeout); }, Qt::DirectConnection);
    QObject::connect(
        &input, &ZRGstreamerVideoInput::triggerTimedRestart, &receiver_,
        [note](int timeout) { note("triggerTimedRestart", timeout); }, Qt::DirectConnection);
    QObject::connect(
        &input, &ZRGstreamerVideoInput::showVideoItem, &receiver_,
        [note](bool show) { note("showVideoItem", show ? 1 : 0); }, Qt::DirectConnection);
}

std::vector<std::string> SignalLog::take() {
    return std::exchange(signals_, {});
}

VideoServiceTest::VideoServiceTest() {
    Input::busThreadLaunched = true;
    Input::gstInitDone = true;
    Input::quit = false;
    ZRVideoInputInterface::mainWindow = nullptr;
    GstCallSubstitute::reset();
    Devices::leaveOpenToKernel();
    RecordingElements::registerAll();
    ::setenv("QT_QPA_PLATFORM", "minimal", 1);
    ::setenv("QML_DISABLE_DISK_CACHE", "1", 1);
    (void)!::chdir("/dev/shm");
    static int count = 1;
    static char program[] = "test";
    static char* arguments[] = {program, nullptr};
    application_ = std::make_unique<QGuiApplication>(count, arguments);
}

VideoServiceTest::~VideoServiceTest() {
    GstCallSubstitute::reset();
    Input::instances.clear();
    ZRVideoInputInterface::mainWindow = nullptr;
}

Calls VideoServiceTest::takeCallsOf(const std::vector<std::string>& words) {
    Calls taken;
    for (const std::string& call : takeCalls())
        for (const std::string& word : words)
            if (call.compare(0, word.size(), word) == 0) {
                taken.push_back(call);
                break;
            }
    return taken;
}

void VideoServiceTest::deliverSignals() {
    QCoreApplication::sendPostedEvents();
}

void VideoServiceTest::passTime() {
    QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

std::unique_ptr<QQuickItem> VideoServiceTest::makeItem(const std::string& name, qreal width,
                                                       qreal height) {
    auto item = std::make_unique<QQuickItem>();
    item->setObjectName(QString::fromStdString(name));
    item->setSize({width, height});
    return item;
}

PlacedVideoTest::PlacedVideoTest() {
    video_->setParentItem(parent_.get());
    wait_->setParentItem(parent_.get());
    input_.videoItem = video_.get();
    input_.waitItem = wait_.get();
    input_.parentItem = parent_.get();
}

PlacedVideoTest::~PlacedVideoTest() {
    made_->videoItem = nullptr;
    made_->waitItem = nullptr;
    made_->parentItem = nullptr;
}

}  // namespace ZR::test
