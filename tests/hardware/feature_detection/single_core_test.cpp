#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <string>

#include "hardware/feature_detection/zr_feature_detection.h"
#include "tests/support/output_capture.h"
#include "tests/support/private_root.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::test {
namespace {

constexpr char compatible[] = "/proc/device-tree/compatible";

/// The answer of a process that asks for the first time: it is kept for a process's life.
bool freshAnswer() {
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(ZRFeatureDetection::isRunningOnSingleCore() ? 1 : 0);
    int status = 0;
    if (::waitpid(child, &status, 0) != child || !WIFEXITED(status) || WEXITSTATUS(status) > 1)
        throw std::runtime_error("no answer");
    return WEXITSTATUS(status) == 1;
}

bool answerFor(const std::string& content) {
    makeFile(compatible, content);
    return freshAnswer();
}

}  // namespace

TEST(SingleCore, is_true_for_an_imx6dl_and_an_imx6ull) {
    EXPECT_TRUE(answerFor("fsl,imx6dl-sabresd"));
    EXPECT_TRUE(answerFor("fsl,imx6dl"));
    EXPECT_TRUE(answerFor("fsl,imx6ull"));
    EXPECT_TRUE(answerFor("fsl,imx6ull-14x14-evk"));
}

TEST(SingleCore, is_false_for_an_imx6q_and_other_processors) {
    EXPECT_FALSE(answerFor("fsl,imx6q"));
    EXPECT_FALSE(answerFor("fsl,imx6qp"));
    EXPECT_FALSE(answerFor("fsl,imx6ul"));
    EXPECT_FALSE(answerFor("fsl,imx6d"));
    EXPECT_FALSE(answerFor("fsl,imx7d"));
}

TEST(SingleCore, is_false_for_an_empty_text) {
    EXPECT_FALSE(answerFor(""));
    EXPECT_FALSE(answerFor("\n"));
    EXPECT_FALSE(answerFor(std::string("\0", 1)));
}

TEST(SingleCore, finds_each_of_several_names_that_nul_bytes_separate) {
    EXPECT_TRUE(answerFor(std::string("maker,board\0fsl,imx6dl\0", 23)));
    EXPECT_TRUE(answerFor(std::string("fsl,imx6dl\0maker,board\0", 23)));
    EXPECT_TRUE(answerFor(std::string("maker,board\0fsl,imx6q\0fsl,imx6ull\0", 34)));
    EXPECT_FALSE(answerFor(std::string("maker,board\0fsl,imx6q\0", 22)));
}

TEST(SingleCore, does_not_put_a_name_together_across_a_nul_byte) {
    EXPECT_FALSE(answerFor(std::string("fsl,imx6d\0l,board\0", 18)));
}

TEST(SingleCore, finds_the_text_anywhere) {
    EXPECT_TRUE(answerFor("imx6dl"));
    EXPECT_TRUE(answerFor("xximx6dlxx"));
    EXPECT_TRUE(answerFor("first line\nfsl,imx6ull\n"));
}

TEST(SingleCore, minds_the_case) {
    EXPECT_FALSE(answerFor("fsl,IMX6DL"));
    EXPECT_FALSE(answerFor("fsl,imx6DL"));
    EXPECT_FALSE(answerFor("fsl,iMX6ULL"));
}

TEST(SingleCore, reads_the_text_to_its_end) {
    EXPECT_TRUE(answerFor(std::string(4094, 'x') + "imx6dl"));
    EXPECT_TRUE(answerFor(std::string(20000, '\0') + "imx6ull"));
}

TEST(SingleCore, is_true_without_a_device_tree) {
    EXPECT_TRUE(freshAnswer());
}

TEST(SingleCore, is_true_when_the_device_tree_cannot_be_read) {
    makeFolder(compatible);
    EXPECT_TRUE(freshAnswer());
}

TEST(SingleCore, is_true_when_a_call_on_the_device_tree_fails) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    makeFile(compatible, "fsl,imx6q");
    for (const long call : {SYS_openat, SYS_read}) {
        const Trace trace = traceSystemCalls(
            [](TracedRun& run) {
                run.begin();
                const bool answer = ZRFeatureDetection::isRunningOnSingleCore();
                run.end();
                run.say(answer ? "yes" : "no");
            },
            {{}, {{call, 1, EIO, 0}}});
        EXPECT_EQ(trace.text, "yes");
    }
}

TEST(SingleCore, stays_true_when_a_device_tree_comes_later) {
    EXPECT_TRUE(ZRFeatureDetection::isRunningOnSingleCore());
    makeFile(compatible, "fsl,imx6q");
    EXPECT_TRUE(ZRFeatureDetection::isRunningOnSingleCore());
}

TEST(SingleCore, stays_false_when_the_device_tree_changes_or_goes) {
    makeFile(compatible, "fsl,imx6q");
    EXPECT_FALSE(ZRFeatureDetection::isRunningOnSingleCore());
    makeFile(compatible, "fsl,imx6dl");
    EXPECT_FALSE(ZRFeatureDetection::isRunningOnSingleCore());
    removeFile(compatible);
    EXPECT_FALSE(ZRFeatureDetection::isRunningOnSingleCore());
}

TEST(SingleCore, a_second_question_costs_no_system_call) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    for (const char* const content : {"fsl,imx6q", "fsl,imx6dl"}) {
        makeFile(compatible, content);
        const Trace trace = traceSystemCalls([](TracedRun& run) {
            const bool first = ZRFeatureDetection::isRunningOnSingleCore();
            run.begin();
            const bool second = ZRFeatureDetection::isRunningOnSingleCore();
            run.end();
            run.say(first == second ? "same" : "different");
        });
        EXPECT_EQ(trace.names(), "");
        EXPECT_EQ(trace.text, "same");
    }
}

TEST(SingleCore, is_answered_without_a_word) {
    const OutputCapture capture;
    (void)ZRFeatureDetection::isRunningOnSingleCore();
    EXPECT_EQ(capture.output() + capture.errors(), "");
}

}  // namespace ZR::test
