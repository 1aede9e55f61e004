#include "tools/zrctl/video.h"

namespace zrctl {

const char* const videoHelp = R"(Usage: zrctl video ACTION [ARGUMENT...] [--json] [--verbose]

The analog cameras: the media controller that their pictures come through.

Actions:
  topology [--dot | --svg] [--device PATH]
                          draw the graph of a media controller, /dev/media0
                          without --device: entities, pads, links, and the
                          formats that are set now. --dot writes it in the
                          language of Graphviz, --svg as a picture, which takes
                          Graphviz's program 'dot'
  standard CAMERA         ask the decoder of camera 1, 2 or 3 which television
                          standard its signal has, PAL or NTSC

topology changes nothing. It shows the ways that are enabled first, pad by pad
from the decoder to the capture node, then all entities. Formats are written as
media-ctl takes them; a video node shows its own. "-" stands for what a node
does not tell, also because it cannot be opened. In the drawings of Graphviz
enabled links are bold and green, those that are off dashed and grey.

standard finds the cameras first, as every application does that starts: that
enables the links from each decoder to its capture node. It changes no format
and no standard. What the library does, and zrctl shows as it is:
  No signal counts as PAL, without a word.
  What is neither PAL nor NTSC counts as PAL, and the library says so.
  Cameras 1 and 3 share a decoder: both show what is selected on it now.

JSON: topology gives {"device", "driver", "model", "serial", "bus", "entities":
[...], "links": [...]}, standard {"camera", "decoder", "standard",
"standardCode", "said", "result", "resultText"}.
)";

int runVideo(const Words& words, const CommonOptions& common) {
    return runAction("video", {{"topology", runVideoTopology}, {"standard", runVideoStandard}},
                     words, common);
}

}  // namespace zrctl
