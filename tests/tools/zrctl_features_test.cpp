#include <gtest/gtest.h>

#include <string>

#include "tests/support/private_root.h"
#include "tests/tools/json_check.h"
#include "tests/tools/tool_process.h"

namespace ZR::test {
namespace {

TEST(ZrctlFeatures, of_a_bare_machine_are_none_and_a_single_core) {
    const ToolResult result = runZrctl({"features"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output,
              "encoder      no\n"
              "touchscreen  no\n"
              "keyboard     no\n"
              "single core  yes (no readable device tree)\n");
}

TEST(ZrctlFeatures, of_a_small_processor_need_no_reason) {
    makeFile("/proc/device-tree/compatible", "fsl,imx6dl");
    EXPECT_EQ(runZrctl({"features"}).output,
              "encoder      no\n"
              "touchscreen  no\n"
              "keyboard     no\n"
              "single core  yes\n");
}

TEST(ZrctlFeatures, of_a_full_quad_terminal_are_all_but_the_single_core) {
    for (const char* const node : {"encoder0", "touchscreen0", "keyboard0"})
        makeDeviceNode(std::string("/dev/input/") + node);
    makeFile("/proc/device-tree/compatible", "fsl,imx6q");
    EXPECT_EQ(runZrctl({"features"}).output,
              "encoder      yes\n"
              "touchscreen  yes\n"
              "keyboard     yes\n"
              "single core  no\n");
}

TEST(ZrctlFeatures, have_stable_json_keys) {
    makeDeviceNode("/dev/input/encoder0");
    const ToolResult result = runZrctl({"features", "--json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output,
              "{\"encoder\": true, \"touchscreen\": false, \"keyboard\": false, "
              "\"singleCore\": true}\n");
    EXPECT_EQ(query(result.output, ".encoder, .singleCore"), "true\ntrue\n");
}

}  // namespace
}  // namespace ZR::test
