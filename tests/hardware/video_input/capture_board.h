#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"
#include "tests/support/substitutes/capture_call_log.h"
#include "tests/support/substitutes/file_read_substitute.h"
#include "tests/support/substitutes/media_controller_substitute.h"
#include "tests/support/substitutes/video_device_substitute.h"

namespace ZR::test {

using Calls = std::vector<std::string>;
using Media = MediaControllerSubstitute;
using Devices = VideoDeviceSubstitute;

inline constexpr char dualLiteTree[] = "maker,board\0fsl,imx6dl";
inline constexpr char quadTree[] = "maker,board\0fsl,imx6q";

/// An input whose settings the tests can see.
struct OpenInput : ZRGstreamerVideoInput {
    OpenInput() : ZRGstreamerVideoInput("input") {}

    using ZRGstreamerVideoInput::name;
    using ZRGstreamerVideoInput::videoSettings;

    /// The standard of an interface, which must be there.
    int standard(unsigned short interface) const {
        return videoSettings.at(interface).videoStandard;
    }
};

/// A terminal with both decoders and all capture nodes, of which nothing is known yet: the
/// descriptors 10 and 12 are the shared node and decoder, 11 and 13 those of input 1.
class CaptureTest : public testing::Test {
  protected:
    CaptureTest();
    ~CaptureTest() override;

    static void setDeviceTree(const std::string& text);

    /// Makes the terminal as discovery finds it on one of the variants; no call is left in the log.
    static void discover(bool quadCore);

    static const Calls& calls() { return CaptureCallLog::calls; }

    /// The calls whose text begins with @p beginning.
    static Calls callsOf(const std::string& beginning);

    /// The calls up to now; the log is empty then.
    static Calls takeCalls();
};

/// The calls that a discovery ends with, from the first open to the last link, on a terminal whose
/// nodes have these paths.
Calls openingNodes(const std::string& shared, const std::string& sharedDecoder,
                   const std::string& second, const std::string& secondDecoder);

/// A text with the NUL that a device tree ends each name with.
template <std::size_t size>
std::string treeText(const char (&text)[size]) {
    return {text, size};
}

}  // namespace ZR::test
