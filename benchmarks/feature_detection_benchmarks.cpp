#include <unistd.h>

#include <array>
#include <string>

#include "benchmarks/comparison.h"
#include "benchmarks/fresh_process.h"
#include "benchmarks/kernel_floor.h"
#include "benchmarks/operations.h"
#include "hardware/feature_detection/zr_feature_detection.h"

namespace ZR::benchmarks {
namespace {

constexpr char encoder[] = "/dev/input/encoder0";
constexpr char touchscreen[] = "/dev/input/ts0";
constexpr char otherTouchscreen[] = "/dev/input/touchscreen0";
constexpr char keyboard[] = "/dev/input/keyboard0";
constexpr char compatible[] = "/proc/device-tree/compatible";

// Called through a pointer that may change, because the compiler knows what the function does.
int (*volatile storedAnswer)() = &::getpagesize;

bool anyTouchscreen() {
    return isThere(touchscreen) || isThere(otherTouchscreen);
}

// Whatever hardware is there, both sides have to see the same.
void compareProbes() {
    const bool hasEncoder = isThere(encoder);
    compare(
        "hasEncoder", [hasEncoder] { return isThere(encoder) == hasEncoder; },
        [hasEncoder] { return ZRFeatureDetection::hasEncoder() == hasEncoder; });
    const bool hasTouchscreen = anyTouchscreen();
    compare(
        "hasTouchscreen", [hasTouchscreen] { return anyTouchscreen() == hasTouchscreen; },
        [hasTouchscreen] { return ZRFeatureDetection::hasTouchscreen() == hasTouchscreen; });
    const bool hasKeyboard = isThere(keyboard);
    compare(
        "hasKeyboard", [hasKeyboard] { return isThere(keyboard) == hasKeyboard; },
        [hasKeyboard] { return ZRFeatureDetection::hasKeyboard() == hasKeyboard; });
}

/// The text ends without a newline: only a second read shows that it is whole.
bool readDeviceTree() {
    const int descriptor = ::open(compatible, O_RDONLY | O_CLOEXEC);
    std::array<char, 256> text;  // NOLINT(*-init): filled by the read
    const ssize_t length = ::read(descriptor, text.data(), text.size());
    const bool ended = ::read(descriptor, text.data(), text.size()) == 0;
    return ::close(descriptor) == 0 && length > 0 && ended;
}

void compareProcessor() {
    const auto ask = [] {
        (void)ZRFeatureDetection::isRunningOnSingleCore();
        return true;
    };
    Comparison first;
    first.operation = "isRunningOnSingleCore/first";
    first.longestBatch = 1;
    first.floor = inFreshProcess(batchOf(&readDeviceTree));
    first.library = inFreshProcess(batchOf(ask));
    registerComparison(std::move(first));
    // Later answers are stored ones; a stored answer of the C library is their floor.
    compare(
        "isRunningOnSingleCore/later", [] { return storedAnswer() > 0; }, ask);
}

}  // namespace

void compareFeatureDetection() {
    compareProbes();
    compareProcessor();
}

}  // namespace ZR::benchmarks
