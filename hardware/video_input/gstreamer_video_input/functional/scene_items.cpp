#include <gst/gst.h>

#include <QFile>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QUrl>
#include <memory>
#include <vector>

#include "hardware/print_line_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/scene_watch_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/stream_pipelines_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

namespace ZR {
namespace {

constexpr const char* sceneFile = "video.qml";
constexpr const char* videoItemName = "videoItem";
constexpr const char* waitItemName = "waitItemCamera";
constexpr qreal lift = 1.0;

/// One engine for all inputs, made when the first of them loads its items.
QQmlEngine& sceneEngine() {
    static QQmlEngine qmlEngine;
    return qmlEngine;
}

/// What the files' components made. Nobody deletes it: the items that are shown hang on it. Held, so
/// that it does not count as lost when the inputs are gone.
std::vector<const QObject*>& keptScenes() {
    static auto& scenes = *new std::vector<const QObject*>;
    return scenes;
}

/// What the file's component makes, null when QML finds a fault in it.
QQuickItem* loadScene() {
    QQmlComponent component(&sceneEngine(), QUrl::fromLocalFile(sceneFile));
    std::unique_ptr<QObject> root(component.create());
    auto* const item = qobject_cast<QQuickItem*>(root.get());
    if (item != nullptr)
        keptScenes().push_back(root.release());
    return item;
}

/// The video items lie at z 0, and what an application draws over a video is to stay above it.
void liftChildren(const QQuickItem& parent) {
    const auto children = parent.childItems();
    for (QQuickItem* const child : children) {
        if (child->z() <= 0)
            child->setZ(child->z() + lift);
    }
}

void fill(QQuickItem& item, QQuickItem& parent) {
    item.setParentItem(&parent);
    item.setVisible(true);
    item.setX(0);
    item.setY(0);
    item.setSize(parent.size());
}

void hideUnder(QQuickItem& item, QQuickItem* newParent) {
    item.setVisible(false);
    item.setParentItem(newParent);
}

/// A sink that an input had before its items is set up as one that is built with them is.
void giveWidget(GstElement* sink, QQuickItem* videoItem, bool isNew) {
    if (!isNew || shownWidget(sink) != videoItem)
        g_object_set(sink, "widget", static_cast<void*>(videoItem), nullptr);
    if (isNew)
        g_object_set(sink, "sync", FALSE, nullptr);
}

/// Whether an item is placed: parked ones stay hidden.
bool isPlaced(const QQuickItem* item, const QQuickItem* mainWindow) {
    return item != nullptr && item->parentItem() != nullptr && item->parentItem() != mainWindow;
}

}  // namespace

void ZRGstreamerVideoInput::createVideoAndWaitItem() {
    if (!QFile::exists(sceneFile)) {
        printLine(
            {"ERROR: video.qml file not found! Expect disaster when trying to use anything "
             "video related!"});
        return;
    }
    const QQuickItem* const root = loadScene();
    videoItem = root != nullptr ? root->findChild<QQuickItem*>(videoItemName) : nullptr;
    waitItem = root != nullptr ? root->findChild<QQuickItem*>(waitItemName) : nullptr;
    // An application may destroy even these.
    if (videoItem != nullptr)
        connect(videoItem, &QObject::destroyed, this, [this, gone = videoItem] {
            if (videoItem == gone)
                videoItem = nullptr;
        });
    SceneWatch::get().publishWaitItem(this, isShown(waitItem));
    if (waitItem == nullptr)
        return;
    connect(waitItem, &QQuickItem::visibleChanged, this, [this, changed = waitItem] {
        if (waitItem == changed)
            SceneWatch::get().publishWaitItem(this, changed->isVisible());
    });
    connect(waitItem, &QObject::destroyed, this, [this, gone = waitItem] {
        if (waitItem != gone)
            return;
        waitItem = nullptr;
        SceneWatch::get().publishWaitItem(this, false);
    });
}

void ZRGstreamerVideoInput::setVideoItem(QQuickItem* item, ZRColor /*color*/) {
    waitForGstReady();
    restartCount = 0;
    if (item == nullptr || item == parentItem)
        return;
    parentItem = item;
    SceneWatch& watch = SceneWatch::get();
    watch.follow(
        this,
        {connect(item, SIGNAL(destroyed(QObject*)), this, SLOT(videoWidgetDestroyed(QObject*))),
         // For an input without items, which the slot leaves alone.
         connect(item, &QObject::destroyed, this,
                 [this, item] {
                     if (parentItem == item)
                         parentItem = nullptr;
                     SceneWatch::get().publishParentItem(this, false);
                 }),
         connect(item, &QQuickItem::visibleChanged, this,
                 [this, item] { SceneWatch::get().publishParentItem(this, item->isVisible()); })});
    watch.publishParentItem(this, item->isVisible());
    const bool isNew = videoItem == nullptr;
    if (isNew)
        createVideoAndWaitItem();
    if (videoItem == nullptr) {
        printLine({"NO VIDEO ITEM!"});
        return;
    }
    liftChildren(*item);
    // New items stay visible, at the z of their file.
    fill(*videoItem, *item);
    if (!isNew) {
        videoItem->setVisible(false);
        videoItem->setZ(0);
    }
    if (waitItem != nullptr) {
        fill(*waitItem, *item);
        if (!isNew)
            waitItem->setZ(0);
    }
    if (pipeline != nullptr && videoSink != nullptr)
        giveWidget(videoSink, videoItem, isNew);
}

void ZRGstreamerVideoInput::doShowVideoItem(bool p_show) {
    if (isPlaced(waitItem, mainWindow))
        waitItem->setVisible(!p_show);
    if (isPlaced(videoItem, mainWindow))
        videoItem->setVisible(p_show);
}

void ZRGstreamerVideoInput::removeVideoItem() {
    { const std::lock_guard<std::mutex> lock(commandMutex); }
    commandQueue.clear();
    stopSlot();
    if (videoItem != nullptr && parentItem != nullptr) {
        hideUnder(*videoItem, mainWindow);
        videoItem->setVisible(false);
        if (waitItem != nullptr)
            hideUnder(*waitItem, mainWindow);
    }
    parentItem = nullptr;
    SceneWatch::get().follow(this, {});
    SceneWatch::get().publishParentItem(this, false);
    restartCount = 0;
}

void ZRGstreamerVideoInput::videoWidgetDestroyed(QObject* p_obj) {
    if (videoItem == nullptr || p_obj != parentItem)
        return;
    printLine({"REMOVE FROM DESTROYED"});
    // One item may serve as both, and setMainWindow() may hear of its end after this.
    if (p_obj == mainWindow)
        mainWindow = nullptr;
    removeVideoItem();
}

}  // namespace ZR
