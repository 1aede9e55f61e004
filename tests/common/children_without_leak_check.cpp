// The leak sanitizer looks for its process in /proc, where the private machine shows the test
// program but none of its children. A child that ends by exit() would be taken for a failure.

#include <unistd.h>

namespace {

const pid_t testProgram = ::getpid();

}  // namespace

/// Asked by the sanitizer at the end of each process.
extern "C" int __lsan_is_turned_off();  // NOLINT(bugprone-reserved-identifier): the name is given

extern "C" int __lsan_is_turned_off() {  // NOLINT(bugprone-reserved-identifier)
    return ::getpid() != testProgram ? 1 : 0;
}
