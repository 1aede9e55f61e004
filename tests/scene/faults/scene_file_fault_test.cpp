// Faults of the "video.qml" in the working folder.

#include <QDir>
#include <QFile>

#include "tests/scene/faults/fault_test.h"
#include "tests/scene/support/stream_source.h"
#include "tests/scene/support/streams.h"

namespace {

using namespace ZR;
using namespace ZR::test;

constexpr char noFileLine[] =
    "ERROR: video.qml file not found! Expect disaster when trying to use anything video related!";
constexpr char noItemLine[] = "NO VIDEO ITEM!";

class SceneFileFault : public FaultTest {
  protected:
    static void write(const char* text) {
        QFile file("video.qml");
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        ASSERT_EQ(file.write(text), static_cast<qint64>(qstrlen(text)));
    }

    /// Places an input whose working folder is a new one.
    /// @param text  of its "video.qml", null for none
    void placeWithFile(WatchedInput& input, const char* folder, const char* text) {
        ASSERT_TRUE(QDir().mkdir(folder));
        const QString home = QDir::currentPath();
        ASSERT_TRUE(QDir::setCurrent(folder));
        if (text != nullptr)
            write(text);
        scene_.place(input, area);
        ASSERT_TRUE(QDir::setCurrent(home));
    }

    void play(WatchedInput& input) {
        const QRect where(10, 10, 320, 240);
        source_.chooseFor(input);
        scene_.place(input, where);
        input.start(0);
        EXPECT_TRUE(scene_.waitForQuarters(where, upright));
    }

    StreamSource source_{StreamUdpJpeg};
};

TEST_F(SceneFileFault, an_input_without_items_fails_once_and_plays_when_the_file_is_there) {
    WatchedInput& missing = input("missing");
    WatchedInput& broken = input("broken");
    WatchedInput& noItem = input("no item");
    WatchedInput& noVideoItem = input("no video item");
    placeWithFile(missing, "1", nullptr);
    EXPECT_EQ(texts(), (std::vector<std::string>{noFileLine, noItemLine}));
    placeWithFile(broken, "2", "import QtQuick 2.0\nItem {");
    placeWithFile(noItem, "3", "import QtQml 2.0\nQtObject {}");
    placeWithFile(noVideoItem, "4",
                  "import QtQuick 2.0\nItem { Rectangle { objectName: \"waitItemCamera\" } }");
    EXPECT_EQ(output_.count(noItemLine), 4);
    EXPECT_EQ(output_.lines().size(), 5U);
    for (WatchedInput* const one : {&missing, &broken, &noItem, &noVideoItem}) {
        EXPECT_EQ(one->shownItem(), nullptr);
        one->setStreamType(StreamUdpJpeg);
        one->setCurrentInterface(freeUdpPort());
        one->start(0);
    }
    ASSERT_TRUE(waitForLines(restartIn1000, 4));
    for (WatchedInput* const one : {&missing, &broken, &noItem, &noVideoItem}) {
        ASSERT_TRUE(scene_.waitUntil([&] { return !one->isRestartPending(); }));
        EXPECT_EQ(one->restarts(), 0U);
        EXPECT_FALSE(one->isRunning(0));
    }
    expectNoLineFor(0.5);
    EXPECT_EQ(output_.count(restartIn1000), 4);
    EXPECT_EQ(output_.count(timedOut), 0);
    play(missing);
}

TEST_F(SceneFileFault, without_a_wait_item_the_picture_is_shown_hidden_and_restarted) {
    const QRect where(10, 10, 320, 240);
    ASSERT_NO_FATAL_FAILURE(
        write("import QtQuick 2.0\nimport org.freedesktop.gstreamer.GLVideoItem 1.0\n"
              "Item { GstGLVideoItem { objectName: \"videoItem\" } }"));
    WatchedInput& video = input();
    play(video);
    EXPECT_EQ(video.shownWaitItem(), nullptr);
    video.stop(0);
    EXPECT_TRUE(scene_.waitForQuarters(where, onlyScene));
    video.start(0);
    EXPECT_TRUE(scene_.waitForQuarters(where, upright));
    source_.process().pause();
    ASSERT_TRUE(waitForLines(restartIn1000));
    EXPECT_TRUE(scene_.waitUntil([&] { return !video.shownItem()->isVisible(); }));
    source_.process().resume();
    EXPECT_NE(waitForRestarts(video, 1), Clock::time_point());
    EXPECT_TRUE(scene_.waitForQuarters(where, upright));
    EXPECT_EQ(texts(), (std::vector<std::string>{timedOut, restartIn1000}));
    video.removeVideoItem();
    EXPECT_TRUE(scene_.waitForQuarters(where, onlyScene));
}

}  // namespace
