#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "tests/support/private_root.h"
#include "tests/tools/board_files.h"
#include "tests/tools/json_check.h"
#include "tests/tools/tool_process.h"

namespace ZR::test {
namespace {

class ZrctlIoConfigure : public testing::Test {
  protected:
    void SetUp() override { makeInputsAndOutputs(); }

    static ToolResult configure(const std::string& mode, const ChildSetup& setup = {}) {
        return runZrctl({"io", "configure", "ai1", "--mode", mode, "--hysteresis=25"}, setup);
    }
};

TEST_F(ZrctlIoConfigure, with_mode_2_switches_the_load_on) {
    const ToolResult result = configure("2");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, "ai1 mode 2, hysteresis 25 counts: success (result 0)\n");
    EXPECT_EQ(readFile(ai1MeasureMode), "1");
    EXPECT_EQ(readFile(ai1ToggleLoad), "1");
    EXPECT_EQ(readFile(ai1Hysteresis), "25");
}

TEST_F(ZrctlIoConfigure, with_mode_1_measures_without_load) {
    makeFile(ai1MeasureMode, "1\n");
    EXPECT_EQ(configure("1").status, 0);
    EXPECT_EQ(readFile(ai1MeasureMode), "0");
    EXPECT_EQ(readFile(ai1ToggleLoad), "0\n");
}

TEST_F(ZrctlIoConfigure, has_stable_json_members) {
    const ToolResult result =
        runZrctl({"io", "configure", "ai1", "--mode", "0", "--hysteresis", "-3", "--json"});
    EXPECT_EQ(result.output,
              "{\"channel\": \"ai1\", \"present\": true, \"mode\": 0, \"hysteresis\": -3, "
              "\"unit\": \"counts\", \"result\": 0, \"resultText\": \"success\"}\n");
    EXPECT_EQ(query(result.output, ".hysteresis"), "-3\n");
}

TEST_F(ZrctlIoConfigure, of_a_missing_input_fails_though_the_library_would_succeed) {
    removeFile("/sys/class/analog/ai.0");
    const ToolResult result = configure("0");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              std::string("zrctl: ai1: file or device cannot be opened (result 2): ") + ai1 +
                  " is missing; check that the board has this device and its driver is loaded\n");
}

TEST_F(ZrctlIoConfigure, of_an_input_without_measure_mode_fails_though_the_library_succeeds) {
    removeFile(ai1MeasureMode);
    const ToolResult result = configure("0");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              std::string("zrctl: ai1: the library says success (result 0), but ") +
                  ai1MeasureMode +
                  " is missing; check that the board has this device and its driver is loaded\n");
}

TEST_F(ZrctlIoConfigure, without_a_load_to_switch_on_fails) {
    removeFile(ai1ToggleLoad);
    const ToolResult result = configure("2");
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find(std::string(ai1ToggleLoad) + " is missing"), std::string::npos);
    EXPECT_EQ(configure("0").status, 0);
}

TEST_F(ZrctlIoConfigure, fails_when_the_driver_does_not_say_what_it_holds) {
    removeFile(ai1Hysteresis);
    makeDeviceNode(ai1Hysteresis, "null");  // takes everything and gives nothing
    const ToolResult result = configure("0");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(
        result.errors,
        std::string("zrctl: ai1: the library says success (result 0), but the driver behind ") +
            ai1Hysteresis + " refused or gave no usable value; see the kernel log\n");
}

TEST_F(ZrctlIoConfigure, fails_without_permission_even_when_the_values_are_there_already) {
    makeFile(ai1Hysteresis, "25\n");
    ASSERT_EQ(::chmod(ai1Hysteresis, 0444), 0);
    const ToolResult result = configure("0", dropPrivileges);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(
        result.errors,
        std::string("zrctl: ai1: the library says success (result 0), but no permission for ") +
            ai1Hysteresis + "; run zrctl as root or ask for access to that file\n");
}

TEST_F(ZrctlIoConfigure, fails_when_the_driver_holds_another_value) {
    // One variable behind both names, so that the mode does not stay.
    removeFile(ai1Hysteresis);
    makeLink(ai1Hysteresis, ai1MeasureMode);
    const ToolResult result = configure("0");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(
        result.errors,
        std::string("zrctl: ai1: the library says success (result 0), but the driver behind ") +
            ai1MeasureMode + " holds 25 and not 0; give a value that it accepts\n");
}

}  // namespace
}  // namespace ZR::test
