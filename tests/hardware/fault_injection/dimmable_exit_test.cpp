#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include "hardware/dimmable/zr_dimmable.h"
#include "tests/support/private_root.h"
#include "tests/support/system_call_tracer.h"

// The object ends with the process, and there is no next operation: what counts is that the process
// leaves as it wanted to, with every device closed and nothing written or printed.

namespace ZR::test {
namespace {

constexpr int wantedStatus = 7;
constexpr char displayFile[] =
    "/sys/devices/platform/pwm-backlight.0/backlight/pwm-backlight.0/brightness";

void makeDevices() {
    for (const char* const path :
         {displayFile, "/sys/class/leds/bl:key/brightness", "/sys/class/leds/bl:enc/brightness",
          "/sys/class/leds/user:rgb/brightness", "/sys/bus/platform/devices/pwm-speaker.0/volume"})
        makeFile(path, "128\n");
}

/// A process that builds the object and leaves.
Trace traceExit(const FaultPlan& plan) {
    makeDevices();
    return traceSystemCalls(
        [](TracedRun& run) {
            (void)ZRDimmable::getInstance();
            run.begin();
            std::exit(wantedStatus);
        },
        plan);
}

TEST(DimmableExitFaults, each_close_of_a_device_may_fail_once) {
    if (!whyNotTraceable().empty())
        GTEST_SKIP() << whyNotTraceable();
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the leak check of a process that leaves does not work in a traced one";
#endif
#ifdef ZRAPI_COVERAGE
    GTEST_SKIP() << "the coverage counters are written to files when the process leaves";
#endif
    for (std::size_t nth = 1; nth <= 5; ++nth)
        for (const int error : {EIO, EACCES, ENOENT, EINTR}) {
            SCOPED_TRACE(std::to_string(nth) + ". close: " + std::strerror(error));
            const Trace trace = traceExit({{}, {{SYS_close, nth, error, 0}}});
            EXPECT_EQ(std::count_if(trace.calls.begin(), trace.calls.end(),
                                    [](const SystemCall& call) { return call.injected; }),
                      1);
            EXPECT_TRUE(WIFEXITED(trace.status));
            EXPECT_EQ(WEXITSTATUS(trace.status), wantedStatus);
            EXPECT_EQ(trace.count("close"), 5U) << trace.names();
            EXPECT_EQ(trace.count("write"), 0U) << trace.names();
        }
}

}  // namespace
}  // namespace ZR::test
