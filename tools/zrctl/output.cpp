#include "tools/zrctl/output.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <string>

namespace zrctl {
namespace {

constexpr char nullDevice[] = "/dev/null";

/// @return 0, or the error that stopped the writing
int writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return errno;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return 0;
}

void occupy(int descriptor, int flags) {
    if (::fcntl(descriptor, F_GETFD) < 0)
        (void)::open(nullDevice, flags);  // takes the lowest free number, which is this one
}

}  // namespace

void prepareStandardStreams() {
    occupy(STDIN_FILENO, O_RDONLY);
    // Read only: a closed standard output stays an error when something is written.
    occupy(STDOUT_FILENO, O_RDONLY);
    occupy(STDERR_FILENO, O_WRONLY);
    (void)std::signal(SIGPIPE, SIG_IGN);
}

void print(std::string_view text) {
    if (const int error = writeAll(STDOUT_FILENO, text))
        throw OutputError(error);
}

std::string column(std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

void printError(std::string_view text) {
    // Nobody is left to tell when standard error takes nothing.
    (void)writeAll(STDERR_FILENO, "zrctl: " + std::string(text) + '\n');
}

}  // namespace zrctl
