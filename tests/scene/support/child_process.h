#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace ZR::test {

/// A program that runs beside the test, known by its process id, and is killed with this object.
class ChildProcess {
  public:
    /// Starts a program and waits until it says that it is at work.
    /// @param command  path of the program and its arguments
    /// @throw std::runtime_error when it cannot be started, or ends without having said so
    explicit ChildProcess(const std::vector<std::string>& command);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess();

    /// Ends it at once, as a power cut would, and waits until it is gone. Again: does nothing.
    void kill();
    /// Freezes it, and returns when all its threads stand still.
    void pause();
    /// Lets it go on after pause().
    void resume();

    pid_t processId() const { return process_; }

  private:
    pid_t process_ = -1;
};

}  // namespace ZR::test
