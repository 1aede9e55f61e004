#include <fcntl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <iostream>
#include <ostream>
#include <string>
#include <vector>

#include "tests/hardware/fault_injection/fault_case.h"
#include "tests/support/output_capture.h"
#include "tests/support/report_log.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::test {

CallRule fails(const std::string& call, const std::string& outcome) {
    return {call, outcome, outcome, outcome, good, good, {}};
}

CallRule repeats(const std::string& call, const std::string& outcome) {
    return {call, outcome, outcome, good, good, good, {}};
}

CallRule lists(const std::string& outcome, const std::string& ended) {
    return {"getdents64", outcome, ended, good, good, good, {}};
}

CallRule hides(const std::string& call, const std::string& reason) {
    return {call, good, good, good, good, good, reason};
}

void PrintTo(const FaultCase& each, std::ostream* stream) {
    *stream << each.name;
}

namespace {

/// Between the outcome of the operation that meets the fault and that of the next one.
constexpr char separator[] = "\nafterwards: ";

std::string separated(const std::string& first, const std::string& next) {
    return first + separator + next;
}

/// Calls that talk to files and sockets; memory and threads are the C library's own business.
bool talksToFiles(const std::string& name) {
    for (const char* const each :
         {"openat", "read", "write", "close", "lseek", "stat", "fstat", "getdents64", "socket",
          "fcntl", "ioctl", "bind", "setsockopt", "sendto", "recvfrom"})
        if (name == each)
            return true;
    return false;
}

/// One name for what C libraries and machines call differently.
std::string plainName(const SystemCall& call) {
    if (call.name == "newfstatat" || call.name == "statx")
        return call.text.empty() ? "fstat" : "stat";
    // Of folders the C library asks and sets other flags by itself.
    if (call.name == "fcntl" && call.arguments[1] != F_SETFL)
        return "fcntl by the C library";
    return call.name;
}

/// Which of the calls of its kind a call is, counted from 1. Its place among all calls is not the
/// same in each run: where a sanitizer owns the heap, memory comes from the kernel at other times.
std::size_t occurrence(const Trace& trace, std::size_t index) {
    const auto first = trace.calls.begin();
    const long number = trace.calls[index].number;
    return static_cast<std::size_t>(
        std::count_if(first, first + static_cast<std::ptrdiff_t>(index) + 1,
                      [number](const SystemCall& call) { return call.number == number; }));
}

std::string outcome(const FaultCase& each, const std::function<std::string()>& operate) {
    ReportLog log;
    OutputCapture capture;
    std::string text = operate();
    capture.release();
    for (const Report& report : log.reports()) {
        EXPECT_EQ(report.level, 1);
        text += " | " + report.message;
    }
    if (!capture.output().empty())
        text += " | " + capture.output();
    if (each.observe)
        text += " | " + each.observe();
    return text;
}

/// The operation under @p plan, and once more without.
Trace run(const FaultCase& each, const FaultPlan& plan) {
    each.layOut();
    return traceSystemCalls(
        [&each](TracedRun& traced) {
            {
                // The first line of a process also makes the C library's buffer.
                const OutputCapture capture;
                std::cout << std::endl;
            }
            if (each.prepare)
                each.prepare();
            traced.say(outcome(each, [&] {
                traced.begin();
                std::string text = each.operate();
                traced.end();
                return text;
            }));
            traced.say(separator + outcome(each, each.operate));
        },
        plan);
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from))
        text.replace(at, from.size(), to);
    return text;
}

class FaultInjection : public testing::TestWithParam<FaultCase> {
  protected:
    void SetUp() override {
        if (!whyNotTraceable().empty())
            GTEST_SKIP() << whyNotTraceable();
    }

    /// Outcome of a good operation that is not the first.
    static std::string nextGood() {
        return GetParam().nextOutcome.empty() ? GetParam().goodOutcome : GetParam().nextOutcome;
    }

    /// An expected outcome, for one injected errno.
    static std::string filledIn(const std::string& text, int error) {
        const std::string withGood = replaced(text, good, GetParam().goodOutcome);
        const std::string withError = replaced(withGood, "{error}", std::to_string(error));
        return replaced(withError, "{reason}", std::strerror(error));
    }

    static void expectOutcome(const std::string& expected, const std::string& afterwards,
                              const NumberedFault& fault) {
        SCOPED_TRACE(fault.error == 0 ? "short count" : std::strerror(fault.error));
        const Trace trace = run(GetParam(), {{}, {fault}});
        const std::string text =
            separated(expected, expected == good || afterwards == good ? nextGood() : afterwards);
        EXPECT_FALSE(trace.died);
        EXPECT_EQ(trace.text, filledIn(text, fault.error));
        EXPECT_EQ(std::count_if(trace.calls.begin(), trace.calls.end(),
                                [](const SystemCall& call) { return call.injected; }),
                  1);
    }
};

TEST_P(FaultInjection, each_system_call_may_fail_once) {
    const Trace trace = run(GetParam(), {});
    EXPECT_EQ(trace.text, separated(GetParam().goodOutcome, nextGood()));
    auto rule = GetParam().calls.begin();
    for (std::size_t index = 0; index < trace.calls.size(); ++index) {
        const std::string name = plainName(trace.calls[index]);
        if (!talksToFiles(name))
            continue;
        ASSERT_NE(rule, GetParam().calls.end()) << "one call more: " << trace.calls[index];
        ASSERT_EQ(rule->call, name) << trace.names();
        const long number = trace.calls[index].number;
        const std::size_t nth = occurrence(trace, index);
        const auto failing = [number, nth](int error) {
            return NumberedFault{number, nth, error, 0};
        };
        SCOPED_TRACE("call " + std::to_string(index) + ", " + name + ". " + rule->reason);
        expectOutcome(rule->failed, rule->afterwards, failing(EIO));
        expectOutcome(rule->failed, rule->afterwards, failing(EACCES));
        expectOutcome(rule->missing, rule->afterwards, failing(ENOENT));
        expectOutcome(rule->interrupted, rule->afterwards, failing(EINTR));
        if (name == "read" || name == "write")
            expectOutcome(rule->shortened, rule->afterwardsShortened, {number, nth, 0, 1});
        ++rule;
    }
    EXPECT_EQ(rule, GetParam().calls.end()) << "fewer calls: " << trace.names();
}

std::string nameOf(const testing::TestParamInfo<FaultCase>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Can, FaultInjection, testing::ValuesIn(canCases()), nameOf);
INSTANTIATE_TEST_SUITE_P(Dimmable, FaultInjection, testing::ValuesIn(dimmableCases()), nameOf);
INSTANTIATE_TEST_SUITE_P(DimmableBuilding, FaultInjection,
                         testing::ValuesIn(dimmableBuildingCases()), nameOf);
INSTANTIATE_TEST_SUITE_P(InputOutput, FaultInjection, testing::ValuesIn(inputOutputCases()),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Netlink, FaultInjection, testing::ValuesIn(netlinkCases()), nameOf);
INSTANTIATE_TEST_SUITE_P(FeatureDetection, FaultInjection,
                         testing::ValuesIn(featureDetectionCases()), nameOf);
INSTANTIATE_TEST_SUITE_P(FileServices, FaultInjection, testing::ValuesIn(fileServiceCases()),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(VideoInput, FaultInjection, testing::ValuesIn(videoInputCases()), nameOf);

}  // namespace
}  // namespace ZR::test
