#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <string>

#include "hardware/input_output/zr_input_output.h"
#include "tests/hardware/costs/operation_cost.h"
#include "tests/support/allocation_counter.h"
#include "tests/support/output_capture.h"
#include "tests/support/private_root.h"

namespace ZR::test {
namespace {

constexpr char attribute[] = "/sys/bus/platform/devices/zr_do.1/state";
constexpr char printedLine[] = "Set /sys/bus/platform/devices/zr_do.1/state to 1 successful!\n";
constexpr char outputFile[] = "/dev/shm/output";

class SwitchingCost : public CostTest {
  protected:
    void SetUp() override {
        CostTest::SetUp();
        makeFile(attribute, "0\n");
        makeFile(outputFile, "");
    }
};

/// Switches on with standard output replaced in the traced process only.
Trace traceOn(int output, bool first) {
    return traceSystemCalls([output, first](TracedRun& run) {
        ZRInputOutput channel(DigitalOutput, 2);
        ::dup2(output, STDOUT_FILENO);
        if (!first)
            (void)channel.on(true);
        run.begin();
        const unsigned int result = channel.on(true);
        run.end();
        run.say(std::to_string(result));
    });
}

void expectOneLinePrinted(const Trace& trace) {
    ASSERT_EQ(trace.names(), "openat write close write");
    EXPECT_EQ(trace.text, "0");
    EXPECT_EQ(trace.calls[0].text, attribute);
    EXPECT_EQ(trace.calls[1].text, "1");
    EXPECT_EQ(trace.calls[3].arguments[0], static_cast<std::uint64_t>(STDOUT_FILENO));
    EXPECT_EQ(trace.calls[3].text, printedLine);
}

TEST_F(SwitchingCost, on_takes_three_calls_and_one_write_of_the_line_to_a_pipe) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    expectOneLinePrinted(traceOn(ends[1], false));
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST_F(SwitchingCost, on_takes_three_calls_and_one_write_of_the_line_to_a_file) {
    const int file = ::open(outputFile, O_WRONLY | O_CLOEXEC);
    ASSERT_GE(file, 0);
    expectOneLinePrinted(traceOn(file, false));
    ::close(file);
    EXPECT_EQ(readFile(outputFile), std::string(printedLine) + printedLine);
}

TEST_F(SwitchingCost, the_first_on_writes_its_line_at_once_too) {
    const int file = ::open(outputFile, O_WRONLY | O_CLOEXEC);
    ASSERT_GE(file, 0);
    const Trace trace = traceOn(file, true);
    ::close(file);
    EXPECT_EQ(trace.text, "0");
    EXPECT_EQ(trace.count("write"), 2U);
    EXPECT_EQ(readFile(outputFile), printedLine);
}

TEST_F(SwitchingCost, on_allocates_nothing) {
    ZRInputOutput channel(DigitalOutput, 2);
    OutputCapture capture;
    ASSERT_EQ(channel.on(true), 0U);  // standard output makes its buffer once
    const AllocationCounter allocations;
    (void)channel.on(true);
    const std::size_t count = allocations.count();
    capture.release();
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(capture.output(), std::string(printedLine) + printedLine);
}

}  // namespace
}  // namespace ZR::test
