#include "common/zrapi_common/zr_debug.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "tests/support/output_capture.h"
#include "tests/support/report_log.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::test {
namespace {

constexpr unsigned int neverReturned = 0xDEADBEEF;

/// Reports "message" to standard error while calls go wrong.
Trace traceReport(const FaultPlan& plan = {}) {
    return traceSystemCalls(
        [](TracedRun& run) {
            const unsigned int section = ZRDebug::insertNewDebugSection("zr_test");
            run.begin();
            ZRDebug::debugPrintError(1, section, "%s", "message");
            run.end();
            run.say("returned");
        },
        plan);
}

std::string writtenIn(const Trace& trace) {
    std::string text;
    for (const SystemCall& call : trace.calls)
        if (call.name == "write" && call.result > 0)
            text += call.text.substr(0, static_cast<std::size_t>(call.result));
    return text;
}

/// Reports when the process ends, after whatever the library itself destroys at its end.
struct ReportAtExit {
    unsigned int section = ZRDebug::insertNewDebugSection("late");
    ~ReportAtExit() { ZRDebug::debugPrintError(1, section, "%s", "report at exit"); }
};

std::string sectionOf(int reporter) {
    return "section" + std::to_string(reporter);
}

/// A message whose length and letter are its reporter's own.
std::string messageOf(int reporter) {
    return std::string(static_cast<std::size_t>(50 * reporter + 1),
                       static_cast<char>('a' + reporter));
}

/// Standard error as a pipe, which keeps each write in one piece up to a page.
class ErrorPipe {
  public:
    ErrorPipe() : savedErrors_(::dup(STDERR_FILENO)) {
        if (::pipe2(ends_.data(), O_CLOEXEC) != 0 || ::dup2(ends_[1], STDERR_FILENO) < 0)
            throw std::runtime_error("pipe");
        ::close(ends_[1]);
        reader_ = std::thread([this] { drain(); });
    }
    ErrorPipe(const ErrorPipe&) = delete;
    ErrorPipe& operator=(const ErrorPipe&) = delete;
    ~ErrorPipe() {
        finish();
        ::close(ends_[0]);
        ::close(savedErrors_);
    }

    /// How often each line came; ends the redirection.
    std::map<std::string, int> lines() {
        finish();
        std::map<std::string, int> counts;
        std::istringstream text(text_);
        for (std::string line; std::getline(text, line);)
            ++counts[line];
        return counts;
    }

  private:
    void drain() {
        std::array<char, 4096> buffer{};
        for (ssize_t count = 0; (count = ::read(ends_[0], buffer.data(), buffer.size())) > 0;)
            text_.append(buffer.data(), static_cast<std::size_t>(count));
    }

    void finish() {
        if (!reader_.joinable())
            return;
        ::dup2(savedErrors_, STDERR_FILENO);  // takes the last writing end away
        reader_.join();
    }

    int savedErrors_;
    std::array<int, 2> ends_{};
    std::string text_;
    std::thread reader_;
};

[[noreturn]] void exitWithReport() {
    static const ReportAtExit report;
    std::exit(0);
}

}  // namespace

TEST(DebugSection_pure, the_same_name_gives_the_same_handle) {
    const unsigned int section = ZRDebug::insertNewDebugSection("zr_test");
    ZRDebug::insertNewDebugSection("zr_other");
    EXPECT_EQ(ZRDebug::insertNewDebugSection("zr_test"), section);
}

TEST(DebugSection_pure, different_names_give_different_handles_and_none_is_0) {
    std::set<unsigned int> handles{0};
    for (int i = 0; i < 100; ++i)
        EXPECT_TRUE(
            handles.insert(ZRDebug::insertNewDebugSection("section " + std::to_string(i))).second);
}

TEST(DebugSection_pure, a_handle_is_an_unsigned_int) {
    EXPECT_TRUE((std::is_same_v<decltype(ZRDebug::insertNewDebugSection("")), unsigned int>));
}

TEST(DebugSection_pure, the_name_is_never_interpreted) {
    const unsigned int section = ZRDebug::insertNewDebugSection("100%s %n: x");
    const OutputCapture capture;
    ZRDebug::debugPrintError(1, section, "%s", "message");
    EXPECT_EQ(capture.errors(), "100%s %n: x: message\n");
}

TEST(DebugSection_pure, names_may_be_registered_by_several_threads_at_once) {
    constexpr int names = 50;
    std::vector<std::vector<unsigned int>> handles(4);
    std::vector<std::thread> threads;
    for (std::vector<unsigned int>& own : handles)
        threads.emplace_back([&own] {
            for (int i = 0; i < names; ++i)
                own.push_back(ZRDebug::insertNewDebugSection("shared " + std::to_string(i)));
        });
    for (std::thread& thread : threads)
        thread.join();
    for (const std::vector<unsigned int>& own : handles)
        EXPECT_EQ(own, handles[0]);
}

TEST(DebugReport_pure, goes_to_standard_error_as_section_and_message) {
    const unsigned int section = ZRDebug::insertNewDebugSection("zr_test");
    const OutputCapture capture;
    ZRDebug::debugPrintError(1, section, "%s", "message");
    EXPECT_EQ(capture.errors(), "zr_test: message\n");
    EXPECT_EQ(capture.output(), "");
}

TEST(DebugReport_pure, takes_the_formats_of_the_library) {
    const unsigned int section = ZRDebug::insertNewDebugSection("zr_test");
    const OutputCapture capture;
    ZRDebug::debugPrintError(1, section, "%s%d%s", "Port ", -3, " failed");
    ZRDebug::debugPrintError(1, section, "%s%d", "Device ", 4);
    ZRDebug::debugPrintError(1, section, "%s%d%s%d", "Device ", 4, ", value ", 101);
    ZRDebug::debugPrintError(1, section, "%s%s", "File ", "/dev/null");
    ZRDebug::debugPrintError(1, section, "%s %s", "Error", std::strerror(EIO));
    EXPECT_EQ(capture.errors(),
              "zr_test: Port -3 failed\n"
              "zr_test: Device 4\n"
              "zr_test: Device 4, value 101\n"
              "zr_test: File /dev/null\n"
              "zr_test: Error Input/output error\n");
}

TEST(DebugReport_pure, percent_signs_in_a_value_are_text) {
    const unsigned int section = ZRDebug::insertNewDebugSection("zr_test");
    const OutputCapture capture;
    ZRDebug::debugPrintError(1, section, "%s", "100% %s %d %n");
    EXPECT_EQ(capture.errors(), "zr_test: 100% %s %d %n\n");
}

TEST(DebugReport_pure, an_empty_message_is_a_line_too) {
    const unsigned int section = ZRDebug::insertNewDebugSection("zr_test");
    const OutputCapture capture;
    ZRDebug::debugPrintError(1, section, "%s", "");
    EXPECT_EQ(capture.errors(), "zr_test: \n");
}

TEST(DebugReport_pure, a_long_message_comes_whole) {
    const unsigned int section = ZRDebug::insertNewDebugSection("zr_test");
    const std::string message(100000, 'x');
    const OutputCapture capture;
    ZRDebug::debugPrintError(1, section, "%s%s", message.c_str(), "end");
    EXPECT_TRUE(capture.errors() == "zr_test: " + message + "end\n");
}

TEST(DebugReport_pure, a_handle_that_was_never_returned_reports_as_unknown) {
    const OutputCapture capture;
    ZRDebug::debugPrintError(1, neverReturned, "%s", "message");
    ZRDebug::debugPrintError(1, 0, "%s", "message");
    EXPECT_EQ(capture.errors(), "unknown: message\nunknown: message\n");
}

TEST(DebugReport_pure, works_while_the_process_ends) {
    EXPECT_EXIT(exitWithReport(), testing::ExitedWithCode(0), "late: report at exit");
}

TEST(DebugReport_pure, lines_of_several_threads_do_not_mix) {
    constexpr int reports = 200;
    ErrorPipe pipe;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([i] {
            const unsigned int section = ZRDebug::insertNewDebugSection(sectionOf(i));
            for (int report = 0; report < reports; ++report)
                ZRDebug::debugPrintError(1, section, "%s", messageOf(i).c_str());
        });
    for (std::thread& thread : threads)
        thread.join();
    std::map<std::string, int> lines = pipe.lines();
    EXPECT_EQ(lines.size(), threads.size());
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(lines[sectionOf(i) + ": " + messageOf(i)], reports);
}

TEST(DebugReport, is_one_write) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Trace trace = traceReport();
    EXPECT_EQ(trace.count("write"), 1U) << trace.names();
    EXPECT_EQ(writtenIn(trace), "zr_test: message\n");
}

TEST(DebugReport, is_repeated_when_a_signal_interrupted_it_and_completed_when_it_was_short) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Trace trace = traceReport({{}, {{SYS_write, 1, EINTR, 0}, {SYS_write, 2, 0, 4}}});
    EXPECT_EQ(trace.count("write"), 3U) << trace.names();
    EXPECT_EQ(writtenIn(trace), "zr_test: message\n");
}

TEST(DebugReport, gives_up_when_standard_error_takes_nothing) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    for (const int error : {EBADF, EIO, EAGAIN, ENOSPC}) {
        const Trace trace = traceReport({{}, {{SYS_write, 1, error, 0}}});
        EXPECT_EQ(trace.count("write"), 1U) << trace.names();
        EXPECT_EQ(trace.text, "returned");
    }
}

TEST(DebugSink_pure, receives_level_section_and_message_instead_of_standard_error) {
    const unsigned int section = ZRDebug::insertNewDebugSection("zr_test");
    const OutputCapture capture;
    const ReportLog log;
    ZRDebug::debugPrintError(ZRDebug::levelError, section, "%s%d", "message ", 1);
    ZRDebug::debugPrintError(2, neverReturned, "%s", "other");
    const std::vector<Report> expected{{1, "zr_test", "message 1"}, {2, "unknown", "other"}};
    EXPECT_EQ(log.reports(), expected);
    EXPECT_EQ(capture.errors(), "");
}

TEST(DebugSink_pure, none_gives_standard_error_its_reports_back) {
    const unsigned int section = ZRDebug::insertNewDebugSection("zr_test");
    ZRDebug::setSink([](int /*level*/, const char* /*section*/, const char* /*message*/) {});
    ZRDebug::setSink(nullptr);
    const OutputCapture capture;
    ZRDebug::debugPrintError(1, section, "%s", "message");
    EXPECT_EQ(capture.errors(), "zr_test: message\n");
}

TEST(DebugSink_pure, receives_the_reports_of_all_threads) {
    constexpr int reports = 500;
    const unsigned int section = ZRDebug::insertNewDebugSection("zr_test");
    static std::atomic<int> received{0};
    ZRDebug::setSink([](int /*level*/, const char* /*section*/, const char* message) {
        received += std::strcmp(message, "message 7") == 0 ? 1 : 0;
    });
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([section] {
            for (int report = 0; report < reports; ++report)
                ZRDebug::debugPrintError(1, section, "%s%d", "message ", 7);
        });
    for (std::thread& thread : threads)
        thread.join();
    ZRDebug::setSink(nullptr);
    EXPECT_EQ(received, 4 * reports);
}

}  // namespace ZR::test
