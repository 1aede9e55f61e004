#pragma once

#include <fcntl.h>

#include <string>
#include <vector>

#include "hardware/input_output/zr_input_output.h"
#include "tests/support/report_log.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::test {

/// A channel whose members the tests can see.
struct Channel : ZRInputOutput {
    using ZRInputOutput::channel;
    using ZRInputOutput::fileDescriptor;
    using ZRInputOutput::hysteresis;
    using ZRInputOutput::ignitionInputPath;
    using ZRInputOutput::lastValue;
    using ZRInputOutput::measureMode;
    using ZRInputOutput::path;
    using ZRInputOutput::reserved1;
    using ZRInputOutput::reserved2;
    using ZRInputOutput::type;
    using ZRInputOutput::ZRInputOutput;
};

using Reports = std::vector<Report>;

/// A report as the inputs and outputs make it.
inline Report inputOutputReport(const std::string& message) {
    return {1, "zr_io", message};
}

/// What the constructor reports after a failure with this cause.
inline Reports failedConstruction(const std::string& cause) {
    return {inputOutputReport(cause), inputOutputReport("Initializing I/O interface")};
}

inline bool isOpen(int descriptor) {
    return ::fcntl(descriptor, F_GETFD) >= 0;
}

inline bool closesOnExec(int descriptor) {
    return (::fcntl(descriptor, F_GETFD) & FD_CLOEXEC) != 0;
}

/// O_RDONLY, O_WRONLY or O_RDWR.
inline int accessMode(int descriptor) {
    return ::fcntl(descriptor, F_GETFL) & O_ACCMODE;
}

}  // namespace ZR::test
