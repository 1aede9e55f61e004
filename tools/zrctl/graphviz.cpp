#include "tools/zrctl/graphviz.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

#include "tools/zrctl/descriptor.h"

namespace zrctl {
namespace {

constexpr char nullDevice[] = "/dev/null";

[[noreturn]] void failOn(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

/// A file in memory: dot reads all of it before it writes, and a pipe might be full before that.
Descriptor inputFile(const std::string& text) {
    Descriptor file(::memfd_create("graph", MFD_CLOEXEC));
    std::size_t written = 0;
    while (file.isOpen() && written < text.size()) {
        const ssize_t size = ::write(file.number(), text.data() + written, text.size() - written);
        if (size < 0 && errno == EINTR)
            continue;
        if (size <= 0)
            failOn("cannot keep the graph in memory");
        written += static_cast<std::size_t>(size);
    }
    if (!file.isOpen() || ::lseek(file.number(), 0, SEEK_SET) != 0)
        failOn("cannot keep the graph in memory");
    return file;
}

/// The set-up of the program's process, freed at its end.
class SpawnSetUp {
  public:
    SpawnSetUp(const Descriptor& input, const Descriptor& output) {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_adddup2(&actions_, input.number(), STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions_, output.number(), STDOUT_FILENO);
        // It warns of fonts; what goes wrong shows in its status.
        posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, nullDevice, O_WRONLY, 0);
        posix_spawnattr_init(&attributes_);
        sigset_t defaults;
        sigemptyset(&defaults);
        sigaddset(&defaults, SIGPIPE);
        posix_spawnattr_setsigdefault(&attributes_, &defaults);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF);
    }
    SpawnSetUp(const SpawnSetUp&) = delete;
    SpawnSetUp& operator=(const SpawnSetUp&) = delete;
    ~SpawnSetUp() {
        posix_spawnattr_destroy(&attributes_);
        posix_spawn_file_actions_destroy(&actions_);
    }

    pid_t start() const {
        char name[] = "dot";
        char format[] = "-Tsvg";
        char* const words[] = {name, format, nullptr};
        pid_t process = -1;
        const int error = ::posix_spawnp(&process, name, &actions_, &attributes_, words, environ);
        if (error == ENOENT)
            throw GraphvizError(
                "Graphviz's program 'dot' is not installed; install graphviz, or "
                "draw what --dot writes elsewhere");
        if (error != 0)
            throw GraphvizError("Graphviz's program 'dot' cannot be started: " +
                                std::generic_category().message(error));
        return process;
    }

  private:
    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

std::string readAll(const Descriptor& pipe) {
    std::string text;
    std::array<char, 65536> block;  // NOLINT(*-init): filled by read
    for (;;) {
        const ssize_t size = ::read(pipe.number(), block.data(), block.size());
        if (size < 0 && errno == EINTR)
            continue;
        if (size <= 0)
            return text;
        text.append(block.data(), static_cast<std::size_t>(size));
    }
}

/// @return true when the process ended with status 0
bool awaitSuccess(pid_t process) {
    int status = 0;
    while (::waitpid(process, &status, 0) < 0) {
        if (errno != EINTR)
            return false;
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

std::string drawSvg(const std::string& graph) {
    const Descriptor input = inputFile(graph);
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        failOn("no pipe to Graphviz");
    const Descriptor output(ends[0]);
    Descriptor programOutput(ends[1]);
    const pid_t process = SpawnSetUp(input, programOutput).start();
    programOutput.reset();
    std::string picture = readAll(output);
    if (!awaitSuccess(process) || picture.empty())
        throw GraphvizError("Graphviz's program 'dot' failed; draw what --dot writes elsewhere");
    return picture;
}

}  // namespace zrctl
