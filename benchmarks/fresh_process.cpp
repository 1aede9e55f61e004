#include "benchmarks/fresh_process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <functional>
#include <utility>

#include "common/file_descriptor_internal.h"

namespace ZR::benchmarks {
namespace {

bool endedWell(pid_t child) {
    int status = -1;
    return ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// Runs @p work in a child process that gets the pipe's end to write to.
/// @return what the child wrote, as a number; negative when it ended badly
double numberFromChild(const std::function<bool(int output)>& work) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        return -1;
    const FileDescriptor reading(ends[0]);
    FileDescriptor writing(ends[1]);
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(work(writing.get()) ? EXIT_SUCCESS : EXIT_FAILURE);
    ::close(writing.release());
    std::array<char, 64> text{};
    const ssize_t length = ::read(reading.get(), text.data(), text.size() - 1);
    return child > 0 && endedWell(child) && length > 0 ? std::strtod(text.data(), nullptr) : -1;
}

}  // namespace

Batch inFreshProcess(Batch batch) {
    return [batch = std::move(batch)](long operations) {
        return numberFromChild([&batch, operations](int output) {
            return ::dprintf(output, "%.9f", batch(operations)) > 0;
        });
    };
}

double secondsPrintedBy(const std::string& program, const std::string& argument) {
    const double nanoseconds = numberFromChild([&program, &argument](int output) {
        ::dup2(output, STDOUT_FILENO);
        ::execl(program.c_str(), program.c_str(), argument.c_str(), nullptr);
        return false;
    });
    return nanoseconds < 0 ? -1 : nanoseconds * 1e-9;
}

}  // namespace ZR::benchmarks
