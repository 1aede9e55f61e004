#include <gtest/gtest.h>

int main(int count, char** arguments) {
    testing::InitGoogleTest(&count, arguments);
    // A child of a process with a display and GStreamer's threads would have neither.
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    return RUN_ALL_TESTS();
}
