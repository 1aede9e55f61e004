#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "tests/support/private_root.h"
#include "tests/tools/board_files.h"
#include "tests/tools/json_check.h"
#include "tests/tools/tool_process.h"

namespace ZR::test {
namespace {

std::string firstLine(const std::string& path) {
    const std::string content = readFile(path);
    return content.substr(0, content.find('\n'));
}

class ZrctlDimmableColor : public testing::Test {
  protected:
    void SetUp() override { makeDimmableDevices(); }

    static void giveTheKeyAColour() { makeFile(keyMaximum, "16777215\n"); }
};

TEST_F(ZrctlDimmableColor, is_set_and_read_on_the_rgb_led) {
    const ToolResult set = runZrctl({"dimmable", "color", "rgb", "#102030"});
    EXPECT_EQ(set.status, 0);
    EXPECT_EQ(set.output, "rgb set to #102030: success (result 0)\n");
    EXPECT_EQ(firstLine(rgb), "1056816");
    const ToolResult read = runZrctl({"dimmable", "color", "rgb"});
    EXPECT_EQ(read.status, 0);
    EXPECT_EQ(read.output, "rgb #102030\n");
}

TEST_F(ZrctlDimmableColor, can_be_written_in_hexadecimal_and_by_name) {
    for (const auto& [text, color] :
         {std::pair("0xABCDEF", "#abcdef"), std::pair("#00ff7F", "#00ff7f"),
          std::pair("red", "#ff0000"), std::pair("green", "#00ff00"), std::pair("blue", "#0000ff"),
          std::pair("yellow", "#ffff00"), std::pair("cyan", "#00ffff"),
          std::pair("magenta", "#ff00ff"), std::pair("white", "#ffffff"),
          std::pair("black", "#000000"), std::pair("off", "#000000")}) {
        makeFile(rgb, "0\n");
        EXPECT_EQ(runZrctl({"dimmable", "color", "rgb", text}).output,
                  std::string("rgb set to ") + color + ": success (result 0)\n");
    }
}

TEST_F(ZrctlDimmableColor, has_stable_json_members) {
    const ToolResult result = runZrctl({"dimmable", "color", "rgb", "red", "--json"});
    EXPECT_EQ(result.output,
              "{\"device\": \"rgb\", \"present\": true, \"value\": 16711680, \"unit\": \"rgb\", "
              "\"color\": \"#ff0000\", \"result\": 0, \"resultText\": \"success\"}\n");
    EXPECT_EQ(query(result.output, ".color"), "\"#ff0000\"\n");
}

TEST_F(ZrctlDimmableColor, of_a_plain_led_is_not_supported) {
    const ToolResult result = runZrctl({"dimmable", "color", "key"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "zrctl: key: not supported (result 11): it has no colour; use 'zrctl dimmable get "
              "key' or 'set key PERCENT'\n");
}

TEST_F(ZrctlDimmableColor, set_on_a_plain_led_counts_as_percent) {
    const ToolResult result = runZrctl({"dimmable", "color", "key", "#000032"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "key set to 50 %: success (result 0)\n");
    EXPECT_EQ(firstLine(key), "128");
}

TEST_F(ZrctlDimmableColor, set_on_a_plain_led_above_100_leads_to_the_percentage) {
    for (const std::string led : {"key", "encoder"}) {
        const ToolResult result = runZrctl({"dimmable", "color", led, "red"});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.errors, "zrctl: " + led +
                                     ": value out of range (result 24): this LED has no colour; "
                                     "use 'zrctl dimmable set " +
                                     led + " PERCENT'\n");
    }
}

TEST_F(ZrctlDimmableColor, is_not_spoken_of_when_a_plain_led_gets_too_much_percent) {
    const ToolResult result = runZrctl({"dimmable", "set", "key", "101"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "zrctl: key: value out of range (result 24): give 0 to 100 percent\n");
}

TEST_F(ZrctlDimmableColor, of_the_display_does_not_exist) {
    const ToolResult result = runZrctl({"dimmable", "color", "display"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "zrctl: display: generic failure (result 1): it has no colour; use 'zrctl dimmable "
              "get display' or 'set display PERCENT'\n");
}

TEST_F(ZrctlDimmableColor, cannot_be_set_on_the_beeper) {
    const ToolResult result = runZrctl({"dimmable", "color", "beeper", "red"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "zrctl: beeper: generic failure (result 1): it has no colour; use 'zrctl dimmable "
              "get beeper' or 'set beeper PERCENT'\n");
    EXPECT_EQ(readFile(beeper), "0\n");
}

TEST_F(ZrctlDimmableColor, of_a_colour_key_is_shown_wherever_the_key_is) {
    giveTheKeyAColour();
    EXPECT_EQ(runZrctl({"dimmable", "color", "key", "0x0A0B0C"}).output,
              "key set to #0a0b0c: success (result 0)\n");
    EXPECT_EQ(firstLine(key), "658188");
    EXPECT_EQ(runZrctl({"dimmable", "color", "key"}).output, "key #0a0b0c\n");
    EXPECT_EQ(runZrctl({"dimmable", "get", "key"}).output, "key #0a0b0c\n");
}

TEST_F(ZrctlDimmableColor, of_a_colour_key_is_what_set_takes) {
    giveTheKeyAColour();
    EXPECT_EQ(runZrctl({"dimmable", "set", "key", "101"}).output,
              "key set to #000065: success (result 0)\n");
    const ToolResult result = runZrctl({"dimmable", "set", "key", "16777216"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "zrctl: key: value out of range (result 24): this LED takes a colour; give 0 to "
              "16777215, or a colour by 'zrctl dimmable color'\n");
}

TEST_F(ZrctlDimmableColor, of_a_missing_rgb_led_names_its_file) {
    removeFile(rgb);
    const ToolResult result = runZrctl({"dimmable", "color", "rgb", "red"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              std::string("zrctl: rgb: generic failure (result 1): ") + rgb +
                  " is missing; check that the board has this device and its driver is loaded\n");
}

TEST_F(ZrctlDimmableColor, works_on_the_second_name_of_the_rgb_led_in_silence) {
    removeFile(rgb);
    const std::string second = "/sys/class/leds/sys:status:rgb/brightness";
    makeFile(second, "0\n");
    const ToolResult result = runZrctl({"dimmable", "color", "rgb", "blue"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "rgb set to #0000ff: success (result 0)\n");
    EXPECT_EQ(firstLine(second), "255");
}

}  // namespace
}  // namespace ZR::test
