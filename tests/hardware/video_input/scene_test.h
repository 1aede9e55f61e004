#pragma once

#include <memory>
#include <string>

#include "tests/hardware/video_input/video_service.h"
#include "tests/support/private_root.h"

namespace ZR::test {

inline constexpr char sceneFile[] = "/dev/shm/video.qml";
inline constexpr char noVideoItem[] = "NO VIDEO ITEM!\n";
inline constexpr char noSceneFile[] =
    "ERROR: video.qml file not found! Expect disaster when trying to use anything video "
    "related!\n";

/// Two items below a root, at a z and a place of their own, one inside the other's neighbour.
inline constexpr char wholeScene[] =
    "import QtQuick 2.0\n"
    "Item {\n"
    "  Item { Item { objectName: 'videoItem'; z: 5; x: 3; y: 4; visible: false } }\n"
    "  Item { objectName: 'waitItemCamera'; z: 6; x: 3; y: 4 }\n"
    "}\n";

class SceneTest : public VideoServiceTest {
  protected:
    SceneTest() { makeFile(sceneFile, wholeScene); }

    ~SceneTest() override {
        deleteScene(input_);
        removeFile(sceneFile);
    }

    /// What the library never deletes.
    static void deleteScene(const TestInput& input) {
        QObject* root = input.videoItem != nullptr ? input.videoItem : input.waitItem;
        while (root != nullptr && root->parent() != nullptr)
            root = root->parent();
        delete root;
    }

    static std::string describe(const QQuickItem* item) {
        if (item == nullptr)
            return "none";
        const auto number = [](qreal value) { return std::to_string(static_cast<int>(value)); };
        return number(item->x()) + ' ' + number(item->y()) + ' ' + number(item->width()) + 'x' +
               number(item->height()) + " z" + number(item->z()) +
               (item->isVisible() ? " shown" : " hidden");
    }

    /// What placing prints.
    std::string placing(QQuickItem* item) {
        const OutputCapture capture;
        input_.setVideoItem(item, ZRColor(0xFF00FF00));
        return capture.output();
    }

    /// A scene in which the input has its items already, under @p parent_.
    void place() {
        ASSERT_EQ(placing(parent_.get()), "");
        (void)takeCalls();
    }

    std::unique_ptr<QQuickItem> parent_ = makeItem("parent");
    std::unique_ptr<QQuickItem> other_ = makeItem("other", 320, 240);
    std::unique_ptr<QQuickItem> window_ = makeItem("window");
    TestInput input_;
};

}  // namespace ZR::test
