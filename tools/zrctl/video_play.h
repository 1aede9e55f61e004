#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/zrctl/arguments.h"

namespace zrctl {

/// What `zrctl video play` was asked for.
struct PlayRequest {
    int type = 0;          ///< the library's number of the stream
    std::string typeName;  ///< as it was given
    int port = 0;          ///< UDP streams
    std::string url;       ///< RTSP
    int camera = 0;        ///< camera, 1-based
    int rotation = 0;      ///< degrees
    int mirror = 0;
    std::optional<int> brightness, contrast, hue, saturation;  ///< camera
    int width = 0;                                             ///< of the window, in pixels
    int height = 0;
    std::string snapshot;              ///< absolute path, empty without one
    std::optional<long long> seconds;  ///< from the start of the stream
};

/// @throws UsageError for what cannot be played
PlayRequest parsePlay(const Words& words);

/// The GStreamer elements that a stream is built of and that this machine has not got, each once.
/// Loads the plug-ins of the others.
std::vector<std::string> missingElements(int type);

}  // namespace zrctl
