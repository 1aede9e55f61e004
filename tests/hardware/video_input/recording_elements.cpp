#include "tests/hardware/video_input/recording_elements.h"

#include <QQuickItem>
#include <atomic>
#include <cstdlib>
#include <map>
#include <utility>
#include <vector>

#include "tests/support/substitutes/capture_call_log.h"

namespace ZR::test {
namespace {

struct Property {
    const char* name;
    GType type;
};

struct Factory {
    const char* name;
    bool hasSink;
    bool hasSource;
    std::vector<Property> properties;
};

const std::vector<Factory>& factories() {
    static const std::vector<Factory> all{
        {"v4l2src",
         false,
         true,
         {{"device", G_TYPE_STRING},
          {"min-buffers", G_TYPE_INT},
          {"brightness", G_TYPE_INT},
          {"contrast", G_TYPE_INT},
          {"hue", G_TYPE_INT},
          {"saturation", G_TYPE_INT}}},
        {"udpsrc",
         false,
         true,
         {{"timeout", G_TYPE_UINT64},
          {"buffer-size", G_TYPE_INT},
          {"port", G_TYPE_INT},
          {"caps", GST_TYPE_CAPS}}},
        {"rtspsrc",
         false,
         true,
         {{"udp-buffer-size", G_TYPE_INT},
          {"timeout", G_TYPE_UINT64},
          {"latency", G_TYPE_UINT},
          {"drop-on-latency", G_TYPE_BOOLEAN},
          {"protocols", G_TYPE_UINT},
          {"location", G_TYPE_STRING}}},
        {"capsfilter", true, true, {{"caps", GST_TYPE_CAPS}}},
        {"rtpjitterbuffer", true, true, {{"do-lost", G_TYPE_BOOLEAN}}},
        {"rtph264depay", true, true, {}},
        {"rtpjpegdepay", true, true, {}},
        {"h264parse", true, true, {}},
        {"jpegparse", true, true, {}},
        {"v4l2h264dec", true, true, {}},
        {"v4l2jpegdec", true, true, {}},
        {"glupload", true, true, {}},
        {"glcolorconvert", true, true, {}},
        {"qmlglsink",
         true,
         false,
         {{"widget", G_TYPE_POINTER},
          {"sync", G_TYPE_BOOLEAN},
          {"force-aspect-ratio", G_TYPE_BOOLEAN}}},
    };
    return all;
}

std::map<std::pair<std::string, GstStateChange>, GstStateChangeReturn>& answers() {
    static std::map<std::pair<std::string, GstStateChange>, GstStateChangeReturn> all;
    return all;
}

std::atomic<int> elementsMade = 0;
std::atomic<int> elementsAlive = 0;

struct RecordingClass {
    GstElementClass parent;
    const Factory* factory;
};

struct RecordingElement {
    GstElement parent;
    std::map<std::string, GValue>* values;
};

GstElementClass* elementClass = nullptr;

const Factory& factoryOf(gpointer element) {
    return *G_TYPE_INSTANCE_GET_CLASS(element, G_OBJECT_TYPE(element), RecordingClass)->factory;
}

std::string textOf(const GValue& value) {
    if (G_VALUE_HOLDS_POINTER(&value)) {
        const auto* const item = static_cast<const QQuickItem*>(g_value_get_pointer(&value));
        return item == nullptr ? "null" : item->objectName().toStdString();
    }
    if (G_VALUE_HOLDS_STRING(&value))
        return g_value_get_string(&value);
    char* const text = G_VALUE_TYPE(&value) == GST_TYPE_CAPS
                           ? gst_caps_to_string(gst_value_get_caps(&value))
                           : gst_value_serialize(&value);
    std::string copy = text == nullptr ? "null" : text;
    g_free(text);
    return copy;
}

void setProperty(GObject* object, guint /*number*/, const GValue* value, GParamSpec* spec) {
    GValue& stored = (*reinterpret_cast<RecordingElement*>(object)->values)[spec->name];
    if (G_IS_VALUE(&stored))
        g_value_unset(&stored);
    g_value_init(&stored, G_VALUE_TYPE(value));
    g_value_copy(value, &stored);
    CaptureCallLog::add([&] {
        return std::string(factoryOf(object).name) + ' ' + spec->name + '=' + textOf(stored);
    });
}

void getProperty(GObject* object, guint /*number*/, GValue* value, GParamSpec* spec) {
    const auto& values = *reinterpret_cast<RecordingElement*>(object)->values;
    const auto found = values.find(spec->name);
    if (found != values.end())
        g_value_copy(&found->second, value);
}

void finish(GObject* object) {
    auto* const values = reinterpret_cast<RecordingElement*>(object)->values;
    for (auto& [name, value] : *values)
        g_value_unset(&value);
    delete values;
    --elementsAlive;
    G_OBJECT_CLASS(elementClass)->finalize(object);
}

GstStateChangeReturn changeState(GstElement* element, GstStateChange step) {
    const auto found = answers().find({factoryOf(element).name, step});
    if (found != answers().end() && found->second != GST_STATE_CHANGE_SUCCESS)
        return found->second;
    return elementClass->change_state(element, step);
}

GParamSpec* specOf(const Property& property) {
    constexpr auto flags = static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS);
    const char* const name = property.name;
    switch (property.type) {
        case G_TYPE_BOOLEAN:
            return g_param_spec_boolean(name, name, name, FALSE, flags);
        case G_TYPE_INT:
            return g_param_spec_int(name, name, name, G_MININT, G_MAXINT, 0, flags);
        case G_TYPE_UINT:
            return g_param_spec_uint(name, name, name, 0, G_MAXUINT, 0, flags);
        case G_TYPE_UINT64:
            return g_param_spec_uint64(name, name, name, 0, G_MAXUINT64, 0, flags);
        case G_TYPE_STRING:
            return g_param_spec_string(name, name, name, nullptr, flags);
        case G_TYPE_POINTER:
            return g_param_spec_pointer(name, name, name, flags);
        default:
            return g_param_spec_boxed(name, name, name, property.type, flags);
    }
}

void addPad(GstElementClass* type, const char* name, GstPadDirection direction) {
    GstCaps* const caps = gst_caps_new_any();
    gst_element_class_add_pad_template(type,
                                       gst_pad_template_new(name, direction, GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);
}

void initialiseClass(gpointer type, gpointer data) {
    auto* const recording = static_cast<RecordingClass*>(type);
    recording->factory = static_cast<const Factory*>(data);
    elementClass = GST_ELEMENT_CLASS(g_type_class_peek(GST_TYPE_ELEMENT));
    auto* const objects = G_OBJECT_CLASS(type);
    objects->set_property = setProperty;
    objects->get_property = getProperty;
    objects->finalize = finish;
    guint number = 0;
    for (const Property& property : recording->factory->properties)
        g_object_class_install_property(objects, ++number, specOf(property));
    auto* const elements = GST_ELEMENT_CLASS(type);
    elements->change_state = changeState;
    gst_element_class_set_static_metadata(elements, recording->factory->name, "Test", "Records",
                                          "Test");
    if (recording->factory->hasSink)
        addPad(elements, "sink", GST_PAD_SINK);
    if (recording->factory->hasSource)
        addPad(elements, "src", GST_PAD_SRC);
}

void initialise(GTypeInstance* instance, gpointer type) {
    reinterpret_cast<RecordingElement*>(instance)->values = new std::map<std::string, GValue>;
    ++elementsMade;
    ++elementsAlive;
    for (const char* const name : {"sink", "src"}) {
        GstPadTemplate* const pad =
            gst_element_class_get_pad_template(GST_ELEMENT_CLASS(type), name);
        if (pad != nullptr)
            gst_element_add_pad(GST_ELEMENT(instance), gst_pad_new_from_template(pad, name));
    }
}

/// Types stay for the life of the process.
GType typeOf(const Factory& factory) {
    const std::string name = std::string("ZRRecording_") + factory.name;
    const GType known = g_type_from_name(name.c_str());
    if (known != G_TYPE_INVALID)
        return known;
    GTypeInfo info{};
    info.class_size = sizeof(RecordingClass);
    info.class_init = initialiseClass;
    info.class_data = &factory;
    info.instance_size = sizeof(RecordingElement);
    info.instance_init = initialise;
    return g_type_register_static(GST_TYPE_ELEMENT, name.c_str(), &info, GTypeFlags{});
}

}  // namespace

void RecordingElements::registerAll() {
    ::setenv("GST_REGISTRY_DISABLE", "yes", 1);
    gst_init(nullptr, nullptr);
    answers().clear();
    addAll();
}

void RecordingElements::addAll() {
    for (const Factory& factory : factories())
        gst_element_register(nullptr, factory.name, GST_RANK_NONE, typeOf(factory));
}

void RecordingElements::remove(const std::string& factory) {
    GstRegistry* const registry = gst_registry_get();
    GstPluginFeature* const feature = gst_registry_lookup_feature(registry, factory.c_str());
    gst_registry_remove_feature(registry, feature);
    gst_object_unref(feature);
}

void RecordingElements::answer(const std::string& factory, GstStateChange step,
                               GstStateChangeReturn result) {
    answers()[{factory, step}] = result;
}

std::string RecordingElements::valueOf(GstElement* element, const std::string& property) {
    const auto& values = *reinterpret_cast<RecordingElement*>(element)->values;
    const auto found = values.find(property);
    return found == values.end() ? "unset" : textOf(found->second);
}

int RecordingElements::made() {
    return elementsMade;
}

int RecordingElements::alive() {
    return elementsAlive;
}

}  // namespace ZR::test
