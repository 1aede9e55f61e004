#pragma once

#include <optional>
#include <string>

#include "tools/zrctl/video_play.h"

namespace zrctl {

/// What a stream is doing, as its user sees it.
enum class PlayState {
    None,
    Starting,    ///< was told to play and has shown nothing since
    Playing,     ///< new pictures are shown
    Waiting,     ///< no new picture: the wait item is shown, or the last picture stands
    Restarting,  ///< the library has scheduled a restart
    GaveUp       ///< the library restarts it no more
};

/// What the library's printed lines tell of a stream.
struct PlayNews {
    std::optional<long long> restartIn;  ///< milliseconds; a restart was scheduled
    bool gaveUp = false;
    std::string reason;  ///< why the last restart was scheduled

    /// Takes one line into account.
    void add(const std::string& line);
};

/// Tells of a stream's states as they change, and adds up what came of it. Times are milliseconds
/// from the start of the stream.
class PlayRecord {
  public:
    PlayRecord(const PlayRequest& request, bool json) : request_(request), json_(json) {}

    /// Shows a state that is another than the last one.
    /// @param detail  for people, empty for none
    void enter(PlayState state, long long now, const std::string& detail = "");
    PlayState state() const { return state_; }

    void setPictures(long long count) { pictures_ = count; }
    long long pictures() const { return pictures_; }
    void setFirstPicture(long long now) { firstPicture_ = now; }
    void countRestart() { ++restarts_; }
    long long restarts() const { return restarts_; }
    void setSnapshotWritten() { snapshotWritten_ = true; }

    /// Shows what came of it. @param error  empty after success
    /// @return the exit status
    int summarize(const std::string& error, long long now);

  private:
    void leave(long long now);
    std::string summaryText() const;

    PlayRequest request_;
    bool json_;
    PlayState state_ = PlayState::None;
    long long entered_ = 0;
    long long shown_ = 0;
    long long pictures_ = 0;
    long long restarts_ = 0;
    std::optional<long long> firstPicture_;
    bool snapshotWritten_ = false;
};

}  // namespace zrctl
