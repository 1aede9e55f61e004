#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace ZR::test {

/// One system call as the kernel answered it.
struct SystemCall {
    long number = -1;
    std::string name;                          ///< "openat", or "#" and the number
    std::array<std::uint64_t, 6> arguments{};  ///< as the program gave them
    std::string text;  ///< the path of a call that takes one, the bytes of a write, what a read got
    long result = 0;   ///< what the call returned, -1 on failure
    int error = 0;     ///< errno on failure, else 0
    bool injected = false;  ///< failed or shortened by the plan
};

std::ostream& operator<<(std::ostream& stream, const SystemCall& call);

/// Makes one system call go wrong.
struct Fault {
    std::size_t index = 0;  ///< which call after begin(), counted from 0 over all of them
    int error = 0;          ///< errno to fail with; the call is not made
    std::size_t count = 0;  ///< else: the most bytes that this read or write may move
};

/// Makes the n-th call of one kind go wrong; built with the number, as in `SYS_write`.
struct NumberedFault {
    long number = -1;
    std::size_t occurrence = 1;  ///< counted from 1 over the calls of this number after begin()
    int error = 0;
    std::size_t count = 0;
};

/// What goes wrong in one run; empty for a good run.
struct FaultPlan {
    std::vector<Fault> faults;
    std::vector<NumberedFault> numbered;
};

/// What came out of a traced run.
struct Trace {
    std::vector<SystemCall> calls;  ///< those between begin() and end()
    std::string text;               ///< what the function said
    bool died = false;              ///< by a signal, or left by itself before the function returned
    int status = 0;                 ///< as waitpid gives it

    /// How many of the calls have this name.
    std::size_t count(const std::string& name) const;

    /// The names in their order, separated by blanks.
    std::string names() const;
};

/// Given to the traced function.
class TracedRun {
  public:
    TracedRun(char* text, std::size_t size) : text_(text), size_(size) {}

    /// Calls made from here on are recorded and subject to the plan.
    void begin() const;

    /// Calls made from here on are neither.
    void end() const;

    /// Appends to what the tracing side receives; beyond 60000 bytes it is cut.
    void say(const std::string& text);

  private:
    char* text_;
    std::size_t size_;
    std::size_t used_ = 0;
};

/// An empty text, or the reason why nothing can be traced here; test it first and skip with it.
std::string whyNotTraceable();

/// Runs @p function in a child process under ptrace and records the system calls that its main
/// thread makes between begin() and end(). The child leaves by _exit: nothing is destroyed in it.
/// A gtest assertion inside of the function is lost: say() what is to be judged.
Trace traceSystemCalls(const std::function<void(TracedRun&)>& function, const FaultPlan& plan = {});

}  // namespace ZR::test
