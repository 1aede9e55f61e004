#include "tools/zrctl/virtual_display.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include "tools/zrctl/descriptor.h"
#include "tools/zrctl/end_request.h"

namespace zrctl {
namespace {

constexpr char program[] = "Xvfb";
constexpr char nullDevice[] = "/dev/null";
constexpr int notFound = 127;         // exit status
constexpr long long startLimit = 60;  // seconds
constexpr long long endLimit = 5;     // seconds
constexpr std::chrono::milliseconds endPoll(10);

/// Between fork and exec: system calls only.
[[noreturn]] void becomeServer(char* const* arguments, int number, pid_t parent) {
    // Ctrl-C goes to the whole group of a terminal's foreground, and the server has to outlive the
    // window.
    (void)::setpgid(0, 0);
    (void)::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != parent)
        ::_exit(notFound);
    sigset_t none;
    sigemptyset(&none);
    (void)::sigprocmask(SIG_SETMASK, &none, nullptr);
    const int null = ::open(nullDevice, O_RDWR);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        (void)::dup2(null, standard);
    (void)::fcntl(number, F_SETFD, 0);
    ::execvp(program, arguments);
    ::_exit(notFound);
}

/// @return what the server writes once it can be used, empty when it ends or takes too long
std::string readNumber(const Descriptor& pipe) {
    const Deadline deadline(startLimit);
    std::string number;
    std::array<char, 16> part{};
    while (!deadline.isOver() && number.find('\n') == std::string::npos) {
        pollfd ready{pipe.number(), POLLIN, 0};
        if (::poll(&ready, 1, deadline.left()) <= 0)
            continue;
        const ssize_t size = ::read(pipe.number(), part.data(), part.size());
        if (size <= 0)
            return "";
        number.append(part.data(), static_cast<std::size_t>(size));
    }
    return number.substr(0, number.find('\n'));
}

}  // namespace

VirtualDisplay::VirtualDisplay(int width, int height) {
    std::array<int, 2> pipe{};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("cannot start Xvfb: no more descriptors");
    const Descriptor reading(pipe[0]);
    Descriptor writing(pipe[1]);
    std::string words[] = {
        program,     "-displayfd", std::to_string(writing.number()),
        "-screen",   "0",          std::to_string(width) + "x" + std::to_string(height) + "x24",
        "-nolisten", "tcp",        "-noreset"};
    std::array<char*, std::size(words) + 1> arguments{};
    for (std::size_t i = 0; i < std::size(words); ++i)
        arguments[i] = words[i].data();
    const pid_t parent = ::getpid();
    server_ = ::fork();
    if (server_ == 0)
        becomeServer(arguments.data(), writing.number(), parent);
    writing.reset();
    const std::string number = server_ > 0 ? readNumber(reading) : "";
    if (number.empty()) {
        throw std::runtime_error(end() ? "there is no display, and no Xvfb to do without; install "
                                         "xvfb, or set DISPLAY"
                                       : "there is no display, and Xvfb does not start; try it by "
                                         "hand, or set DISPLAY");
    }
    name_ = ":" + number;
}

VirtualDisplay::~VirtualDisplay() {
    (void)end();
}

/// @return whether the program was not found
bool VirtualDisplay::end() {
    if (server_ <= 0)
        return false;
    (void)::kill(server_, SIGTERM);
    const Deadline deadline(endLimit);
    int status = 0;
    while (::waitpid(server_, &status, WNOHANG) == 0) {
        if (deadline.isOver())
            (void)::kill(server_, SIGKILL);
        std::this_thread::sleep_for(endPoll);
    }
    server_ = -1;
    return WIFEXITED(status) && WEXITSTATUS(status) == notFound;
}

bool hasDisplay() {
    for (const char* const name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        const char* const value = std::getenv(name);
        if (value != nullptr && *value != '\0')
            return true;
    }
    return false;
}

}  // namespace zrctl
