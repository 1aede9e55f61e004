#pragma once

#include <string_view>

namespace ZR {

/// What a message of a pipeline's bus tells an input.
enum class BusNews {
    Unexpected,
    Ignored,
    EndOfStream,
    Error,
    Warning,
    UdpTimeout,         ///< a second without a packet
    SourceDescription,  ///< an RTSP server describes what it sends
    AsyncDone,          ///< the first picture is there
    Quality,            ///< pictures are late, so there are some
    StreamStart,
};

enum class RestartWish { None, IfOnScreen, IfOnScreenUnlessStopped };

/// What an input does about it.
struct BusReaction {
    bool streaming;                ///< the flag from now on
    bool clearsRtspStart = false;  ///< no data is owed any more
    RestartWish restart = RestartWish::None;
    std::string_view line = {};  ///< printed, if not empty
};

/// A stream that has given no data since its start or its last time-out is not restarted by an end
/// or a time-out: its sender has never been there.
constexpr BusReaction reactionTo(BusNews news, bool streaming) {
    switch (news) {
        case BusNews::EndOfStream:
            if (streaming)
                return {false, false, RestartWish::IfOnScreen, "STREAM TIMEOUT (EOS)!"};
            break;
        case BusNews::UdpTimeout:
            if (streaming)
                return {false, false, RestartWish::IfOnScreenUnlessStopped, "STREAM TIMED OUT!"};
            break;
        case BusNews::Error:
            return {streaming, false, RestartWish::IfOnScreen};
        case BusNews::SourceDescription:
            if (!streaming)
                return {true, true, RestartWish::None,
                        "application/x-rtp-source-sdes => should be running"};
            return {true, true};
        case BusNews::AsyncDone:
        case BusNews::StreamStart:
            return {true, !streaming};
        case BusNews::Quality:
            return {true};
        case BusNews::Unexpected:
        case BusNews::Ignored:
        case BusNews::Warning:
            break;
    }
    return {streaming};
}

}  // namespace ZR
