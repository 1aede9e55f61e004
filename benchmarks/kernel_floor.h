#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <string_view>

/// The bare system calls that do an operation's job. No result is interpreted, no text is parsed,
/// nothing is locked: whatever the library takes beyond them is the library's own price.
namespace ZR::benchmarks {

inline bool isThere(const char* path) {
    struct stat status;  // NOLINT(*-init): filled by the call
    return ::stat(path, &status) == 0;
}

inline bool openReadClose(const char* path) {
    const int descriptor = ::open(path, O_RDONLY | O_CLOEXEC);
    std::array<char, 32> text;  // NOLINT(*-init): filled by the read
    const bool done = ::read(descriptor, text.data(), text.size()) > 0;
    return ::close(descriptor) == 0 && done;
}

inline bool openWriteClose(const char* path, std::string_view text) {
    const int descriptor = ::open(path, O_WRONLY | O_TRUNC | O_CLOEXEC);
    const bool done =
        ::write(descriptor, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    return ::close(descriptor) == 0 && done;
}

inline bool rewindAndRead(int descriptor) {
    std::array<char, 32> text;  // NOLINT(*-init): filled by the read
    return ::lseek(descriptor, 0, SEEK_SET) == 0 &&
           ::read(descriptor, text.data(), text.size()) > 0;
}

inline bool rewindAndWrite(int descriptor, std::string_view text) {
    return ::lseek(descriptor, 0, SEEK_SET) == 0 &&
           ::write(descriptor, text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

}  // namespace ZR::benchmarks
