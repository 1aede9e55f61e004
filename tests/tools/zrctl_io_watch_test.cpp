#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <string>

#include "tests/support/private_root.h"
#include "tests/tools/board_files.h"
#include "tests/tools/json_check.h"
#include "tests/tools/tool_process.h"

namespace ZR::test {
namespace {

/// Changes a state as a driver does: there is no moment without a number.
void change(const std::string& path, const std::string& content) {
    makeFile("/sys/next", content);
    ASSERT_EQ(::rename("/sys/next", path.c_str()), 0);
}

class ZrctlIoWatch : public testing::Test {
  protected:
    void SetUp() override { makeInputsAndOutputs(); }
};

TEST_F(ZrctlIoWatch, shows_the_first_reading_of_each_channel_and_then_every_change) {
    ToolProcess zrctl(ZRCTL_PROGRAM, {"io", "watch", "di1", "ai1", "--interval", "1"});
    EXPECT_EQ(zrctl.readLine(), "di1 off");
    EXPECT_EQ(zrctl.readLine(), "ai1 1000 counts");
    change(di1, "1\n");
    EXPECT_EQ(zrctl.readLine(), "di1 on");
    change(ai1, "1001\n");
    EXPECT_EQ(zrctl.readLine(), "ai1 1001 counts");
    change(di1, "0\n");
    EXPECT_EQ(zrctl.readLine(), "di1 off");
}

TEST_F(ZrctlIoWatch, ends_after_the_lines_asked_for) {
    const ToolResult result = runZrctl({"io", "watch", "di1", "di2", "ai1", "--count", "2"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, "di1 off\ndi2 off\n");
}

class ZrctlIoWatchSignal : public ZrctlIoWatch, public testing::WithParamInterface<int> {};

TEST_P(ZrctlIoWatchSignal, ends_with_status_0) {
    // Longer than any wait of this test: it is the signal that ends the watch.
    ToolProcess zrctl(ZRCTL_PROGRAM, {"io", "watch", "di1", "--interval", "60000"});
    EXPECT_EQ(zrctl.readLine(), "di1 off");
    zrctl.sendSignal(GetParam());
    const ToolResult result = zrctl.wait();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "");
}

INSTANTIATE_TEST_SUITE_P(each, ZrctlIoWatchSignal, testing::Values(SIGINT, SIGTERM));

TEST_F(ZrctlIoWatch, ends_on_Ctrl_C_also_where_a_script_started_it_with_the_signal_ignored) {
    ToolProcess zrctl(ZRCTL_PROGRAM, {"io", "watch", "di1", "--interval", "60000"},
                      [] { (void)std::signal(SIGINT, SIG_IGN); });
    EXPECT_EQ(zrctl.readLine(), "di1 off");
    zrctl.sendSignal(SIGINT);
    EXPECT_EQ(zrctl.wait().status, 0);
}

TEST_F(ZrctlIoWatch, ends_with_status_0_when_its_reader_leaves_while_nothing_changes) {
    ToolProcess zrctl(ZRCTL_PROGRAM, {"io", "watch", "di1", "--interval", "1"});
    EXPECT_EQ(zrctl.readLine(), "di1 off");
    zrctl.closeOutput();
    const ToolResult result = zrctl.wait();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
}

TEST_F(ZrctlIoWatch, fails_when_its_output_is_full) {
    const ToolResult result = runZrctl({"io", "watch", "di1"}, outputTo("/dev/full"));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "zrctl: cannot write to standard output: No space left on device\n");
}

TEST_F(ZrctlIoWatch, fails_for_a_missing_channel) {
    removeFile(di1);
    const ToolResult result = runZrctl({"io", "watch", "di1"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              std::string("zrctl: di1: file or device cannot be opened (result 2): ") + di1 +
                  " is missing; check that the board has this device and its driver is loaded\n");
}

TEST_F(ZrctlIoWatch, fails_when_a_channel_goes_away) {
    ToolProcess zrctl(ZRCTL_PROGRAM, {"io", "watch", "di1", "--interval", "1"});
    EXPECT_EQ(zrctl.readLine(), "di1 off");
    removeFile(di1);
    const ToolResult result = zrctl.wait();
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              std::string("zrctl: di1: read failed (result 5): ") + di1 +
                  " is missing; check that the board has this device and its driver is loaded\n");
}

TEST_F(ZrctlIoWatch, writes_a_json_object_a_line) {
    ToolProcess zrctl(ZRCTL_PROGRAM, {"io", "watch", "di1", "--json", "--interval=1"});
    EXPECT_EQ(query(zrctl.readLine(), "[.channel, .value, .unit, .result]"),
              "[\"di1\",false,null,0]\n");
    change(di1, "1\n");
    EXPECT_EQ(query(zrctl.readLine(), ".value"), "true\n");
    removeFile(di1);
    const ToolResult result = zrctl.wait();
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(query(result.output, "[.value, .result, has(\"error\")]"), "[null,5,true]\n");
}

}  // namespace
}  // namespace ZR::test
