#include "platform/media_controller/pad_text_internal.h"

#include <algorithm>

namespace ZR::media_controller {
namespace {

/// Either quote ends a name, whichever began it: no name can hold one.
bool takeQuote(Text& text) {
    return text.take("'") || text.take("\"");
}

media_entity* entityByName(media_device& media, std::string_view name) {
    const auto found =
        std::find_if(media.entities.begin(), media.entities.end(),
                     [name](const media_entity& entity) { return entity.name == name; });
    return found != media.entities.end() ? &*found : nullptr;
}

/// Numbers carry the kernel's mark for the next entity too.
media_entity* entityByNumber(media_device& media, unsigned int number) {
    const bool isNext = (number & MEDIA_ENT_ID_FLAG_NEXT) != 0;
    const unsigned int id = number & ~MEDIA_ENT_ID_FLAG_NEXT;
    const auto found =
        std::find_if(media.entities.begin(), media.entities.end(), [=](const media_entity& entity) {
            return isNext ? entity.info.id > id : entity.info.id == id;
        });
    return found != media.entities.end() ? &*found : nullptr;
}

media_entity* takeNamed(media_device& media, Text& text) {
    const Text begin = text;
    const std::string_view name = text.takeUntil("'\"");
    if (!takeQuote(text))
        return nullptr;
    media_entity* const entity = entityByName(media, name);
    if (entity == nullptr)
        text = begin;
    return entity;
}

media_entity* takeNumbered(media_device& media, Text& text) {
    const Text begin = text;
    media_entity* const entity = entityByNumber(media, text.takeNumber());
    if (entity == nullptr)
        text = begin;
    return entity;
}

}  // namespace

bool Pad::isSource() const {
    return (entity->pads[index].flags & MEDIA_PAD_FL_SOURCE) != 0;
}

Pad padOf(media_device& media, const media_pad_desc& description) {
    return {entityByNumber(media, description.entity), description.index};
}

Pad takePad(media_device& media, Text& text) {
    text.skipBlanks();
    media_entity* const entity =
        takeQuote(text) ? takeNamed(media, text) : takeNumbered(media, text);
    if (entity == nullptr)
        return {};
    text.skipBlanks();
    if (!text.take(":"))
        return {};
    text.skipBlanks();
    const Text begin = text;
    const unsigned int index = text.takeNumber();
    if (index >= entity->pads.size()) {
        text = begin;
        return {};
    }
    text.skipBlanks();
    return {entity, index};
}

media_link_desc* takeLink(media_device& media, Text& text) {
    const Pad source = takePad(media, text);
    if (!source || !text.take("->"))
        return nullptr;
    const Pad sink = takePad(media, text);
    if (!sink)
        return nullptr;
    for (media_link_desc& link : source.entity->links)
        if (link.source.index == source.index && link.sink.entity == sink.entity->info.id &&
            link.sink.index == sink.index)
            return &link;
    return nullptr;
}

bool takeLinkFlags(Text& text, unsigned int& flags) {
    text.skipBlanks();
    if (!text.take("["))
        return false;
    flags = text.takeNumber();
    text.skipBlanks();
    if (!text.take("]"))
        return false;
    text.skipBlanks();
    return true;
}

}  // namespace ZR::media_controller
