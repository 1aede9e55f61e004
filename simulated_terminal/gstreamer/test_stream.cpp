// Sends a moving test picture until it is killed, as network cameras do. Says "ready" once it is at
// work. Usage: zr_test_stream h264 PORT | jpeg PORT | rtsp PORT

#include <gst/gst.h>
#include <gst/rtsp-server/rtsp-server.h>

#include <cstdio>
#include <string>

namespace {

constexpr char picture[] =
    "videotestsrc is-live=true ! video/x-raw,format=I420,width=400,height=300,framerate=25/1 ! ";
// Frequent key pictures: whoever comes later sees something at once.
constexpr char h264[] =
    "x264enc tune=zerolatency speed-preset=ultrafast key-int-max=5 ! "
    "video/x-h264,profile=baseline ! rtph264pay name=pay0 config-interval=1 pt=96";
constexpr char jpeg[] = "jpegenc ! rtpjpegpay pt=26";
constexpr char rtspPath[] = "/test";

void sayReady() {
    std::puts("ready");
    std::fflush(stdout);
}

/// @return false when the stream could not be started; else it does not come back before its end
bool sendTo(const std::string& port, const char* encoding) {
    const std::string text =
        std::string(picture) + encoding + " ! udpsink host=127.0.0.1 port=" + port;
    GError* error = nullptr;
    GstElement* const pipeline = gst_parse_launch(text.c_str(), &error);
    if (error != nullptr) {
        std::fprintf(stderr, "zr_test_stream: %s\n", error->message);
        g_clear_error(&error);
        return false;
    }
    if (gst_element_set_state(pipeline, GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE)
        return false;
    sayReady();
    GstBus* const bus = gst_element_get_bus(pipeline);
    GstMessage* const end = gst_bus_timed_pop_filtered(
        bus, GST_CLOCK_TIME_NONE, static_cast<GstMessageType>(GST_MESSAGE_ERROR | GST_MESSAGE_EOS));
    gst_message_unref(end);
    gst_object_unref(bus);
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(pipeline);
    return false;
}

bool serve(const std::string& port) {
    GstRTSPServer* const server = gst_rtsp_server_new();
    gst_rtsp_server_set_address(server, "127.0.0.1");
    gst_rtsp_server_set_service(server, port.c_str());
    GstRTSPMediaFactory* const factory = gst_rtsp_media_factory_new();
    const std::string text = std::string("( ") + picture + h264 + " )";
    gst_rtsp_media_factory_set_launch(factory, text.c_str());
    GstRTSPMountPoints* const paths = gst_rtsp_server_get_mount_points(server);
    gst_rtsp_mount_points_add_factory(paths, rtspPath, factory);
    g_object_unref(paths);
    if (gst_rtsp_server_attach(server, nullptr) == 0) {
        std::fprintf(stderr, "zr_test_stream: port %s is in use\n", port.c_str());
        return false;
    }
    sayReady();
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
    return true;
}

}  // namespace

int main(int count, char** arguments) {
    gst_init(&count, &arguments);
    const std::string kind = count == 3 ? arguments[1] : "";
    if (kind == "h264")
        return sendTo(arguments[2], h264) ? 0 : 1;
    if (kind == "jpeg")
        return sendTo(arguments[2], jpeg) ? 0 : 1;
    if (kind == "rtsp")
        return serve(arguments[2]) ? 0 : 1;
    std::fputs("Usage: zr_test_stream h264|jpeg|rtsp PORT\n", stderr);
    return 2;
}
