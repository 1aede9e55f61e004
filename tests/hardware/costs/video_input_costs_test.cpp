#include <fcntl.h>
#include <sys/syscall.h>

#include <algorithm>
#include <string>

#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"
#include "tests/hardware/costs/operation_cost.h"
#include "tests/support/private_root.h"
#include "tests/support/substitutes/capture_call_log.h"
#include "tests/support/substitutes/media_controller_substitute.h"
#include "tests/support/substitutes/video_device_substitute.h"

// The media controller's library is a substitute here, whose calls cost nothing; the drivers of nodes
// and decoders answer at the cost of a real call.

namespace ZR::test {
namespace {

using Input = ZRGstreamerVideoInput;

/// An input whose settings the tests can see.
struct OpenInput : ZRGstreamerVideoInput {
    OpenInput() : ZRGstreamerVideoInput("input") {}

    using ZRGstreamerVideoInput::videoSettings;

    void know(int first, int second, int third) {
        videoSettings[1].videoStandard = first;
        videoSettings[2].videoStandard = second;
        videoSettings[3].videoStandard = third;
    }
};

/// The DualLite's capture devices.
class VideoInputCost : public CostTest {
  protected:
    VideoInputCost() {
        CaptureCallLog::recording = false;
        MediaControllerSubstitute::entities = {{"tw9912 1-0044", "/dev/v4l-subdev3"},
                                               {"adv7180 2-0021", "/dev/v4l-subdev9"},
                                               {"ipu1_csi1 capture", "/dev/video1"},
                                               {"ipu1_csi0 capture", "/dev/video0"}};
        for (const SimulatedEntity& entity : MediaControllerSubstitute::entities)
            makeDeviceNode(entity.node);
        makeFile("/proc/device-tree/compatible", std::string("fsl,imx6dl\0", 11));
        VideoDeviceSubstitute::reset();
        VideoDeviceSubstitute::leaveOpenToKernel();
        VideoDeviceSubstitute::asksKernelToo = true;
    }

    /// Makes the devices known and open, with drivers behind them.
    static void discover() {
        Input::doInitialSetup();
        for (int i = 0; i < 2; ++i) {
            VideoDeviceSubstitute::devices[Input::fileDescriptors[i]] = {};
            VideoDeviceSubstitute::devices[Input::fileDescriptorsSub[i]] = {};
        }
    }

    /// A start of an input whose node has selected @p selection.
    Operation starting(int input, int selection = 0) {
        return [this, input, selection] {
            VideoDeviceSubstitute::devices[Input::fileDescriptors[0]].selection = selection;
            input_.setupCameraInput(input);
            return 0U;
        };
    }

    OpenInput input_;
};

const Operation discovery = [] {
    Input::doInitialSetup();
    return 0U;
};

TEST_F(VideoInputCost, discovery_opens_the_device_tree_and_each_node_once) {
    const OperationCost cost = costOfFirst(discovery);
    EXPECT_EQ(cost.calls(), "openat read read close openat openat openat openat");
    const char* const paths[] = {"/proc/device-tree/compatible", "/dev/video1", "/dev/v4l-subdev3",
                                 "/dev/video0", "/dev/v4l-subdev9"};
    std::size_t opened = 0;
    for (const SystemCall& call : cost.trace.calls) {
        if (call.name != "openat")
            continue;
        ASSERT_LT(opened, std::size(paths));
        EXPECT_EQ(call.text, paths[opened]);
        EXPECT_EQ(call.arguments[2] & O_ACCMODE, opened == 0 ? O_RDONLY : O_RDWR);
        EXPECT_NE(call.arguments[2] & O_CLOEXEC, 0U);
        EXPECT_GE(call.result, 0);
        ++opened;
    }
    EXPECT_EQ(opened, 5U);
}

TEST_F(VideoInputCost, a_second_discovery_takes_no_call_and_no_heap) {
    const OperationCost cost = costOf(discovery);
    EXPECT_EQ(cost.calls(), "");
    EXPECT_EQ(cost.allocations, 0U);
}

TEST_F(VideoInputCost, an_object_that_is_there_takes_no_call_and_no_heap) {
    const std::string name = "an input with a long name";
    (void)Input::getInstance(name);
    const OperationCost cost =
        costOf([&name] { return Input::getInstance(name) != nullptr ? 0U : 1U; });
    EXPECT_EQ(cost.result + cost.calls(), "0");
    EXPECT_EQ(cost.allocations, 0U);
}

TEST_F(VideoInputCost, commands_are_queued_without_a_call) {
    const OperationCost start =
        costOf([this] { return static_cast<unsigned int>(input_.start(0)); });
    EXPECT_EQ(start.result + start.calls(), "0");
    EXPECT_EQ(start.allocations, 0U) << "it waits already";
    const OperationCost both =
        costOf([this] { return static_cast<unsigned int>(input_.stop(0) + input_.start(0)); });
    EXPECT_EQ(both.result + both.calls(), "0");
    EXPECT_EQ(both.allocations, 2U);
    int port = 5004;
    const OperationCost change =
        costOf([&] { return static_cast<unsigned int>(input_.setCurrentInterface(++port)); });
    EXPECT_EQ(change.result + change.calls(), "0");
}

TEST_F(VideoInputCost, a_first_object_waits_for_nothing) {
    Input::doInitialSetup();
    // As if the one of the fixture were not there.
    Input::busThreadLaunched = false;
    const OperationCost cost =
        costOfFirst([] { return Input::getInstance("first") != nullptr ? 0U : 1U; });
    EXPECT_EQ(cost.result, "0");
    EXPECT_TRUE(std::any_of(cost.trace.calls.begin(), cost.trace.calls.end(),
                            [](const SystemCall& call) {
                                return call.number == SYS_clone3 || call.number == SYS_clone;
                            }))
        << "no thread begun: " << cost.calls();
    for (const char* const wait : {"nanosleep", "clock_nanosleep", "poll", "ppoll", "select",
                                   "pselect6", "epoll_wait", "wait4", "futex"})
        EXPECT_EQ(cost.trace.count(wait), 0U) << cost.calls();
}

TEST_F(VideoInputCost, a_further_object_takes_no_call) {
    (void)Input::getInstance("first");
    unsigned int number = 0;
    const OperationCost cost = costOf(
        [&number] { return Input::getInstance(std::to_string(++number)) != nullptr ? 0U : 1U; });
    EXPECT_EQ(cost.result + cost.calls(), "0");
}

TEST_F(VideoInputCost, a_second_start_of_input_1_takes_no_ioctl_and_no_heap) {
    discover();
    const OperationCost cost = costOf(starting(1));
    EXPECT_EQ(cost.calls(), "");
    EXPECT_EQ(cost.allocations, 0U);
}

TEST_F(VideoInputCost, a_start_of_inputs_0_and_2_of_one_standard_takes_one_ioctl_and_no_heap) {
    discover();
    input_.know(1, 2, 1);
    for (const int input : {0, 2}) {
        const OperationCost cost = costOf(starting(input, input / 2));
        EXPECT_EQ(cost.calls(), "ioctl") << input;
        EXPECT_EQ(cost.allocations, 0U) << input;
    }
}

TEST_F(VideoInputCost, a_change_between_inputs_0_and_2_of_one_standard_takes_two_ioctls) {
    discover();
    input_.know(0, 2, 0);
    for (const int input : {0, 2}) {
        const OperationCost cost = costOf(starting(input, 1 - input / 2));
        EXPECT_EQ(cost.calls(), "ioctl ioctl") << input;
        EXPECT_EQ(cost.allocations, 0U) << input;
    }
}

TEST_F(VideoInputCost, a_start_beside_an_unknown_standard_forces_the_standard_each_time) {
    discover();
    input_.know(0, 2, 2);
    const OperationCost first = costOf(starting(0));
    EXPECT_EQ(first.calls(), "ioctl ioctl");
    input_.know(2, 2, 1);
    const OperationCost third = costOf(starting(2, 1));
    EXPECT_EQ(third.calls(), "ioctl ioctl");
    // The format text.
    EXPECT_EQ(first.allocations, 1U);
    EXPECT_EQ(third.allocations, 1U);
}

TEST_F(VideoInputCost, a_first_start_takes_a_query_and_a_standard) {
    discover();
    EXPECT_EQ(costOfFirst(starting(0)).calls(), "ioctl ioctl ioctl");
    EXPECT_EQ(costOfFirst(starting(1)).calls(), "ioctl ioctl");
    EXPECT_EQ(costOfFirst(starting(2, 0)).calls(), "ioctl ioctl ioctl ioctl");
}

}  // namespace
}  // namespace ZR::test
