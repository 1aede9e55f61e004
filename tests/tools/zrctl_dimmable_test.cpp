#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "tests/support/private_root.h"
#include "tests/tools/board_files.h"
#include "tests/tools/json_check.h"
#include "tests/tools/tool_process.h"

namespace ZR::test {
namespace {

std::string missing(const std::string& path) {
    return path + " is missing; check that the board has this device and its driver is loaded\n";
}

class ZrctlDimmable : public testing::Test {
  protected:
    void SetUp() override { makeDimmableDevices(); }
};

/// First line of a file: a plain file keeps what was behind a longer value, an attribute does not.
std::string firstLine(const std::string& path) {
    const std::string content = readFile(path);
    return content.substr(0, content.find('\n'));
}

TEST_F(ZrctlDimmable, list_shows_every_device_with_its_unit) {
    const ToolResult result = runZrctl({"dimmable", "list"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output,
              "display  present  50 %\n"
              "key      present  0 %\n"
              "encoder  present  0 %\n"
              "rgb      present  #000000\n"
              "beeper   present  0 %\n");
}

TEST_F(ZrctlDimmable, list_marks_missing_devices_and_succeeds) {
    for (const char* const path : {display, rgb, beeper})
        removeFile(path);
    const ToolResult result = runZrctl({"dimmable", "list"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output,
              "display  missing  -\n"
              "key      present  0 %\n"
              "encoder  present  0 %\n"
              "rgb      missing  -\n"
              "beeper   missing  -\n");
}

TEST_F(ZrctlDimmable, list_of_a_machine_without_hardware_is_valid_json_and_all_missing) {
    removeFile("/sys/devices");
    removeFile("/sys/class");
    removeFile("/sys/bus");
    const ToolResult result = runZrctl({"dimmable", "list", "--json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(query(result.output, "[.devices[].present] | unique"), "[false]\n");
    EXPECT_EQ(query(result.output, "[.devices[].result] | unique"), "[1]\n");
}

TEST_F(ZrctlDimmable, list_detaches_the_key_led_from_its_trigger) {
    runZrctl({"dimmable", "list"});
    EXPECT_EQ(readFile(keyTrigger), "nonertbeat] none\n");
}

TEST_F(ZrctlDimmable, get_reads_devices_in_the_order_asked) {
    makeFile(rgb, "1056816\n");
    const ToolResult result = runZrctl({"dimmable", "get", "rgb", "display"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "rgb #102030\ndisplay 50 %\n");
}

TEST_F(ZrctlDimmable, get_has_stable_json_members) {
    makeFile(rgb, "1056816\n");
    const ToolResult result = runZrctl({"dimmable", "get", "rgb", "display", "--json"});
    EXPECT_EQ(result.output,
              "{\"devices\": [{\"device\": \"rgb\", \"present\": true, \"value\": 1056816, "
              "\"unit\": \"rgb\", \"color\": \"#102030\", \"result\": 0, \"resultText\": "
              "\"success\"}, {\"device\": \"display\", \"present\": true, \"value\": 50, "
              "\"unit\": \"%\", \"color\": null, \"result\": 0, \"resultText\": \"success\"}]}\n");
    EXPECT_EQ(query(result.output, ".devices[].value"), "1056816\n50\n");
}

TEST_F(ZrctlDimmable, get_of_a_display_that_is_too_dark_raises_it) {
    makeFile(display, "3\n");
    EXPECT_EQ(runZrctl({"dimmable", "get", "display"}).output, "display 5 %\n");
    EXPECT_EQ(firstLine(display), "13");
}

TEST_F(ZrctlDimmable, set_writes_percent_of_the_full_scale) {
    const ToolResult result = runZrctl({"dimmable", "set", "key", "50"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, "key set to 50 %: success (result 0)\n");
    EXPECT_EQ(firstLine(key), "128");
}

TEST_F(ZrctlDimmable, set_has_stable_json_members) {
    const ToolResult result = runZrctl({"dimmable", "set", "encoder", "100", "--json"});
    EXPECT_EQ(result.output,
              "{\"device\": \"encoder\", \"present\": true, \"value\": 100, \"unit\": \"%\", "
              "\"color\": null, \"result\": 0, \"resultText\": \"success\"}\n");
    EXPECT_EQ(query(result.output, ".value"), "100\n");
}

TEST_F(ZrctlDimmable, a_volume_of_50_reads_as_20) {
    EXPECT_EQ(runZrctl({"dimmable", "set", "beeper", "50"}).output,
              "beeper set to 50 %: success (result 0)\n");
    EXPECT_EQ(firstLine(beeper), "50");
    EXPECT_EQ(runZrctl({"dimmable", "get", "beeper"}).output, "beeper 20 %\n");
}

TEST_F(ZrctlDimmable, set_below_the_minimum_of_the_display_says_what_to_give) {
    const ToolResult result = runZrctl({"dimmable", "set", "display", "4"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              "zrctl: display: value out of range (result 24): give percent from the minimum, "
              "which 'zrctl dimmable min' shows, to 100\n");
    EXPECT_EQ(readFile(display), "128\n");
}

TEST_F(ZrctlDimmable, set_above_100_says_what_to_give) {
    const ToolResult result = runZrctl({"dimmable", "set", "beeper", "101", "--json"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "zrctl: beeper: value out of range (result 24): give 0 to 100 percent\n");
    EXPECT_EQ(query(result.output, "[.value, .result]"), "[null,24]\n");
}

TEST_F(ZrctlDimmable, set_of_the_rgb_led_points_to_its_colour) {
    const ToolResult result = runZrctl({"dimmable", "set", "rgb", "50"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "zrctl: rgb: invalid state or device (result 10): this LED has no intensity; use "
              "'zrctl dimmable color rgb COLOR'\n");
}

TEST_F(ZrctlDimmable, set_of_a_missing_device_says_so) {
    removeFile(beeper);
    const ToolResult result = runZrctl({"dimmable", "set", "beeper", "5"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "zrctl: beeper: generic failure (result 1): " + missing(beeper));
}

TEST_F(ZrctlDimmable, set_without_permission_names_the_file_that_is_there) {
    removeFile(display);
    const std::string path = "/sys/class/backlight/backlight/brightness";
    makeFile(path, "128\n");
    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);
    const ToolResult result = runZrctl({"dimmable", "set", "display", "60"}, dropPrivileges);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "zrctl: display: generic failure (result 1): no permission for " +
                                 path + "; run zrctl as root or ask for access to that file\n");
    EXPECT_EQ(readFile(path), "128\n");
}

TEST_F(ZrctlDimmable, set_of_a_device_that_refuses_the_value_fails) {
    removeFile(beeper);
    makeDeviceNode(beeper, "full");
    const ToolResult result = runZrctl({"dimmable", "set", "beeper", "5"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              std::string("zrctl: beeper: write failed (result 6): the driver behind ") + beeper +
                  " refused or gave no usable value; see the kernel log\n");
}

TEST_F(ZrctlDimmable, min_shows_the_minimum) {
    const ToolResult result = runZrctl({"dimmable", "min"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "display minimum 5 %\n");
    EXPECT_EQ(readFile(display), "128\n");
}

TEST_F(ZrctlDimmable, min_raises_the_display) {
    const ToolResult result = runZrctl({"dimmable", "min", "80"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "display minimum set to 80 %: success (result 0)\n");
    EXPECT_EQ(firstLine(display), "204");
}

TEST_F(ZrctlDimmable, min_has_stable_json_members) {
    const ToolResult result = runZrctl({"dimmable", "min", "--json"});
    EXPECT_EQ(result.output,
              "{\"device\": \"display\", \"present\": true, \"minimum\": 5, \"unit\": \"%\", "
              "\"result\": 0, \"resultText\": \"success\"}\n");
    EXPECT_EQ(query(result.output, ".minimum"), "5\n");
}

TEST_F(ZrctlDimmable, min_above_100_is_stored_and_fails) {
    const ToolResult result = runZrctl({"dimmable", "min", "150", "--json"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(query(result.output, "[.minimum, .result]"), "[150,24]\n");
    EXPECT_EQ(result.errors,
              "zrctl: display: value out of range (result 24): the minimum was stored, but no "
              "display can be raised to it; give 0 to 100\n");
    EXPECT_EQ(readFile(display), "128\n");
}

TEST_F(ZrctlDimmable, min_without_a_display_shows_the_minimum_and_fails) {
    removeFile(display);
    const ToolResult result = runZrctl({"dimmable", "min"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "display minimum 5 %\n");
    EXPECT_EQ(result.errors, "zrctl: display: generic failure (result 1): " + missing(display));
}

}  // namespace
}  // namespace ZR::test
