// The plug-in "zrdecoders": software under the names of the board's hardware decoders.

#include <linux/videodev2.h>

#include "kernel_decoder.h"
#include "software_decoder.h"

namespace {

constexpr char pluginName[] = "zrdecoders";

constexpr DecoderKind h264Kind = {
    "v4l2h264dec",
    "ZrSimulatedH264Decoder",
    "Simulated H.264 decoder",
    "video/x-h264, stream-format=(string)byte-stream, alignment=(string)au",
    {"avdec_h264", "openh264dec"}};
constexpr DecoderKind jpegKind = {"v4l2jpegdec",
                                  "ZrSimulatedJpegDecoder",
                                  "Simulated JPEG decoder",
                                  "image/jpeg",
                                  {"jpegdec", nullptr}};

bool isOfferedByOthers(const char* element) {
    GstPluginFeature* feature = gst_registry_lookup_feature(gst_registry_get(), element);
    if (!feature)
        return false;
    // Ours from the last scan is no other.
    const bool others = g_strcmp0(gst_plugin_feature_get_plugin_name(feature), pluginName) != 0;
    gst_object_unref(feature);
    return others;
}

/// The registry alone does not tell: plug-ins are scanned in a process that knows of no other yet. What
/// the kernel offers does, as the real decoders are registered by it.
bool registerUnlessReal(GstPlugin* plugin, const DecoderKind& kind,
                        std::initializer_list<std::uint32_t> formats) {
    if (isOfferedByOthers(kind.element) || hasKernelDecoder(formats))
        return true;
    return gst_element_register(plugin, kind.element, GST_RANK_NONE, registerSoftwareDecoder(kind));
}

gboolean initPlugin(GstPlugin* plugin) {
    // A device that comes or goes makes GStreamer scan this plug-in again, as it does the real one.
    gst_plugin_add_dependency_simple(plugin, nullptr, "/dev", "video",
                                     GST_PLUGIN_DEPENDENCY_FLAG_FILE_NAME_IS_PREFIX);
    return registerUnlessReal(plugin, h264Kind, {V4L2_PIX_FMT_H264, V4L2_PIX_FMT_H264_NO_SC}) &&
           registerUnlessReal(plugin, jpegKind, {V4L2_PIX_FMT_JPEG, V4L2_PIX_FMT_MJPEG});
}

}  // namespace

#define PACKAGE "simulated_terminal"  // wanted by the macro
GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, zrdecoders,
                  "Software under the names of the board's hardware decoders", initPlugin, "1.0",
                  GST_LICENSE_UNKNOWN, "simulated terminal", "https://localhost/")
