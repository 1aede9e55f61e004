#pragma once

namespace ZR::test {

/// What an RTSP server that is none does with the connections it accepts.
enum class SilentPeer {
    Hanging,     ///< never answers
    WithoutData  ///< answers every request well, and sends no media
};

/// Serves an RTSP port of this machine until the process is killed.
/// @return false when the port cannot be used; never comes back otherwise
bool serveSilently(SilentPeer kind, int port);

}  // namespace ZR::test
