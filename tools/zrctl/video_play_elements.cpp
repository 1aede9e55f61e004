#include <gst/gst.h>

#include <algorithm>
#include <memory>

#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"
#include "tools/zrctl/video_play.h"

namespace zrctl {
namespace {

struct Unref {
    void operator()(gpointer object) const { gst_object_unref(object); }
};
using Feature = std::unique_ptr<GstPluginFeature, Unref>;

/// What the library's pipelines name, and what their parts need inside.
Words elementsOf(int type) {
    switch (type) {
        case ZR::StreamUdpH264:
            return {"udpsrc", "rtpjitterbuffer", "rtph264depay", "h264parse", "v4l2h264dec"};
        case ZR::StreamUdpJpeg:
            return {"udpsrc", "rtpjpegdepay", "jpegparse", "v4l2jpegdec"};
        case ZR::StreamRtsp:
            return {"rtspsrc", "rtpbin", "udpsrc", "rtph264depay", "h264parse", "v4l2h264dec"};
        default:
            return {"v4l2src", "capsfilter"};
    }
}

bool isUsable(const std::string& element) {
    const Feature found(GST_PLUGIN_FEATURE_CAST(gst_element_factory_find(element.c_str())));
    // The registry knows of plug-ins that cannot be loaded, too.
    return found && Feature(gst_plugin_feature_load(found.get()));
}

}  // namespace

std::vector<std::string> missingElements(int type) {
    Words missing = elementsOf(type);
    missing.insert(missing.end(), {"glupload", "glcolorconvert", "qmlglsink"});
    missing.erase(std::remove_if(missing.begin(), missing.end(), isUsable), missing.end());
    return missing;
}

}  // namespace zrctl
