#pragma once

#include <gst/gst.h>

#include <QQuickItem>
#include <functional>
#include <memory>

namespace ZR::benchmarks {

/// Shows one stream in the scene: by the library, or by a bare program that does the same to GStreamer
/// and to the items.
class Player {
  public:
    Player() = default;
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;
    virtual ~Player() = default;

    /// Builds the pipeline, where there is none.
    virtual void build() = 0;
    /// Plays the pipeline, and builds it where there is none.
    virtual void play() = 0;
    /// Ends the stream; the pipeline stays.
    virtual void stop() = 0;
    virtual void tearDown() = 0;
    /// What a sender that is lost leads to when it is noticed: the stream is built anew and played, a
    /// second later.
    /// @param noticed  called at that moment
    /// @param built    called with the new pipeline, before it plays
    virtual void restartWhenLost(std::function<void()> noticed, std::function<void()> built) = 0;

    /// The pipeline's sink, borrowed; null without a pipeline.
    virtual GstElement* sink() = 0;
    /// The item that the stream is drawn into.
    virtual const QQuickItem& item() = 0;
};

/// What an input is made of, and where it belongs.
struct PlayerPlan {
    int streamType;
    int port;
    int number;         ///< from 0
    QQuickItem& place;  ///< filled by the stream
};

using PlayerMaker = std::function<std::unique_ptr<Player>(const PlayerPlan& plan)>;

/// What both kinds of programs need besides their players.
struct Side {
    std::function<void()> begin;  ///< until GStreamer is up
    PlayerMaker makePlayer;
    std::function<void()> end;  ///< when all players are stopped
};

Side librarySide();
Side bareSide();

}  // namespace ZR::benchmarks
