#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <string>
#include <thread>
#include <vector>

#include "common/zrapi_utility/zr_file_access.h"
#include "tests/support/allocation_counter.h"
#include "tests/support/private_root.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::test {
namespace {

constexpr char path[] = "/sys/bus/platform/devices/zr_do.0/state";

std::string writtenBy(int value) {
    makeFile(path, "a longer text that was there before\n");
    EXPECT_EQ(writeToFile(path, value), 0);
    return readFile(path);
}

Trace traceWriting(int value, const FaultPlan& plan = {}) {
    makeFile(path, "before\n");
    return traceSystemCalls(
        [value](TracedRun& run) {
            const std::string file = path;
            run.begin();
            const int status = writeToFile(file, value);
            run.end();
            run.say(std::to_string(status));
        },
        plan);
}

}  // namespace

TEST(WriteToFile, writes_decimal_digits_without_a_newline_over_what_was_there) {
    EXPECT_EQ(writtenBy(0), "0");
    EXPECT_EQ(writtenBy(1), "1");
    EXPECT_EQ(writtenBy(-1), "-1");
    EXPECT_EQ(writtenBy(1000000), "1000000");
}

TEST(WriteToFile, writes_the_whole_range_of_int) {
    EXPECT_EQ(writtenBy(INT_MAX), "2147483647");
    EXPECT_EQ(writtenBy(INT_MIN), "-2147483648");
}

TEST(WriteToFile, never_creates_a_file) {
    makeFolder("/sys/class");
    EXPECT_EQ(writeToFile("/sys/class/no_such_file", 1), ENOENT);
    EXPECT_FALSE(exists("/sys/class/no_such_file"));
}

TEST(WriteToFile, does_not_create_the_target_of_a_dangling_link) {
    makeLink("/sys/class/dangling", "/sys/class/no_such_file");
    EXPECT_EQ(writeToFile("/sys/class/dangling", 1), ENOENT);
    EXPECT_FALSE(exists("/sys/class/no_such_file"));
}

TEST(WriteToFile, fails_for_a_folder_and_an_empty_path) {
    makeFolder("/sys/class/leds");
    EXPECT_EQ(writeToFile("/sys/class/leds", 1), EISDIR);
    EXPECT_EQ(writeToFile("", 1), ENOENT);
}

TEST(WriteToFile, fails_when_the_driver_refuses_the_value) {
    EXPECT_EQ(writeToFile("/dev/full", 1), ENOSPC);
}

TEST(WriteToFile, writes_through_links) {
    makeFile("/sys/devices/zr_do.1/state", "0\n");
    makeLink("/sys/bus/platform/devices/zr_do.1", "/sys/devices/zr_do.1");
    EXPECT_EQ(writeToFile("/sys/bus/platform/devices/zr_do.1/state", 1), 0);
    EXPECT_EQ(readFile("/sys/devices/zr_do.1/state"), "1");
}

TEST(WriteToFile, costs_exactly_open_one_write_and_close) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Trace trace = traceWriting(-12345);
    EXPECT_EQ(trace.names(), "openat write close");
    ASSERT_EQ(trace.calls.size(), 3U);
    EXPECT_EQ(trace.calls[1].text, "-12345");
    EXPECT_EQ(trace.text, "0");
}

TEST(WriteToFile, allocates_nothing) {
    if (!canCountAllocations())
        GTEST_SKIP() << "a sanitizer owns the heap";
    makeFile(path, "0\n");
    const std::string file = path;
    const AllocationCounter counter;
    (void)writeToFile(file, INT_MIN);
    EXPECT_EQ(counter.count(), 0U);
}

TEST(WriteToFile, opens_for_writing_truncates_closes_on_exec_and_does_not_create) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Trace trace = traceWriting(1);
    ASSERT_EQ(trace.calls.size(), 3U);
    EXPECT_EQ(trace.calls[0].arguments[2], static_cast<unsigned>(O_WRONLY | O_TRUNC | O_CLOEXEC));
    EXPECT_EQ(trace.calls[2].arguments[0], static_cast<unsigned>(trace.calls[0].result));
}

TEST(WriteToFile, repeats_an_open_and_a_write_that_a_signal_interrupted) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Trace trace =
        traceWriting(1, {{}, {{SYS_openat, 1, EINTR, 0}, {SYS_write, 1, EINTR, 0}}});
    EXPECT_EQ(trace.names(), "openat openat write write close");
    EXPECT_EQ(trace.text, "0");
    EXPECT_EQ(readFile(path), "1");
}

TEST(WriteToFile, completes_a_short_write) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Trace trace = traceWriting(1234, {{}, {{SYS_write, 1, 0, 1}}});
    EXPECT_EQ(trace.names(), "openat write write close");
    EXPECT_EQ(trace.text, "0");
    EXPECT_EQ(readFile(path), "1234");
}

TEST(WriteToFile, fails_with_the_error_of_the_open) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    for (const int error : {EACCES, EIO, EMFILE}) {
        const Trace trace = traceWriting(1, {{}, {{SYS_openat, 1, error, 0}}});
        EXPECT_EQ(trace.names(), "openat");
        EXPECT_EQ(trace.text, std::to_string(error));
        EXPECT_EQ(readFile(path), "before\n");
    }
}

TEST(WriteToFile, fails_with_the_error_of_the_write_and_closes) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    for (const int error : {EIO, ERANGE, EBUSY, EINVAL}) {
        const Trace trace = traceWriting(1, {{}, {{SYS_write, 1, error, 0}}});
        EXPECT_EQ(trace.names(), "openat write close");
        EXPECT_EQ(trace.text, std::to_string(error));
    }
}

TEST(WriteToFile, fails_when_the_rest_of_a_short_write_fails) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Trace trace = traceWriting(12, {{}, {{SYS_write, 1, 0, 1}, {SYS_write, 2, EIO, 0}}});
    EXPECT_EQ(trace.names(), "openat write write close");
    EXPECT_EQ(trace.text, std::to_string(EIO));
}

TEST(WriteToFile, fails_when_the_close_reports_a_loss_but_not_when_a_signal_interrupted_it) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Trace lost = traceWriting(1, {{}, {{SYS_close, 1, EIO, 0}}});
    EXPECT_EQ(lost.text, std::to_string(EIO));
    EXPECT_EQ(lost.names(), "openat write close");
    const Trace interrupted = traceWriting(1, {{}, {{SYS_close, 1, EINTR, 0}}});
    EXPECT_EQ(interrupted.text, "0");
    EXPECT_EQ(interrupted.names(), "openat write close");
}

TEST(WriteToFile, works_in_several_threads_at_once) {
    constexpr int rounds = 500;
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        makeFile("/sys/value" + std::to_string(i), "");
        threads.emplace_back([&failures, i] {
            const std::string file = "/sys/value" + std::to_string(i);
            for (int round = 0; round < rounds; ++round)
                failures += writeToFile(file, i) == 0 ? 0 : 1;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(failures, 0);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(readFile("/sys/value" + std::to_string(i)), std::to_string(i));
}

}  // namespace ZR::test
