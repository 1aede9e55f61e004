#pragma once

#include <gtest/gtest.h>

#include "tests/scene/faults/timed_output.h"
#include "tests/scene/faults/watched_input.h"
#include "tests/scene/support/video_scene.h"

namespace ZR::test {

constexpr char timedOut[] = "STREAM TIMED OUT!";
constexpr char endOfStream[] = "STREAM TIMEOUT (EOS)!";
constexpr char restartIn1000[] = "Trigger stream restart in 1000 milliseconds.";
constexpr char restartIn10000[] = "Trigger stream restart in 10000 milliseconds.";
constexpr char restartIn100[] = "Trigger stream restart in 100 milliseconds.";
constexpr char gaveUp[] =
    "Video: Gave up after 10 automatic restarts. Please restart video manually...";
constexpr char removed[] = "REMOVE FROM DESTROYED";

/// Nothing happens sooner than it is meant to. A busy machine may be late by this much.
constexpr int graceMilliseconds = 5000;

/// A scene with inputs to which something happens.
class FaultTest : public testing::Test {
  protected:
    static constexpr QRect area{100, 60, 600, 360};
    /// For three inputs side by side.
    static constexpr QRect areas[] = {{10, 10, 380, 220}, {410, 10, 380, 220}, {10, 250, 380, 220}};

    /// The input of this name, made by the first call.
    WatchedInput& input(const std::string& name = "video");

    /// Lets the scene run until a text was printed as a line of its own so many times.
    bool waitForLines(const std::string& text, int times = 1, double seconds = 20);
    /// @return when an input was seen to have been restarted so many times; 0 when it was not
    Clock::time_point waitForRestarts(const WatchedInput& input, unsigned int times,
                                      double seconds = 20);
    /// Lets the scene run while nothing else is to be printed.
    void expectNoLineFor(double seconds);
    /// All that was printed up to now, without the times.
    std::vector<std::string> texts() const;

    TimedOutput output_;
    VideoScene scene_;
};

/// Whether something happened so many milliseconds after something else, or a little later.
testing::AssertionResult isAfter(Clock::time_point later, Clock::time_point earlier,
                                 int milliseconds);

}  // namespace ZR::test
