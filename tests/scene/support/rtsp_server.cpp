// An RTSP server of the test picture on this machine, at rtsp://127.0.0.1:PORT/pattern, until it is
// killed. Usage: zr_rtsp_server good|tcp|refusing|hanging|silent PORT

#include <gst/rtsp-server/rtsp-server.h>
#include <sys/prctl.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/scene/support/pattern_source.h"
#include "tests/scene/support/ready_line.h"
#include "tests/scene/support/silent_rtsp_peer.h"

namespace {

constexpr char encoderText[] =
    " ! x264enc tune=zerolatency speed-preset=ultrafast key-int-max=5 bitrate=4000"
    " ! video/x-h264,profile=baseline ! rtph264pay name=pay0 config-interval=1 pt=96";

void paintMedia(GstRTSPMediaFactory* /*factory*/, GstRTSPMedia* media, gpointer /*data*/) {
    GstElement* element = gst_rtsp_media_get_element(media);
    ZR::test::paintPatternInto(GST_BIN(element));
    gst_object_unref(element);
}

GstRTSPMediaFactory* makeFactory(bool onlyTcp) {
    GstRTSPMediaFactory* factory = gst_rtsp_media_factory_new();
    const std::string text = "( " + std::string(ZR::test::patternLaunchText) + encoderText + " )";
    gst_rtsp_media_factory_set_launch(factory, text.c_str());
    gst_rtsp_media_factory_set_shared(factory, TRUE);
    if (onlyTcp)
        gst_rtsp_media_factory_set_protocols(factory, GST_RTSP_LOWER_TRANS_TCP);
    g_signal_connect(factory, "media-configure", G_CALLBACK(paintMedia), nullptr);
    return factory;
}

/// Without a stream at its path the server refuses whoever asks for it.
int serve(const std::string& mode, const char* port) {
    gst_init(nullptr, nullptr);
    GstRTSPServer* server = gst_rtsp_server_new();
    gst_rtsp_server_set_address(server, "127.0.0.1");
    gst_rtsp_server_set_service(server, port);
    if (mode != "refusing") {
        GstRTSPMountPoints* mounts = gst_rtsp_server_get_mount_points(server);
        gst_rtsp_mount_points_add_factory(mounts, "/pattern", makeFactory(mode == "tcp"));
        g_object_unref(mounts);
    }
    if (gst_rtsp_server_attach(server, nullptr) == 0)
        return EXIT_FAILURE;
    std::printf("%s\n", ZR::test::readyLine);
    std::fflush(stdout);
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
    return EXIT_SUCCESS;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) {
        std::fprintf(stderr, "Usage: zr_rtsp_server good|tcp|refusing|hanging|silent PORT\n");
        return EXIT_FAILURE;
    }
    // A test that dies leaves no server behind.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const std::string mode = arguments[1];
    using ZR::test::SilentPeer;
    if (mode == "hanging" || mode == "silent") {
        const SilentPeer kind = mode == "hanging" ? SilentPeer::Hanging : SilentPeer::WithoutData;
        return ZR::test::serveSilently(kind, std::atoi(arguments[2])) ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    return serve(mode, arguments[2]);
}
