#pragma once

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <string>

/// The stopped process as the tracer sees it; all that depends on the machine's registers.

namespace ZR::test {

struct CallEntry {
    long number;
    std::array<std::uint64_t, 6> arguments;
};

/// False where this machine's registers are unknown to the tracer.
bool knowsRegisters();

/// The call at whose entry @p process is stopped.
CallEntry callAtEntry(pid_t process);

/// The result of the call at whose exit @p process is stopped: negative errno on failure.
std::int64_t resultAtExit(pid_t process);

/// Makes the kernel skip the call at whose entry @p process is stopped.
void cancelCall(pid_t process);

/// Replaces the third argument of the call at whose entry @p process is stopped.
void setCount(pid_t process, std::uint64_t count);

/// Replaces the result of the call at whose exit @p process is stopped.
void setResult(pid_t process, std::int64_t result);

/// Memory of @p process: @p size bytes, or less where it ends.
std::string readMemory(pid_t process, std::uint64_t address, std::size_t size);

/// The text that ends with a NUL at @p address.
std::string readText(pid_t process, std::uint64_t address);

}  // namespace ZR::test
