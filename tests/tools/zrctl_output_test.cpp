#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/private_root.h"
#include "tests/tools/board_files.h"
#include "tests/tools/json_check.h"
#include "tests/tools/tool_process.h"

namespace ZR::test {
namespace {

class ZrctlOutput : public testing::Test {
  protected:
    void SetUp() override {
        makeInputsAndOutputs();
        makeDimmableDevices();
    }
};

TEST_F(ZrctlOutput, that_cannot_be_written_gives_status_1_and_one_line) {
    for (const char* const action : {"list", "--help"}) {
        const ToolResult result = runZrctl({"io", action}, outputTo("/dev/full"));
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.errors,
                  "zrctl: cannot write to standard output: No space left on device\n");
    }
}

TEST_F(ZrctlOutput, that_is_closed_gives_status_1_and_reaches_no_device) {
    const ToolResult result = runZrctl({"dimmable", "list"}, withClosed(STDOUT_FILENO));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "zrctl: cannot write to standard output: Bad file descriptor\n");
    EXPECT_EQ(readFile(display), "128\n");
    EXPECT_EQ(readFile(key), "0\n");
}

TEST_F(ZrctlOutput, an_error_line_reaches_no_device_when_standard_error_is_closed) {
    const ToolResult result = runZrctl({"dimmable", "set", "rgb", "5"}, withClosed(STDERR_FILENO));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(readFile(display), "128\n");
    EXPECT_EQ(readFile(rgb), "0\n");
}

TEST_F(ZrctlOutput, whose_reader_left_gives_status_1_and_no_line) {
    // The write end of a pipe without a reader.
    const ToolResult result = runZrctl({"io", "list"}, [] {
        int pipe[2];
        (void)::pipe(pipe);
        (void)::dup2(pipe[1], STDOUT_FILENO);
        ::close(pipe[0]);
        ::close(pipe[1]);
    });
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "");
}

TEST_F(ZrctlOutput, holds_nothing_of_what_the_library_prints) {
    const ToolResult result = runZrctl({"io", "set", "do1", "on"});
    EXPECT_EQ(result.output, "do1 set to on: success (result 0)\n");
    EXPECT_EQ(result.errors, "");
}

TEST_F(ZrctlOutput, shows_what_the_library_prints_on_standard_error_when_asked) {
    const ToolResult result = runZrctl({"io", "set", "do1", "on", "--verbose"});
    EXPECT_EQ(result.output, "do1 set to on: success (result 0)\n");
    EXPECT_EQ(result.errors, std::string("zrctl: library: Set ") + do1 + " to 1 successful!\n");
}

TEST_F(ZrctlOutput, shows_what_the_library_reports_on_standard_error_when_asked) {
    removeFile(di1);
    const ToolResult result = runZrctl({"-v", "io", "get", "di1"});
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              std::string("zrctl: library: zr_io: Opening digital input file\n"
                          "zrctl: library: zr_io: Initializing I/O interface\n"
                          "zrctl: library: zr_io: Reading state\n"
                          "zrctl: di1: file or device cannot be opened (result 2): ") +
                  di1 +
                  " is missing; check that the board has this device and its driver is "
                  "loaded\n");
}

TEST_F(ZrctlOutput, is_one_json_document_beside_what_the_library_prints) {
    removeFile(display);
    const ToolResult result = runZrctl({"dimmable", "list", "--json", "--verbose"});
    EXPECT_EQ(query(result.output, ".devices | length"), "5\n");
    EXPECT_NE(result.errors.find("zrctl: library: Error opening display backlight device file!\n"),
              std::string::npos);
}

}  // namespace
}  // namespace ZR::test
