#include "hardware/video_input/gstreamer_video_input/functional/scene_watch_internal.h"

#include <QThread>
#include <utility>

namespace ZR {
namespace {

void disconnectAll(const std::vector<QMetaObject::Connection>& connections) {
    for (const QMetaObject::Connection& connection : connections)
        QObject::disconnect(connection);
}

}  // namespace

SceneWatch& SceneWatch::get() {
    static auto& watch = *new SceneWatch;
    return watch;
}

void SceneWatch::publishParentItem(const QObject* input, bool visible) {
    const std::lock_guard<std::mutex> lock(mutex_);
    records_[input].parentItem = visible;
}

void SceneWatch::publishWaitItem(const QObject* input, bool visible) {
    const std::lock_guard<std::mutex> lock(mutex_);
    records_[input].waitItem = visible;
}

bool SceneWatch::isPublished(const QObject* input) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto record = records_.find(input);
    return record != records_.end() && (record->second.parentItem || record->second.waitItem);
}

void SceneWatch::follow(const QObject* input, std::vector<QMetaObject::Connection> connections) {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        std::swap(records_[input].connections, connections);
    }
    disconnectAll(connections);
}

void SceneWatch::forget(const QObject* input) {
    std::map<const QObject*, Record>::node_type forgotten;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        forgotten = records_.extract(input);
    }
    if (!forgotten.empty())
        disconnectAll(forgotten.mapped().connections);
}

bool isOnScreen(const QObject& input, const QQuickItem* parentItem, const QQuickItem* waitItem) {
    if (QThread::currentThread() == input.thread())
        return isShown(parentItem) || isShown(waitItem);
    return SceneWatch::get().isPublished(&input);
}

}  // namespace ZR
