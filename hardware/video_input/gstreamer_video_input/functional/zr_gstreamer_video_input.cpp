#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

#include <exception>
#include <utility>

#include "hardware/video_input/gstreamer_video_input/functional/video_standard_internal.h"

namespace ZR {

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
std::map<std::string, std::unique_ptr<ZRGstreamerVideoInput>> ZRGstreamerVideoInput::instances;

ZRGstreamerVideoInput* ZRGstreamerVideoInput::getInstance(const std::string& name) {
    const auto known = instances.find(name);
    if (known != instances.end())
        return known->second.get();
    doInitialSetup();
    try {
        auto made = std::make_unique<ZRGstreamerVideoInput>(name);
        return (instances[name] = std::move(made)).get();
    } catch (const std::exception&) {
        return nullptr;
    }
}

ZRGstreamerVideoInput::ZRGstreamerVideoInput(const std::string& key) : name(key) {}

ZRGstreamerVideoInput::~ZRGstreamerVideoInput() = default;

}  // namespace ZR
