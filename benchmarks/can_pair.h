#pragma once

#include <memory>
#include <string>

#include "hardware/can/zr_can_raw.h"

namespace ZR::benchmarks {

/// Two CAN sockets that hear each other: on a virtual CAN interface of the terminal, where there is
/// one, else the ends of a socket pair, whose messages of the size of a frame stand for frames.
class CanPair {
  public:
    /// More frames than this may overrun a receive queue, which holds 278.
    static constexpr long longestQueue = 256;

    CanPair();

    /// The end that is measured.
    const std::shared_ptr<ZRCANRaw>& socket() const { return socket_; }
    const std::shared_ptr<ZRCANRaw>& peer() const { return peer_; }

    /// Sends frames to the measured end; all of them are in its queue when the call returns.
    bool fill(long frames) const;

    /// Takes what the measured end has sent, waiting for it; false when a frame is missing.
    bool drain(long frames) const;

    /// Which of the two it is, in words.
    const std::string& description() const { return description_; }

  private:
    bool openInterface();
    void openSocketPair();

    std::shared_ptr<ZRCANRaw> peer_;
    std::shared_ptr<ZRCANRaw> socket_;
    bool peerHearsItself_ = false;
    std::string description_;
};

/// The one pair of the process: several on one interface would hear each other.
const std::shared_ptr<const CanPair>& canPair();

/// Waits until something is there to be read; false when nothing comes.
bool waitForFrame(int descriptor);

}  // namespace ZR::benchmarks
