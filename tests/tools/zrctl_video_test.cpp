#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/private_root.h"
#include "tests/tools/json_check.h"
#include "tests/tools/tool_process.h"

namespace ZR::test {
namespace {

constexpr char missing[] =
    "/dev/media0 is missing; check that the board has this device and its driver is loaded";
constexpr char notOpen[] =
    "camera 2: file or device cannot be opened (result 2): the library says \"ERROR OPENING VIDEO "
    "SUB DEVICE: No such file or directory\"; 'zrctl video topology' shows the decoders and their "
    "nodes";

TEST(ZrctlVideo, topology_without_a_media_controller_gives_one_line_in_each_form) {
    for (const char* const form : {"--dot", "--svg", "--verbose"}) {
        const ToolResult result = runZrctl({"video", "topology", form});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors, std::string("zrctl: ") + missing + "\n");
    }
}

TEST(ZrctlVideo, topology_without_a_media_controller_gives_a_document_with_the_error) {
    const ToolResult result = runZrctl({"video", "topology", "--json"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, std::string("zrctl: ") + missing + "\n");
    EXPECT_EQ(query(result.output, "."),
              std::string(R"({"device":"/dev/media0","error":")") + missing + "\"}\n");
}

TEST(ZrctlVideo, topology_takes_the_device_that_is_named) {
    const ToolResult result = runZrctl({"video", "topology", "--device", "/dev/me\ndia1"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "zrctl: /dev/me?dia1 is missing; check that the board has this device and its driver "
              "is loaded\n");
}

TEST(ZrctlVideo, topology_of_another_device_says_that_it_is_none) {
    const ToolResult result = runZrctl({"video", "topology", "--device=/dev/null"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "zrctl: /dev/null is no media controller that tells its topology: Inappropriate "
              "ioctl for device; give another one by --device\n");
}

TEST(ZrctlVideo, topology_of_a_device_without_the_right_says_so) {
    makeFile("/dev/media0", "");
    std::filesystem::permissions("/dev/media0", std::filesystem::perms::none);
    const ToolResult result = runZrctl({"video", "topology"}, dropPrivileges);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "zrctl: no permission for /dev/media0; run zrctl as root or ask for access to that "
              "file\n");
}

TEST(ZrctlVideo, standard_without_a_decoder_fails_with_what_the_library_says) {
    const ToolResult result = runZrctl({"video", "standard", "2"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, std::string("zrctl: ") + notOpen + "\n");
}

TEST(ZrctlVideo, standard_without_a_decoder_gives_a_document_with_result_and_error) {
    const ToolResult result = runZrctl({"video", "standard", "2", "--json"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(query(result.output, "[.camera, .decoder, .standard, .standardCode, .said, .result]"),
              "[2,null,null,2,\"ERROR OPENING VIDEO SUB DEVICE: No such file or directory\",2]\n");
    EXPECT_EQ(runTool("/usr/bin/jq", {"-j", ".error", "/dev/document.json"}).output, notOpen);
}

TEST(ZrctlVideo, standard_shows_the_library_s_line_when_asked) {
    const ToolResult result = runZrctl({"video", "standard", "2", "--verbose"});
    EXPECT_EQ(result.errors,
              "zrctl: library: ERROR OPENING VIDEO SUB DEVICE: No such file or directory\n"
              "zrctl: " +
                  std::string(notOpen) + "\n");
}

}  // namespace
}  // namespace ZR::test
