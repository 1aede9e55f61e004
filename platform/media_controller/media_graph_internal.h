#pragma once

#include <linux/media.h>

#include <string>
#include <vector>

#include "mediactl/mediactl.h"
#include "platform/media_controller/node_internal.h"

/// What the handles of mediactl.h stand for: the graph as it was enumerated.

struct media_entity {
    media_entity_desc info{};            ///< as the kernel gave it, the name ended by a NUL
    std::string name;                    ///< all of its 32 bytes, where there is no NUL in them
    std::string devname;                 ///< path of its node, empty for none
    std::vector<media_pad_desc> pads;    ///< by index
    std::vector<media_link_desc> links;  ///< those that leave it, in the kernel's order
    ZR::media_controller::Node node{};   ///< open from the first format on

    bool isSubdevice() const {
        return (info.type & MEDIA_ENT_TYPE_MASK) == MEDIA_ENT_T_V4L2_SUBDEV;
    }
};

struct media_device {
    std::string devnode;
    std::vector<media_entity> entities{};
};
