#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/private_root.h"
#include "tests/tools/board_files.h"
#include "tests/tools/tool_process.h"

namespace ZR::test {
namespace {

ToolResult runExample(const std::string& name, const std::vector<std::string>& arguments) {
    return runTool(EXAMPLES_FOLDER + name, arguments);
}

class Examples : public testing::Test {
  protected:
    void SetUp() override {
        makeInputsAndOutputs();
        makeDimmableDevices();
    }
};

TEST_F(Examples, dim_display_dims_the_display) {
    const ToolResult result = runExample("dim_display", {"20"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "The display is at 20 %\n");
    EXPECT_EQ(readFile(display).substr(0, 3), "51\n");
}

TEST_F(Examples, dim_display_fails_with_the_reason) {
    const ToolResult result = runExample("dim_display", {"101"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find("setIntensity: value out of range (24)\n"), std::string::npos);
}

TEST_F(Examples, find_cameras_fails_without_them) {
    const ToolResult result = runExample("find_cameras", {});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output.rfind("camera 1: capture missing, decoder missing\n"
                                  "ERROR OPENING VIDEO SUB DEVICE: No such file or directory\n"
                                  "  standard not known\n"
                                  "camera 2: ",
                                  0),
              0U);
}

TEST_F(Examples, find_features_finds_them) {
    makeDeviceNode("/dev/input/keyboard0");
    const ToolResult result = runExample("find_features", {});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output,
              "Rotary encoder: no\nTouch screen: no\nKeyboard: yes\nSingle-core processor: yes\n");
}

TEST_F(Examples, read_inputs_reads_all) {
    makeFile(di2, "1\n");
    const ToolResult result = runExample("read_inputs", {});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output,
              "digital input 1: off\nanalog input 1: 1000\n"
              "digital input 2: on\nanalog input 2: 2000\n"
              "digital input 3: off\nanalog input 3: 3000\n"
              "digital input 4: off\nanalog input 4: 4000\n"
              "supply voltage: 12100\nambient light: 300\ntemperature: 25\nfrequency: 50\n");
}

TEST_F(Examples, read_inputs_tells_what_it_could_not_read) {
    removeFile(di1);
    const ToolResult result = runExample("read_inputs", {});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output.rfind("digital input 1: read failed\nanalog input 1: 1000\n", 0), 0U);
}

TEST_F(Examples, set_status_led_sets_the_colour) {
    const ToolResult result = runExample("set_status_led", {"0a0b0c"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "The status LED shows #0a0b0c\n");
    EXPECT_EQ(readFile(rgb).substr(0, 7), "658188\n");
}

TEST_F(Examples, switch_output_switches_the_output) {
    const ToolResult result = runExample("switch_output", {"1", "on"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, std::string("Set ") + do1 + " to 1 successful!\nOutput 1 is on\n");
    EXPECT_EQ(readFile(do1), "1");
}

TEST_F(Examples, switch_output_fails_without_the_output) {
    removeFile(do1);
    const ToolResult result = runExample("switch_output", {"1", "on"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find("on: write failed (6)\n"), std::string::npos);
}

TEST_F(Examples, exchange_can_frames_fails_without_the_ports) {
    const ToolResult result =
        runTool(EXAMPLES_FOLDER "exchange_can_frames", {"250000"}, enterEmptyNetwork);
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find("the CAN ports 1 and 2 cannot be opened\n"), std::string::npos);
}

TEST_F(Examples, wait_for_event_fails_without_the_driver) {
    const ToolResult result = runTool(EXAMPLES_FOLDER "wait_for_event", {"30"}, enterEmptyNetwork);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output.rfind("Retrieving family and multicast ID from driver failed", 0), 0U);
}

TEST_F(Examples, that_are_called_wrongly_say_how_and_touch_nothing) {
    for (const auto& [name, arguments] :
         std::vector<std::pair<std::string, std::vector<std::string>>>{
             {"dim_display", {}},
             {"dim_display", {"20x"}},
             {"dim_display", {""}},
             {"find_cameras", {"1"}},
             {"set_status_led", {"12345"}},
             {"set_status_led", {"12345g"}},
             {"exchange_can_frames", {}},
             {"exchange_can_frames", {"250k"}},
             {"watch_events", {"0"}},
             {"wait_for_event", {"1s"}},
             {"switch_output", {"4", "on"}},
             {"switch_output", {"1", "up"}}}) {
        const ToolResult result = runExample(name, arguments);
        EXPECT_EQ(result.status, 2) << name;
        EXPECT_EQ(result.errors.rfind("usage: " + name, 0), 0U);
        EXPECT_EQ(result.output, "");
    }
    EXPECT_EQ(readFile(keyTrigger), "[heartbeat] none\n");
}

}  // namespace
}  // namespace ZR::test
