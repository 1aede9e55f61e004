#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "board.h"
#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

/// What tests of the cameras need: the board's parts by the kernel's own names, the texts that set
/// the paths up, and programs that know nothing of the library.

namespace ZR::test {

using Lines = std::vector<std::string>;

constexpr char pal[] = "720x576";
constexpr char ntsc[] = "720x480";

/// Whether the board has the quad processor's paths.
bool isQuadBoard();

/// Name of the capture node's entity, of the inputs 0 and 2 or of input 1.
std::string captureEntity(int input);

/// Name of the decoder's entity of an input; empty when the board has none.
std::string decoderEntity(int input);

/// The node of an entity, as sysfs names it; empty when there is none.
std::string nodeOf(const std::string& entity);

/// The knob folder of an input's capture node.
std::string captureKnobs(int input);

/// The knob folder of an input's decoder.
std::string decoderKnobs(int input);

/// The knob folder of the multiplexer of an input's path.
std::string muxKnobs(int input);

/// The links of both paths, each a text for media-ctl, in the order in which they are enabled.
Lines pathLinks();

/// The formats of an input's path, a text for media-ctl.
std::string pathFormats(int input, const std::string& size);

/// Texts with a comma between each two, as media-ctl takes them.
std::string joined(const Lines& texts);

/// What media-ctl prints of the whole graph.
std::string graphByMediaCtl();

/// What the camera of an input sends, as its knob takes it: "pal", "ntsc", "0x1000".
void plugInCamera(int input, const std::string& standard);

/// Makes all entities, links, formats, standards and controls as they are after a start.
void renewGraph();

/// Begins each case with a new graph, cameras that send PAL, no failure, and an empty log.
class CameraBoard : public testing::Test {
  protected:
    void SetUp() override;
};

/// The library's object after discovery, with its settings in sight.
class Cameras : public ZRGstreamerVideoInput {
  public:
    Cameras() : ZRGstreamerVideoInput("cameras") { doInitialSetup(); }

    /// The standard that is stored for an input: 0 PAL, 1 NTSC, 2 not known.
    int standardOf(int input);

    /// Sets an input up; what that prints.
    std::string printedBySetup(int input);

    /// Sets an input up; the lines that this adds to the board's log.
    Lines loggedBySetup(int input);
};

/// Those of the lines that begin with a text.
Lines beginningWith(const std::string& begin, const Lines& lines);

}  // namespace ZR::test
