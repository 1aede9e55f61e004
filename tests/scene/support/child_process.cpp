#include "tests/scene/support/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>

#include "tests/scene/support/ready_line.h"

namespace ZR::test {

namespace {

/// A loaded machine may take a while to start a program with GStreamer.
constexpr int readyMilliseconds = 30000;

/// @return what came until the first line end, or all until the end or the limit
std::string readLine(int from) {
    std::string line;
    pollfd waited = {from, POLLIN, 0};
    char byte = 0;
    while (::poll(&waited, 1, readyMilliseconds) == 1 && ::read(from, &byte, 1) == 1 &&
           byte != '\n')
        line += byte;
    return line;
}

/// @return its process id, -1 when it could not be started
pid_t spawn(const std::vector<std::string>& command, int output) {
    std::vector<char*> arguments;
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    pid_t process = -1;
    const int error =
        ::posix_spawn(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? process : -1;
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe for " + command.at(0));
    process_ = spawn(command, ends[1]);
    ::close(ends[1]);
    const std::string line = process_ > 0 ? readLine(ends[0]) : "";
    ::close(ends[0]);
    if (line == readyLine)
        return;
    kill();
    throw std::runtime_error(command.at(0) + " did not get to work: " + line);
}

ChildProcess::~ChildProcess() {
    kill();
}

void ChildProcess::kill() {
    if (process_ <= 0)
        return;
    ::kill(process_, SIGKILL);
    (void)::waitpid(process_, nullptr, 0);
    process_ = -1;
}

void ChildProcess::pause() {
    ::kill(process_, SIGSTOP);
    (void)::waitpid(process_, nullptr, WUNTRACED);
}

void ChildProcess::resume() {
    ::kill(process_, SIGCONT);
}

}  // namespace ZR::test
