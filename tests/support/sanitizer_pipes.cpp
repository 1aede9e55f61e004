#include "tests/support/sanitizer_pipes.h"

#include <sys/syscall.h>

#include <array>
#include <cstring>
#include <string>

namespace ZR::test {
namespace {

#ifdef __SANITIZE_ADDRESS__  // the two sanitizers come together
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif

bool makesPipe(long number) {
#ifdef SYS_pipe
    if (number == SYS_pipe)
        return true;
#endif
    return number == SYS_pipe2;
}

bool usesDescriptor(long number) {
    return number == SYS_read || number == SYS_write || number == SYS_close;
}

}  // namespace

bool SanitizerPipes::enter(const CallEntry& entry) {
    call_ = entry;
    if (!sanitized)
        return false;
    return makesPipe(entry.number) ||
           (usesDescriptor(entry.number) && ends_.count(static_cast<int>(entry.arguments[0])) != 0);
}

void SanitizerPipes::leave(pid_t process, std::int64_t result) {
    if (call_.number == SYS_close)
        ends_.erase(static_cast<int>(call_.arguments[0]));
    if (!makesPipe(call_.number) || result != 0)
        return;
    std::array<int, 2> ends{};
    const std::string memory = readMemory(process, call_.arguments[0], sizeof ends);
    std::memcpy(ends.data(), memory.data(), memory.size());
    if (memory.size() == sizeof ends)
        ends_.insert(ends.begin(), ends.end());
}

}  // namespace ZR::test
