#include <algorithm>
#include <cerrno>
#include <cstring>

#include "platform/media_controller/enumeration_internal.h"

namespace ZR::media_controller {
namespace {

bool hasNode(const media_entity_desc& info) {
    const unsigned int kind = info.type & MEDIA_ENT_TYPE_MASK;
    return (kind == MEDIA_ENT_T_DEVNODE || kind == MEDIA_ENT_T_V4L2_SUBDEV) &&
           (info.dev.major != 0 || info.dev.minor != 0);
}

media_entity entityOf(const media_entity_desc& info) {
    media_entity entity;
    entity.info = info;
    entity.name.assign(info.name, ::strnlen(info.name, sizeof info.name));
    entity.info.name[sizeof info.name - 1] = '\0';
    if (hasNode(info))
        entity.devname = devicePath(info.dev.major, info.dev.minor);
    return entity;
}

int enumerateEntities(const Node& node, std::vector<media_entity>& entities) {
    std::size_t padsAndLinks = 0;
    for (unsigned int last = 0;; last = entities.back().info.id) {
        media_entity_desc info{};
        info.id = last | MEDIA_ENT_ID_FLAG_NEXT;
        const int result = node.control(MEDIA_IOC_ENUM_ENTITIES, &info);
        if (result == -EINVAL)
            return 0;
        if (result < 0)
            return result;
        padsAndLinks += std::size_t{info.pads} + info.links;
        // The numbers rise, or the kernel would never come to an end.
        if (info.id <= last || (info.id & MEDIA_ENT_ID_FLAG_NEXT) != 0 ||
            entities.size() == mostEntities || padsAndLinks > mostPadsAndLinks)
            return -EOVERFLOW;
        entities.push_back(entityOf(info));
    }
}

bool hasPad(const std::vector<media_entity>& entities, const media_pad_desc& pad) {
    return std::any_of(entities.begin(), entities.end(), [&pad](const media_entity& entity) {
        return entity.info.id == pad.entity && pad.index < entity.pads.size();
    });
}

int enumeratePadsAndLinks(const Node& node, media_entity& entity) {
    entity.pads.resize(entity.info.pads);
    entity.links.resize(entity.info.links);
    // Null would tell the kernel that the one or the other is not asked for.
    media_pad_desc noPad{};
    media_link_desc noLink{};
    media_links_enum wanted{};
    wanted.entity = entity.info.id;
    wanted.pads = entity.pads.empty() ? &noPad : entity.pads.data();
    wanted.links = entity.links.empty() ? &noLink : entity.links.data();
    return node.control(MEDIA_IOC_ENUM_LINKS, &wanted);
}

/// Only links between pads that are there stay.
void dropUnknownLinks(std::vector<media_entity>& entities) {
    for (media_entity& entity : entities) {
        const auto isUnknown = [&](const media_link_desc& link) {
            return link.source.entity != entity.info.id ||
                   link.source.index >= entity.pads.size() || !hasPad(entities, link.sink);
        };
        entity.links.erase(std::remove_if(entity.links.begin(), entity.links.end(), isUnknown),
                           entity.links.end());
    }
}

}  // namespace

int enumerate(const Node& node, std::vector<media_entity>& entities) {
    media_device_info information{};
    int result = node.control(MEDIA_IOC_DEVICE_INFO, &information);
    if (result == 0)
        result = enumerateEntities(node, entities);
    for (std::size_t i = 0; result == 0 && i < entities.size(); ++i)
        result = enumeratePadsAndLinks(node, entities[i]);
    if (result == 0)
        dropUnknownLinks(entities);
    return result;
}

}  // namespace ZR::media_controller
