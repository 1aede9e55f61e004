// What programs rely on of the video inputs' objects.

#include <gtest/gtest.h>

#include <QObject>
#include <cstdint>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <type_traits>

#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"
#include "tests/public_api/member_offset.h"

namespace {

using ZR::ZRGstreamerVideoInput;
using ZR::ZRVideoInputInterface;

/// What the interface is to look like to the compiler.
struct InterfaceReference {
    virtual ~InterfaceReference() = default;
    std::list<int> commandQueue;
    std::mutex commandMutex;
};

/// What a video input is to look like to the compiler.
struct InputReference : QObject, InterfaceReference {
    int currentInput;
    int udpPort;
    bool initialized;
    std::uint32_t transparentColor;
    int xPosition;
    int yPosition;
    int width;
    int height;
    int streamType;
    std::string name;
    std::string rtspURL;
    void* videoItem;
    void* waitItem;
    void* parentItem;
    bool restartPending;
    bool streaming;
    std::uint32_t rtspStartTick;
    unsigned int restartCount;
    void* pipeline;
    void* videoSink;
    void* glUpload;
    void* glColorConvert;
    void* videoSource;
    void* capsFilter;
    std::map<unsigned short, ZR::VideoSetting> videoSettings;
};

/// Opens the members to this test.
struct InputMembers : ZRGstreamerVideoInput {
    template <typename Expect>
    static void each(Expect expect) {
        using Wanted = InputReference;
        expect("currentInput", &InputMembers::currentInput, &Wanted::currentInput);
        expect("udpPort", &InputMembers::udpPort, &Wanted::udpPort);
        expect("initialized", &InputMembers::initialized, &Wanted::initialized);
        expect("transparentColor", &InputMembers::transparentColor, &Wanted::transparentColor);
        expect("xPosition", &InputMembers::xPosition, &Wanted::xPosition);
        expect("yPosition", &InputMembers::yPosition, &Wanted::yPosition);
        expect("width", &InputMembers::width, &Wanted::width);
        expect("height", &InputMembers::height, &Wanted::height);
        expect("streamType", &InputMembers::streamType, &Wanted::streamType);
        expect("name", &InputMembers::name, &Wanted::name);
        expect("rtspURL", &InputMembers::rtspURL, &Wanted::rtspURL);
        expect("videoItem", &InputMembers::videoItem, &Wanted::videoItem);
        expect("waitItem", &InputMembers::waitItem, &Wanted::waitItem);
        expect("parentItem", &InputMembers::parentItem, &Wanted::parentItem);
        expect("restartPending", &InputMembers::restartPending, &Wanted::restartPending);
        expect("streaming", &InputMembers::streaming, &Wanted::streaming);
        expect("rtspStartTick", &InputMembers::rtspStartTick, &Wanted::rtspStartTick);
        expect("restartCount", &InputMembers::restartCount, &Wanted::restartCount);
        expect("pipeline", &InputMembers::pipeline, &Wanted::pipeline);
        expect("videoSink", &InputMembers::videoSink, &Wanted::videoSink);
        expect("glUpload", &InputMembers::glUpload, &Wanted::glUpload);
        expect("glColorConvert", &InputMembers::glColorConvert, &Wanted::glColorConvert);
        expect("videoSource", &InputMembers::videoSource, &Wanted::videoSource);
        expect("capsFilter", &InputMembers::capsFilter, &Wanted::capsFilter);
        expect("videoSettings", &InputMembers::videoSettings, &Wanted::videoSettings);
    }

    static constexpr auto queue = &InputMembers::commandQueue;
    static constexpr auto mutex = &InputMembers::commandMutex;

    static void expectTypes() {
        EXPECT_TRUE((std::is_same_v<decltype(initialized), bool>));
        EXPECT_TRUE((std::is_same_v<decltype(currentInput), int>));
        EXPECT_TRUE((std::is_same_v<decltype(streamType), int>));
        EXPECT_TRUE((std::is_same_v<decltype(transparentColor), ZR::ZRColor>));
        EXPECT_TRUE((std::is_same_v<decltype(name), std::string>));
        EXPECT_TRUE((std::is_same_v<decltype(videoItem), QQuickItem*>));
        EXPECT_TRUE((std::is_same_v<decltype(rtspStartTick), std::uint32_t>));
        EXPECT_TRUE((std::is_same_v<decltype(restartCount), unsigned int>));
        EXPECT_TRUE((std::is_same_v<decltype(pipeline), GstElement*>));
        EXPECT_TRUE(
            (std::is_same_v<decltype(videoSettings), std::map<unsigned short, ZR::VideoSetting>>));
        EXPECT_TRUE((std::is_same_v<decltype(commandQueue), std::list<int>>));
        EXPECT_TRUE((std::is_same_v<decltype(commandMutex), std::mutex>));
    }
};

}  // namespace

TEST(VideoInputLayout_pure, members_have_their_order_and_offsets) {
    InputMembers::each([](const char* name, auto member, auto wanted) {
        EXPECT_EQ(offset(member), offset(wanted)) << name;
    });
    EXPECT_EQ(sizeof(ZRGstreamerVideoInput), sizeof(InputReference));
}

TEST(VideoInputLayout_pure, members_have_their_types) {
    InputMembers::expectTypes();
}

TEST(VideoInputLayout_pure, the_object_is_first_and_the_interface_behind_it) {
    EXPECT_TRUE((std::is_base_of_v<QObject, ZRGstreamerVideoInput>));
    EXPECT_TRUE((std::is_base_of_v<ZRVideoInputInterface, ZRGstreamerVideoInput>));
    auto* const input = reinterpret_cast<ZRGstreamerVideoInput*>(0x1000);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(static_cast<QObject*>(input)), 0x1000U);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(static_cast<ZRVideoInputInterface*>(input)),
              0x1000U + sizeof(QObject));
}

TEST(VideoInputLayout_pure, the_interface_has_its_queue_and_its_mutex) {
    EXPECT_EQ(offset<ZRVideoInputInterface>(InputMembers::queue),
              offset(&InterfaceReference::commandQueue));
    EXPECT_EQ(offset<ZRVideoInputInterface>(InputMembers::mutex),
              offset(&InterfaceReference::commandMutex));
    EXPECT_EQ(sizeof(ZRVideoInputInterface), sizeof(InterfaceReference));
}

TEST(VideoInputLayout_pure, the_interface_has_its_operations_in_order) {
    using Face = ZRVideoInputInterface;
    std::ptrdiff_t next = 2;  // behind the destructors
    EXPECT_EQ(slot(&Face::init), next++);
    EXPECT_EQ(slot(&Face::getMirrorSetting), next++);
    EXPECT_EQ(slot(&Face::getRotationSetting), next++);
    EXPECT_EQ(slot(&Face::getHeight), next++);
    EXPECT_EQ(slot(&Face::getWidth), next++);
    EXPECT_EQ(slot(&Face::getXPosition), next++);
    EXPECT_EQ(slot(&Face::getYPosition), next++);
    EXPECT_EQ(slot(&Face::setBrightness), next++);
    EXPECT_EQ(slot(&Face::setContrast), next++);
    EXPECT_EQ(slot(&Face::setHue), next++);
    EXPECT_EQ(slot(&Face::setMirror), next++);
    EXPECT_EQ(slot(&Face::setRotation), next++);
    EXPECT_EQ(slot(&Face::setPosition), next++);
    EXPECT_EQ(slot(&Face::setSaturation), next++);
    EXPECT_EQ(slot(&Face::setSize), next++);
    EXPECT_EQ(slot(&Face::start), next++);
    EXPECT_EQ(slot(&Face::stop), next++);
    EXPECT_EQ(slot(&Face::isRunning), next++);
    EXPECT_EQ(slot(&Face::setCurrentInterface), next++);
    EXPECT_EQ(slot(&Face::getCurrentInterface), next++);
    EXPECT_EQ(slot(&Face::isInitialized), next++);
    EXPECT_EQ(slot(&Face::handleQueuedCommands), next++);
    EXPECT_EQ(next, 24);
}

TEST(VideoInputLayout_pure, operations_have_their_results) {
    using Face = ZRVideoInputInterface;
    EXPECT_TRUE((std::is_same_v<decltype(&Face::init), int (Face::*)()>));
    EXPECT_TRUE((std::is_same_v<decltype(&Face::isRunning), bool (Face::*)(unsigned short)>));
    EXPECT_TRUE((std::is_same_v<decltype(&Face::getCurrentInterface), int (Face::*)() const>));
    EXPECT_TRUE((std::is_same_v<decltype(&Face::handleQueuedCommands), void (Face::*)()>));
    EXPECT_TRUE((std::is_same_v<decltype(&ZRGstreamerVideoInput::startSlot),
                                bool (ZRGstreamerVideoInput::*)()>));
    EXPECT_TRUE(
        (std::is_same_v<decltype(&ZRGstreamerVideoInput::gstBusListener), void (*)(void*)>));
}

TEST(VideoInputLayout_pure, colors_and_types_are_one_word) {
    EXPECT_EQ(sizeof(ZR::ZRColor), 4U);
    EXPECT_TRUE(std::is_trivially_copyable_v<ZR::ZRColor>);
    EXPECT_EQ(ZR::ZRColor(0xFF010203).value, 0xFF010203U);
    EXPECT_EQ(ZR::ZRColor().value, 0U);
    EXPECT_TRUE(ZR::ZRColor(1) == ZR::ZRColor(1));
    EXPECT_TRUE(ZR::ZRColor(1) != ZR::ZRColor(2));
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<ZR::ZRVideoInputType>, int>));
    EXPECT_EQ(static_cast<int>(ZR::VideoInputGstreamer), 0);
}

TEST(VideoInputLayout_pure, the_interface_is_abstract_and_has_one_owner) {
    EXPECT_TRUE(std::is_abstract_v<ZRVideoInputInterface>);
    EXPECT_TRUE(std::has_virtual_destructor_v<ZRVideoInputInterface>);
    EXPECT_FALSE(std::is_copy_constructible_v<ZRGstreamerVideoInput>);
    EXPECT_TRUE((std::is_same_v<decltype(ZRVideoInputInterface::mainWindow), QQuickItem*>));
    EXPECT_TRUE((std::is_same_v<decltype(ZRGstreamerVideoInput::gstBusThread), ZR::ZRThread>));
    EXPECT_TRUE((std::is_same_v<decltype(ZRGstreamerVideoInput::gstInitDone), bool>));
    EXPECT_TRUE((std::is_same_v<decltype(ZRGstreamerVideoInput::quit), bool>));
    EXPECT_TRUE((std::is_same_v<decltype(ZRGstreamerVideoInput::busThreadLaunched), bool>));
}
