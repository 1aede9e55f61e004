#include "tests/scene/support/scene.h"

#include <unistd.h>

#include <QElapsedTimer>
#include <QFile>
#include <memory>
#include <stdexcept>

#include "tests/scene/support/scene_colours.h"

namespace ZR::test {

namespace {

constexpr char videoFile[] = ZR_SCENE_SUPPORT "/video.qml";
constexpr int tickMilliseconds = 10;
// An emulated machine draws its first frame late.
constexpr double frameLimit = 120;

// The application keeps both as long as it lives.
int argumentCount = 1;
char programName[] = "scene";
char* arguments[] = {programName, nullptr};

}  // namespace

Scene::Scene() {
    if (!folder_.isValid() || ::chdir(folder_.path().toUtf8().constData()) != 0 ||
        !QFile::copy(videoFile, "video.qml"))
        throw std::runtime_error("no working folder for the scene");
    application_ = std::make_unique<QGuiApplication>(argumentCount, arguments);
    window_ = std::make_unique<QQuickWindow>();
    window_->setColor(QColor(sceneColour.red, sceneColour.green, sceneColour.blue));
    window_->resize(width, height);
    timer_ = new QTimer(application_.get());
    QObject::connect(timer_, &QTimer::timeout, timer_, [this] {
        for (const std::function<void()>& work : ticks_)
            work();
    });
    timer_->start(tickMilliseconds);
    window_->show();
    renderFrame();
}

Scene::~Scene() {
    close();
    // The working folder is removed by its owner.
    (void)::chdir("/");
}

QQuickItem* Scene::addItem(const QRect& area) {
    auto* item = new QQuickItem(window_->contentItem());
    item->setPosition(area.topLeft());
    item->setSize(area.size());
    return item;
}

bool Scene::waitUntil(const std::function<bool()>& condition, double seconds) {
    QElapsedTimer elapsed;
    elapsed.start();
    while (!condition()) {
        if (static_cast<double>(elapsed.elapsed()) > seconds * 1000)
            return false;
        // The tick's timer ends the wait.
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

void Scene::runFor(double seconds) {
    (void)waitUntil([] { return false; }, seconds);
}

void Scene::renderFrame() {
    // Shared: what the renderer has posted may still come when nobody waits any more.
    const auto rendered = std::make_shared<bool>(false);
    const auto connection = QObject::connect(window_.get(), &QQuickWindow::frameSwapped, timer_,
                                             [rendered] { *rendered = true; });
    window_->update();
    const bool inTime = waitUntil([&] { return *rendered; }, frameLimit);
    QObject::disconnect(connection);
    if (!inTime)
        throw std::runtime_error("the scene's window was not rendered");
}

QImage Scene::grab() {
    return window_->grabWindow();
}

void Scene::close() {
    ticks_.clear();
    window_.reset();
    application_.reset();
}

}  // namespace ZR::test
