#include "tests/support/private_root.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "tests/support/private_machine.h"

namespace ZR::test {
namespace {

void requirePrivateMachine() {
    if (!isMachinePrivate())
        throw std::runtime_error("the machine is not private");
}

void check(bool succeeded, const std::string& path) {
    if (!succeeded)
        throw std::runtime_error(path + ": " + std::strerror(errno));
}

void makeParent(const std::string& path) {
    requirePrivateMachine();
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
}

}  // namespace

void makeFile(const std::string& path, const std::string& content) {
    makeParent(path);
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << content;
    file.close();
    check(file.good(), path);
}

std::string readFile(const std::string& path) {
    requirePrivateMachine();
    std::ifstream file(path, std::ios::binary);
    check(file.is_open(), path);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

void removeFile(const std::string& path) {
    requirePrivateMachine();
    // A device that had to be bound is a mount point.
    (void)::umount2(path.c_str(), UMOUNT_NOFOLLOW);
    std::filesystem::remove_all(path);
}

void makeFolder(const std::string& path) {
    requirePrivateMachine();
    std::filesystem::create_directories(path);
}

void makeLink(const std::string& path, const std::string& target) {
    makeParent(path);
    check(::symlink(target.c_str(), path.c_str()) == 0, path);
}

void makeDeviceNode(const std::string& path) {
    makeDeviceNode(path, "null");
}

void makeDeviceNode(const std::string& path, const std::string& name) {
    const std::string device = "/dev/" + name;
    makeFile(path, "");
    // A user namespace lets nobody make a device; a bound one is the same to who opens it.
    check(::mount(device.c_str(), path.c_str(), nullptr, MS_BIND, nullptr) == 0, path);
}

void makeFifo(const std::string& path) {
    makeParent(path);
    check(::mkfifo(path.c_str(), 0666) == 0, path);
}

bool exists(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0;
}

}  // namespace ZR::test
