#pragma once

#include <sys/ioctl.h>

#include <cerrno>

namespace ZR {

/// The first number that a descriptor of a video device can have: 0 is taken for "not open", on
/// purpose, as it is what a descriptor that nobody set would read.
constexpr int firstVideoDescriptor = 1;

/// Asks the driver behind a video node or a sub-device, again when a signal came between. False with
/// `errno` set when it does not answer.
template <typename Argument>
bool askVideoDriver(int descriptor, unsigned long request, Argument& argument) {
    int status = 0;
    do {
        status = ::ioctl(descriptor, request, &argument);
    } while (status < 0 && errno == EINTR);
    return status >= 0;
}

/// Tells the driver a setting, once: also what a signal has interrupted is not repeated. False with
/// `errno` set when it refuses.
template <typename Argument>
bool tellVideoDriver(int descriptor, unsigned long request, Argument& argument) {
    return ::ioctl(descriptor, request, &argument) >= 0;
}

}  // namespace ZR
