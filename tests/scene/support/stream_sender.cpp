// Sends the test picture, or what is none, to a UDP port of this machine until it is killed.
// Usage: zr_stream_sender h264|jpeg|junk PORT
// Alone for its side effect: zr_stream_sender registry

#include <arpa/inet.h>
#include <gst/gst.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "tests/scene/support/pattern_source.h"
#include "tests/scene/support/ready_line.h"

namespace {

constexpr char h264Text[] =
    " ! x264enc tune=zerolatency speed-preset=ultrafast key-int-max=5 bitrate=4000"
    " ! video/x-h264,profile=baseline ! rtph264pay config-interval=1 pt=96"
    " ! udpsink name=sink sync=false host=127.0.0.1 port=";
constexpr char jpegText[] =
    " ! jpegenc ! rtpjpegpay pt=26 ! udpsink name=sink sync=false host=127.0.0.1 port=";

/// About as many packets as a stream has.
constexpr useconds_t junkPause = 5000;

void sayReady() {
    std::printf("%s\n", ZR::test::readyLine);
    std::fflush(stdout);
}

GstPadProbeReturn firstBuffer(GstPad* /*pad*/, GstPadProbeInfo* /*info*/, gpointer /*data*/) {
    sayReady();
    return GST_PAD_PROBE_REMOVE;
}

void sayReadyWithFirstBuffer(GstElement* pipeline) {
    GstElement* sink = gst_bin_get_by_name(GST_BIN(pipeline), "sink");
    GstPad* pad = gst_element_get_static_pad(sink, "sink");
    constexpr auto data =
        static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_BUFFER_LIST);
    gst_pad_add_probe(pad, data, firstBuffer, nullptr, nullptr);
    gst_object_unref(pad);
    gst_object_unref(sink);
}

int sendPictures(const char* encoding, const char* port) {
    gst_init(nullptr, nullptr);
    const std::string text = std::string(ZR::test::patternLaunchText) + encoding + port;
    GError* error = nullptr;
    GstElement* pipeline = gst_parse_launch(text.c_str(), &error);
    if (error) {
        std::fprintf(stderr, "zr_stream_sender: %s\n", error->message);
        return EXIT_FAILURE;
    }
    ZR::test::paintPatternInto(GST_BIN(pipeline));
    sayReadyWithFirstBuffer(pipeline);
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    GstBus* bus = gst_element_get_bus(pipeline);
    // Ends by a signal; only a failure gets here.
    gst_message_unref(gst_bus_timed_pop_filtered(bus, GST_CLOCK_TIME_NONE, GST_MESSAGE_ERROR));
    std::fprintf(stderr, "zr_stream_sender: the pipeline failed\n");
    return EXIT_FAILURE;
}

/// An RTP header: of the expected stream, of another payload type, of another version.
std::vector<std::uint8_t> headerOf(unsigned int number) {
    const auto sequence = static_cast<std::uint16_t>(number);
    const std::uint8_t version = number % 3 == 2 ? 0x40 : 0x80;
    const std::uint8_t type = number % 3 == 1 ? 33 : 96;
    return {version, type, static_cast<std::uint8_t>(sequence >> 8),
            static_cast<std::uint8_t>(sequence)};
}

/// Four kinds in turn: corrupt payload, other stream, other version, nothing but random bytes. Some are
/// cut off within the header.
std::vector<std::uint8_t> junkPacket(unsigned int number, std::mt19937& random) {
    std::vector<std::uint8_t> packet =
        number % 4 == 3 ? std::vector<std::uint8_t>{} : headerOf(number);
    const std::size_t length = number % 7 == 0 ? 8 : 20 + random() % 1000;
    while (packet.size() < length)
        packet.push_back(static_cast<std::uint8_t>(random()));
    return packet;
}

int sendJunk(const char* port) {
    const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(static_cast<std::uint16_t>(std::atoi(port)));
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    std::mt19937 random(1);  // NOLINT(cert-msc51-cpp): the same junk in every run
    for (unsigned int number = 0;; ++number) {
        const std::vector<std::uint8_t> packet = junkPacket(number, random);
        // Refused as long as nobody listens.
        (void)::sendto(socket, packet.data(), packet.size(), 0, reinterpret_cast<sockaddr*>(&to),
                       sizeof to);
        if (number == 0)
            sayReady();
        ::usleep(junkPause);
    }
}

}  // namespace

int main(int count, char** arguments) {
    const std::string what = count > 1 ? arguments[1] : "";
    if (what == "registry") {
        gst_init(nullptr, nullptr);
        return EXIT_SUCCESS;
    }
    if (count != 3) {
        std::fprintf(stderr, "Usage: zr_stream_sender h264|jpeg|junk PORT\n");
        return EXIT_FAILURE;
    }
    // A test that dies leaves no sender behind.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (what == "junk")
        return sendJunk(arguments[2]);
    return sendPictures(what == "jpeg" ? jpegText : h264Text, arguments[2]);
}
