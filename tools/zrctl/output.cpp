#include "tools/zrctl/output.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <string>

namespace zrctl {
namespace {

constexpr char nullDevice[] = "/dev/null";
constexpr int patience = 2000;  // milliseconds

int endRequests = -1;

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

/// Waits until standard output takes a piece without blocking.
/// @return false when the end was asked for and the reader still takes nothing
bool awaitReader() {
    std::array<pollfd, 2> both{{{STDOUT_FILENO, POLLOUT, 0}, {endRequests, POLLIN, 0}}};
    (void)::poll(both.data(), both.size(), -1);
    return both[0].revents != 0 || both[1].revents == 0 || ::poll(both.data(), 1, patience) != 0;
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
    // What poll lets through, a pipe takes whole up to this size.
    const std::size_t piece = endRequests < 0 ? text.size() : PIPE_BUF;
    while (!text.empty()) {
        if (endRequests >= 0 && !awaitReader())
            throw OutputError(ETIMEDOUT);
        if (const int error = writeAll(STDOUT_FILENO, text.substr(0, piece)))
            throw OutputError(error);
        text.remove_prefix(std::min(piece, text.size()));
    }
}

void giveUpPrintingWhenReadable(int descriptor) {
    endRequests = descriptor;
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
