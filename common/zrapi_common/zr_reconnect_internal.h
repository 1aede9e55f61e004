#pragma once

#include <algorithm>
#include <chrono>

/// @file
/// When an end point counts as lost, and when it is tried again. No system call is made here.

namespace ZR {

constexpr std::chrono::seconds firstReconnectDelay{1};
constexpr std::chrono::seconds longestReconnectDelay{30};

/// The distance from a try that failed to the next one.
constexpr std::chrono::seconds nextReconnectDelay(std::chrono::seconds delay) {
    return std::min(2 * delay, longestReconnectDelay);
}

/// What the kernel says of a descriptor.
enum class Fault {
    None,
    Error,   ///< a read may clear it
    HangUp,  ///< for good: no more can arrive
};

/// Tells an error that a read clears, or a hang-up behind which data wait, from one that stays and
/// would keep the thread busy for ever.
class PersistentFault {
  public:
    /// Judges what is seen after a callback that was made because of a fault.
    /// @param fault   what is there (still, or again)
    /// @param unread  bytes that wait to be read; 0 where the descriptor cannot tell
    /// @return true when callbacks will not clear it
    constexpr bool persists(Fault fault, int unread) {
        const bool progress = unread > 0 && (unread < unread_ || unread_ == 0);
        fruitless_ = fault != Fault::None && !progress ? fruitless_ + 1 : 0;
        unread_ = fault != Fault::None ? unread : 0;
        return fruitless_ >= (fault == Fault::HangUp ? allowedHangUps : allowedErrors);
    }

  private:
    // The first may have read the last data; the second shows the handler that no more comes.
    static constexpr int allowedHangUps = 2;

    // Errors that follow each other closely arrive between a read and the question, and look like
    // one that stays.
    static constexpr int allowedErrors = 16;

    int fruitless_ = 0;
    int unread_ = 0;
};

}  // namespace ZR
