#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/private_root.h"
#include "tests/tools/json_check.h"
#include "tests/tools/tool_process.h"

namespace ZR::test {
namespace {

constexpr char missingCan0[] =
    "/sys/class/net/can0 is missing; check that the board has this device and its driver is "
    "loaded\n";

/// Runs zrctl where no CAN port is, whatever this machine has.
ToolResult runWithoutPorts(const std::vector<std::string>& arguments) {
    return runZrctl(arguments, enterEmptyNetwork);
}

/// An interface without a controller that answers, such as a virtual one.
void makeInterface(const std::string& name, const std::string& received, const std::string& sent) {
    const std::string folder = "/sys/class/net/" + name;
    makeFile(folder + "/flags", "0x40081\n");
    makeFile(folder + "/statistics/rx_packets", received);
    makeFile(folder + "/statistics/tx_packets", sent);
}

TEST(ZrctlCan, list_says_that_there_is_no_port) {
    const ToolResult result = runWithoutPorts({"can", "list"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "no CAN port: none of can0 to can3 is there\n");
    EXPECT_EQ(result.errors, "");
}

TEST(ZrctlCan, list_of_no_port_is_an_empty_list_as_json) {
    const ToolResult result = runWithoutPorts({"can", "list", "--json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(query(result.output, "."), "{\"ports\":[]}\n");
}

TEST(ZrctlCan, list_shows_an_interface_without_a_controller_as_unknown) {
    makeInterface("can1", "12\n", "34\n");
    const ToolResult result = runWithoutPorts({"can", "list"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output,
              "can1  port 2  unknown        -               received 12         sent 34\n");
    EXPECT_EQ(result.errors, "");
    const ToolResult document = runWithoutPorts({"can", "list", "--json"});
    EXPECT_EQ(query(document.output,
                    ".ports[0] | [.port, .interface, .state, .stateCode, "
                    ".bitrate, .received, .sent, .result]"),
              "[2,\"can1\",\"unknown\",255,null,12,34,0]\n");
}

TEST(ZrctlCan, stats_are_the_counters_of_the_interface) {
    makeInterface("can2", "0x10\n", "5\n");
    EXPECT_EQ(runWithoutPorts({"can", "stats", "3"}).output, "can2 received 16, sent 5\n");
    EXPECT_EQ(query(runWithoutPorts({"can", "stats", "can2", "--json"}).output,
                    "[.port, .received, .sent]"),
              "[3,16,5]\n");
}

TEST(ZrctlCan, state_of_an_interface_without_a_controller_fails_with_the_reason) {
    makeInterface("can0", "0\n", "0\n");
    const ToolResult result = runWithoutPorts({"can", "state", "1"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              "zrctl: can0: read failed (result 5): can0 has no CAN controller that tells; a "
              "virtual port never does\n");
}

TEST(ZrctlCan, shows_what_libsocketcan_prints_when_asked) {
    const ToolResult result = runWithoutPorts({"can", "state", "1", "--verbose"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors.rfind("zrctl: library: Cannot find device \"can0\"\n", 0), 0U);
}

struct MissingPort {
    std::vector<std::string> arguments;
    std::string failure;
    unsigned int result;
};

void PrintTo(const MissingPort& missing, std::ostream* stream) {
    for (const std::string& word : missing.arguments)
        *stream << word << ' ';
}

class ZrctlCanMissingPort : public testing::TestWithParam<MissingPort> {
  protected:
    std::vector<std::string> arguments() const {
        std::vector<std::string> words = GetParam().arguments;
        words.insert(words.begin(), "can");
        return words;
    }
};

TEST_P(ZrctlCanMissingPort, gives_one_line_and_status_1) {
    const ToolResult result = runWithoutPorts(arguments());
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "zrctl: " + GetParam().failure + ": " + missingCan0);
}

TEST_P(ZrctlCanMissingPort, gives_a_document_with_result_and_error) {
    std::vector<std::string> words = arguments();
    words.emplace_back("--json");
    const ToolResult result = runWithoutPorts(words);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(
        query(result.output, "(.frames // [.])[0] | [.port, .interface, .result, has(\"error\")]"),
        "[1,\"can0\"," + std::to_string(GetParam().result) + ",true]\n");
}

INSTANTIATE_TEST_SUITE_P(
    each, ZrctlCanMissingPort,
    testing::Values(
        MissingPort{{"state", "1"}, "can0: file or device cannot be opened (result 2)", 2},
        MissingPort{{"stats", "1"}, "can0: file or device cannot be opened (result 2)", 2},
        MissingPort{{"bitrate", "1"}, "can0: file or device cannot be opened (result 2)", 2},
        MissingPort{
            {"bitrate", "1", "250000"}, "can0: file or device cannot be opened (result 2)", 2},
        MissingPort{{"start", "can0"}, "can0: generic failure (result 1)", 1},
        MissingPort{{"stop", "can0"}, "can0: generic failure (result 1)", 1},
        MissingPort{{"dump", "1"}, "can0: socket set-up failed (result 4)", 4},
        MissingPort{{"send", "1", "123#11"}, "can0 123#11: socket set-up failed (result 4)", 4}));

TEST(ZrctlCan, nothing_is_sent_behind_a_frame_that_failed) {
    const ToolResult result = runWithoutPorts({"can", "send", "1", "123#", "124#", "--json"});
    EXPECT_EQ(query(result.output, ".frames | map(.frame)"), "[\"123#\"]\n");
}

TEST(ZrctlCan, frames_are_shown_in_the_notation_of_candump) {
    for (const auto& [given, shown] : std::vector<std::pair<std::string, std::string>>{
             {"7ff#", "7FF#"},
             {"000#00", "000#00"},
             {"00000800#aB", "00000800#AB"},
             {"1fffffff#11.22.33.44.55.66.77.88", "1FFFFFFF#1122334455667788"},
             {"123#1122.3344", "123#11223344"}}) {
        const ToolResult result = runWithoutPorts({"can", "send", "1", given, "--json"});
        EXPECT_EQ(query(result.output, ".frames[0].frame"), "\"" + shown + "\"\n");
    }
}

TEST(ZrctlCan, start_without_the_right_says_so) {
    makeInterface("can0", "0\n", "0\n");
    const ToolResult result = runZrctl({"can", "start", "1"}, [] {
        enterEmptyNetwork();
        dropPrivileges();
    });
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "zrctl: can0: generic failure (result 1): no permission to set up network "
              "interfaces; run zrctl as root\n");
}

TEST(ZrctlEvents, without_any_driver_fail_with_a_line_for_each_family) {
    const ToolResult result = runZrctl({"events"}, enterEmptyNetwork);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              "zrctl: ANALOG: no such notifications; check that the driver is loaded\n"
              "zrctl: ZR_DI: no such notifications; check that the driver is loaded\n"
              "zrctl: ZR_DO: no such notifications; check that the driver is loaded\n");
}

TEST(ZrctlEvents, of_a_missing_family_give_a_document_too) {
    const ToolResult result = runZrctl({"events", "ZR_DO", "ZR_DO", "--json"}, enterEmptyNetwork);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(query(result.output, "[.family, has(\"error\")]"), "[\"ZR_DO\",true]\n");
}

TEST(ZrctlEvents, show_what_the_library_prints_when_asked) {
    const ToolResult result = runZrctl({"events", "ZR_DO", "-v"}, enterEmptyNetwork);
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.errors.find("zrctl: library: Connecting to generic netlink event interface "
                                 "ZR_DO failed, disabling event handling\n"),
              std::string::npos);
}

}  // namespace
}  // namespace ZR::test
