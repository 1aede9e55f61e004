#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "hardware/feature_detection/zr_feature_detection.h"
#include "tests/support/allocation_counter.h"
#include "tests/support/output_capture.h"
#include "tests/support/private_root.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::test {
namespace {

using Probe = bool (*)();

struct Device {
    const char* path;
    Probe probe;
};

const std::vector<Device>& devices() {
    static const std::vector<Device> all{
        {"/dev/input/encoder0", &ZRFeatureDetection::hasEncoder},
        {"/dev/input/ts0", &ZRFeatureDetection::hasTouchscreen},
        {"/dev/input/touchscreen0", &ZRFeatureDetection::hasTouchscreen},
        {"/dev/input/keyboard0", &ZRFeatureDetection::hasKeyboard}};
    return all;
}

/// The paths that a probe looks at, one a line, its answer and its heap allocations. The first call
/// of a process is not recorded: it keeps the paths for the later ones.
std::string traceProbe(Probe probe) {
    const Trace trace = traceSystemCalls([probe](TracedRun& run) {
        (void)probe();
        const AllocationCounter counter;
        run.begin();
        const bool answer = probe();
        run.end();
        run.say(answer ? "yes " : "no ");
        run.say(canCountAllocations() ? std::to_string(counter.count()) : "0");
    });
    std::string looks;
    for (const SystemCall& call : trace.calls)
        looks += call.text + '\n';
    return looks + trace.text;
}

}  // namespace

TEST(InputDevices, are_missing_on_a_machine_without_any) {
    EXPECT_FALSE(ZRFeatureDetection::hasEncoder());
    EXPECT_FALSE(ZRFeatureDetection::hasTouchscreen());
    EXPECT_FALSE(ZRFeatureDetection::hasKeyboard());
}

TEST(InputDevices, are_found_as_device_nodes) {
    for (const Device& device : devices()) {
        makeDeviceNode(device.path);
        EXPECT_TRUE(device.probe()) << device.path;
        removeFile(device.path);
    }
}

TEST(InputDevices, are_found_as_links_to_device_nodes) {
    makeDeviceNode("/dev/input/event3");
    for (const Device& device : devices()) {
        makeLink(device.path, "event3");
        EXPECT_TRUE(device.probe()) << device.path;
        removeFile(device.path);
    }
}

TEST(InputDevices, are_found_as_plain_files) {
    for (const Device& device : devices()) {
        makeFile(device.path, "");
        EXPECT_TRUE(device.probe()) << device.path;
        removeFile(device.path);
    }
}

TEST(InputDevices, are_not_found_as_folders_or_dangling_links) {
    for (const Device& device : devices()) {
        makeFolder(device.path);
        EXPECT_FALSE(device.probe()) << device.path;
        removeFile(device.path);
        makeLink(device.path, "no_such_device");
        EXPECT_FALSE(device.probe()) << device.path;
        removeFile(device.path);
    }
}

TEST(InputDevices, are_looked_up_on_each_call) {
    for (const Device& device : devices())
        for (int i = 0; i < 2; ++i) {
            EXPECT_FALSE(device.probe()) << device.path;
            makeDeviceNode(device.path);
            EXPECT_TRUE(device.probe()) << device.path;
            removeFile(device.path);
        }
}

TEST(InputDevices, do_not_stand_for_each_other) {
    makeDeviceNode("/dev/input/encoder0");
    EXPECT_FALSE(ZRFeatureDetection::hasTouchscreen());
    EXPECT_FALSE(ZRFeatureDetection::hasKeyboard());
    removeFile("/dev/input/encoder0");
    for (const char* const name : {"encoder1", "ts1", "touchscreen1", "keyboard1", "event0", "ts"})
        makeDeviceNode(std::string("/dev/input/") + name);
    EXPECT_FALSE(ZRFeatureDetection::hasEncoder());
    EXPECT_FALSE(ZRFeatureDetection::hasTouchscreen());
    EXPECT_FALSE(ZRFeatureDetection::hasKeyboard());
}

TEST(InputDevices, a_touch_screen_is_found_under_both_names_at_once) {
    makeDeviceNode("/dev/input/ts0");
    makeDeviceNode("/dev/input/touchscreen0");
    EXPECT_TRUE(ZRFeatureDetection::hasTouchscreen());
}

TEST(InputDevices, an_encoder_and_a_keyboard_cost_one_look_each) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    EXPECT_EQ(traceProbe(&ZRFeatureDetection::hasEncoder), "/dev/input/encoder0\nno 0");
    EXPECT_EQ(traceProbe(&ZRFeatureDetection::hasKeyboard), "/dev/input/keyboard0\nno 0");
    makeDeviceNode("/dev/input/encoder0");
    makeDeviceNode("/dev/input/keyboard0");
    EXPECT_EQ(traceProbe(&ZRFeatureDetection::hasEncoder), "/dev/input/encoder0\nyes 0");
    EXPECT_EQ(traceProbe(&ZRFeatureDetection::hasKeyboard), "/dev/input/keyboard0\nyes 0");
}

TEST(InputDevices, the_second_name_of_a_touch_screen_is_looked_at_only_without_the_first) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    constexpr char both[] = "/dev/input/ts0\n/dev/input/touchscreen0\n";
    EXPECT_EQ(traceProbe(&ZRFeatureDetection::hasTouchscreen), std::string(both) + "no 0");
    makeDeviceNode("/dev/input/touchscreen0");
    EXPECT_EQ(traceProbe(&ZRFeatureDetection::hasTouchscreen), std::string(both) + "yes 0");
    makeDeviceNode("/dev/input/ts0");
    EXPECT_EQ(traceProbe(&ZRFeatureDetection::hasTouchscreen), "/dev/input/ts0\nyes 0");
}

TEST(InputDevices, are_not_opened) {
    makeFifo("/dev/input/encoder0");  // to open it would block
    EXPECT_TRUE(ZRFeatureDetection::hasEncoder());
}

TEST(InputDevices, are_looked_up_without_a_word) {
    const OutputCapture capture;
    (void)ZRFeatureDetection::hasEncoder();
    (void)ZRFeatureDetection::hasTouchscreen();
    (void)ZRFeatureDetection::hasKeyboard();
    EXPECT_EQ(capture.output() + capture.errors(), "");
}

}  // namespace ZR::test
