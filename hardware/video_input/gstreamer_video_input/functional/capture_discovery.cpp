#include <fcntl.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <string>

#include "hardware/guarded_services_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/capture_discovery_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/media_controller_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

namespace ZR {
namespace {

using Input = ZRGstreamerVideoInput;

constexpr char compatibleFile[] = "/proc/device-tree/compatible";
constexpr char mediaDevicePath[] = "/dev/media0";

/// Runs one step of the discovery. There may be no memory for a text: then this step ends there and
/// the next one follows, as after any other failure.
template <typename Step>
void attempt(Step step) {
    try {
        step();
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): discovery is silent
    }
}

void detectVariant() {
    std::string compatible;
    if (readText(compatibleFile, &compatible) == 0)
        Input::runningOnQuadCore = lastCompatibleComponent(compatible) != dualLiteComponent;
}

void recordEntity(std::string_view name, const char* path) {
    switch (captureEntity(name, Input::runningOnQuadCore)) {
        case CaptureEntity::SharedDecoder:
            Input::twName = name;
            Input::videoSubDevices[0] = path;
            Input::videoSubDevices[2] = path;
            break;
        case CaptureEntity::SecondDecoder:
            Input::advName = name;
            Input::videoSubDevices[1] = path;
            break;
        case CaptureEntity::SecondNode:
            Input::videoDevices[1] = path;
            break;
        case CaptureEntity::SharedNode:
            Input::videoDevices[0] = path;
            Input::videoDevices[2] = path;
            break;
        case CaptureEntity::None:
            break;
    }
}

void findEntities() {
    Input::mediaDevice = media_device_new(mediaDevicePath);
    // The system's library takes no null device.
    if (Input::mediaDevice == nullptr || media_device_enumerate(Input::mediaDevice) != 0)
        return;
    const unsigned int count = media_get_entities_count(Input::mediaDevice);
    for (unsigned int i = 0; i < count; ++i) {
        media_entity* const entity = media_get_entity(Input::mediaDevice, i);
        if (entity == nullptr)
            continue;
        const media_entity_desc* const info = media_entity_get_info(entity);
        if (info == nullptr)
            continue;
        const char* const node = media_entity_get_devname(entity);
        attempt([&] {
            recordEntity({info->name, ::strnlen(info->name, sizeof info->name)},
                         node == nullptr ? "" : node);
        });
    }
}

int openNode(const std::string& path) {
    int descriptor = -1;
    do {
        descriptor = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

/// The inputs 0 and 2 share their descriptors: plain numbers, which outlive every object.
void openNodes() {
    Input::fileDescriptors[0] = openNode(Input::videoDevices[0]);
    Input::fileDescriptors[2] = Input::fileDescriptors[0];
    Input::fileDescriptorsSub[0] = openNode(Input::videoSubDevices[0]);
    Input::fileDescriptorsSub[2] = Input::fileDescriptorsSub[0];
    Input::fileDescriptors[1] = openNode(Input::videoDevices[1]);
    Input::fileDescriptorsSub[1] = openNode(Input::videoSubDevices[1]);
}

void enableLinks() {
    if (Input::mediaDevice == nullptr)
        return;
    for (const std::string& link :
         captureLinks(Input::twName, Input::advName, Input::runningOnQuadCore)) {
        char* end = nullptr;
        (void)media_parse_setup_link(Input::mediaDevice, link.c_str(), &end);
    }
}

}  // namespace

void ZRGstreamerVideoInput::doInitialSetup() {
    if (!initialSetupPending)
        return;
    // Cleared first: a discovery that failed is not repeated.
    initialSetupPending = false;
    attempt(detectVariant);
    attempt(findEntities);
    openNodes();
    attempt(enableLinks);
}

}  // namespace ZR
