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

media_entity describedEntity(const media_entity_desc& info) {
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
        entities.push_back(describedEntity(info));
    }
}

const media_entity* entityOf(const std::vector<media_entity>& entities, unsigned int id) {
    const auto found = std::lower_bound(
        entities.begin(), entities.end(), id,
        [](const media_entity& entity, unsigned int wanted) { return entity.info.id < wanted; });
    return found != entities.end() && found->info.id == id ? &*found : nullptr;
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

/// Drops links of pads that are not there: nothing could name them. False when a link leads to an
/// entity that is not there, so that the graph is not whole.
bool checkLinks(const std::vector<media_entity>& entities, media_entity& entity) {
    bool isWhole = true;
    const auto isUnusable = [&](const media_link_desc& link) {
        const media_entity* const sink = entityOf(entities, link.sink.entity);
        isWhole = isWhole && sink != nullptr && link.source.entity == entity.info.id;
        return sink == nullptr || link.source.index >= entity.pads.size() ||
               link.sink.index >= sink->info.pads;
    };
    entity.links.erase(std::remove_if(entity.links.begin(), entity.links.end(), isUnusable),
                       entity.links.end());
    return isWhole;
}

}  // namespace

int enumerate(const Node& node, std::vector<media_entity>& entities) {
    media_device_info information{};
    int result = node.control(MEDIA_IOC_DEVICE_INFO, &information);
    if (result == 0)
        result = enumerateEntities(node, entities);
    bool isWhole = true;
    for (std::size_t i = 0; result == 0 && i < entities.size(); ++i) {
        result = enumeratePadsAndLinks(node, entities[i]);
        isWhole = checkLinks(entities, entities[i]) && isWhole;
    }
    if (result == 0 && !isWhole)
        result = -EINVAL;
    return result;
}

}  // namespace ZR::media_controller
