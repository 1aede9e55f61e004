#include <cerrno>
#include <memory>
#include <new>
#include <utility>

#include "platform/media_controller/enumeration_internal.h"

using ZR::media_controller::Node;

media_device* media_device_new(const char* devnode) {
    if (devnode == nullptr)
        return nullptr;
    try {
        return std::make_unique<media_device>(media_device{devnode}).release();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void media_device_unref(media_device* media) {
    const std::unique_ptr<media_device> owned(media);
}

int media_device_enumerate(media_device* media) {
    if (media == nullptr)
        return -EINVAL;
    if (!media->entities.empty())
        return 0;
    try {
        Node node;
        std::vector<media_entity> entities;
        int result = node.open(media->devnode.c_str());
        if (result == 0)
            result = ZR::media_controller::enumerate(node, entities);
        if (result == 0)
            media->entities = std::move(entities);
        return result;
    } catch (const std::bad_alloc&) {
        return -ENOMEM;
    }
}

unsigned int media_get_entities_count(media_device* media) {
    return media != nullptr ? static_cast<unsigned int>(media->entities.size()) : 0;
}

media_entity* media_get_entity(media_device* media, unsigned int index) {
    if (index >= media_get_entities_count(media))
        return nullptr;
    return &media->entities[index];
}

const media_entity_desc* media_entity_get_info(media_entity* entity) {
    return entity != nullptr ? &entity->info : nullptr;
}

const char* media_entity_get_devname(media_entity* entity) {
    return entity != nullptr ? entity->devname.c_str() : "";
}
