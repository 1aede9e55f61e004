#include "tests/support/substitutes/video_device_substitute.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>

#include "tests/support/substitutes/capture_call_log.h"

namespace ZR::test {

std::map<std::string, int, std::less<>> VideoDeviceSubstitute::paths;
std::map<int, SimulatedVideoDevice> VideoDeviceSubstitute::devices;
bool VideoDeviceSubstitute::asksKernelToo = false;

namespace {

/// Calls come before the first object of this program is made: until then nothing is looked up.
bool answersOpen = false;
bool answersIoctl = false;

struct Failure {
    int error;
    int times;
};

std::map<std::string, Failure>& failures() {
    static std::map<std::string, Failure> all;
    return all;
}

/// Tells whether a call is to fail, then with errno set.
bool isToFail(const char* function) {
    if (failures().empty())
        return false;
    const auto found = failures().find(function);
    if (found == failures().end())
        return false;
    errno = found->second.error;
    if (--found->second.times == 0)
        failures().erase(found);
    return true;
}

std::string numbers(const char* function, int descriptor, unsigned long long value) {
    return std::string(function) + ' ' + std::to_string(descriptor) + ' ' + std::to_string(value);
}

const char* nameOf(unsigned long request) {
    switch (request) {
        case VIDIOC_G_CTRL:
            return "VIDIOC_G_CTRL";
        case VIDIOC_S_CTRL:
            return "VIDIOC_S_CTRL";
        case VIDIOC_QUERYSTD:
            return "VIDIOC_QUERYSTD";
        case VIDIOC_S_STD:
            return "VIDIOC_S_STD";
        default:
            return "ioctl";
    }
}

/// The call as it is logged, with what it was given.
std::string textOf(unsigned long request, int descriptor, const void* argument) {
    const char* const name = nameOf(request);
    if (request == VIDIOC_QUERYSTD || request == VIDIOC_S_STD)
        return numbers(name, descriptor, *static_cast<const v4l2_std_id*>(argument));
    if (request != VIDIOC_G_CTRL && request != VIDIOC_S_CTRL)
        return numbers(name, descriptor, request);
    const auto* const control = static_cast<const v4l2_control*>(argument);
    return numbers(name, descriptor, control->id) + ' ' + std::to_string(control->value);
}

int answer(SimulatedVideoDevice& device, unsigned long request, void* argument) {
    switch (request) {
        case VIDIOC_G_CTRL:
            static_cast<v4l2_control*>(argument)->value = device.selection;
            return 0;
        case VIDIOC_S_CTRL:
            device.selection = static_cast<v4l2_control*>(argument)->value;
            device.controlSet = static_cast<v4l2_control*>(argument)->id;
            return 0;
        case VIDIOC_QUERYSTD:
            *static_cast<v4l2_std_id*>(argument) = device.signal;
            return 0;
        case VIDIOC_S_STD:
            device.standard = *static_cast<v4l2_std_id*>(argument);
            return 0;
        default:
            errno = ENOTTY;
            return -1;
    }
}

}  // namespace

void VideoDeviceSubstitute::fail(const std::string& function, int error, int times) {
    failures()[function] = {error, times};
}

void VideoDeviceSubstitute::reset() {
    paths.clear();
    devices.clear();
    asksKernelToo = false;
    failures().clear();
    answersOpen = answersIoctl = true;
}

void VideoDeviceSubstitute::leaveOpenToKernel() {
    answersOpen = false;
}

}  // namespace ZR::test

using ZR::test::CaptureCallLog;
using ZR::test::VideoDeviceSubstitute;

extern "C" {

int open(const char* path, int flags, ...) {
    std::va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    if (!ZR::test::answersOpen)
        return static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, flags, mode));
    CaptureCallLog::add(
        [=] { return std::string("open '") + path + "' " + std::to_string(flags); });
    if (ZR::test::isToFail("open"))
        return -1;
    const auto found = VideoDeviceSubstitute::paths.find(path);
    if (found != VideoDeviceSubstitute::paths.end())
        return found->second;
    errno = ENOENT;
    return -1;
}

int ioctl(int descriptor, unsigned long request, ...) noexcept {
    std::va_list rest;
    va_start(rest, request);
    void* const argument = va_arg(rest, void*);
    va_end(rest);
    if (!ZR::test::answersIoctl || VideoDeviceSubstitute::devices.count(descriptor) == 0)
        return static_cast<int>(::syscall(SYS_ioctl, descriptor, request, argument));
    CaptureCallLog::add([=] { return ZR::test::textOf(request, descriptor, argument); });
    if (VideoDeviceSubstitute::asksKernelToo)
        (void)::syscall(SYS_ioctl, descriptor, request, nullptr);
    if (ZR::test::isToFail(ZR::test::nameOf(request)))
        return -1;
    return ZR::test::answer(VideoDeviceSubstitute::devices[descriptor], request, argument);
}

}  // extern "C"
