#include <cerrno>

#include "platform/media_controller/pad_text_internal.h"

namespace ZR::media_controller {
namespace {

/// The handle's graph follows: formats are carried on over the links that are on.
int setUp(const media_device& media, media_link_desc& link, unsigned int flags) {
    Node node;
    int result = node.open(media.devnode.c_str());
    if (result < 0)
        return result;
    media_link_desc wanted{};
    wanted.source = {link.source.entity, link.source.index, MEDIA_PAD_FL_SOURCE, {}};
    wanted.sink = {link.sink.entity, link.sink.index, MEDIA_PAD_FL_SINK, {}};
    // The kernel refuses a request that leaves this mark out.
    wanted.flags = flags | (link.flags & MEDIA_LNK_FL_IMMUTABLE);
    result = node.control(MEDIA_IOC_SETUP_LINK, &wanted);
    if (result == 0)
        link.flags = wanted.flags;
    return result;
}

int parseAndSetUp(media_device& media, Text& text) {
    media_link_desc* const link = takeLink(media, text);
    unsigned int flags = 0;
    if (link == nullptr || !takeLinkFlags(text, flags))
        return -EINVAL;
    return setUp(media, *link, flags);
}

}  // namespace
}  // namespace ZR::media_controller

int media_parse_setup_link(media_device* media, const char* p, char** endp) {
    ZR::media_controller::Text text(p);
    const int result = media != nullptr && p != nullptr
                           ? ZR::media_controller::parseAndSetUp(*media, text)
                           : -EINVAL;
    if (endp != nullptr)
        *endp = const_cast<char*>(text.position());
    return result;
}
