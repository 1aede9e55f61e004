#pragma once

#include <gst/gst.h>

#include <string>

/// GStreamer elements of the board's names that do nothing but note what is asked of them, and fail
/// where they are told to. A program that registers them needs none of GStreamer's plug-ins.
///
/// Each property that is set goes into CaptureCallLog: "v4l2src device=/dev/video1", an item by its
/// object name, "qmlglsink widget=videoItem".

namespace ZR::test {

struct RecordingElements {
    /// Initialises GStreamer without plug-ins and brings in all elements that the streams are made of.
    static void registerAll();

    /// Brings in the elements of a process that has initialised GStreamer itself.
    static void addAll();

    /// Takes one away again.
    static void remove(const std::string& factory);

    /// The answer of each later element of this name to one step of its state, GST_STATE_CHANGE_...
    static void answer(const std::string& factory, GstStateChange step,
                       GstStateChangeReturn result);

    /// What an element was last given, as in the log; "unset" for what it was not.
    static std::string valueOf(GstElement* element, const std::string& property);

    /// How many elements of ours were made.
    static int made();

    /// How many elements of ours are alive.
    static int alive();
};

}  // namespace ZR::test
