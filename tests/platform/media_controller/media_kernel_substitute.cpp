#include "tests/platform/media_controller/media_kernel_substitute.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdarg>

namespace ZR::test {

MediaKernel& mediaKernel() {
    static MediaKernel kernel;
    return kernel;
}

namespace {

int openAny(const char* path, int flags, unsigned int mode) {
    if (MediaKernel::owns(path))
        return mediaKernel().open(path, flags);
    return static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

}  // namespace
}  // namespace ZR::test

using ZR::test::mediaKernel;

// By their names in the object files: which one a call becomes depends on _FILE_OFFSET_BITS.
extern "C" {

int zrOpen(const char* path, int flags, ...) __asm__("open");
int zrOpen64(const char* path, int flags, ...) __asm__("open64");
int zrStat(const char* path, struct stat* status) __asm__("stat");
int zrStat64(const char* path, struct stat* status) __asm__("stat64");

int zrOpen(const char* path, int flags, ...) {
    std::va_list rest;
    va_start(rest, flags);
    const unsigned int mode = va_arg(rest, unsigned int);
    va_end(rest);
    return ZR::test::openAny(path, flags, mode);
}

int zrOpen64(const char* path, int flags, ...) {
    std::va_list rest;
    va_start(rest, flags);
    const unsigned int mode = va_arg(rest, unsigned int);
    va_end(rest);
    return ZR::test::openAny(path, flags, mode);
}

int zrStat(const char* path, struct stat* status) {
    if (ZR::test::MediaKernel::owns(path))
        return mediaKernel().stat(path, status);
    return ::fstatat(AT_FDCWD, path, status, 0);
}

int zrStat64(const char* path, struct stat* status) {
    return zrStat(path, status);
}

int close(int descriptor) {
    if (mediaKernel().owns(descriptor))
        return mediaKernel().close(descriptor);
    return static_cast<int>(::syscall(SYS_close, descriptor));
}

int ioctl(int descriptor, unsigned long request, ...) noexcept {
    std::va_list rest;
    va_start(rest, request);
    void* const argument = va_arg(rest, void*);
    va_end(rest);
    if (mediaKernel().owns(descriptor))
        return mediaKernel().ioctl(descriptor, request, argument);
    return static_cast<int>(::syscall(SYS_ioctl, descriptor, request, argument));
}

ssize_t readlink(const char* path, char* target, std::size_t size) noexcept {
    if (ZR::test::MediaKernel::owns(path))
        return mediaKernel().readlink(path, target, size);
    return ::syscall(SYS_readlinkat, AT_FDCWD, path, target, size);
}

}  // extern "C"
