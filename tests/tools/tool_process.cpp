#include "tests/tools/tool_process.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <poll.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <stdexcept>

#include "tests/support/private_root.h"

namespace ZR::test {
namespace {

constexpr int longestWaitMilliseconds = 30000;

[[noreturn]] void startProgram(const std::string& program,
                               const std::vector<std::string>& arguments) {
    std::vector<char*> words;
    words.push_back(const_cast<char*>(program.c_str()));
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    ::execv(program.c_str(), words.data());
    ::_exit(127);
}

/// The private /proc has no entries of its own for new processes, and a sanitizer's end-of-program
/// check looks for its process by number.
void linkOwnProcess() {
    const std::string number = std::to_string(::getpid());
    const std::filesystem::path machine = std::filesystem::read_symlink("/proc/self");
    removeFile("/proc/" + number);
    makeLink("/proc/" + number, machine.parent_path() / number);
}

std::string contentOf(int file) {
    std::string content;
    std::array<char, 4096> block;
    ssize_t size = 0;
    while ((size = ::pread(file, block.data(), block.size(), static_cast<off_t>(content.size()))) >
           0)
        content.append(block.data(), static_cast<std::size_t>(size));
    return content;
}

/// What goes wrong here ends the child; it must not go on as a second test program.
[[noreturn]] void becomeProgram(int output, int errors, const std::string& program,
                                const std::vector<std::string>& arguments,
                                const ChildSetup& setup) noexcept {
    linkOwnProcess();
    (void)::dup2(output, STDOUT_FILENO);
    (void)::dup2(errors, STDERR_FILENO);
    if (setup)
        setup();
    startProgram(program, arguments);
}

}  // namespace

ToolProcess::ToolProcess(const std::string& program, const std::vector<std::string>& arguments,
                         const ChildSetup& setup) {
    std::array<int, 2> pipe{};
    errors_ = ::memfd_create("errors", MFD_CLOEXEC);
    if (errors_ < 0 || ::pipe2(pipe.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no descriptors for a program's output");
    process_ = ::fork();
    if (process_ == 0)
        becomeProgram(pipe[1], errors_, program, arguments, setup);
    ::close(pipe[1]);
    output_ = pipe[0];
}

ToolProcess::~ToolProcess() {
    closeOutput();
    ::close(errors_);
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }
}

bool ToolProcess::readSome() {
    if (output_ < 0)
        return false;
    pollfd ready{output_, POLLIN, 0};
    if (::poll(&ready, 1, longestWaitMilliseconds) <= 0)
        throw std::runtime_error("the program wrote nothing for too long");
    std::array<char, 4096> block;
    const ssize_t size = ::read(output_, block.data(), block.size());
    if (size > 0)
        pending_.append(block.data(), static_cast<std::size_t>(size));
    return size > 0;
}

std::string ToolProcess::readLine() {
    while (pending_.find('\n') == std::string::npos && readSome()) {
    }
    const std::size_t end = pending_.find('\n');
    std::string line = pending_.substr(0, end);
    pending_.erase(0, end == std::string::npos ? end : end + 1);
    return line;
}

void ToolProcess::closeOutput() {
    if (output_ >= 0)
        ::close(output_);
    output_ = -1;
}

void ToolProcess::sendSignal(int signal) {
    ::kill(process_, signal);
}

ToolResult ToolProcess::wait() {
    while (readSome()) {
    }
    int status = 0;
    const int processFile = static_cast<int>(::syscall(SYS_pidfd_open, process_, 0));
    pollfd ended{processFile, POLLIN, 0};
    const bool inTime = ::poll(&ended, 1, longestWaitMilliseconds) > 0;
    ::close(processFile);
    if (!inTime)
        throw std::runtime_error("the program did not end");
    ::waitpid(process_, &status, 0);
    process_ = -1;
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), pending_,
            contentOf(errors_)};
}

ToolResult runTool(const std::string& program, const std::vector<std::string>& arguments,
                   const ChildSetup& setup) {
    return ToolProcess(program, arguments, setup).wait();
}

ToolResult runZrctl(const std::vector<std::string>& arguments, const ChildSetup& setup) {
    return runTool(ZRCTL_PROGRAM, arguments, setup);
}

void dropPrivileges() {
    // A program that root starts gets what the bounding set leaves: nothing.
    for (unsigned long capability = 0; capability <= CAP_LAST_CAP; ++capability)
        (void)::prctl(PR_CAPBSET_DROP, capability);
}

void enterEmptyNetwork() {
    if (::unshare(CLONE_NEWNET) != 0)
        ::_exit(126);
}

ChildSetup outputTo(const std::string& path) {
    return [path] {
        const int file = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
        (void)::dup2(file, STDOUT_FILENO);
    };
}

ChildSetup withClosed(int descriptor) {
    return [descriptor] { ::close(descriptor); };
}

}  // namespace ZR::test
