#pragma once

#include <sys/types.h>

#include <cstdint>
#include <set>

#include "tests/support/tracee.h"

namespace ZR::test {

/// Tells the system calls that the undefined-behaviour sanitizer makes from the program's own.
///
/// Before it looks at an object, that sanitizer asks the kernel whether the memory can be read: it
/// makes a pipe, writes the memory to it and closes both ends. In a build without sanitizers every
/// pipe is the program's.
class SanitizerPipes {
  public:
    /// Tells whether the call at whose entry @p process is stopped is the sanitizer's.
    bool enter(const CallEntry& entry);

    /// To be called at the exit of each call that enter() has claimed.
    void leave(pid_t process, std::int64_t result);

  private:
    CallEntry call_{-1, {}};
    std::set<int> ends_;
};

}  // namespace ZR::test
