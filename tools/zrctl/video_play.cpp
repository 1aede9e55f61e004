#include "tools/zrctl/video_play.h"

#include <gst/gst.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <stdexcept>

#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"
#include "tools/zrctl/output.h"
#include "tools/zrctl/video.h"
#include "tools/zrctl/video_player.h"
#include "tools/zrctl/virtual_display.h"

namespace zrctl {
namespace {

constexpr int leastScreenWidth = 1024;
constexpr int leastScreenHeight = 768;

/// What GLib and GStreamer say by themselves: to be heard, or not at all.
GLogWriterOutput sayMessage(GLogLevelFlags, const GLogField* fields, gsize count, gpointer) {
    for (gsize i = 0; i < count; ++i) {
        if (std::string(fields[i].key) == "MESSAGE" && fields[i].length < 0)
            printError(std::string("library: ") + static_cast<const char*>(fields[i].value));
    }
    return G_LOG_WRITER_HANDLED;
}

GLogWriterOutput dropMessage(GLogLevelFlags, const GLogField*, gsize, gpointer) {
    return G_LOG_WRITER_HANDLED;
}

/// @return empty, or why the stream cannot be built here
std::string checkElements(int type) {
    GError* error = nullptr;
    if (gst_init_check(nullptr, nullptr, &error) == FALSE) {
        const std::string text = error != nullptr ? error->message : "unknown";
        g_clear_error(&error);
        return "GStreamer does not start: " + text;
    }
    std::string names;
    for (const std::string& element : missingElements(type))
        names += (names.empty() ? "" : ", ") + element;
    return names.empty() ? ""
                         : "GStreamer lacks " + names +
                               "; install what holds it, or name its folder in GST_PLUGIN_PATH";
}

/// @return empty, or why the camera cannot be shown
std::string checkCamera(int camera) {
    using Cameras = ZR::ZRGstreamerVideoInput;
    Cameras::doInitialSetup();
    if (!Cameras::videoDevices[camera - 1].empty())
        return "";
    return "camera " + std::to_string(camera) +
           " has no capture node; 'zrctl video topology' shows the decoders and their nodes";
}

/// @return empty, or why no file can be made there
std::string checkSnapshot(const std::string& path) {
    if (path.empty())
        return "";
    const std::string folder = std::filesystem::path(path).parent_path().string();
    if (::access(folder.c_str(), W_OK | X_OK) == 0 && !std::filesystem::is_directory(path))
        return "";
    return "snapshot " + path + " cannot be written; name a file in a folder that can be";
}

/// What takes no display, before there is one.
std::string checkRequest(const PlayRequest& request) {
    std::string error = checkSnapshot(request.snapshot);
    if (error.empty() && request.type == ZR::StreamCamera)
        error = checkCamera(request.camera);
    return error.empty() ? checkElements(request.type) : error;
}

int showStream(const PlayRequest& request, PlayRecord& record, const EndRequest& endRequest) {
    std::optional<VirtualDisplay> display;
    if (!hasDisplay()) {
        display.emplace(std::max(request.width, leastScreenWidth),
                        std::max(request.height, leastScreenHeight));
        (void)::setenv("DISPLAY", display->name().c_str(), 1);
    }
    VideoPlayer player(request, record);
    const std::string error = player.play(endRequest);
    return record.summarize(error, player.now());
}

}  // namespace

int runVideoPlay(const Words& words, const CommonOptions& common) {
    const PlayRequest request = parsePlay(words);
    // Before any thread, which takes over what is blocked.
    const EndRequest endRequest;
    g_log_set_writer_func(common.verbose ? sayMessage : dropMessage, nullptr, nullptr);
    takeQtMessages(common.verbose, common.json);
    PlayRecord record(request, common.json);
    const std::string obstacle = checkRequest(request);
    if (!obstacle.empty())
        return record.summarize(obstacle, 0);
    try {
        return showStream(request, record, endRequest);
    } catch (const OutputError& error) {
        // A reader that has seen enough ends it as Ctrl-C does.
        if (error.readerLeft() && record.pictures() > 0)
            return statusSuccess;
        throw;
    } catch (const std::runtime_error& error) {
        return record.summarize(error.what(), 0);
    }
}

}  // namespace zrctl
