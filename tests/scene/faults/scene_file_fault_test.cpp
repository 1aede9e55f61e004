// Faults of the "video.qml" in the working folder.

#include <QFile>

#include "tests/scene/faults/fault_test.h"
#include "tests/scene/support/stream_source.h"

namespace {

using namespace ZR;
using namespace ZR::test;

constexpr char noFile[] =
    "ERROR: video.qml file not found! Expect disaster when trying to use anything video related!";
constexpr char noItem[] = "NO VIDEO ITEM!";

class SceneFileFault : public FaultTest {
  protected:
    static void write(const char* text) {
        QFile file("video.qml");
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        ASSERT_EQ(file.write(text), static_cast<qint64>(qstrlen(text)));
    }

    /// An input without items is started, fails once for want of them, and is left alone.
    void expectFailsOnce(const std::vector<std::string>& linesOfPlacing) {
        scene_.place(input_, area);
        EXPECT_EQ(texts(), linesOfPlacing);
        EXPECT_EQ(input_.shownItem(), nullptr);
        source_.chooseFor(input_);
        input_.start(0);
        ASSERT_TRUE(waitForLines(restartIn1000));
        ASSERT_TRUE(scene_.waitUntil([&] { return !input_.isRestartPending(); }));
        expectNoLineFor(1);
        EXPECT_EQ(output_.count(restartIn1000), 1);
        EXPECT_EQ(input_.restarts(), 0U);
        EXPECT_FALSE(input_.isRunning(0));
    }

    void expectPlays(const QRect& where) {
        source_.chooseFor(input_);
        scene_.place(input_, where);
        input_.start(0);
        EXPECT_TRUE(scene_.waitForQuarters(where, upright));
    }

    StreamSource source_{StreamUdpJpeg};
    WatchedInput& input_ = input();
};

TEST_F(SceneFileFault, a_missing_file_is_reported_and_its_input_plays_when_it_is_there) {
    ASSERT_TRUE(QFile::rename("video.qml", "away.qml"));
    ASSERT_NO_FATAL_FAILURE(expectFailsOnce({noFile, noItem}));
    ASSERT_TRUE(QFile::rename("away.qml", "video.qml"));
    input_.stop(0);
    input_.handleQueuedCommands();
    expectPlays({10, 10, 320, 240});
}

TEST_F(SceneFileFault, a_broken_file_gives_no_item) {
    ASSERT_NO_FATAL_FAILURE(write("import QtQuick 2.0\nItem {"));
    expectFailsOnce({noItem});
}

TEST_F(SceneFileFault, a_root_that_is_no_item_gives_no_item) {
    ASSERT_NO_FATAL_FAILURE(write("import QtQml 2.0\nQtObject {}"));
    expectFailsOnce({noItem});
}

TEST_F(SceneFileFault, a_scene_without_a_video_item_is_never_started_and_never_crashes) {
    ASSERT_NO_FATAL_FAILURE(
        write("import QtQuick 2.0\nItem { Rectangle { objectName: \"waitItemCamera\" } }"));
    expectFailsOnce({noItem});
}

TEST_F(SceneFileFault, without_a_wait_item_the_picture_is_shown_hidden_and_restarted) {
    ASSERT_NO_FATAL_FAILURE(
        write("import QtQuick 2.0\nimport org.freedesktop.gstreamer.GLVideoItem 1.0\n"
              "Item { GstGLVideoItem { objectName: \"videoItem\" } }"));
    expectPlays(area);
    EXPECT_EQ(input_.shownWaitItem(), nullptr);
    input_.stop(0);
    EXPECT_TRUE(scene_.waitForQuarters(area, onlyScene));
    input_.start(0);
    EXPECT_TRUE(scene_.waitForQuarters(area, upright));
    source_.process().pause();
    ASSERT_TRUE(waitForLines(restartIn1000));
    EXPECT_TRUE(scene_.waitUntil([&] { return !input_.shownItem()->isVisible(); }));
    source_.process().resume();
    EXPECT_NE(waitForRestarts(input_, 1), Clock::time_point());
    EXPECT_TRUE(scene_.waitForQuarters(area, upright));
    EXPECT_EQ(texts(), (std::vector<std::string>{timedOut, restartIn1000}));
    input_.removeVideoItem();
    EXPECT_TRUE(scene_.waitForQuarters(area, onlyScene));
}

}  // namespace
