#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace ZR::test {

/// What a program that ended left behind.
struct ToolResult {
    int status;  ///< exit status, or 128 and the number of the signal that ended it
    std::string output;
    std::string errors;
};

/// Runs in the child just before the program starts.
using ChildSetup = std::function<void()>;

/// A program that runs beside the test, on the same private machine. Every wait is limited; a
/// program that takes longer is killed, and the wait throws.
class ToolProcess {
  public:
    ToolProcess(const std::string& program, const std::vector<std::string>& arguments,
                const ChildSetup& setup = {});
    ToolProcess(const ToolProcess&) = delete;
    ToolProcess& operator=(const ToolProcess&) = delete;
    ~ToolProcess();

    /// The next line of the program's output without its newline, or what there is at its end.
    std::string readLine();

    /// Leaves as a reader that has seen enough.
    void closeOutput();

    void sendSignal(int signal);

    /// Reads the rest of the output and waits for the end.
    ToolResult wait();

  private:
    bool readSome();

    pid_t process_ = -1;
    int output_ = -1;
    int errors_ = -1;
    std::string pending_;
};

/// Runs a program to its end.
ToolResult runTool(const std::string& program, const std::vector<std::string>& arguments,
                   const ChildSetup& setup = {});

/// Runs zrctl to its end.
ToolResult runZrctl(const std::vector<std::string>& arguments, const ChildSetup& setup = {});

/// @name Set-ups of a child
/// @{

/// No privilege left: files are for it what their modes say.
void dropPrivileges();

/// A network of its own, without any interface but a loopback that is down, so that the buses of the
/// machine the tests run on are out of reach.
void enterEmptyNetwork();

/// Standard output is the given file, opened for writing.
ChildSetup outputTo(const std::string& path);

/// A standard descriptor is closed.
ChildSetup withClosed(int descriptor);
/// @}

}  // namespace ZR::test
