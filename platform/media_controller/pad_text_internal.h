#pragma once

#include "platform/media_controller/media_graph_internal.h"
#include "platform/media_controller/text_internal.h"

namespace ZR::media_controller {

/// A pad of the graph; none when there is no entity.
struct Pad {
    media_entity* entity = nullptr;
    unsigned int index = 0;

    explicit operator bool() const { return entity != nullptr; }
    bool isSource() const;
};

/// The pad that a link of the graph leads to.
Pad padOf(media_device& media, const media_pad_desc& description);

/// Takes a pad, "'entity':0" or "1:0", and the blanks around it. Where there is none, the text
/// stands where it went wrong.
Pad takePad(media_device& media, Text& text);

/// Takes two pads that a link leads from and to, "'source':0 -> 'sink':1"; null when they are not
/// there or not linked.
media_link_desc* takeLink(media_device& media, Text& text);

/// Takes flags, "[1]", with the blanks around; false when they are not there.
bool takeLinkFlags(Text& text, unsigned int& flags);

}  // namespace ZR::media_controller
