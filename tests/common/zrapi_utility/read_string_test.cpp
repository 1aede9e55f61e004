#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cerrno>
#include <string>

#include "common/zrapi_utility/zr_file_access.h"
#include "tests/support/private_root.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::test {
namespace {

constexpr char path[] = "/sys/class/regulator/regulator.0/name";
constexpr char untouched[] = "untouched";
constexpr std::size_t page = 4096;
constexpr std::size_t mebibyte = std::size_t{1024} * 1024;

/// The text of a file with this content, which must be readable.
std::string textOf(const std::string& content) {
    makeFile(path, content);
    std::string text = untouched;
    EXPECT_EQ(readStringFromFile(path, &text), 0);
    return text;
}

/// The status of reading @p file, which must fail and leave the text alone.
int failureOf(const std::string& file) {
    std::string text = untouched;
    const int status = readStringFromFile(file, &text);
    EXPECT_EQ(text, untouched);
    return status;
}

Trace traceReading(const std::string& content, const FaultPlan& plan = {}) {
    makeFile(path, content);
    return traceSystemCalls(
        [](TracedRun& run) {
            const std::string file = path;
            std::string text = untouched;
            run.begin();
            const int status = readStringFromFile(file, &text);
            run.end();
            run.say(std::to_string(status) + ' ' + text);
        },
        plan);
}

}  // namespace

TEST(ReadStringFromFile, returns_the_text_without_its_newline) {
    EXPECT_EQ(textOf("enabled\n"), "enabled");
    EXPECT_EQ(textOf("enabled"), "enabled");
}

TEST(ReadStringFromFile, takes_off_every_line_feed_at_the_end_and_nothing_else) {
    EXPECT_EQ(textOf("enabled\n\n\n"), "enabled");
    EXPECT_EQ(textOf(" enabled \n"), " enabled ");
    EXPECT_EQ(textOf("enabled\r\n"), "enabled\r");
    EXPECT_EQ(textOf("\nenabled\n"), "\nenabled");
}

TEST(ReadStringFromFile, returns_all_lines) {
    EXPECT_EQ(textOf("first\nsecond\n"), "first\nsecond");
}

TEST(ReadStringFromFile, an_empty_file_is_an_empty_text) {
    EXPECT_EQ(textOf(""), "");
    EXPECT_EQ(textOf("\n"), "");
}

TEST(ReadStringFromFile, keeps_nul_bytes) {
    const std::string compatible("fsl,imx6dl-board\0fsl,imx6dl\0", 28);
    EXPECT_EQ(textOf(compatible), compatible);
}

TEST(ReadStringFromFile, returns_texts_around_one_page_whole) {
    for (const std::size_t size : {page - 1, page, page + 1, 3 * page, 100 * page + 7}) {
        const std::string content(size, 'x');
        EXPECT_TRUE(textOf(content) == content) << size;
        EXPECT_TRUE(textOf(content + '\n') == content) << size;
    }
}

TEST(ReadStringFromFile, returns_one_mebibyte_and_refuses_more) {
    const std::string content(mebibyte, 'x');
    EXPECT_TRUE(textOf(content) == content);
    makeFile(path, content + 'x');
    EXPECT_EQ(failureOf(path), EFBIG);
}

TEST(ReadStringFromFile, refuses_a_file_that_never_ends) {
    EXPECT_EQ(failureOf("/dev/zero"), EFBIG);
}

TEST(ReadStringFromFile, fails_for_a_missing_path_and_a_folder) {
    makeFolder("/sys/class/regulator");
    EXPECT_EQ(failureOf("/sys/class/regulator/no_such_file"), ENOENT);
    EXPECT_EQ(failureOf("/sys/class/regulator"), EISDIR);
    EXPECT_EQ(failureOf(""), ENOENT);
}

TEST(ReadStringFromFile, a_line_costs_open_read_and_close) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Trace trace = traceReading("ignition-irq\n");
    EXPECT_EQ(trace.names(), "openat read close");
    EXPECT_EQ(trace.text, "0 ignition-irq");
}

TEST(ReadStringFromFile, opens_read_only_and_close_on_exec) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Trace trace = traceReading("enabled\n");
    ASSERT_EQ(trace.calls.size(), 3U);
    EXPECT_EQ(trace.calls[0].arguments[2], static_cast<unsigned>(O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(trace.calls[2].arguments[0], static_cast<unsigned>(trace.calls[0].result));
}

TEST(ReadStringFromFile, repeats_interrupted_calls_and_puts_short_reads_together) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Trace trace = traceReading(
        "enabled\n",
        {{}, {{SYS_openat, 1, EINTR, 0}, {SYS_read, 1, EINTR, 0}, {SYS_read, 2, 0, 3}}});
    EXPECT_EQ(trace.names(), "openat openat read read read close");
    EXPECT_EQ(trace.text, "0 enabled");
}

TEST(ReadStringFromFile, fails_with_the_error_of_the_call_that_failed) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Trace opening = traceReading("enabled\n", {{}, {{SYS_openat, 1, EACCES, 0}}});
    EXPECT_EQ(opening.text, std::to_string(EACCES) + " untouched");
    const Trace reading = traceReading("enabled\n", {{}, {{SYS_read, 1, EIO, 0}}});
    EXPECT_EQ(reading.text, std::to_string(EIO) + " untouched");
    EXPECT_EQ(reading.names(), "openat read close");
}

TEST(ReadStringFromFile, leaves_the_text_alone_when_a_later_read_fails) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Trace trace =
        traceReading("enabled\n", {{}, {{SYS_read, 1, 0, 3}, {SYS_read, 2, EIO, 0}}});
    EXPECT_EQ(trace.text, std::to_string(EIO) + " untouched");
}

}  // namespace ZR::test
