#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>

#include "tests/hardware/video_input/capture_board.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::test {
namespace {

using Input = ZRGstreamerVideoInput;

/// High enough to be nobody else's.
constexpr int first = 200;

class Quitting : public CaptureTest {
  protected:
    Quitting() { Devices::leaveOpenToKernel(); }

    void SetUp() override {
        if (!whyNotTraceable().empty())
            GTEST_SKIP() << whyNotTraceable();
    }

    /// Opens each of these descriptors once and gives them to the inputs 0, 1 and 2, each its node
    /// and its decoder; the closes that doQuit makes, "200 " or "200! " when it fails.
    static std::string closing(std::array<int, 6> descriptors, const FaultPlan& plan = {}) {
        const Trace trace = traceSystemCalls(
            [&descriptors](TracedRun& run) {
                for (std::size_t i = 0; i < 3; ++i) {
                    Input::fileDescriptors[i] = descriptors[2 * i];
                    Input::fileDescriptorsSub[i] = descriptors[2 * i + 1];
                }
                const int source = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
                for (const int descriptor : descriptors)
                    if (descriptor >= 0)
                        (void)::dup2(source, descriptor);
                run.begin();
                ZRVideoInputInterface::doQuit();
                run.end();
                run.say(Input::quit ? "quit" : "runs");
            },
            plan);
        EXPECT_EQ(trace.text, "quit");
        std::string text;
        for (const SystemCall& call : trace.calls)
            if (call.name == "close")
                text += std::to_string(call.arguments[0]) + (call.result != 0 ? "! " : " ");
        return text;
    }
};

TEST_F(Quitting, closes_node_and_decoder_of_each_input_in_turn) {
    EXPECT_EQ(closing({first, first + 3, first + 1, first + 4, first + 2, first + 5}),
              "200 203 201 204 202 205 ");
}

TEST_F(Quitting, closes_what_the_inputs_0_and_2_share_twice) {
    EXPECT_EQ(closing({first, first + 1, first + 2, first + 3, first, first + 1}),
              "200 201 202 203 200! 201! ");
}

TEST_F(Quitting, passes_over_what_is_not_open) {
    EXPECT_EQ(closing({-1, -1, -1, -1, -1, -1}), "");
    EXPECT_EQ(closing({-1, first, first + 1, -1, -1, first}), "200 201 200! ");
}

TEST_F(Quitting, closes_a_descriptor_of_0_too) {
    EXPECT_EQ(closing({-1, -1, 0, -1, -1, -1}), "0 ");
}

TEST_F(Quitting, goes_on_after_a_close_that_fails) {
    for (const int error : {EIO, EINTR, EBADF})
        EXPECT_EQ(
            closing({first, first + 1, -1, -1, first + 2, -1}, {{}, {{SYS_close, 1, error, 0}}}),
            "200! 201 202 ");
}

}  // namespace
}  // namespace ZR::test
