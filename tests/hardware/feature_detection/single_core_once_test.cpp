// The processor is looked at once, whoever asks first. Here the text comes from a substitute that
// counts its calls.

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "common/zrapi_utility/zr_file_access.h"
#include "hardware/feature_detection/zr_feature_detection.h"

namespace {

std::atomic<int> reads{0};
std::string readPath;
const char* content = "fsl,imx6dl";

}  // namespace

// Takes the place of the platform library's.
int ZR::readStringFromFile(const std::string& path, std::string* text) {
    ++reads;
    readPath = path;
    *text = content;
    return 0;
}

namespace ZR::test {
namespace {

constexpr int askers = 8;

/// How many of several threads that ask at the same moment hear yes.
int countYes() {
    std::atomic<int> waiting{0};
    std::atomic<int> yes{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < askers; ++i)
        threads.emplace_back([&waiting, &yes] {
            ++waiting;
            while (waiting < askers)
                std::this_thread::yield();
            yes += ZRFeatureDetection::isRunningOnSingleCore() ? 1 : 0;
        });
    for (std::thread& thread : threads)
        thread.join();
    return yes;
}

}  // namespace

TEST(SingleCoreOnce, loading_the_library_reads_nothing) {
    EXPECT_EQ(reads, 0);
}

TEST(SingleCoreOnce, the_whole_text_of_the_device_tree_is_read_once) {
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(ZRFeatureDetection::isRunningOnSingleCore());
    EXPECT_EQ(reads, 1);
    EXPECT_EQ(readPath, "/proc/device-tree/compatible");
}

TEST(SingleCoreOnce, several_threads_that_ask_at_once_hear_the_same_yes) {
    EXPECT_EQ(countYes(), askers);
    EXPECT_EQ(reads, 1);
}

TEST(SingleCoreOnce, several_threads_that_ask_at_once_hear_the_same_no) {
    content = "fsl,imx6q";
    EXPECT_EQ(countYes(), 0);
    EXPECT_EQ(reads, 1);
}

}  // namespace ZR::test
