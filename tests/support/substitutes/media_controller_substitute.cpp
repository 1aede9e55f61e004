#include "tests/support/substitutes/media_controller_substitute.h"

#include <algorithm>
#include <cstring>

#include "tests/support/substitutes/capture_call_log.h"

// The system's header files are those of C and say nothing of linkage to C++.
extern "C" {
#include <mediactl/mediactl.h>
#include <mediactl/v4l2subdev.h>
}

using ZR::test::CaptureCallLog;
using ZR::test::MediaControllerSubstitute;
using ZR::test::SimulatedEntity;

// What the library holds only pointers to.
struct media_device {};
struct media_entity {
    const SimulatedEntity* simulated;
    media_entity_desc description;
};

namespace ZR::test {

std::vector<SimulatedEntity> MediaControllerSubstitute::entities;
bool MediaControllerSubstitute::canBeMade = true;
int MediaControllerSubstitute::enumerationResult = 0;
int MediaControllerSubstitute::linkResult = 0;
int MediaControllerSubstitute::formatsResult = 0;

void MediaControllerSubstitute::reset() {
    entities.clear();
    canBeMade = true;
    enumerationResult = linkResult = formatsResult = 0;
}

namespace {

media_device device;
media_entity entity;

/// Logs a call; one with another device than the one handed out shows as such.
template <typename Text>
void log(const char* function, const media_device* given, Text text) {
    CaptureCallLog::add([&] {
        return std::string(function) + (given == &device ? "" : " of another device") + text();
    });
}

std::string nothing() {
    return {};
}

}  // namespace
}  // namespace ZR::test

using ZR::test::log;
using ZR::test::nothing;

extern "C" {

media_device* media_device_new(const char* path) {
    CaptureCallLog::add([path] { return std::string("media_device_new ") + path; });
    return MediaControllerSubstitute::canBeMade ? &ZR::test::device : nullptr;
}

int media_device_enumerate(media_device* media) {
    log("media_device_enumerate", media, nothing);
    return MediaControllerSubstitute::enumerationResult;
}

unsigned int media_get_entities_count(media_device* media) {
    log("media_get_entities_count", media, nothing);
    return static_cast<unsigned int>(MediaControllerSubstitute::entities.size());
}

// There is one entity at a time: the pointer of the last is gone with the next.
media_entity* media_get_entity(media_device* media, unsigned int index) {
    log("media_get_entity", media, [index] { return ' ' + std::to_string(index); });
    const SimulatedEntity& found = MediaControllerSubstitute::entities.at(index);
    media_entity& entity = ZR::test::entity;
    entity.simulated = &found;
    std::memset(&entity.description, '#', sizeof entity.description);
    std::memset(entity.description.name, 0, sizeof entity.description.name);
    std::memcpy(entity.description.name, found.name.data(),
                std::min(found.name.size(), sizeof entity.description.name));
    return found.isNull ? nullptr : &entity;
}

const media_entity_desc* media_entity_get_info(media_entity* entity) {
    CaptureCallLog::add([entity] { return "media_entity_get_info " + entity->simulated->name; });
    return entity->simulated->hasInfo ? &entity->description : nullptr;
}

const char* media_entity_get_devname(media_entity* entity) {
    CaptureCallLog::add([entity] { return "media_entity_get_devname " + entity->simulated->name; });
    return entity->simulated->hasNode ? entity->simulated->node.c_str() : nullptr;
}

int media_parse_setup_link(media_device* media, const char* text, char** end) {
    log(end != nullptr ? "media_parse_setup_link " : "media_parse_setup_link without an end ",
        media, [text] { return std::string(text); });
    return MediaControllerSubstitute::linkResult;
}

#if ZRAPI_SUBDEV_FORMATS_TAKE_WHICH
int v4l2_subdev_parse_setup_formats(media_device* media, v4l2_subdev_format_whence /*which*/,
                                    const char* text) {
#else
int v4l2_subdev_parse_setup_formats(media_device* media, const char* text) {
#endif
    log("v4l2_subdev_parse_setup_formats ", media, [text] { return std::string(text); });
    return MediaControllerSubstitute::formatsResult;
}

}  // extern "C"
