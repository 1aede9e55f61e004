#include <dirent.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <thread>

#include "tests/hardware/video_input/capture_board.h"
#include "tests/hardware/video_input/gst_call_substitute.h"
#include "tests/hardware/video_input/recording_elements.h"
#include "tests/support/output_capture.h"

// The threads of a process with video inputs, from the first object to the end. Here alone the second
// passes in which the application's start is not held up.

namespace ZR::test {
namespace {

using Input = ZRGstreamerVideoInput;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// How many threads of this process have this name.
int threadsNamed(const std::string& name) {
    int count = 0;
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir("/proc/self/task"), &::closedir);
    while (const dirent* const entry = ::readdir(folder.get())) {
        std::ifstream file(std::string("/proc/self/task/") + entry->d_name + "/comm");
        std::string line;
        std::getline(file, line);
        count += line == name ? 1 : 0;
    }
    return count;
}

class GstreamerStart : public CaptureTest {
  protected:
    GstreamerStart() {
        Devices::leaveOpenToKernel();
        ::setenv("GST_REGISTRY_DISABLE", "yes", 1);
        GstCallSubstitute::reset();
        GstCallSubstitute::isLogging = true;
    }

    ~GstreamerStart() override { Input::doQuit(); }

    /// At most 20 s.
    template <typename Condition>
    static bool waitFor(Condition isDone) {
        for (int i = 0; i < 20000 && !isDone(); ++i)
            std::this_thread::sleep_for(milliseconds(1));
        return isDone();
    }

    static bool isBusThreadRunning() { return threadsNamed("ZRGstBus") == 1; }

    /// Neither this test's own sleeps nor the pauses of the bus thread.
    static Calls takeStartCalls() {
        Calls calls;
        for (const std::string& call : takeCalls())
            if (call == "gst_init" || call == "nanosleep 1000000000")
                calls.push_back(call);
        return calls;
    }
};

TEST_F(GstreamerStart, comes_a_second_after_the_first_object_which_never_waits_for_it) {
    const auto begin = Clock::now();
    const OpenInput input;
    EXPECT_LT(Clock::now() - begin, milliseconds(900));
    EXPECT_TRUE(Input::busThreadLaunched);
    EXPECT_FALSE(Input::gstInitDone);
    EXPECT_TRUE(waitFor([] { return isBusThreadRunning(); }));
    EXPECT_GE(Clock::now() - begin, milliseconds(1000));
    EXPECT_TRUE(waitFor([] { return Input::gstInitDone; }));
    EXPECT_TRUE(gst_is_initialized());
    Input::doQuit();
    EXPECT_EQ(takeStartCalls(), (Calls{"nanosleep 1000000000", "gst_init"}));
    EXPECT_EQ(threadsNamed("ZRGstBus"), 0);
}

TEST_F(GstreamerStart, makes_one_sink_and_drops_it) {
    GstCallSubstitute::afterInit = [] { RecordingElements::addAll(); };
    const OpenInput input;
    EXPECT_TRUE(waitFor([] { return isBusThreadRunning(); }));
    EXPECT_EQ(RecordingElements::made(), 1);
    EXPECT_EQ(RecordingElements::alive(), 0);
}

TEST_F(GstreamerStart, of_a_host_that_initialised_GStreamer_itself_makes_the_sink_all_the_same) {
    gst_init(nullptr, nullptr);
    RecordingElements::addAll();
    (void)takeCalls();
    const OpenInput input;
    EXPECT_TRUE(waitFor([] { return isBusThreadRunning(); }));
    EXPECT_EQ(RecordingElements::made(), 1);
    Input::doQuit();
    EXPECT_EQ(takeStartCalls(), Calls{"nanosleep 1000000000"});
}

TEST_F(GstreamerStart, a_second_construction_starts_no_second_start_up_and_no_second_bus_thread) {
    const OpenInput first;
    const OpenInput second;
    EXPECT_TRUE(waitFor([] { return isBusThreadRunning(); }));
    const OpenInput third;
    std::this_thread::sleep_for(milliseconds(1200));
    EXPECT_EQ(threadsNamed("ZRGstBus"), 1);
    Input::doQuit();
    EXPECT_EQ(takeStartCalls(), (Calls{"nanosleep 1000000000", "gst_init"}));
}

TEST_F(GstreamerStart, is_awaited_by_a_start_within_the_first_second) {
    OpenInput input;
    const auto begin = Clock::now();
    const OutputCapture capture;
    input.start(0);
    input.handleQueuedCommands();
    const auto took = Clock::now() - begin;
    EXPECT_GE(took, milliseconds(900));
    EXPECT_TRUE(input.isInitialized());
    Input::doQuit();
    // Whether it was in time is the machine's; it says so when it was not.
    const std::string unknown = "UNKNOWN STREAM TYPE OPTION: 4\n";
    const std::string text = capture.output();
    ASSERT_GE(text.size(), unknown.size());
    EXPECT_EQ(text.substr(text.size() - unknown.size()), unknown);
}

TEST_F(GstreamerStart, that_does_not_come_is_reported_by_a_start_which_goes_on) {
    std::atomic<bool> goesOn = false;
    const auto main = std::this_thread::get_id();
    GstCallSubstitute::beforeInit = [&goesOn, main] {
        while (std::this_thread::get_id() != main && !goesOn)
            std::this_thread::sleep_for(milliseconds(1));
    };
    OpenInput input;
    const auto begin = Clock::now();
    const OutputCapture capture;
    input.start(0);
    input.handleQueuedCommands();
    EXPECT_GE(Clock::now() - begin, milliseconds(1100));
    EXPECT_EQ(capture.output(),
              "VIDEO: ERROR WHILE WAITING FOR GSTREAMER TO BE INITIALIZED! EXPECT ERRORS!\n"
              "UNKNOWN STREAM TYPE OPTION: 4\n");
    goesOn = true;
    EXPECT_TRUE(waitFor([] { return isBusThreadRunning(); }));
}

TEST_F(GstreamerStart, after_doQuit_within_the_first_second_starts_no_bus_thread) {
    const OpenInput input;
    ZRVideoInputInterface::doQuit();
    EXPECT_TRUE(Input::quit);
    EXPECT_TRUE(waitFor([] { return Input::gstInitDone; }));
    EXPECT_TRUE(gst_is_initialized());
    EXPECT_EQ(threadsNamed("ZRGstBus"), 0);
    EXPECT_EQ(takeStartCalls(), (Calls{"nanosleep 1000000000", "gst_init"}));
}

TEST_F(GstreamerStart, is_undone_by_doQuit_within_a_message_wait_and_a_pause) {
    const OpenInput input;
    EXPECT_TRUE(waitFor([] { return isBusThreadRunning(); }));
    const auto begin = Clock::now();
    Input::doQuit();
    EXPECT_EQ(threadsNamed("ZRGstBus"), 0);
    EXPECT_LT(Clock::now() - begin, milliseconds(125 + 2000)) << "with room for a busy machine";
}

class GstreamerStartDeathTest : public GstreamerStart {
  protected:
    // The log is destroyed while one thread exits and another goes on.
    GstreamerStartDeathTest() { GstCallSubstitute::isLogging = false; }
};

TEST_F(GstreamerStartDeathTest, an_exit_within_the_first_second_is_quiet) {
    EXPECT_EXIT(
        {
            (void)Input::getInstance("camera");
            std::exit(0);
        },
        testing::ExitedWithCode(0), "^$");
}

TEST_F(GstreamerStartDeathTest, an_exit_while_GStreamer_is_initialised_waits_for_its_end) {
    EXPECT_EXIT(
        {
            static std::atomic<bool> begun = false;
            GstCallSubstitute::beforeInit = [] {
                begun = true;
                std::this_thread::sleep_for(milliseconds(300));
            };
            GstCallSubstitute::afterInit = [] { std::fputs("initialised", stderr); };
            (void)Input::getInstance("camera");
            (void)waitFor([] { return begun.load(); });
            std::exit(0);
        },
        testing::ExitedWithCode(0), "^initialised$");
}

TEST_F(GstreamerStartDeathTest, a_GStreamer_that_cannot_be_initialised_ends_the_process_itself) {
    EXPECT_EXIT(
        {
            GstCallSubstitute::beforeInit = [] { std::exit(7); };
            (void)Input::getInstance("camera");
            (void)waitFor([] { return Input::gstInitDone; });
        },
        testing::ExitedWithCode(7), "^$");
}

TEST_F(GstreamerStartDeathTest, an_exit_while_the_bus_thread_runs_is_quiet) {
    EXPECT_EXIT(
        {
            (void)Input::getInstance("camera");
            (void)waitFor([] { return isBusThreadRunning(); });
            std::exit(0);
        },
        testing::ExitedWithCode(0), "^$");
}

TEST_F(GstreamerStartDeathTest, an_exit_with_a_pipeline_that_was_stopped_is_quiet) {
    EXPECT_EXIT(
        {
            Input* const input = Input::getInstance("camera");
            (void)waitFor([] { return isBusThreadRunning(); });
            input->setStreamType(StreamCamera);
            const OutputCapture quiet;
            input->init();
            std::exit(input->getPipeline() != nullptr ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(GstreamerStartDeathTest, an_exit_after_doQuit_is_quiet) {
    EXPECT_EXIT(
        {
            (void)Input::getInstance("camera");
            (void)waitFor([] { return isBusThreadRunning(); });
            ZRVideoInputInterface::doQuit();
            std::exit(0);
        },
        testing::ExitedWithCode(0), "^$");
}

}  // namespace
}  // namespace ZR::test
