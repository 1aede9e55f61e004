#pragma once

#include <chrono>
#include <mutex>
#include <optional>
#include <string>

#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"
#include "tools/zrctl/end_request.h"
#include "tools/zrctl/library_voice.h"
#include "tools/zrctl/play_window.h"
#include "tools/zrctl/video_play.h"
#include "tools/zrctl/video_play_record.h"

namespace zrctl {

/// Shows one stream in a window. One per process: its end is that of the library's threads.
class VideoPlayer {
  public:
    VideoPlayer(const PlayRequest& request, PlayRecord& record);
    VideoPlayer(const VideoPlayer&) = delete;
    VideoPlayer& operator=(const VideoPlayer&) = delete;
    ~VideoPlayer();

    /// Plays until the end is asked for, the window is closed, the time is over, the snapshot is
    /// written, or the library gives up.
    /// @return empty, or why it is no success
    std::string play(const EndRequest& endRequest);

    /// Milliseconds since the start of the stream.
    long long now() const;

  private:
    std::string awaitFrame(const EndRequest& endRequest);
    std::string prepare(const EndRequest& endRequest);
    void configure();
    void step();
    void followPipeline();
    void followState();
    bool isFinished();
    std::string conclude(bool asked) const;

    PlayRequest request_;
    PlayRecord& record_;
    PlayWindow window_;
    std::mutex newsMutex_;
    PlayNews news_;  ///< written by all threads that print
    LibraryListener listener_;
    ZR::ZRGstreamerVideoInput& input_;
    unsigned short key_ = 0;  ///< of the stored settings that the library uses for the stream
    Element pipeline_;        ///< kept, so that the next one is known by its address
    std::chrono::steady_clock::time_point start_;
    long long lastNews_ = 0;  ///< when the last new picture was seen
    bool restartScheduled_ = false;
    bool finished_ = false;
    std::string failure_;
};

}  // namespace zrctl
