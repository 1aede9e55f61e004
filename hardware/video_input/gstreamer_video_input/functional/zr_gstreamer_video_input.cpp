#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

#include <exception>
#include <utility>

namespace ZR {

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
