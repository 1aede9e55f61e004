#pragma once

#include <gst/gst.h>

#include <condition_variable>
#include <memory>
#include <mutex>

#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"
#include "tests/scene/faults/timed_output.h"

namespace ZR::test {

/// Sees the packets that a playing UDP input receives: the time that it waits for the next one begins
/// with each of them, and not when a test thinks that its sender stopped.
class PacketWatch {
  public:
    /// Returns when a first packet was seen.
    /// @throw std::runtime_error when none comes
    explicit PacketWatch(const ZRGstreamerVideoInput& input);

    Clock::time_point last() const;
    /// The longest time without a packet so far.
    Clock::duration longestGap() const;

  private:
    struct Seen {
        std::mutex mutex;
        std::condition_variable came;
        bool any = false;
        Clock::time_point last = Clock::now();
        Clock::duration longestGap{};
    };

    static GstPadProbeReturn packet(GstPad* pad, GstPadProbeInfo* info, gpointer data);
    static void forget(gpointer data);

    std::shared_ptr<Seen> seen_ = std::make_shared<Seen>();
};

}  // namespace ZR::test
