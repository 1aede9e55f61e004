#include <dlfcn.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "tests/hardware/video_input/capture_board.h"

// Where the system has no thread to give.

namespace ZR::test {
namespace {

std::atomic<int> refusals = 0;

}  // namespace
}  // namespace ZR::test

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*entry)(void*), void* argument) noexcept {
    if (ZR::test::refusals > 0) {
        --ZR::test::refusals;
        return EAGAIN;
    }
    using Create = int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    return reinterpret_cast<Create*>(::dlsym(RTLD_NEXT, "pthread_create"))(thread, attributes,
                                                                           entry, argument);
}

namespace ZR::test {
namespace {

using Input = ZRGstreamerVideoInput;

class ThreadRefusal : public CaptureTest {
  protected:
    ThreadRefusal() {
        Devices::leaveOpenToKernel();
        ::setenv("GST_REGISTRY_DISABLE", "yes", 1);
    }

    ~ThreadRefusal() override {
        refusals = 0;
        Input::doQuit();
    }

    static bool isReadyInTime() {
        for (int i = 0; i < 20000 && !Input::gstInitDone; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return Input::gstInitDone;
    }
};

TEST_F(ThreadRefusal, leaves_the_object_and_lets_the_next_one_try_again) {
    refusals = 1;
    EXPECT_NE(Input::getInstance("first"), nullptr);
    EXPECT_EQ(refusals, 0);
    EXPECT_FALSE(Input::busThreadLaunched);
    EXPECT_NE(Input::getInstance("second"), nullptr);
    EXPECT_TRUE(Input::busThreadLaunched);
    EXPECT_TRUE(isReadyInTime());
}

TEST_F(ThreadRefusal, of_the_bus_thread_still_says_that_GStreamer_is_up) {
    (void)Input::getInstance("first");
    refusals = 1;
    EXPECT_TRUE(isReadyInTime());
    EXPECT_EQ(refusals, 0);
}

}  // namespace
}  // namespace ZR::test
