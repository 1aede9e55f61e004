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

/// Tells an error that a read clears, or a hang-up behind which data wait, from one that stays and
/// would keep the thread busy for ever.
class PersistentError {
  public:
    /// Judges what is seen after a callback that was made because of an error.
    /// @param failing  the error or hang-up is there (still, or again)
    /// @param unread   bytes that wait to be read; 0 where the descriptor cannot tell
    /// @return true when callbacks will not clear it
    constexpr bool persists(bool failing, int unread) {
        const bool progress = unread > 0 && (unread < unread_ || unread_ == 0);
        fruitless_ = failing && !progress ? fruitless_ + 1 : 0;
        unread_ = failing ? unread : 0;
        return fruitless_ >= allowedFruitless;
    }

  private:
    // The first one may only look fruitless: it took the last data before a hang-up, or a second
    // error arrived between its read and the question.
    static constexpr int allowedFruitless = 2;

    int fruitless_ = 0;
    int unread_ = 0;
};

}  // namespace ZR
