#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <thread>

#include "common/zrapi_common/zr_debug.h"
#include "tests/support/allocation_counter.h"
#include "tests/support/output_capture.h"
#include "tests/support/private_root.h"
#include "tests/support/report_log.h"
#include "tests/support/system_call_tracer.h"

// The other tests believe what these helpers say, so the helpers are tested first.

namespace ZR::test {
namespace {

TEST(PrivateMachine, sys_is_empty) {
    EXPECT_TRUE(std::filesystem::is_empty("/sys"));
}

TEST(PrivateMachine, files_can_be_made_in_sys_dev_proc_and_usr_bin) {
    for (const char* const path : {"/sys/class/leds/bl:key/trigger", "/dev/input/encoder0",
                                   "/proc/device-tree/compatible", "/usr/bin/ts_calibrate"}) {
        makeFile(path, "content");
        EXPECT_EQ(readFile(path), "content");
        removeFile(path);
        EXPECT_FALSE(exists(path));
    }
}

TEST(PrivateMachine, the_process_still_finds_itself_in_proc) {
    EXPECT_TRUE(exists("/proc/self/maps"));
    EXPECT_TRUE(exists("/proc/" + std::to_string(::getpid()) + "/task"));
    EXPECT_TRUE(exists("/dev/fd/0"));
    EXPECT_NE(readFile("/proc/self/cmdline").find("support_test"), std::string::npos);
}

TEST(PrivateMachine, tools_still_run) {
    EXPECT_EQ(std::system("ls / >/dev/null"), 0);
}

TEST(PrivateMachine, full_refuses_and_null_takes_what_is_written) {
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    const int null = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    EXPECT_EQ(::write(full, "1", 1), -1);
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_EQ(::write(null, "1", 1), 1);
    ::close(full);
    ::close(null);
}

TEST(PrivateRoot, a_device_node_is_a_character_device_and_can_be_removed) {
    makeDeviceNode("/dev/input/ts0");
    struct stat status {};
    ASSERT_EQ(::stat("/dev/input/ts0", &status), 0);
    EXPECT_TRUE(S_ISCHR(status.st_mode));
    removeFile("/dev/input/ts0");
    EXPECT_FALSE(exists("/dev/input/ts0"));
}

TEST(PrivateRoot, links_folders_and_fifos_are_what_they_say) {
    makeFolder("/sys/devices/one");
    makeLink("/sys/class/one", "/sys/devices/one");
    makeFifo("/sys/devices/one/fifo");
    EXPECT_TRUE(std::filesystem::is_directory("/sys/class/one"));
    EXPECT_TRUE(std::filesystem::is_fifo("/sys/class/one/fifo"));
}

TEST(PrivateRoot, a_shorter_content_replaces_a_longer_one) {
    makeFile("/sys/value", "longer\n");
    makeFile("/sys/value", "x");
    EXPECT_EQ(readFile("/sys/value"), "x");
}

TEST(OutputCapture, takes_streams_stdio_and_bare_writes) {
    OutputCapture capture;
    std::cout << "a";
    std::cout.flush();
    std::printf("b");
    std::fflush(stdout);
    (void)!::write(STDOUT_FILENO, "c", 1);
    std::cerr << "d";
    capture.release();
    EXPECT_EQ(capture.output(), "abc");
    EXPECT_EQ(capture.errors(), "d");
}

TEST(ReportLog, collects_level_section_and_message) {
    const unsigned int section = ZRDebug::insertNewDebugSection("some section");
    ReportLog log;
    ZRDebug::debugPrintError(1, section, "%s%d", "text ", 3);
    const Report expected{1, "some section", "text 3"};
    ASSERT_EQ(log.reports().size(), 1U);
    EXPECT_EQ(log.reports()[0], expected);
}

TEST(ReportLog, gives_the_reports_back_to_standard_error_at_its_end) {
    const unsigned int section = ZRDebug::insertNewDebugSection("some section");
    { const ReportLog log; }
    OutputCapture capture;
    ZRDebug::debugPrintError(1, section, "%s", "text");
    EXPECT_EQ(capture.errors(), "some section: text\n");
}

TEST(AllocationCounter, counts_malloc_and_new_of_its_own_thread_only) {
    if (!canCountAllocations())
        GTEST_SKIP() << "a sanitizer owns the heap";
    std::thread other;
    const AllocationCounter counter;
    const auto block = std::make_unique<char[]>(100);
    void* volatile const second = std::malloc(100);
    EXPECT_EQ(counter.count(), 2U);
    std::free(second);
    const std::size_t before = counter.count();
    other = std::thread([] { (void)std::make_unique<int>(1); });
    other.join();
    EXPECT_LE(counter.count(), before + 2);  // the thread's own state, not what it allocates
}

class SystemCallTracer : public testing::Test {
  protected:
    void SetUp() override {
        if (!whyNotTraceable().empty())
            GTEST_SKIP() << whyNotTraceable();
        makeFile("/sys/value", "0\n");
    }
};

void writeValue(TracedRun& run) {
    const int file = ::open("/sys/value", O_RDWR | O_CLOEXEC);
    run.begin();
    const ssize_t written = ::write(file, "12345\n", 6);
    run.say(std::to_string(written) + ' ' + std::to_string(written < 0 ? errno : 0));
    run.end();
    ::close(file);
}

TEST_F(SystemCallTracer, records_what_lies_between_the_markers) {
    const Trace trace = traceSystemCalls(writeValue);
    ASSERT_EQ(trace.names(), "write");
    EXPECT_EQ(trace.calls[0].text, "12345\n");
    EXPECT_EQ(trace.calls[0].result, 6);
    EXPECT_EQ(trace.text, "6 0");
    EXPECT_FALSE(trace.died);
}

TEST_F(SystemCallTracer, names_the_path_of_an_open_and_the_error_of_a_failure) {
    const Trace trace = traceSystemCalls([](TracedRun& run) {
        run.begin();
        (void)::open("/sys/missing", O_RDONLY | O_CLOEXEC);
        run.end();
    });
    ASSERT_EQ(trace.names(), "openat");
    EXPECT_EQ(trace.calls[0].text, "/sys/missing");
    EXPECT_EQ(trace.calls[0].result, -1);
    EXPECT_EQ(trace.calls[0].error, ENOENT);
}

TEST_F(SystemCallTracer, a_failed_call_is_not_made) {
    const Trace trace = traceSystemCalls(writeValue, {{{0, EIO, 0}}, {}});
    EXPECT_EQ(trace.text, "-1 " + std::to_string(EIO));
    EXPECT_TRUE(trace.calls.at(0).injected);
    EXPECT_EQ(readFile("/sys/value"), "0\n");
}

TEST_F(SystemCallTracer, a_shortened_call_moves_less) {
    const Trace trace = traceSystemCalls(writeValue, {{}, {{SYS_write, 1, 0, 2}}});
    EXPECT_EQ(trace.text, "2 0");
    EXPECT_EQ(readFile("/sys/value"), "12");
}

TEST_F(SystemCallTracer, only_the_named_occurrence_goes_wrong) {
    const Trace trace = traceSystemCalls(writeValue, {{}, {{SYS_write, 2, EIO, 0}}});
    EXPECT_EQ(trace.text, "6 0");
}

/// What the undefined-behaviour sanitizer does before it looks at an object.
void writeValueAfterProbe(TracedRun& run) {
    run.begin();
    std::array<int, 2> ends{};
    (void)!::pipe2(ends.data(), O_CLOEXEC);
    (void)!::write(ends[1], "probe", 5);
    ::close(ends[0]);
    ::close(ends[1]);
    // Takes the number of one of the pipe's ends.
    const int file = ::open("/sys/value", O_RDWR | O_CLOEXEC);
    run.say(std::to_string(::write(file, "1\n", 2)));
    run.end();
    ::close(file);
}

TEST_F(SystemCallTracer, a_pipe_of_its_own_counts_except_where_a_sanitizer_makes_some_too) {
    const Trace trace = traceSystemCalls(writeValueAfterProbe, {{}, {{SYS_write, 1, EIO, 0}}});
#ifdef __SANITIZE_ADDRESS__
    EXPECT_EQ(trace.names(), "openat write");
    EXPECT_EQ(trace.text, "-1");
#else
    EXPECT_EQ(trace.count("write"), 2U);
    EXPECT_EQ(trace.count("close"), 2U);
    EXPECT_EQ(trace.text, "2");
#endif
}

TEST_F(SystemCallTracer, tells_that_the_function_died) {
    EXPECT_TRUE(traceSystemCalls([](TracedRun&) { ::_exit(3); }).died);
    EXPECT_TRUE(traceSystemCalls([](TracedRun&) { ::kill(::getpid(), SIGKILL); }).died);
    EXPECT_TRUE(traceSystemCalls([](TracedRun&) { throw std::runtime_error("x"); }).died);
}

}  // namespace
}  // namespace ZR::test
