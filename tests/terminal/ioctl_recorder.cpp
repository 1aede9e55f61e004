// Takes the place of ioctl, in a program or loaded before one (LD_PRELOAD), and writes each request
// to a media, video or sub-device node to the file that ZR_IOCTL_RECORD names: what was asked, byte by
// byte, and what the kernel answered.

#include <fcntl.h>
#include <linux/media.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <string>

namespace {

std::string nodeOf(int descriptor) {
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    std::array<char, 256> path{};
    const ssize_t size = ::readlink(link.c_str(), path.data(), path.size());
    return {path.data(), size > 0 ? static_cast<std::size_t>(size) : 0};
}

std::string bytes(const void* argument, std::size_t size) {
    constexpr char digits[] = "0123456789abcdef";
    const auto* const from = static_cast<const unsigned char*>(argument);
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
        text += digits[from[i] >> 4];
        text += digits[from[i] & 15];
    }
    return text;
}

/// Addresses differ from program to program: only whether there are any is shown.
std::string asked(unsigned long request, const void* argument) {
    if (request != MEDIA_IOC_ENUM_LINKS)
        return bytes(argument, _IOC_SIZE(request));
    const auto& links = *static_cast<const media_links_enum*>(argument);
    return std::to_string(links.entity) + (links.pads != nullptr ? " pads" : "") +
           (links.links != nullptr ? " links" : "");
}

void write(const std::string& line) {
    const char* const file = std::getenv("ZR_IOCTL_RECORD");
    if (file == nullptr)
        return;
    const int descriptor = ::open(file, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    if (::write(descriptor, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
        std::abort();
    ::close(descriptor);
}

}  // namespace

extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept {
    std::va_list rest;
    va_start(rest, request);
    void* const argument = va_arg(rest, void*);
    va_end(rest);
    const std::string node = nodeOf(descriptor);
    if (node.compare(0, 5, "/dev/") != 0 ||
        (_IOC_TYPE(request) != '|' && _IOC_TYPE(request) != 'V'))
        return static_cast<int>(::syscall(SYS_ioctl, descriptor, request, argument));
    std::string line =
        node + ' ' + bytes(&request, sizeof request) + ' ' + asked(request, argument);
    const int result = static_cast<int>(::syscall(SYS_ioctl, descriptor, request, argument));
    const int error = errno;
    line += result < 0 ? " error " + std::to_string(error) : " gave " + asked(request, argument);
    write(line + '\n');
    errno = error;
    return result;
}
