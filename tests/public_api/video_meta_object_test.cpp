// What programs rely on of the video inputs' signals and slots.

#include <gtest/gtest.h>

#include <QMetaMethod>
#include <QMetaObject>
#include <string>

#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

namespace {

using ZR::ZRGstreamerVideoInput;

const QMetaObject& table = ZRGstreamerVideoInput::staticMetaObject;

/// A method as it stands in the table: "slot bool startSlot()", "signal void errorDetected(int p)".
std::string describe(int index) {
    const QMetaMethod method = table.method(table.methodOffset() + index);
    std::string text = method.methodType() == QMetaMethod::Signal ? "signal " : "slot ";
    text += std::string(method.typeName()) + ' ' + method.methodSignature().toStdString();
    for (const QByteArray& name : method.parameterNames())
        text += ' ' + name.toStdString();
    return text;
}

}  // namespace

TEST(VideoMetaObject_pure, has_the_name_of_the_class_in_its_namespace) {
    EXPECT_STREQ(table.className(), "ZR::ZRGstreamerVideoInput");
    EXPECT_STREQ(table.superClass()->className(), "QObject");
}

TEST(VideoMetaObject_pure, has_its_methods_by_their_numbers) {
    const char* const methods[] = {"signal void errorDetected(int) p_timeout",
                                   "signal void triggerTimedRestart(int) p_timeout",
                                   "signal void showVideoItem(bool) p_show",
                                   "slot void restartStream()",
                                   "slot void timedRestartStream(int) p_timeout",
                                   "slot void doShowVideoItem(bool) p_show",
                                   "slot void videoWidgetDestroyed(QObject*) p_obj",
                                   "slot bool startSlot()",
                                   "slot void stopSlot()",
                                   "slot void changeInterfaceSlot()"};
    ASSERT_EQ(table.methodCount() - table.methodOffset(), 10);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(describe(i), methods[i]) << i;
}

TEST(VideoMetaObject_pure, has_slots_that_anybody_may_call_by_name) {
    for (int i = 3; i < 10; ++i)
        EXPECT_EQ(table.method(table.methodOffset() + i).access(), QMetaMethod::Public) << i;
}

TEST(VideoMetaObject_pure, has_nothing_else) {
    EXPECT_EQ(table.propertyCount(), table.propertyOffset());
    EXPECT_EQ(table.enumeratorCount(), table.enumeratorOffset());
    EXPECT_EQ(table.constructorCount(), 0);
    EXPECT_EQ(table.classInfoCount(), table.classInfoOffset());
}

TEST(VideoMetaObject_pure, casts_to_the_interface_by_its_name) {
    ZRGstreamerVideoInput input("camera");
    void* const interface = input.qt_metacast("ZRVideoInputInterface");
    EXPECT_EQ(interface, static_cast<ZR::ZRVideoInputInterface*>(&input));
    EXPECT_NE(interface, static_cast<void*>(&input));
}

TEST(VideoMetaObject_pure, casts_to_the_class_and_to_the_object_and_to_nothing_else) {
    ZRGstreamerVideoInput input("camera");
    EXPECT_EQ(input.qt_metacast("ZR::ZRGstreamerVideoInput"), &input);
    EXPECT_EQ(input.qt_metacast("QObject"), static_cast<QObject*>(&input));
    EXPECT_EQ(input.qt_metacast("ZRGstreamerVideoInput"), nullptr);
    EXPECT_EQ(input.qt_metacast(nullptr), nullptr);
}

TEST(VideoMetaObject_pure, carries_the_result_of_startSlot) {
    ZRGstreamerVideoInput input("camera");
    bool result = false;
    EXPECT_TRUE(QMetaObject::invokeMethod(&input, "startSlot", Qt::DirectConnection,
                                          Q_RETURN_ARG(bool, result)));
    EXPECT_TRUE(result) << "there is nothing to start without a stream type";
}
