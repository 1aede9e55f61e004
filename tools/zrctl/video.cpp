#include "tools/zrctl/video.h"

namespace zrctl {

const char* const videoHelp = R"(Usage: zrctl video ACTION [ARGUMENT...] [--json] [--verbose]

Moving pictures, and the media controller that the analog cameras' come through.

Actions:
  play --type TYPE [OPTION...]
                          show a stream in a window, or take a picture of it
  topology [--dot | --svg] [--device PATH]
                          draw the graph of a media controller, /dev/media0
                          without --device: entities, pads, links, and the
                          formats that are set now. --dot writes it in the
                          language of Graphviz, --svg as a picture, which takes
                          Graphviz's program 'dot'
  standard CAMERA         ask the decoder of camera 1, 2 or 3 which television
                          standard its signal has, PAL or NTSC

Types of play, and their options:
  udp-h264, udp-jpeg      RTP to a UDP port of this machine: --port N, 5004
                          without it
  rtsp                    H.264 from a server: --url rtsp://HOST[:PORT]/PATH
  camera                  an analog camera: --input 1 to 3, 1 without it;
                          --brightness, --contrast, --hue, --saturation N in the
                          driver's range
Options of all types:
  --rotation DEGREES      clockwise
  --mirror N              1 left and right, 2 top and bottom, 3 both
  --size WIDTHxHEIGHT     of the window, 800x480 without it
  --snapshot FILE.png     write the window as a picture once the stream is shown,
                          and end
  --seconds N             end after N seconds; with --snapshot the longest time
                          to wait for the picture, 15 without it

play ends with Ctrl-C, with its window, with the time, with the snapshot, or when
the library gives up; it succeeds when a picture was shown. Without a display it
runs one that nobody sees (Xvfb). It writes each state with the time since the
start of the stream, and at its end how long and how many pictures were shown, how
often the library restarted the stream, and when the first picture came. A picture
counts when a frame was drawn with it: neither a frame without a new picture, nor
a picture that the next one overtook.
  starting    it plays, and has shown nothing since
  playing     new pictures are shown
  waiting     no new picture for 2 s, or the library shows its wait item
  restarting  the library rebuilds the stream after a time
  gave up     it does so no more, after ten times

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
"standardCode", "said", "result", "resultText"}. play gives {"state",
"milliseconds"} with "detail" where there is one for each state, and at last
{"type", "shownMilliseconds", "pictures", "restarts", "firstPictureMilliseconds",
"snapshot"}.
)";

int runVideo(const Words& words, const CommonOptions& common) {
    return runAction(
        "video",
        {{"play", runVideoPlay}, {"topology", runVideoTopology}, {"standard", runVideoStandard}},
        words, common);
}

}  // namespace zrctl
