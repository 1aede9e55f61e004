#pragma once

#include <poll.h>

#include <chrono>
#include <optional>
#include <vector>

namespace zrctl {

/// When a command with a time limit ends.
class Deadline {
  public:
    /// @param seconds  from now; nothing: never
    explicit Deadline(std::optional<long long> seconds);

    /// Milliseconds that are left, as poll wants them: rounded up, -1 for a deadline that never
    /// comes.
    int left() const;
    bool isOver() const { return left() == 0; }

  private:
    std::optional<std::chrono::steady_clock::time_point> end_;
};

/// The end of a command that runs until somebody has had enough: Ctrl-C, SIGTERM, or a reader of
/// its output that left. The signals stay blocked and are only ever seen by waiting for them, so
/// that none is lost and none interrupts an operation. Make it before any thread.
class EndRequest {
  public:
    /// @throws std::system_error when the kernel gives no descriptor
    EndRequest();
    EndRequest(const EndRequest&) = delete;
    EndRequest& operator=(const EndRequest&) = delete;
    ~EndRequest();

    /// Waits until one of @p watched is ready, the time is over, or the end is asked for.
    /// @param watched       receives what is ready
    /// @param milliseconds  longest wait, -1 for none
    /// @return true when the end is asked for
    bool wait(std::vector<pollfd>& watched, int milliseconds) const;

    /// As above, without anything else to wait for.
    bool wait(int milliseconds) const;

  private:
    int signals_;  ///< a descriptor, readable once one of them has come
};

}  // namespace zrctl
