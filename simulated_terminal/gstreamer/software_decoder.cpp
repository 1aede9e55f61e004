#include "software_decoder.h"

namespace {

struct SoftwareDecoder {
    GstBin bin;
};

struct SoftwareDecoderClass {
    GstBinClass bin;
    const DecoderKind* kind;
};

const DecoderKind& kindOf(gpointer objectClass) {
    return *static_cast<SoftwareDecoderClass*>(objectClass)->kind;
}

GstElement* makeSoftware(const DecoderKind& kind) {
    for (const char* name : kind.softwareNames) {
        GstElement* software = name ? gst_element_factory_make(name, nullptr) : nullptr;
        if (software)
            return software;
    }
    return nullptr;
}

/// The pads are there also without software inside: a launch text then still builds, as with hardware
/// that fails only when it is started.
void addPad(GstElement* bin, GstElement* software, const char* name) {
    GstPadTemplate* pads = gst_element_class_get_pad_template(GST_ELEMENT_GET_CLASS(bin), name);
    GstPad* target = software ? gst_element_get_static_pad(software, name) : nullptr;
    gst_element_add_pad(bin, target ? gst_ghost_pad_new_from_template(name, target, pads)
                                    : gst_ghost_pad_new_no_target_from_template(name, pads));
    if (target)
        gst_object_unref(target);
}

void initObject(GTypeInstance* instance, gpointer objectClass) {
    GstElement* software = makeSoftware(kindOf(objectClass));
    if (software)
        gst_bin_add(GST_BIN(instance), software);
    addPad(GST_ELEMENT(instance), software, "sink");
    addPad(GST_ELEMENT(instance), software, "src");
}

GstStateChangeReturn changeState(GstElement* element, GstStateChange transition) {
    const DecoderKind& kind = kindOf(G_OBJECT_GET_CLASS(element));
    if (transition == GST_STATE_CHANGE_NULL_TO_READY && GST_BIN_NUMCHILDREN(element) == 0) {
        GST_ELEMENT_ERROR(element, CORE, MISSING_PLUGIN, (nullptr),
                          ("%s needs %s or %s", kind.element, kind.softwareNames[0],
                           kind.softwareNames[1] ? kind.softwareNames[1] : "nothing else"));
        return GST_STATE_CHANGE_FAILURE;
    }
    auto* base = static_cast<GstElementClass*>(g_type_class_peek(GST_TYPE_BIN));
    return base->change_state(element, transition);
}

void addTemplate(GstElementClass* element, const char* name, GstPadDirection direction,
                 const char* text) {
    GstCaps* caps = gst_caps_from_string(text);
    gst_element_class_add_pad_template(element,
                                       gst_pad_template_new(name, direction, GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);
}

void initClass(gpointer objectClass, gpointer data) {
    const auto* kind = static_cast<const DecoderKind*>(data);
    static_cast<SoftwareDecoderClass*>(objectClass)->kind = kind;
    auto* element = GST_ELEMENT_CLASS(objectClass);
    element->change_state = changeState;
    addTemplate(element, "sink", GST_PAD_SINK, kind->sinkCaps);
    addTemplate(element, "src", GST_PAD_SRC, "video/x-raw");
    gst_element_class_set_static_metadata(element, kind->description, "Codec/Decoder/Video",
                                          "Stands for a board's hardware decoder",
                                          "Makers of the simulated terminal");
}

}  // namespace

GType registerSoftwareDecoder(const DecoderKind& kind) {
    GTypeInfo info{};
    info.class_size = sizeof(SoftwareDecoderClass);
    info.class_init = initClass;
    info.class_data = &kind;
    info.instance_size = sizeof(SoftwareDecoder);
    info.instance_init = initObject;
    return g_type_register_static(GST_TYPE_BIN, kind.type, &info, GTypeFlags{});
}
