#pragma once

#include <gst/gst.h>

namespace ZR::test {

/// Start of a launch text that yields the test picture, 25 times a second: 320 x 240 pixels, I420. The
/// element "pattern" in it has to be handed to paintPatternInto().
constexpr char patternLaunchText[] =
    "videotestsrc name=pattern is-live=true pattern=black ! "
    "video/x-raw,format=I420,width=320,height=240,framerate=25/1";

/// Lets the element "pattern" of a bin deliver the test picture instead of black.
void paintPatternInto(GstBin* bin);

}  // namespace ZR::test
