#pragma once

#include <QObject>
#include <QQuickItem>
#include <map>
#include <mutex>
#include <vector>

namespace ZR {

inline bool isShown(const QQuickItem* item) {
    return item != nullptr && item->isVisible();
}

/// What each input's scene items look like to the bus thread, and the connections that keep it up to
/// date. Items belong to the Qt thread: whoever asks one for its visibility elsewhere may find it
/// half changed, or gone.
class SceneWatch {
  public:
    /// Never destroyed: inputs are torn down at the very end of the process.
    static SceneWatch& get();

    /// Say whether one of an input's items is visible, on the Qt thread.
    void publishParentItem(const QObject* input, bool visible);
    void publishWaitItem(const QObject* input, bool visible);
    /// Whether one of them was published as visible. On any thread.
    bool isPublished(const QObject* input);

    /// Replaces the connections to the application's item. On the Qt thread.
    void follow(const QObject* input, std::vector<QMetaObject::Connection> connections);
    void forget(const QObject* input);

  private:
    struct Record {
        bool parentItem = false;
        bool waitItem = false;
        std::vector<QMetaObject::Connection> connections;
    };

    std::mutex mutex_;
    std::map<const QObject*, Record> records_;
};

/// Whether the application's item or the wait item is visible. The items are looked at on the Qt
/// thread alone; elsewhere what was published counts.
bool isOnScreen(const QObject& input, const QQuickItem* parentItem, const QQuickItem* waitItem);

}  // namespace ZR
