#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "platform/media_controller/node_internal.h"

namespace ZR::media_controller {
namespace {

constexpr char numberFolder[] = "/sys/dev/char/";
constexpr char deviceFolder[] = "/dev/";

}  // namespace

Node::~Node() {
    if (isOpen())
        (void)::close(descriptor_);
}

int Node::open(const char* path) noexcept {
    do {
        descriptor_ = ::open(path, O_RDWR | O_CLOEXEC);
    } while (descriptor_ < 0 && errno == EINTR);
    return descriptor_ < 0 ? -errno : 0;
}

int Node::control(unsigned long request, void* argument) const noexcept {
    int result = 0;
    do {
        result = ::ioctl(descriptor_, request, argument);
    } while (result < 0 && errno == EINTR);
    return result < 0 ? -errno : 0;
}

std::string devicePath(unsigned int major, unsigned int minor) {
    const std::string link = numberFolder + std::to_string(major) + ':' + std::to_string(minor);
    std::array<char, 1024> target{};
    const auto count = ::readlink(link.c_str(), target.data(), target.size());
    // What fills the buffer may have been cut off.
    if (count <= 0 || static_cast<std::size_t>(count) >= target.size())
        return {};
    const std::string folders(target.data(), static_cast<std::size_t>(count));
    const std::size_t last = folders.rfind('/');
    if (last == std::string::npos)
        return {};
    std::string path = deviceFolder + folders.substr(last + 1);
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISCHR(status.st_mode) ||
        status.st_rdev != makedev(major, minor))
        return {};
    return path;
}

}  // namespace ZR::media_controller
