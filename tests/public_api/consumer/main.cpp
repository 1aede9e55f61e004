// Uses each public header of the installed package once, on a machine that need not be a terminal.

#include <common/zrapi_common/zr_color.h>
#include <common/zrapi_common/zr_debug.h>
#include <common/zrapi_common/zr_eeprom.h>
#include <common/zrapi_common/zr_end_point.h>
#include <common/zrapi_common/zr_end_point_handler.h>
#include <common/zrapi_common/zr_end_point_manager.h>
#include <common/zrapi_common/zr_event.h>
#include <common/zrapi_common/zr_event_queue.h>
#include <common/zrapi_common/zr_result.h>
#include <common/zrapi_export.h>
#include <common/zrapi_os_abs/zr_thread.h>
#include <common/zrapi_os_abs/zr_tick.h>
#include <common/zrapi_utility/zr_file_access.h>
#include <common/zrapi_utility/zr_files_and_folders.h>
#include <common/zrapi_utility/zr_to_string.h>
#include <hardware/can/can_libsocketcan.h>
#include <hardware/can/can_socket.h>
#include <hardware/can/zr_can.h>
#include <hardware/can/zr_can_raw.h>
#include <hardware/dimmable/attribute_stream.h>
#include <hardware/dimmable/zr_dimmable.h>
#include <hardware/feature_detection/zr_feature_detection.h>
#include <hardware/input_output/zr_input_output.h>
#include <hardware/netlink/event_interface.h>
#include <hardware/netlink/zr_netlink.h>
#include <hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h>
#include <hardware/video_input/zr_video_input_interface.h>
#include <hardware/video_input/zr_video_setting.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

extern "C" int eventInterfaceWorksInC(void);

namespace {

int failures = 0;

void expect(bool holds, const char* what) {
    if (holds)
        return;
    std::cout << "FAILED: " << what << '\n';
    ++failures;
}

std::vector<std::string> reports;

void keepReport(int level, const char* section, const char* message) {
    reports.push_back(std::to_string(level) + ' ' + section + ": " + message);
}

void setTrue(void* flag) {
    *static_cast<bool*>(flag) = true;
}

void useCommon() {
    const unsigned int section = ZR::ZRDebug::insertNewDebugSection("consumer");
    ZR::ZRDebug::setSink(keepReport);
    ZR::ZRDebug::debugPrintError(ZR::ZRDebug::levelError, section, "%s%d", "report ", 1);
    expect(reports == std::vector<std::string>{"1 consumer: report 1"},
           "a report reaches the sink");

    ZR::ZREEPROMMessageData data{};
    (void)ZR::ZREeprom::readDataFromEeprom(ZR::EepromReadDisplayData, data);
    expect(std::string(ZR::resultText(ZR::ResultSuccess)) == "success", "result codes have names");
}

void useOperatingSystem() {
    const auto before = ZR::ZRTick::getTickCount();
    bool ran = false;
    ZR::ZRThread thread;
    expect(thread.setThreadName("consumer") == 0, "a thread can be named");
    expect(thread.startThread(setTrue, &ran) == 0, "a thread starts");
    expect(thread.join() == 0 && ran, "a thread runs to its end");
    expect(ZR::ZRTick::getTickCount() >= before, "the tick goes forward");
}

void useUtility() {
    int number = 0;
    std::string text;
    expect(ZR::readStringFromFile("/proc/sys/kernel/ostype", &text) == 0 && text == "Linux",
           "a text is read without its newline");
    expect(ZR::readIntegerFromFile("/proc/self/no_such_file", &number) != 0,
           "a missing file fails");
    expect(ZR::writeToFile("/dev/null", 1) == 0, "a number is written");
    expect(ZR::ZRFilesAndFolders::isFile("/dev/null"), "a device node is a file");
    expect(ZR::ZRFilesAndFolders::addSlash("/dev") == "/dev/", "a slash is added");
    std::vector<std::string> folders;
    expect(ZR::ZRFilesAndFolders::getAllFilesOrFoldersInFolder("/proc/self", folders, 0,
                                                               ZR::FilterFolders) == 0,
           "folders are listed");
    expect(ZR::toString(-1) == "-1", "a number becomes a text");
}

void useInputsAndOutputs() {
    reports.clear();
    ZR::ZRInputOutput radar(ZR::RadarSensor, 1);
    const std::vector<std::string> expected{"1 zr_io: Radar sensor not supported on K4",
                                            "1 zr_io: Initializing I/O interface"};
    expect(reports == expected, "the library reports through the application's sink");
    bool state = false;
    expect(radar.getState(&state) == ZR::ResultNotSupported, "a radar sensor has no state");
    expect(ZR::calculateAnalogValue(8525) == 10000, "a reading is converted");
}

void useDimmableDevices() {
    ZR::ZRDimmable* const dimmable = ZR::ZRDimmable::getInstance();
    expect(dimmable->isColorSupported(ZR::RGBLED), "the RGB LED has a colour");
    expect(dimmable->setIntensity(1, ZR::RGBLED) == ZR::ResultInvalidState,
           "the RGB LED has no intensity");
    ZR::AttributeStream stream;
    expect(!stream.is_open(), "a stream starts closed");
}

void useCan() {
    constexpr unsigned int unknownState = 2;
    expect(ZR::ZRCAN::setState(1, unknownState) == ZR::ResultValueOutOfRange,
           "an unknown state is refused");
    bool isSet = false;
    expect(ZR::CANLibsocketcan::isBaudrateSet("no_such_can", 1, isSet) == ZR::ResultReadFailed,
           "a missing interface has no rate");
    expect(ZR::ZRCAN::create(0)->setBaudrate(0, 1) == ZR::ResultOpenFailed, "port 0 is no port");

    int count = 0;
    expect(ZR::ZRCANRaw::getRxPackages(5, count) == ZR::ResultPortOutOfRange, "port 5 is no port");
    const std::shared_ptr<ZR::ZREndPoint> endPoint = ZR::ZRCANRaw::create(0, 0, 0);
    expect(!endPoint->isConnected(), "an end point is not connected at first");
    ZR::CANSocket socket;
    ZR::ZRCANMessage message{};
    expect(socket.send(&message) == ZR::ResultSendFailed, "nothing is sent without a socket");
}

void useEvents() {
    ZR::ZREventQueue queue;
    ZR::ZREndPointManager manager;
    ZR::ZRNetlink* const notifications = ZR::ZRNetlink::instance();
    notifications->setEndPointManager(&manager);
    notifications->addEventQueue(&queue);
    expect(notifications->addFamily("no_such_family") == ZR::ResultSuccess,
           "a family without a driver is added");
    expect(notifications->addFamily("no_such_family") == ZR::ResultAlreadyPresent,
           "a family is added once");
    notifications->addAllEndpointsToEndpointManager();
    expect(std::string(ZR::ZRNetlink::getFamilyName(0)) == "ANALOG", "families have names");

    ZR::ZRSignal signal;
    signal.value1 = 1;
    queue.postEvent(signal);
    ZR::ZREvent event;
    expect(queue.waitForEvent(event, 0) && event.value1 == 1, "an event passes the queue");
    expect(eventInterfaceWorksInC() == 1, "the event interface works in C");
}

void useFeatureDetection() {
    (void)ZR::ZRFeatureDetection::hasEncoder();
    (void)ZR::ZRFeatureDetection::hasTouchscreen();
    (void)ZR::ZRFeatureDetection::hasKeyboard();
    const bool first = ZR::ZRFeatureDetection::isRunningOnSingleCore();
    expect(ZR::ZRFeatureDetection::isRunningOnSingleCore() == first, "the processor stays");
}

/// An input with the settings that a derived class can see.
struct CameraInput : ZR::ZRGstreamerVideoInput {
    CameraInput() : ZR::ZRGstreamerVideoInput("camera") {}
    using ZR::ZRGstreamerVideoInput::videoSettings;
};

void useVideoInput() {
    using Input = ZR::ZRGstreamerVideoInput;
    Input* const camera = Input::getInstance("camera");
    expect(camera != nullptr && Input::getInstance("camera") == camera,
           "a video input is made once");
    expect(Input::instances.size() == 1 && !Input::initialSetupPending,
           "the first video input looks for the capture devices");
    expect(Input::palSize == "720x576" && Input::ntscSize == "720x480", "standards have sizes");

    const bool isDecoderOpen = Input::fileDescriptorsSub[1] > 0;
    expect(isDecoderOpen != Input::videoSubDevices[1].empty(), "a decoder that is found is open");
    if (!isDecoderOpen)
        expect(Input::detectVideoStandard(1) == 2, "a decoder that is not open has no standard");
    Input::setVideoStandard(1, 0);
    CameraInput input;
    input.setupCameraInput(1);
    expect(input.videoSettings.size() == 1, "a set-up makes the record of its interface");

    ZR::ZRVideoInputInterface* const face =
        ZR::ZRVideoInputInterface::getInstance(ZR::VideoInputGstreamer, "camera");
    expect(face == camera->qt_metacast("ZRVideoInputInterface"), "an input has its interface");
    expect(std::string(camera->metaObject()->className()) == "ZR::ZRGstreamerVideoInput",
           "an input is an object of Qt");
    int asked = 0;
    QObject::connect(camera, &Input::triggerTimedRestart,
                     [&asked](int timeout) { asked = timeout; });
    Q_EMIT camera->triggerTimedRestart(100);
    expect(asked == 100, "a signal reaches the application");
    camera->setStreamType(ZR::StreamUdpH264);
    face->setCurrentInterface(5006);
    face->start(1);
    face->stop(1);
    expect(face->isStopRequested() && face->getCurrentInterface() == 5006, "commands wait");
    expect(!face->isRunning(1) && camera->getPipeline() == nullptr, "nothing has been started");
    expect(camera->setRotation(1, -90) == 1 && face->getRotationSetting(1).degrees == 270,
           "a rotation waits for its items");
    expect(camera->getTransparentColor() == ZR::ZRColor(0x00010203), "an input has its colour");
    face->handleQueuedCommands();
    ZR::ZRVideoInputInterface::doQuit();

    ZR::VideoSetting setting;
    setting.rotation = 90;
    expect(setting.rotation.degrees == 90 && setting.mirror == ZR::VideoMirrorNone,
           "a setting takes a rotation");
}

}  // namespace

int main() {
    useCommon();
    useOperatingSystem();
    useUtility();
    useInputsAndOutputs();
    useDimmableDevices();
    useFeatureDetection();
    useCan();
    useEvents();
    useVideoInput();
    if (failures != 0)
        return EXIT_FAILURE;
    std::cout << "consumer: all good\n";
    return EXIT_SUCCESS;
}
