#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstring>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "common/zrapi_utility/zr_file_access.h"
#include "tests/support/allocation_counter.h"
#include "tests/support/private_root.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::test {
namespace {

constexpr char path[] = "/sys/class/analog/ai.0/value";
constexpr int untouched = 4711;
constexpr std::size_t page = 4096;

struct Reading {
    int status;
    int value;
};

bool operator==(const Reading& left, const Reading& right) {
    return left.status == right.status && left.value == right.value;
}

std::ostream& operator<<(std::ostream& stream, const Reading& reading) {
    return stream << std::strerror(reading.status) << ", value " << reading.value;
}

Reading number(int value) {
    return {0, value};
}

Reading failure(int error) {
    return {error, untouched};
}

Reading readFrom(const std::string& file) {
    int value = untouched;
    const int status = readIntegerFromFile(file, &value);
    return {status, value};
}

Reading readText(const std::string& content) {
    makeFile(path, content);
    return readFrom(path);
}

/// Reads a file that holds @p content while calls go wrong; the reading is in the trace's text.
Trace traceReading(const std::string& content, const FaultPlan& plan = {}) {
    makeFile(path, content);
    return traceSystemCalls(
        [](TracedRun& run) {
            const std::string file = path;
            int value = untouched;
            run.begin();
            const int status = readIntegerFromFile(file, &value);
            run.end();
            run.say(std::to_string(status) + ' ' + std::to_string(value));
        },
        plan);
}

std::string said(const Reading& reading) {
    return std::to_string(reading.status) + ' ' + std::to_string(reading.value);
}

}  // namespace

TEST(ReadIntegerFromFile, reads_digits_with_and_without_a_newline) {
    EXPECT_EQ(readText("42\n"), number(42));
    EXPECT_EQ(readText("42"), number(42));
    EXPECT_EQ(readText("0\n"), number(0));
    EXPECT_EQ(readText("007\n"), number(7));
}

TEST(ReadIntegerFromFile, takes_one_sign) {
    EXPECT_EQ(readText("-42\n"), number(-42));
    EXPECT_EQ(readText("+42\n"), number(42));
    EXPECT_EQ(readText("-0\n"), number(0));
}

TEST(ReadIntegerFromFile, refuses_a_sign_without_digits_or_two_signs) {
    for (const char* const content : {"-", "+", "--1", "+-1", "-+1", "++1", "- 1", "+ 1", "1-"})
        EXPECT_EQ(readText(content), failure(EINVAL)) << content;
}

TEST(ReadIntegerFromFile, skips_blanks_before_and_blanks_and_line_ends_behind) {
    EXPECT_EQ(readText("  42\n"), number(42));
    EXPECT_EQ(readText("\t 42"), number(42));
    EXPECT_EQ(readText("42 \t\n"), number(42));
    EXPECT_EQ(readText("42\r\n"), number(42));
    EXPECT_EQ(readText("42\n\n\n"), number(42));
    EXPECT_EQ(readText("42\n \n"), number(42));
}

TEST(ReadIntegerFromFile, refuses_a_line_end_before_the_number) {
    EXPECT_EQ(readText("\n42\n"), failure(EINVAL));
    EXPECT_EQ(readText("\r42\n"), failure(EINVAL));
}

TEST(ReadIntegerFromFile, refuses_what_is_no_number) {
    for (const char* const content : {"enabled\n", "12a\n", "a12\n", "0x10\n", "1.5\n", "1,000\n",
                                      "1 2\n", "1\n2\n", "\v1\n", "1\f\n", "one"})
        EXPECT_EQ(readText(content), failure(EINVAL)) << content;
}

TEST(ReadIntegerFromFile, refuses_blanks_and_line_ends_alone) {
    for (const char* const content : {" ", "\n", " \t\n", "\r\n"})
        EXPECT_EQ(readText(content), failure(EINVAL));
}

TEST(ReadIntegerFromFile, refuses_nul_bytes) {
    EXPECT_EQ(readText(std::string("42\0", 3)), failure(EINVAL));
    EXPECT_EQ(readText(std::string("42\0\n", 4)), failure(EINVAL));
    EXPECT_EQ(readText(std::string("\00042\n", 4)), failure(EINVAL));
    EXPECT_EQ(readText(std::string("4\0002\n", 4)), failure(EINVAL));
}

TEST(ReadIntegerFromFile, an_empty_file_has_no_number) {
    EXPECT_EQ(readText(""), failure(ENODATA));
}

TEST(ReadIntegerFromFile, reads_the_whole_range_of_int) {
    EXPECT_EQ(readText("2147483647\n"), number(INT_MAX));
    EXPECT_EQ(readText("-2147483648\n"), number(INT_MIN));
    EXPECT_EQ(readText("00000000000000000002147483647\n"), number(INT_MAX));
}

TEST(ReadIntegerFromFile, refuses_a_number_outside_int) {
    for (const char* const content : {"2147483648\n", "-2147483649\n", "+2147483648",
                                      "4294967295\n", "99999999999999999999999999\n"})
        EXPECT_EQ(readText(content), failure(ERANGE)) << content;
}

TEST(ReadIntegerFromFile, reads_an_attribute_of_one_page) {
    EXPECT_EQ(readText(std::string(page - 2, ' ') + "7\n"), number(7));
    EXPECT_EQ(readText(std::string(page - 1, ' ') + "7"), number(7));
    EXPECT_EQ(readText("7" + std::string(page - 1, '\n')), number(7));
}

TEST(ReadIntegerFromFile, refuses_what_is_longer_than_a_page) {
    EXPECT_EQ(readText(std::string(page, ' ') + "7"), failure(EINVAL));
    EXPECT_EQ(readText("7" + std::string(page, ' ')), failure(EINVAL));
    EXPECT_EQ(readText("7" + std::string(3 * page, '\n')), failure(EINVAL));
}

TEST(ReadIntegerFromFile, fails_for_a_missing_path_a_folder_and_an_empty_path) {
    makeFolder("/sys/class/analog");
    EXPECT_EQ(readFrom("/sys/class/analog/no_such_file"), failure(ENOENT));
    EXPECT_EQ(readFrom("/sys/class/analog"), failure(EISDIR));
    EXPECT_EQ(readFrom(""), failure(ENOENT));
    EXPECT_EQ(readFrom("/sys/class/analog/" + std::string(300, 'x')), failure(ENAMETOOLONG));
}

TEST(ReadIntegerFromFile, follows_links_to_files_and_folders) {
    makeFile("/sys/devices/board/ai.0/value", "5\n");
    makeLink("/sys/class/analog/linked", "/sys/devices/board/ai.0");
    makeLink("/sys/class/analog/value", "/sys/devices/board/ai.0/value");
    EXPECT_EQ(readFrom("/sys/class/analog/linked/value"), number(5));
    EXPECT_EQ(readFrom("/sys/class/analog/value"), number(5));
}

TEST(ReadIntegerFromFile, a_device_that_gives_nothing_has_no_number) {
    EXPECT_EQ(readFrom("/dev/null"), failure(ENODATA));
}

TEST(ReadIntegerFromFile, costs_exactly_open_read_and_close) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Trace trace = traceReading("42\n");
    EXPECT_EQ(trace.names(), "openat read close");
    EXPECT_EQ(trace.text, "0 42");
}

TEST(ReadIntegerFromFile, a_full_page_costs_three_calls_as_well) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Trace trace = traceReading(std::string(page - 2, ' ') + "7\n");
    EXPECT_EQ(trace.names(), "openat read close");
}

TEST(ReadIntegerFromFile, allocates_nothing) {
    if (!canCountAllocations())
        GTEST_SKIP() << "a sanitizer owns the heap";
    makeFile(path, "42\n");
    const std::string file = path;
    int value = untouched;
    const AllocationCounter counter;
    (void)readIntegerFromFile(file, &value);
    EXPECT_EQ(counter.count(), 0U);
}

TEST(ReadIntegerFromFile, opens_read_only_and_close_on_exec) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Trace trace = traceReading("42\n");
    ASSERT_EQ(trace.calls.size(), 3U);
    EXPECT_EQ(trace.calls[0].arguments[2], static_cast<unsigned>(O_RDONLY | O_CLOEXEC));
}

TEST(ReadIntegerFromFile, closes_the_descriptor_that_it_opened) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    for (const char* const content : {"42\n", "", "no number\n"}) {
        const Trace trace = traceReading(content);
        ASSERT_EQ(trace.calls.back().name, "close") << content;
        EXPECT_EQ(trace.calls.back().arguments[0], static_cast<unsigned>(trace.calls[0].result));
    }
}

TEST(ReadIntegerFromFile, repeats_an_open_and_a_read_that_a_signal_interrupted) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Trace trace = traceReading(
        "42\n",
        {{}, {{SYS_openat, 1, EINTR, 0}, {SYS_openat, 2, EINTR, 0}, {SYS_read, 1, EINTR, 0}}});
    EXPECT_EQ(trace.names(), "openat openat openat read read close");
    EXPECT_EQ(trace.text, said(number(42)));
}

TEST(ReadIntegerFromFile, puts_short_reads_together) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Trace trace = traceReading("1234\n", {{}, {{SYS_read, 1, 0, 1}, {SYS_read, 2, 0, 2}}});
    EXPECT_EQ(trace.names(), "openat read read read close");
    EXPECT_EQ(trace.text, said(number(1234)));
}

TEST(ReadIntegerFromFile, fails_with_the_error_of_the_open) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    for (const int error : {EACCES, ENODEV, EIO, EMFILE}) {
        const Trace trace = traceReading("42\n", {{}, {{SYS_openat, 1, error, 0}}});
        EXPECT_EQ(trace.names(), "openat");
        EXPECT_EQ(trace.text, said(failure(error)));
    }
}

TEST(ReadIntegerFromFile, fails_with_the_error_of_the_read_and_closes) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    for (const int error : {EIO, EAGAIN, ENODATA, ENXIO, ETIMEDOUT, ENODEV}) {
        const Trace trace = traceReading("42\n", {{}, {{SYS_read, 1, error, 0}}});
        EXPECT_EQ(trace.names(), "openat read close");
        EXPECT_EQ(trace.text, said(failure(error)));
    }
}

TEST(ReadIntegerFromFile, fails_when_a_later_read_fails) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Trace trace = traceReading("42\n", {{}, {{SYS_read, 1, 0, 1}, {SYS_read, 2, EIO, 0}}});
    EXPECT_EQ(trace.text, said(failure(EIO)));
}

TEST(ReadIntegerFromFile, does_not_mind_a_close_that_fails) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Trace trace = traceReading("42\n", {{}, {{SYS_close, 1, EINTR, 0}}});
    EXPECT_EQ(trace.names(), "openat read close");
    EXPECT_EQ(trace.text, said(number(42)));
}

TEST(ReadIntegerFromFile, works_in_several_threads_at_once) {
    constexpr int rounds = 500;
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        makeFile("/sys/value" + std::to_string(i), std::to_string(i) + '\n');
        threads.emplace_back([&wrong, i] {
            const std::string file = "/sys/value" + std::to_string(i);
            for (int round = 0; round < rounds; ++round)
                wrong += readFrom(file) == number(i) ? 0 : 1;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

}  // namespace ZR::test
