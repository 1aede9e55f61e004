// When the decoder stand-ins are registered, and when they keep out of the way.

#include <gst/gst.h>
#include <gtest/gtest.h>

#include <string>

namespace {

constexpr const char* h264Name = "v4l2h264dec";
constexpr const char* jpegName = "v4l2jpegdec";

std::string pluginOf(const char* element) {
    GstElementFactory* factory = gst_element_factory_find(element);
    if (!factory)
        return "none";
    const char* name = gst_plugin_feature_get_plugin_name(GST_PLUGIN_FEATURE(factory));
    std::string plugin = name ? name : "none";
    gst_object_unref(factory);
    return plugin;
}

/// Loads the plug-in into this process, which the registry alone does not do.
bool loadStandIns() {
    GstPlugin* plugin = gst_plugin_load_by_name("zrdecoders");
    if (!plugin)
        return false;
    gst_object_unref(plugin);
    return true;
}

gboolean registerReal(GstPlugin* plugin) {
    GstElementFactory* identity = gst_element_factory_find("identity");
    GstPluginFeature* loaded = gst_plugin_feature_load(GST_PLUGIN_FEATURE(identity));
    const GType type = gst_element_factory_get_element_type(GST_ELEMENT_FACTORY(loaded));
    gst_object_unref(loaded);
    gst_object_unref(identity);
    return gst_element_register(plugin, h264Name, GST_RANK_PRIMARY, type);
}

/// A plug-in of this test with a "real" decoder of H.264, and none of JPEG.
void offerRealH264() {
    gst_plugin_register_static(GST_VERSION_MAJOR, GST_VERSION_MINOR, "realdecoders", "real",
                               registerReal, "1", GST_LICENSE_UNKNOWN, "test", "test", "test");
}

/// Forgets what the registry file says of the stand-ins: as if they had never been scanned.
void forgetStandIns() {
    GstPlugin* plugin = gst_registry_find_plugin(gst_registry_get(), "zrdecoders");
    ASSERT_NE(plugin, nullptr);
    gst_registry_remove_plugin(gst_registry_get(), plugin);
    gst_object_unref(plugin);
}

bool loadStandInsFromFile() {
    const std::string file = std::string(g_getenv("GST_PLUGIN_PATH")) + "/libgstzrdecoders.so";
    GstPlugin* plugin = gst_plugin_load_file(file.c_str(), nullptr);
    if (!plugin)
        return false;
    gst_object_unref(plugin);
    return true;
}

class DecoderPlugin : public testing::Test {
  protected:
    DecoderPlugin() { gst_init(nullptr, nullptr); }
};

TEST_F(DecoderPlugin, offers_both_names_where_no_real_decoder_exists) {
    EXPECT_EQ(pluginOf(h264Name), "zrdecoders");
    EXPECT_EQ(pluginOf(jpegName), "zrdecoders");
}

TEST_F(DecoderPlugin, is_never_chosen_by_itself) {
    for (const char* name : {h264Name, jpegName}) {
        GstElementFactory* factory = gst_element_factory_find(name);
        ASSERT_NE(factory, nullptr);
        EXPECT_EQ(gst_plugin_feature_get_rank(GST_PLUGIN_FEATURE(factory)), GST_RANK_NONE);
        gst_object_unref(factory);
    }
}

TEST_F(DecoderPlugin, takes_what_the_hardware_takes) {
    GstElement* h264 = gst_element_factory_make(h264Name, nullptr);
    GstElement* jpeg = gst_element_factory_make(jpegName, nullptr);
    ASSERT_TRUE(h264 && jpeg);
    for (GstElement* decoder : {h264, jpeg}) {
        GstPad* pad = gst_element_get_static_pad(decoder, "sink");
        GstCaps* caps = gst_pad_get_pad_template_caps(pad);
        GstCaps* expected = gst_caps_from_string(
            decoder == h264 ? "video/x-h264,stream-format=byte-stream,alignment=au" : "image/jpeg");
        EXPECT_TRUE(gst_caps_is_equal(caps, expected));
        gst_caps_unref(expected);
        gst_caps_unref(caps);
        gst_object_unref(pad);
        gst_object_unref(decoder);
    }
}

TEST_F(DecoderPlugin, leaves_a_name_alone_that_a_real_decoder_has_already) {
    forgetStandIns();
    offerRealH264();
    ASSERT_TRUE(loadStandInsFromFile());
    EXPECT_EQ(pluginOf(h264Name), "realdecoders");
    EXPECT_EQ(pluginOf(jpegName), "zrdecoders");
}

TEST_F(DecoderPlugin, gives_way_to_a_real_decoder_that_comes_later) {
    ASSERT_TRUE(loadStandIns());
    ASSERT_EQ(pluginOf(h264Name), "zrdecoders");
    offerRealH264();
    EXPECT_EQ(pluginOf(h264Name), "realdecoders");
    EXPECT_EQ(pluginOf(jpegName), "zrdecoders");
}

}  // namespace
