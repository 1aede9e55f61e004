#include <dlfcn.h>
#include <gtest/gtest.h>

#if defined(__SANITIZE_ADDRESS__)

// The leak sanitizer names what a leak belongs to only while its module is loaded, and Mesa's driver is
// unloaded with the last window. With that sanitizer all modules stay.
extern "C" int dlclose(void* /*module*/) {
    return 0;
}

#endif

int main(int count, char** arguments) {
    testing::InitGoogleTest(&count, arguments);
    // A child of a process with a display and GStreamer's threads would have neither.
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    return RUN_ALL_TESTS();
}
