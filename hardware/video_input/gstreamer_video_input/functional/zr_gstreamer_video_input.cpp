#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

#include <exception>
#include <utility>

#include "hardware/video_input/gstreamer_video_input/functional/gst_handles_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/gstreamer_start_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/input_registry_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/scene_watch_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/video_standard_internal.h"

namespace ZR {
namespace {

/// Ends the class's threads before anything that they use is destroyed.
struct EndOfProcess {
    ~EndOfProcess() { endGstreamerThreads(); }
};

}  // namespace

// All in one unit, the objects last: what they use is made before them and destroyed after them.
std::string ZRGstreamerVideoInput::videoDevices[inputCount];
std::string ZRGstreamerVideoInput::videoSubDevices[inputCount];
int ZRGstreamerVideoInput::fileDescriptors[inputCount] = {-1, -1, -1};
int ZRGstreamerVideoInput::fileDescriptorsSub[inputCount] = {-1, -1, -1};
std::string ZRGstreamerVideoInput::twName;
std::string ZRGstreamerVideoInput::advName;
bool ZRGstreamerVideoInput::runningOnQuadCore = false;
media_device* ZRGstreamerVideoInput::mediaDevice = nullptr;
bool ZRGstreamerVideoInput::initialSetupPending = true;
std::string ZRGstreamerVideoInput::palSize = "720x576";
std::string ZRGstreamerVideoInput::ntscSize = "720x480";
int ZRGstreamerVideoInput::lastSetStandard[inputCount] = {standardUnknown, standardUnknown,
                                                          standardUnknown};
bool ZRGstreamerVideoInput::gstInitDone = false;
bool ZRGstreamerVideoInput::quit = false;
bool ZRGstreamerVideoInput::busThreadLaunched = false;
ZRThread ZRGstreamerVideoInput::gstBusThread;
std::map<std::string, std::unique_ptr<ZRGstreamerVideoInput>> ZRGstreamerVideoInput::instances;
static const EndOfProcess endOfProcess;

ZRGstreamerVideoInput* ZRGstreamerVideoInput::getInstance(const std::string& name) {
    const auto known = instances.find(name);
    if (known != instances.end())
        return known->second.get();
    doInitialSetup();
    try {
        auto made = std::make_unique<ZRGstreamerVideoInput>(name);
        const std::lock_guard<std::mutex> lock(registryGrowth());
        return (instances[name] = std::move(made)).get();
    } catch (const std::exception&) {
        return nullptr;
    }
}

ZRGstreamerVideoInput::ZRGstreamerVideoInput(const std::string& key) : name(key) {
    if (!busThreadLaunched) {
        busThreadLaunched = true;
        // Without the thread operations wait in vain, say so, and go on; the next object tries again.
        busThreadLaunched = launchGstreamerStart();
    }
    // By name: the signals and slots with their numbers are part of the interface.
    connect(this, SIGNAL(errorDetected(int)), this, SLOT(timedRestartStream(int)),
            Qt::QueuedConnection);
    connect(this, SIGNAL(triggerTimedRestart(int)), this, SLOT(timedRestartStream(int)),
            Qt::QueuedConnection);
    connect(this, SIGNAL(showVideoItem(bool)), this, SLOT(doShowVideoItem(bool)),
            Qt::QueuedConnection);
}

ZRGstreamerVideoInput::~ZRGstreamerVideoInput() {
    // Not virtual from here on, and kept: a stop that nobody carries out any more.
    ZRGstreamerVideoInput::stop(0);
    reset();
    SceneWatch::get().forget(this);
}

int ZRGstreamerVideoInput::start(unsigned short /*input*/) {
    pushCommandToQueue(CommandStart);
    return 0;
}

int ZRGstreamerVideoInput::stop(unsigned short /*input*/) {
    pushCommandToQueue(CommandStop);
    return 0;
}

bool ZRGstreamerVideoInput::isRunning(unsigned short /*input*/) {
    return pipeline != nullptr && stateWithin(pipeline, GST_SECOND) == GST_STATE_PLAYING;
}

int ZRGstreamerVideoInput::setCurrentInterface(int value) {
    const bool camera = streamType == StreamCamera;
    int& current = camera ? currentInput : udpPort;
    if (current == value)
        return 0;
    current = value;
    if (!camera)
        currentInput = 4;  // kept: a number that no camera has marks a network stream
    pushCommandToQueue(CommandChangeInterface);
    return 0;
}

int ZRGstreamerVideoInput::getCurrentInterface() const {
    return streamType == StreamCamera ? currentInput : udpPort;
}

bool ZRGstreamerVideoInput::isInitialized() {
    return initialized;
}

void ZRGstreamerVideoInput::setStreamType(int type) {
    streamType = type;
}

int ZRGstreamerVideoInput::getStreamType() const {
    return streamType;
}

void ZRGstreamerVideoInput::setRTSPURL(const std::string& url) {
    rtspURL = url;
}

std::string ZRGstreamerVideoInput::getRTSPURL() const {
    return rtspURL;
}

ZRColor ZRGstreamerVideoInput::getTransparentColor() const {
    return transparentColor;
}

GstElement* ZRGstreamerVideoInput::getPipeline() const {
    return pipeline;
}

}  // namespace ZR
