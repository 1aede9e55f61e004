#pragma once

#include <mediactl/mediactl.h>
#include <mediactl/v4l2subdev.h>

#ifndef ZRAPI_SUBDEV_FORMATS_TAKE_WHICH
#error "whoever provides v4l2_subdev_parse_setup_formats says which of its two forms it has"
#endif

namespace ZR {

/// Sets the formats that a text names, in its order, up to the first pad that refuses.
inline int setPadFormats(media_device* device, const char* text) {
#if ZRAPI_SUBDEV_FORMATS_TAKE_WHICH
    return v4l2_subdev_parse_setup_formats(device, V4L2_SUBDEV_FORMAT_ACTIVE, text);
#else
    return v4l2_subdev_parse_setup_formats(device, text);
#endif
}

}  // namespace ZR
