#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <utility>

#include "tests/support/private_root.h"
#include "tests/tools/board_files.h"
#include "tests/tools/json_check.h"
#include "tests/tools/tool_process.h"

namespace ZR::test {
namespace {

std::string missing(const std::string& path, const std::string& verb = "is") {
    return path + " " + verb +
           " missing; check that the board has this device and its driver is loaded\n";
}

std::string forbidden(const std::string& path) {
    return "no permission for " + path + "; run zrctl as root or ask for access to that file\n";
}

std::string refused(const std::string& path) {
    return "the driver behind " + path + " refused or gave no usable value; see the kernel log\n";
}

class ZrctlIo : public testing::Test {
  protected:
    void SetUp() override { makeInputsAndOutputs(); }
};

TEST_F(ZrctlIo, list_shows_every_channel_with_its_unit) {
    makeFile(di2, "1\n");
    const ToolResult result = runZrctl({"io", "list"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output,
              "di1          present  off\n"
              "di2          present  on\n"
              "di3          present  off\n"
              "di4          present  off\n"
              "do1          present  off\n"
              "do2          present  off\n"
              "do3          present  off\n"
              "ai1          present  1000 counts\n"
              "ai2          present  2000 counts\n"
              "ai3          present  3000 counts\n"
              "ai4          present  4000 counts\n"
              "power        present  12100 mV\n"
              "light        present  300 lux\n"
              "temperature  present  25 degC\n"
              "frequency    present  50 Hz\n"
              "ignition     present  off\n");
}

TEST_F(ZrctlIo, list_marks_missing_channels_and_succeeds) {
    removeFile("/sys/class/analog");
    removeFile("/sys/class/regulator");
    const ToolResult result = runZrctl({"io", "list"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    for (const char* const line : {"di1          present  off\n", "ai1          missing  -\n",
                                   "light        missing  -\n", "ignition     missing  -\n"})
        EXPECT_NE(result.output.find(line), std::string::npos) << line;
}

TEST_F(ZrctlIo, list_of_a_machine_without_hardware_is_valid_json_and_all_missing) {
    removeFile("/sys/bus");
    removeFile("/sys/class");
    const ToolResult result = runZrctl({"io", "list", "--json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(query(result.output, ".channels | length"), "16\n");
    EXPECT_EQ(query(result.output, "[.channels[] | .present, .value] | unique"), "[null,false]\n");
    EXPECT_EQ(query(result.output, "[.channels[].result] | unique"), "[2]\n");
    EXPECT_EQ(query(result.output, ".channels[15].error"),
              "\"ignition: file or device cannot be opened (result 2): no regulator is named "
              "ignition-irq; check the device tree of the board\"\n");
}

TEST_F(ZrctlIo, list_fails_for_a_channel_that_is_there_and_cannot_be_read) {
    makeFile(ai1, "abc\n");
    const ToolResult result = runZrctl({"io", "list"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.output.find("ai1          present  -\nai2          present  2000 counts\n"),
              std::string::npos);
    EXPECT_EQ(result.errors, "zrctl: ai1: read failed (result 5): " + refused(ai1));
}

TEST_F(ZrctlIo, get_reads_channels_in_the_order_asked) {
    const ToolResult result = runZrctl({"io", "get", "ai2", "di1", "temperature"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, "ai2 2000 counts\ndi1 off\ntemperature 25 degC\n");
}

TEST_F(ZrctlIo, get_has_stable_json_members) {
    makeFile(di1, "1\n");
    const ToolResult result = runZrctl({"io", "get", "di1", "power", "--json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output,
              "{\"channels\": [{\"channel\": \"di1\", \"present\": true, \"value\": true, "
              "\"unit\": null, \"result\": 0, \"resultText\": \"success\"}, {\"channel\": "
              "\"power\", \"present\": true, \"value\": 12100, \"unit\": \"mV\", \"result\": 0, "
              "\"resultText\": \"success\"}]}\n");
    EXPECT_EQ(query(result.output, ".channels[] | .value"), "true\n12100\n");
}

TEST_F(ZrctlIo, get_shows_the_low_16_bits_as_the_library_gives_them) {
    makeFile(ai1, "70000\n");
    makeFile("/sys/class/analog/temperature/value", "-1\n");
    EXPECT_EQ(runZrctl({"io", "get", "ai1", "temperature"}).output,
              "ai1 4464 counts\ntemperature 65535 degC\n");
}

TEST_F(ZrctlIo, get_of_an_ignition_whose_attribute_holds_its_name_is_off) {
    const ToolResult result = runZrctl({"io", "get", "ignition"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "ignition off\n");
}

TEST_F(ZrctlIo, get_of_a_missing_channel_fails_and_still_reads_the_others) {
    removeFile(di1);
    const ToolResult result = runZrctl({"io", "get", "di1", "di2"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "di2 off\n");
    EXPECT_EQ(result.errors,
              "zrctl: di1: file or device cannot be opened (result 2): " + missing(di1));
}

TEST_F(ZrctlIo, get_of_a_missing_power_sensor_names_both_files) {
    removeFile("/sys/class/analog/supply_vcc");
    EXPECT_EQ(runZrctl({"io", "get", "power"}).errors,
              "zrctl: power: file or device cannot be opened (result 2): " +
                  missing("/sys/class/analog/supply_vcc/value and "
                          "/sys/class/analog/board_12v_bat/value",
                          "are"));
}

TEST_F(ZrctlIo, get_of_a_forbidden_supply_names_it_and_not_the_battery) {
    const std::string supply = "/sys/class/analog/supply_vcc/value";
    ASSERT_EQ(::chmod(supply.c_str(), 0), 0);
    EXPECT_EQ(runZrctl({"io", "get", "power"}, dropPrivileges).errors,
              "zrctl: power: file or device cannot be opened (result 2): " + forbidden(supply));
    const ToolResult list = runZrctl({"io", "list"}, dropPrivileges);
    EXPECT_EQ(list.status, 1);
    EXPECT_NE(list.output.find("power        present  -\n"), std::string::npos);
}

TEST_F(ZrctlIo, get_of_a_battery_that_gives_no_value_names_the_battery) {
    const std::string battery = "/sys/class/analog/board_12v_bat/value";
    ASSERT_EQ(::chmod("/sys/class/analog/supply_vcc/value", 0), 0);
    makeFile(battery, "none\n");
    EXPECT_EQ(runZrctl({"io", "get", "power"}, dropPrivileges).errors,
              "zrctl: power: read failed (result 5): " + refused(battery));
}

TEST_F(ZrctlIo, get_of_an_impossible_state_shows_on_and_fails) {
    makeFile(di1, "2\n");
    const std::string error =
        "di1: invalid state or device (result 10): the driver gave neither 0 nor 1, which reads as "
        "on; check its wiring and driver";
    const ToolResult text = runZrctl({"io", "get", "di1"});
    EXPECT_EQ(text.status, 1);
    EXPECT_EQ(text.output, "di1 on\n");
    EXPECT_EQ(text.errors, "zrctl: " + error + "\n");
    const ToolResult json = runZrctl({"io", "get", "di1", "--json"});
    EXPECT_EQ(json.status, 1);
    EXPECT_EQ(query(json.output, ".channels[0] | .value, .result, .error"),
              "true\n10\n\"" + error + "\"\n");
}

TEST_F(ZrctlIo, get_without_permission_says_so) {
    ASSERT_EQ(::chmod(di1, 0), 0);
    const ToolResult result = runZrctl({"io", "get", "di1"}, dropPrivileges);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              "zrctl: di1: file or device cannot be opened (result 2): " + forbidden(di1));
}

TEST_F(ZrctlIo, get_of_an_output_needs_no_permission_to_write) {
    ASSERT_EQ(::chmod(do1, 0444), 0);
    const ToolResult result = runZrctl({"io", "get", "do1"}, dropPrivileges);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "do1 off\n");
}

TEST_F(ZrctlIo, set_switches_an_output) {
    for (const auto& [state, digit] :
         {std::pair("on", "1"), std::pair("off", "0"), std::pair("1", "1"), std::pair("0", "0")}) {
        const ToolResult result = runZrctl({"io", "set", "do1", state});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");
        EXPECT_EQ(result.output, std::string("do1 set to ") + (*digit == '1' ? "on" : "off") +
                                     ": success (result 0)\n");
        EXPECT_EQ(readFile(do1), digit);
    }
}

TEST_F(ZrctlIo, set_has_stable_json_members) {
    const ToolResult result = runZrctl({"--json", "io", "set", "do1", "on"});
    EXPECT_EQ(result.output,
              "{\"channel\": \"do1\", \"present\": true, \"value\": true, \"unit\": null, "
              "\"result\": 0, \"resultText\": \"success\"}\n");
    EXPECT_EQ(query(result.output, ".value"), "true\n");
}

TEST_F(ZrctlIo, set_of_an_input_is_not_supported) {
    const ToolResult result = runZrctl({"io", "set", "di1", "on"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "zrctl: di1: not supported (result 11): only do1 to do3 can be set\n");
    EXPECT_EQ(readFile(di1), "0\n");
}

TEST_F(ZrctlIo, set_of_a_missing_output_says_so) {
    removeFile(do1);
    const ToolResult result = runZrctl({"io", "set", "do1", "on"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              "zrctl: do1: file or device cannot be opened (result 2): " + missing(do1));
}

TEST_F(ZrctlIo, set_without_permission_says_so_in_both_forms) {
    ASSERT_EQ(::chmod(do1, 0444), 0);
    const ToolResult result = runZrctl({"io", "set", "do1", "on", "--json"}, dropPrivileges);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "zrctl: do1: file or device cannot be opened (result 2): " + forbidden(do1));
    EXPECT_EQ(query(result.output, ".result, .value, .present"), "2\nnull\ntrue\n");
    EXPECT_EQ(readFile(do1), "0\n");
}

TEST_F(ZrctlIo, set_of_an_output_that_refuses_the_value_fails) {
    removeFile(do1);
    makeDeviceNode(do1, "full");
    const ToolResult result = runZrctl({"io", "set", "do1", "on"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "zrctl: do1: write failed (result 6): " + refused(do1));
}

}  // namespace
}  // namespace ZR::test
