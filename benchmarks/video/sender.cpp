// Sends moving pictures to UDP ports of this machine, the same to each, until its input ends.
// Usage: zrapi_video_sender h264|jpeg WIDTH HEIGHT RATE KEYS PORT...   (RATE pictures a second, every
// KEYS-th a key picture). Commands on standard input: "off" holds the packets back, "on" lets them go
// again.

#include <gst/gst.h>
#include <sys/prctl.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "hardware/video_input/gstreamer_video_input/functional/gst_handles_internal.h"

namespace {

constexpr std::size_t firstPort = 5;

std::string encodingText(const std::string& encoding, const std::string& keys) {
    if (encoding == "jpeg")
        return "jpegenc ! rtpjpegpay pt=26";
    return "x264enc tune=zerolatency speed-preset=ultrafast bitrate=4000 threads=1 key-int-max=" +
           keys + " ! video/x-h264,profile=baseline ! rtph264pay config-interval=1 pt=96";
}

std::string launchText(const std::vector<std::string>& words) {
    std::string clients;
    for (std::size_t port = firstPort; port < words.size(); ++port)
        clients += (clients.empty() ? "" : ",") + ("127.0.0.1:" + words[port]);
    return "videotestsrc is-live=true pattern=smpte ! video/x-raw,format=I420,width=" + words[1] +
           ",height=" + words[2] + ",framerate=" + words[3] + "/1 ! " +
           encodingText(words[0], words[4]) +
           " ! valve name=valve ! multiudpsink sync=false clients=" + clients;
}

}  // namespace

int main(int count, char** arguments) {
    const std::vector<std::string> words(arguments + 1, arguments + count);
    if (words.size() <= firstPort) {
        std::fprintf(stderr,
                     "Usage: zrapi_video_sender h264|jpeg WIDTH HEIGHT RATE KEYS PORT...\n");
        return EXIT_FAILURE;
    }
    (void)::prctl(PR_SET_PDEATHSIG, SIGKILL);
    gst_init(nullptr, nullptr);
    const auto pipeline = ZR::takeFloating(gst_parse_launch(launchText(words).c_str(), nullptr));
    GstElement* const valve = ZR::borrowByName(pipeline.get(), "valve");
    if (valve == nullptr)
        return EXIT_FAILURE;
    (void)gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
    for (std::string command; std::getline(std::cin, command);)
        g_object_set(valve, "drop", command == "off" ? TRUE : FALSE, nullptr);
    (void)gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    return EXIT_SUCCESS;
}
