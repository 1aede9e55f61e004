#include "tests/support/private_machine.h"

#include <dirent.h>
#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

namespace ZR::test {
namespace {

// The machine's own /proc and /usr stay reachable here for the links that lead to them.
constexpr char machineFolder[] = "/dev/.machine";
constexpr char machineProc[] = "/dev/.machine/proc";
constexpr char machineUsr[] = "/dev/.machine/usr";
// Tells a program that was started inside the namespace that it is there.
constexpr char markerFile[] = "/dev/.machine/private";

constexpr std::array keptDevices{"null", "zero", "full", "tty", "random", "urandom"};

// Handed to the child of a process with several threads: the mounts that are not the child's own.
constexpr char outerNamespace[] = "ZRAPI_TEST_OUTER_NAMESPACE";
// No status of GoogleTest or of a sanitizer.
constexpr int refusedStatus = 125;

bool machineIsPrivate = false;

void check(bool succeeded, const std::string& what) {
    if (!succeeded)
        throw std::runtime_error(what + ": " + std::strerror(errno));
}

void writeText(const char* path, const std::string& text) {
    const int file = ::open(path, O_WRONLY | O_CLOEXEC);
    check(file >= 0, path);
    const ssize_t written = ::write(file, text.data(), text.size());
    const int error = errno;
    ::close(file);
    errno = error;
    check(written == static_cast<ssize_t>(text.size()), path);
}

void makeEmptyFile(const std::string& path) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    check(file >= 0, path);
    ::close(file);
}

void layFolderInMemory(const char* path) {
    check(::mount("tmpfs", path, "tmpfs", 0, "mode=755") == 0, std::string("mount on ") + path);
}

void bindPath(const std::string& source, const std::string& target) {
    check(::mount(source.c_str(), target.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0,
          "bind of " + source);
}

/// In a changed root that is no mount point nothing says whether a mount would reach the rest of
/// the machine. A private copy of that root, hung below the /proc that is a mount point, does not.
void moveToPrivateCopyOfRoot() {
    constexpr char copy[] = "/proc/root_copy";
    check(::mount(nullptr, "/proc", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "private /proc");
    layFolderInMemory("/proc");
    check(::mkdir(copy, 0755) == 0, copy);
    bindPath("/", copy);
    check(::mount(nullptr, copy, nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "private root");
    check(::chroot(copy) == 0 && ::chdir("/") == 0, "chroot");
    check(::umount2("/proc", MNT_DETACH) == 0, "second /proc");
}

/// Nothing mounted from here on may show outside.
void stopPropagation() {
    if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0)
        return;
    check(errno == EINVAL, "private mounts");
    moveToPrivateCopyOfRoot();
}

void mapToRoot(uid_t user, gid_t group) {
    writeText("/proc/self/setgroups", "deny");
    writeText("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
    writeText("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
}

/// False when another thread keeps the process from entering a user namespace.
bool enterNamespaces() {
    const uid_t user = ::getuid();
    const gid_t group = ::getgid();
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) {
        mapToRoot(user, group);
        return true;
    }
    if (errno == EINVAL)
        return false;
    check(::unshare(CLONE_NEWNS) == 0, "user and mount namespaces are refused");
    return true;
}

/// Links every entry of @p source into @p target.
void linkEntries(const std::string& source, const std::string& target) {
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(source.c_str()), &::closedir);
    check(folder != nullptr, source);
    while (const dirent* const entry = ::readdir(folder.get())) {
        const std::string name = entry->d_name;
        // The numbered folders come and go with their processes; device-tree is the tests' own.
        const bool process = name.find_first_not_of("0123456789") == std::string::npos;
        if (name == "." || name == ".." || name == "device-tree" || process)
            continue;
        check(::symlink((source + '/' + name).c_str(), (target + '/' + name).c_str()) == 0, name);
    }
}

/// Sanitizers look for their process by its number. Without the heap: a child calls it too.
void linkOwnProcess() {
    std::array<char, 64> source{};
    std::array<char, 64> target{};
    const int number = ::getpid();
    (void)std::snprintf(source.data(), source.size(), "%s/%d", machineProc, number);
    (void)std::snprintf(target.data(), target.size(), "/proc/%d", number);
    (void)!::symlink(source.data(), target.data());
}

void layDevices() {
    std::array<int, keptDevices.size()> devices{};
    for (std::size_t i = 0; i < devices.size(); ++i)
        devices[i] = ::open((std::string("/dev/") + keptDevices[i]).c_str(), O_PATH | O_CLOEXEC);
    layFolderInMemory("/dev");
    for (std::size_t i = 0; i < devices.size(); ++i) {
        if (devices[i] < 0)  // a bare root need not have all of them
            continue;
        const std::string path = std::string("/dev/") + keptDevices[i];
        makeEmptyFile(path);
        bindPath("/proc/self/fd/" + std::to_string(devices[i]), path);
        ::close(devices[i]);
    }
    check(::mkdir("/dev/input", 0755) == 0, "/dev/input");
    check(::mkdir("/dev/shm", 0755) == 0 && ::chmod("/dev/shm", 01777) == 0, "/dev/shm");
    check(::symlink("/proc/self/fd", "/dev/fd") == 0, "/dev/fd");
}

void layFolders() {
    stopPropagation();
    layDevices();
    for (const char* const folder : {machineFolder, machineProc, machineUsr})
        check(::mkdir(folder, 0755) == 0, folder);
    bindPath("/proc", machineProc);
    bindPath("/usr", machineUsr);
    layFolderInMemory("/sys");
    layFolderInMemory("/proc");
    linkEntries(machineProc, "/proc");
    layFolderInMemory("/usr/bin");
    linkEntries(std::string(machineUsr) + "/bin", "/usr/bin");
    makeEmptyFile(markerFile);
}

/// Which mounts this process sees, as the kernel names them.
std::string mountNamespace() {
    std::array<char, 64> name{};
    (void)!::readlink("/proc/self/ns/mnt", name.data(), name.size() - 1);
    return name.data();
}

void writeBare(const char* path, const char* text, std::size_t size) {
    const long file = ::syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CLOEXEC);
    (void)::syscall(SYS_write, file, text, size);
    (void)::syscall(SYS_close, file);
}

/// What the child of a process with several threads does: bare system calls only, because another
/// thread may have held any lock of the C library or of the sanitizer when the child was made.
[[noreturn]] void enterAndExecute(char* const* arguments, const std::string& userMap,
                                  const std::string& groupMap) {
    (void)::syscall(SYS_prctl, PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0);
    if (::syscall(SYS_unshare, CLONE_NEWUSER | CLONE_NEWNS) == 0) {
        writeBare("/proc/self/setgroups", "deny", 4);
        writeBare("/proc/self/uid_map", userMap.data(), userMap.size());
        writeBare("/proc/self/gid_map", groupMap.data(), groupMap.size());
    } else if (::syscall(SYS_unshare, CLONE_NEWNS) != 0) {
        (void)::syscall(SYS_exit_group, refusedStatus);
    }
    (void)::syscall(SYS_execve, "/proc/self/exe", arguments, environ);
    for (;;)
        (void)::syscall(SYS_exit_group, refusedStatus);
}

/// Runs the program again in a child inside the namespaces and leaves with its status. Returns
/// when they are refused.
void runAgain(char* const* arguments) {
    const std::string userMap = "0 " + std::to_string(::getuid()) + " 1";
    const std::string groupMap = "0 " + std::to_string(::getgid()) + " 1";
    check(::setenv(outerNamespace, mountNamespace().c_str(), 1) == 0, "setenv");
    // Not fork(): a sanitizer would start its thread again in the child.
    const auto child = static_cast<pid_t>(::syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0));
    if (child == 0)
        enterAndExecute(arguments, userMap, groupMap);
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == refusedStatus)
        return;
    ::_exit(WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
}

/// True in the child that runAgain() has made.
bool isInsideNamespaces() {
    const char* const outer = std::getenv(outerNamespace);
    return outer != nullptr && mountNamespace() != outer;
}

}  // namespace

std::string enterPrivateMachine(char* const* arguments) {
    try {
        if (::access(markerFile, F_OK) != 0) {
            if (!isInsideNamespaces() && !enterNamespaces()) {
                runAgain(arguments);
                return "user and mount namespaces are refused";
            }
            layFolders();
        }
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    linkOwnProcess();
    // The death tests leave by exit(), where the address sanitizer looks for leaks.
    (void)::pthread_atfork(nullptr, nullptr, linkOwnProcess);
    machineIsPrivate = true;
    return {};
}

bool isMachinePrivate() {
    return machineIsPrivate;
}

}  // namespace ZR::test
