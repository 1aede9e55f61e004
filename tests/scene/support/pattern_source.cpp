#include "tests/scene/support/pattern_source.h"

#include "tests/scene/support/pattern.h"

namespace ZR::test {

namespace {

constexpr int width = 320;
constexpr int height = 240;
/// Without padding, as videotestsrc makes frames of this size.
constexpr int lumaBytes = width * height;

void paint(GstBuffer* buffer) {
    GstMapInfo map{};
    if (!gst_buffer_map(buffer, &map, GST_MAP_WRITE))
        return;
    if (map.size >= lumaBytes * 3 / 2)
        paintPattern({map.data, map.data + lumaBytes, map.data + lumaBytes * 5 / 4},
                     {width, width / 2, width / 2}, width, height,
                     static_cast<int>(GST_BUFFER_OFFSET(buffer)));
    gst_buffer_unmap(buffer, &map);
}

GstPadProbeReturn paintBuffer(GstPad* /*pad*/, GstPadProbeInfo* info, gpointer /*data*/) {
    info->data = gst_buffer_make_writable(GST_PAD_PROBE_INFO_BUFFER(info));
    paint(GST_PAD_PROBE_INFO_BUFFER(info));
    return GST_PAD_PROBE_OK;
}

}  // namespace

void paintPatternInto(GstBin* bin) {
    GstElement* source = gst_bin_get_by_name(bin, "pattern");
    GstPad* pad = gst_element_get_static_pad(source, "src");
    gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, paintBuffer, nullptr, nullptr);
    gst_object_unref(pad);
    gst_object_unref(source);
}

}  // namespace ZR::test
