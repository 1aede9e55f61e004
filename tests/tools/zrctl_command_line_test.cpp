#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/private_root.h"
#include "tests/tools/board_files.h"
#include "tests/tools/json_check.h"
#include "tests/tools/tool_process.h"

namespace ZR::test {
namespace {

struct WrongUsage {
    std::vector<std::string> arguments;
    std::string error;
};

void PrintTo(const WrongUsage& usage, std::ostream* stream) {
    *stream << usage.error;
}

class ZrctlWrongUsage : public testing::TestWithParam<WrongUsage> {
  protected:
    void SetUp() override {
        makeInputsAndOutputs();
        makeDimmableDevices();
    }
};

TEST_P(ZrctlWrongUsage, gives_one_line_and_status_2) {
    const ToolResult result = runZrctl(GetParam().arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "zrctl: " + GetParam().error + "\n");
    EXPECT_EQ(result.output, "");
}

TEST_P(ZrctlWrongUsage, gives_the_same_line_as_json) {
    std::vector<std::string> arguments = GetParam().arguments;
    arguments.insert(arguments.begin(), "--json");
    const ToolResult result = runZrctl(arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "zrctl: " + GetParam().error + "\n");
    EXPECT_EQ(query(result.output, "keys"), "[\"error\"]\n");
    EXPECT_EQ(runTool("/usr/bin/jq", {"-j", ".error", "/dev/document.json"}).output,
              GetParam().error);
}

TEST_P(ZrctlWrongUsage, touches_no_device) {
    runZrctl(GetParam().arguments);
    EXPECT_EQ(readFile(do1), "0\n");
    EXPECT_EQ(readFile(ai1Hysteresis), "0\n");
    EXPECT_EQ(readFile(keyTrigger), "[heartbeat] none\n");
    EXPECT_EQ(readFile("/sys/class/analog/light/hysteresis"), "0\n");
}

const char channelList[] = "; 'zrctl io list' shows them all";
const char deviceList[] = "; give display, key, encoder, rgb or beeper";
const char portList[] = "; give 1 to 4, or can0 to can3";
const char filterForm[] = "; give ID:MASK in hexadecimal digits, as in 123:7FF";
const char identifierForm[] = ": give 3 or 8 hexadecimal digits of identifier before the #";
const char dataForm[] = ": give two hexadecimal digits for each byte of data";
const char percentRange[] = "; give a whole number of percent, 0 to 100";
const char ledRange[] = ", or of an LED with colour its colour, 0 to 16777215";
const char displayRange[] =
    "; give a whole number of percent, from the minimum, which 'zrctl dimmable min' shows, to 100";

INSTANTIATE_TEST_SUITE_P(
    general, ZrctlWrongUsage,
    testing::Values(
        WrongUsage{{}, "no subcommand given; 'zrctl --help' lists them"},
        WrongUsage{{""}, "no subcommand ''; 'zrctl --help' lists them"},
        WrongUsage{{"bogus"}, "no subcommand 'bogus'; 'zrctl --help' lists them"},
        WrongUsage{{"--"}, "no subcommand given; 'zrctl --help' lists them"},
        WrongUsage{{"--", "--help"}, "no subcommand '--help'; 'zrctl --help' lists them"},
        WrongUsage{{"--", "--", "io"}, "no subcommand '--'; 'zrctl --help' lists them"},
        WrongUsage{{"--", "io"}, "no action given after io; 'zrctl io --help' lists them"},
        WrongUsage{{"bogus", "--help"}, "no subcommand 'bogus'; 'zrctl --help' lists them"},
        WrongUsage{{"features", "now"}, "features takes no arguments"},
        WrongUsage{{"features", "--fast"}, "unknown option '--fast'; --help lists them"},
        WrongUsage{{"io"}, "no action given after io; 'zrctl io --help' lists them"},
        WrongUsage{{"io", "fly"}, "no action 'fly' of io; 'zrctl io --help' lists them"},
        WrongUsage{{"dimmable"},
                   "no action given after dimmable; 'zrctl dimmable --help' lists them"},
        WrongUsage{{"io", "get", "di1\n\x1b[2J\xff"},
                   std::string("no channel 'di1\\x0a\\x1b[2J\\xff'") + channelList},
        WrongUsage{{"io", "get", std::string(100, 'x')},
                   "no channel '" + std::string(60, 'x') + "...'" + channelList},
        WrongUsage{{"io", "get", "\"\\"}, std::string("no channel '\"\\'") + channelList}));

INSTANTIATE_TEST_SUITE_P(
    io, ZrctlWrongUsage,
    testing::Values(
        WrongUsage{{"io", "list", "di1"},
                   "io list takes no arguments; 'zrctl io get CHANNEL' reads one channel"},
        WrongUsage{{"io", "get"}, std::string("io get needs a channel") + channelList},
        WrongUsage{{"io", "get", "--"}, std::string("io get needs a channel") + channelList},
        WrongUsage{{"io", "get", "light", "di0"}, "no channel 'di0'; give di1 to di4"},
        WrongUsage{{"io", "get", "di5"}, "no channel 'di5'; give di1 to di4"},
        WrongUsage{{"io", "get", "di01"}, "no channel 'di01'; give di1 to di4"},
        WrongUsage{{"io", "get", "do4"}, "no channel 'do4'; give do1 to do3"},
        WrongUsage{{"io", "get", "ai65537"}, "no channel 'ai65537'; give ai1 to ai4"},
        WrongUsage{{"io", "get", "di-1"}, std::string("no channel 'di-1'") + channelList},
        WrongUsage{{"io", "get", "di"}, std::string("no channel 'di'") + channelList},
        WrongUsage{{"io", "get", "DI1"}, std::string("no channel 'DI1'") + channelList},
        WrongUsage{{"io", "get", "power1"}, std::string("no channel 'power1'") + channelList},
        WrongUsage{{"io", "get", ""}, std::string("no channel ''") + channelList},
        WrongUsage{{"io", "set", "do1"},
                   "io set needs a channel and a state, as in 'zrctl io set do1 on'"},
        WrongUsage{{"io", "set", "do1", "2"}, "no state '2'; give on, off, 1 or 0"},
        WrongUsage{{"io", "set", "do1", "ON"}, "no state 'ON'; give on, off, 1 or 0"},
        WrongUsage{{"io", "set", "do4", "on"}, "no channel 'do4'; give do1 to do3"},
        WrongUsage{{"io", "watch"}, std::string("io watch needs a channel") + channelList},
        WrongUsage{{"io", "watch", "light", "di9"}, "no channel 'di9'; give di1 to di4"},
        WrongUsage{{"io", "watch", "light", "--interval", "0"},
                   "interval '0' is no whole number from 1 to 60000"},
        WrongUsage{{"io", "watch", "light", "--interval", "60001"},
                   "interval '60001' is no whole number from 1 to 60000"},
        WrongUsage{{"io", "watch", "light", "--count", "0"},
                   "count '0' is no whole number from 1 to 2147483647"},
        WrongUsage{{"io", "watch", "light", "--count", "5x"},
                   "count '5x' is no whole number from 1 to 2147483647"},
        WrongUsage{{"io", "watch", "light", "--count"}, "option --count needs a value"}));

const char configureExample[] = ", as in 'zrctl io configure ai1 --mode 0 --hysteresis 10'";
const char hysteresisUnit[] = "; give a whole number in the driver's unit, counts, such as 10";

INSTANTIATE_TEST_SUITE_P(
    io_configure, ZrctlWrongUsage,
    testing::Values(
        WrongUsage{{"io", "configure"}, "io configure needs one analog input, ai1 to ai4"},
        WrongUsage{{"io", "configure", "ai1"},
                   std::string("io configure needs --mode") + configureExample},
        WrongUsage{{"io", "configure", "ai1", "--mode", "1"},
                   std::string("io configure needs --hysteresis") + configureExample},
        WrongUsage{{"io", "configure", "ai1", "--mode", "3", "--hysteresis", "1"},
                   "mode '3' is no whole number from 0 to 2"},
        WrongUsage{{"io", "configure", "ai1", "--mode=-1", "--hysteresis", "1"},
                   "mode '-1' is no whole number from 0 to 2"},
        WrongUsage{{"io", "configure", "ai1", "--mode", "", "--hysteresis", "1"},
                   "mode '' is no whole number from 0 to 2"},
        WrongUsage{{"io", "configure", "ai1", "--mode", "1", "--hysteresis", "2147483648"},
                   std::string("no hysteresis '2147483648'") + hysteresisUnit},
        WrongUsage{{"io", "configure", "ai1", "--mode", "1", "--hysteresis", "abc"},
                   std::string("no hysteresis 'abc'") + hysteresisUnit},
        WrongUsage{{"io", "configure", "ai5", "--mode", "1", "--hysteresis", "1"},
                   "no channel 'ai5'; give ai1 to ai4"},
        WrongUsage{{"io", "configure", "light", "--mode", "1", "--hysteresis", "1"},
                   "light is no analog input; give ai1 to ai4"}));

INSTANTIATE_TEST_SUITE_P(
    dimmable, ZrctlWrongUsage,
    testing::Values(
        WrongUsage{{"dimmable", "list", "key"},
                   "dimmable list takes no arguments; 'get DEVICE' reads one device"},
        WrongUsage{{"dimmable", "get"},
                   "dimmable get needs a device: display, key, encoder, rgb or beeper"},
        WrongUsage{{"dimmable", "get", "lamp"}, std::string("no device 'lamp'") + deviceList},
        WrongUsage{{"dimmable", "set", "display"},
                   "dimmable set needs a device and a number, as in 'set display 50'"},
        WrongUsage{{"dimmable", "set", "display", "-5"},
                   std::string("no intensity '-5'") + displayRange},
        WrongUsage{{"dimmable", "set", "display", "50%"},
                   std::string("no intensity '50%'") + displayRange},
        WrongUsage{{"dimmable", "set", "display", "4294967296"},
                   std::string("no intensity '4294967296'") + displayRange},
        WrongUsage{{"dimmable", "set", "display", "99999999999999999999"},
                   std::string("no intensity '99999999999999999999'") + displayRange},
        WrongUsage{{"dimmable", "set", "display", "50 "},
                   std::string("no intensity '50 '") + displayRange},
        WrongUsage{{"dimmable", "set", "beeper", "0x10"},
                   std::string("no intensity '0x10'") + percentRange},
        WrongUsage{{"dimmable", "set", "key", "-1"},
                   std::string("no intensity '-1'") + percentRange + ledRange},
        WrongUsage{{"dimmable", "set", "encoder", "red"},
                   std::string("no intensity 'red'") + percentRange + ledRange},
        WrongUsage{{"dimmable", "set", "rgb", "red"},
                   "no intensity 'red'; this LED has none, use 'zrctl dimmable color rgb COLOR'"},
        WrongUsage{{"dimmable", "color"},
                   "dimmable color needs a device and perhaps a colour, as in 'color rgb red'"},
        WrongUsage{{"dimmable", "color", "rgb", "#12345"},
                   "no colour '#12345'; give #RRGGBB, 0xRRGGBB or a name that 'zrctl dimmable "
                   "--help' lists"},
        WrongUsage{{"dimmable", "color", "rgb", "#-12345"},
                   "no colour '#-12345'; give #RRGGBB, 0xRRGGBB or a name that 'zrctl dimmable "
                   "--help' lists"},
        WrongUsage{{"dimmable", "color", "rgb", "123456"},
                   "no colour '123456'; give #RRGGBB, 0xRRGGBB or a name that 'zrctl dimmable "
                   "--help' lists"},
        WrongUsage{{"dimmable", "min", "1", "2"},
                   "dimmable min takes one number at most, as in 'min 10'"},
        WrongUsage{{"dimmable", "min", "1.5"}, std::string("no minimum '1.5'") + percentRange},
        WrongUsage{{"dimmable", "min", "abc"}, std::string("no minimum 'abc'") + percentRange}));

INSTANTIATE_TEST_SUITE_P(
    can, ZrctlWrongUsage,
    testing::Values(
        WrongUsage{{"can"}, "no action given after can; 'zrctl can --help' lists them"},
        WrongUsage{{"can", "list", "1"},
                   "can list takes no arguments; 'zrctl can state PORT' reads one port"},
        WrongUsage{{"can", "state"}, "can state needs one port, as in 'zrctl can state 1'"},
        WrongUsage{{"can", "stop", "1", "2"}, "can stop needs one port, as in 'zrctl can stop 1'"},
        WrongUsage{{"can", "start", "0"}, std::string("no CAN port '0'") + portList},
        WrongUsage{{"can", "stats", "5"}, std::string("no CAN port '5'") + portList},
        WrongUsage{{"can", "state", "can4"}, std::string("no CAN port 'can4'") + portList},
        WrongUsage{{"can", "state", "01"}, std::string("no CAN port '01'") + portList},
        WrongUsage{{"can", "state", "-1"}, std::string("no CAN port '-1'") + portList},
        WrongUsage{{"can", "state", ""}, std::string("no CAN port ''") + portList},
        WrongUsage{{"can", "bitrate"},
                   "can bitrate needs a port and perhaps a rate, as in 'bitrate 1 250000'"},
        WrongUsage{{"can", "bitrate", "1", "0"},
                   "bit rate '0' is no whole number from 1 to 1000000"},
        WrongUsage{{"can", "bitrate", "1", "1000001"},
                   "bit rate '1000001' is no whole number from 1 to 1000000"},
        WrongUsage{{"can", "bitrate", "1", "250k"},
                   "bit rate '250k' is no whole number from 1 to 1000000"},
        WrongUsage{{"can", "dump"}, "can dump needs a port; 'zrctl can list' shows them all"},
        WrongUsage{{"can", "dump", "1", "can0"},
                   "can dump takes a port once, and can0 is there twice"},
        WrongUsage{{"can", "dump", "1", "--count", "0"},
                   "count '0' is no whole number from 1 to 2147483647"},
        WrongUsage{{"can", "dump", "1", "--time-limit", "0.5"},
                   "time limit '0.5' is no whole number from 1 to 2147483647"},
        WrongUsage{{"can", "dump", "1", "--filter", "123"},
                   std::string("filter '123'") + filterForm},
        WrongUsage{{"can", "dump", "1", "--filter", "123:7FF:1"},
                   std::string("filter '123:7FF:1'") + filterForm},
        WrongUsage{{"can", "dump", "1", "--filter", "123~7FF"},
                   std::string("filter '123~7FF'") + filterForm},
        WrongUsage{{"can", "dump", "1", "--filter", "20000123:7FF"},
                   "filter '20000123:7FF'; the flag 20000000 is not for filters of frames"}));

INSTANTIATE_TEST_SUITE_P(
    can_send, ZrctlWrongUsage,
    testing::Values(
        WrongUsage{{"can", "send", "1"},
                   "can send needs a port and frames, as in 'zrctl can send 1 123#1122'"},
        WrongUsage{{"can", "send", "1", "123#", "--retries", "-1"},
                   "number of retries '-1' is no whole number from 0 to 1000000"},
        WrongUsage{{"can", "send", "1", "123#", "--retry-delay", "1s"},
                   "retry delay '1s' is no whole number from 0 to 1000000"},
        WrongUsage{{"can", "send", "1", "123"},
                   "frame '123': write ID#DATA, as in 123#1122 or 12345678#"},
        WrongUsage{{"can", "send", "1", "123#", "123##3"},
                   "frame '123##3': the library sends no CAN FD frames"},
        WrongUsage{{"can", "send", "1", "123#R"},
                   "frame '123#R': the library sends no remote frames"},
        WrongUsage{{"can", "send", "1", "123#r4"},
                   "frame '123#r4': the library sends no remote frames"},
        WrongUsage{{"can", "send", "1", "800#"},
                   "frame '800#': a standard identifier is at most 7FF; write an extended one "
                   "with 8 digits"},
        WrongUsage{{"can", "send", "1", "00000123#"},
                   "frame '00000123#': the library sends an identifier below 800 as a standard "
                   "one; write it with 3 digits"},
        WrongUsage{{"can", "send", "1", "20000000#"},
                   "frame '20000000#': an extended identifier is at most 1FFFFFFF"},
        WrongUsage{{"can", "send", "1", "1234#"}, std::string("frame '1234#'") + identifierForm},
        WrongUsage{{"can", "send", "1", "#11"}, std::string("frame '#11'") + identifierForm},
        WrongUsage{{"can", "send", "1", "0x1#"}, std::string("frame '0x1#'") + identifierForm},
        WrongUsage{{"can", "send", "1", "123#1"}, std::string("frame '123#1'") + dataForm},
        WrongUsage{{"can", "send", "1", "123#1g"}, std::string("frame '123#1g'") + dataForm},
        WrongUsage{{"can", "send", "1", "123#11..22"},
                   std::string("frame '123#11..22'") + dataForm},
        WrongUsage{{"can", "send", "1", "123#11."}, std::string("frame '123#11.'") + dataForm},
        WrongUsage{{"can", "send", "1", "123#1122334455667788_9"},
                   std::string("frame '123#1122334455667788_9'") + dataForm},
        WrongUsage{{"can", "send", "1", "123#112233445566778899"},
                   "frame '123#112233445566778899': a frame has at most 8 bytes of data"}));

INSTANTIATE_TEST_SUITE_P(
    events, ZrctlWrongUsage,
    testing::Values(WrongUsage{{"events", "zr_di"},
                               "no family 'zr_di'; give ZR_DI, ZR_DO or ANALOG"},
                    WrongUsage{{"events", "ZR_DI", "--count", "many"},
                               "count 'many' is no whole number from 1 to 2147483647"},
                    WrongUsage{{"events", "--time-limit", "-1"},
                               "time limit '-1' is no whole number from 1 to 2147483647"},
                    WrongUsage{{"events", "--interval", "1"},
                               "unknown option '--interval'; --help lists them"}));

INSTANTIATE_TEST_SUITE_P(
    video, ZrctlWrongUsage,
    testing::Values(
        WrongUsage{{"video"}, "no action given after video; 'zrctl video --help' lists them"},
        WrongUsage{{"video", "paint"},
                   "no action 'paint' of video; 'zrctl video --help' lists them"},
        WrongUsage{{"video", "topology", "media0"},
                   "video topology takes no arguments; --device PATH names another device"},
        WrongUsage{{"video", "topology", "--dot", "--svg"},
                   "video topology takes one of --dot, --svg and --json"},
        WrongUsage{{"video", "topology", "--dot=1"}, "option --dot takes no value"},
        WrongUsage{{"video", "topology", "--device"}, "option --device needs a value"},
        WrongUsage{{"video", "topology", "--device="},
                   "no device ''; give the path of a media controller, as in /dev/media0"},
        WrongUsage{{"video", "topology", "--png"}, "unknown option '--png'; --help lists them"},
        WrongUsage{{"video", "standard"},
                   "video standard needs one camera, as in 'zrctl video standard 1'"},
        WrongUsage{{"video", "standard", "1", "2"},
                   "video standard needs one camera, as in 'zrctl video standard 1'"},
        WrongUsage{{"video", "standard", "0"}, "camera '0' is no whole number from 1 to 3"},
        WrongUsage{{"video", "standard", "4"}, "camera '4' is no whole number from 1 to 3"},
        WrongUsage{{"video", "standard", "-1"}, "camera '-1' is no whole number from 1 to 3"},
        WrongUsage{{"video", "standard", "1st"}, "camera '1st' is no whole number from 1 to 3"},
        WrongUsage{{"video", "standard", "--pal", "1"},
                   "unknown option '--pal'; --help lists them"}));

TEST(ZrctlVideoForms, exclude_each_other) {
    for (const char* const form : {"--dot", "--svg"}) {
        const ToolResult result = runZrctl({"video", "topology", "--json", form});
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.errors, "zrctl: video topology takes one of --dot, --svg and --json\n");
    }
}

class ZrctlHelp : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(ZrctlHelp, goes_to_standard_output_with_status_0) {
    const ToolResult result = runZrctl(GetParam());
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output.rfind("Usage: zrctl ", 0), 0U);
    EXPECT_EQ(result.output.back(), '\n');
}

INSTANTIATE_TEST_SUITE_P(everywhere, ZrctlHelp,
                         testing::Values(std::vector<std::string>{"--help"},
                                         std::vector<std::string>{"-h"},
                                         std::vector<std::string>{"features", "--help"},
                                         std::vector<std::string>{"--help", "io"},
                                         std::vector<std::string>{"io", "set", "--help"},
                                         std::vector<std::string>{"dimmable", "-h"},
                                         std::vector<std::string>{"can", "dump", "--help"},
                                         std::vector<std::string>{"events", "--help"},
                                         std::vector<std::string>{"video", "--help"},
                                         std::vector<std::string>{"video", "play", "--help"},
                                         std::vector<std::string>{"video", "standard", "-h"}));

TEST(ZrctlHelp, names_every_subcommand) {
    const std::string help = runZrctl({"--help"}).output;
    for (const char* const name : {"features", "io", "dimmable", "can", "events", "video"})
        EXPECT_NE(help.find(std::string("\n  ") + name + " "), std::string::npos) << name;
}

TEST(ZrctlHelp, of_dimmable_tells_of_the_trigger_and_the_raised_display) {
    const std::string help = runZrctl({"dimmable", "--help"}).output;
    EXPECT_NE(help.find("detaches the key LED"), std::string::npos);
    EXPECT_NE(help.find("raises it to its minimum"), std::string::npos);
}

TEST(ZrctlVersion, is_that_of_the_project) {
    const ToolResult result = runZrctl({"--version"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "zrctl " ZRCTL_VERSION "\n");
}

TEST(ZrctlArguments, after_two_dashes_are_operands) {
    const ToolResult result = runZrctl({"io", "get", "--", "--json"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "zrctl: no channel '--json'; 'zrctl io list' shows them all\n");
    EXPECT_EQ(result.output, "");
}

TEST(ZrctlArguments, may_all_stand_behind_two_dashes) {
    makeInputsAndOutputs();
    EXPECT_EQ(runZrctl({"--", "io", "get", "ai1"}).output, "ai1 1000 counts\n");
    EXPECT_EQ(runZrctl({"io", "--", "get", "ai1"}).output, "ai1 1000 counts\n");
    EXPECT_EQ(runZrctl({"--", "features"}).status, 0);
}

TEST(ZrctlArguments, stay_operands_behind_the_names_that_follow_two_dashes) {
    const ToolResult result = runZrctl({"--", "io", "get", "--json"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "zrctl: no channel '--json'; 'zrctl io list' shows them all\n");
    EXPECT_EQ(runZrctl({"--", "io", "watch", "--count=1"}).errors,
              "zrctl: no channel '--count=1'; 'zrctl io list' shows them all\n");
}

}  // namespace
}  // namespace ZR::test
