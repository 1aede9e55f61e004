#pragma once

#include <gst/gst.h>

#include <memory>

namespace ZR {

struct DropGstObject {
    void operator()(void* object) const { gst_object_unref(object); }
};
struct DropGstMessage {
    void operator()(GstMessage* message) const { gst_message_unref(message); }
};
struct DropGlibText {
    void operator()(char* text) const { g_free(text); }
};
struct DropGlibError {
    void operator()(GError* error) const { g_error_free(error); }
};

/// One reference of a GstObject.
template <typename Object>
using GstOwned = std::unique_ptr<Object, DropGstObject>;
using GstMessageOwned = std::unique_ptr<GstMessage, DropGstMessage>;
using GlibText = std::unique_ptr<char, DropGlibText>;
using GlibError = std::unique_ptr<GError, DropGlibError>;

/// Takes the floating reference of a new element; null stays null.
inline GstOwned<GstElement> takeFloating(GstElement* made) {
    if (made != nullptr)
        (void)gst_object_ref_sink(made);
    return GstOwned<GstElement>(made);
}

/// The element of this name, borrowed from the bin that keeps it; null when there is none.
inline GstElement* borrowByName(GstElement* bin, const char* name) {
    if (bin == nullptr || !GST_IS_BIN(bin))
        return nullptr;
    GstElement* const found = gst_bin_get_by_name(GST_BIN(bin), name);
    if (found != nullptr)
        gst_object_unref(found);
    return found;
}

/// The state of a pipeline, after a wait of at most this time while it changes.
inline GstState stateWithin(GstElement* pipeline, GstClockTime longest) {
    GstState state = GST_STATE_NULL;
    (void)gst_element_get_state(pipeline, &state, nullptr, longest);
    return state;
}

}  // namespace ZR
