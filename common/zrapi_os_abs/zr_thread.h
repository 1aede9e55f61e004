#pragma once

#include <string>
#include <thread>

#include "common/zrapi_export.h"

namespace ZR {

/// One joinable thread with a name that the kernel shows (`ps -L`, `/proc/PID/task/TID/comm`).
///
/// An object is driven from one thread at a time. A thread that still runs when its object is
/// destroyed is detached, so that the end of the process neither hangs nor terminates on it;
/// whoever depends on the thread's end calls join() first.
class ZRAPI_EXPORT ZRThread {
  public:
    ZRThread() = default;
    ZRThread(const ZRThread&) = delete;
    ZRThread& operator=(const ZRThread&) = delete;
    ~ZRThread();

    /// Starts a thread that runs @p entry once with @p argument, under the name set before, if any.
    /// @param entry     function to run; must not be null
    /// @param argument  handed to @p entry as it is; the caller keeps what it points to alive
    /// @return 0, EBUSY while a thread that was started is not joined, EINVAL for a null entry, or
    ///         the `errno` value of the failed creation (EAGAIN, ENOMEM)
    int startThread(void (*entry)(void*), void* argument);

    /// Names the running thread, or the one that is started next.
    /// @param name  the kernel keeps its first 15 bytes
    /// @return 0, or the `errno` value of the failed call (ENOENT for a thread that has ended and
    ///         is not joined; the name then serves the next one)
    int setThreadName(const std::string& name);

    /// Waits for the thread's end; returns at once when none was started.
    /// @return 0, or EDEADLK when the thread itself calls
    int join();

  private:
    std::string name_;
    std::thread thread_;
};

}  // namespace ZR
