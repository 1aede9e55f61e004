#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <future>
#include <memory>
#include <string>

#include "common/zrapi_os_abs/zr_thread.h"
#include "tests/support/private_root.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::test {
namespace {

/// The name that the kernel shows for a thread of this process.
std::string kernelName(long thread) {
    std::string name = readFile("/proc/self/task/" + std::to_string(thread) + "/comm");
    if (!name.empty() && name.back() == '\n')
        name.pop_back();
    return name;
}

/// An entry that tells its thread's number and name and waits until it may end.
struct Visit {
    std::promise<long> threadPromise;
    std::promise<void> endPromise;
    std::string nameAtEntry;
    std::atomic<int> runs{0};

    static void enter(void* argument) {
        auto* const visit = static_cast<Visit*>(argument);
        ++visit->runs;
        const long thread = ::syscall(SYS_gettid);
        visit->nameAtEntry = kernelName(thread);
        visit->threadPromise.set_value(thread);
        visit->endPromise.get_future().wait();
    }

    long waitForThread() { return threadPromise.get_future().get(); }
    void mayEnd() { endPromise.set_value(); }
};

void setTrue(void* flag) {
    static_cast<std::atomic<bool>*>(flag)->store(true);
}

void waitForever(void* started) {
    static_cast<std::promise<void>*>(started)->set_value();
    for (;;)
        ::pause();
}

/// Leaves the process in the ordinary way while a static thread object still runs.
[[noreturn]] void exitWhileRunning() {
    static std::promise<void> started;
    static ZRThread thread;
    thread.startThread(waitForever, &started);
    started.get_future().wait();
    std::exit(0);
}

}  // namespace

TEST(Thread_pure, runs_its_entry_once_with_the_argument_on_another_thread) {
    Visit visit;
    ZRThread thread;
    ASSERT_EQ(thread.startThread(&Visit::enter, &visit), 0);
    EXPECT_NE(visit.waitForThread(), ::syscall(SYS_gettid));
    visit.mayEnd();
    EXPECT_EQ(thread.join(), 0);
    EXPECT_EQ(visit.runs, 1);
}

TEST(Thread_pure, join_waits_for_the_end) {
    for (int i = 0; i < 100; ++i) {
        std::atomic<bool> done{false};
        ZRThread thread;
        ASSERT_EQ(thread.startThread(setTrue, &done), 0);
        ASSERT_EQ(thread.join(), 0);
        ASSERT_TRUE(done);
    }
}

TEST(Thread, a_name_given_before_the_start_is_there_when_the_entry_begins) {
    Visit visit;
    ZRThread thread;
    EXPECT_EQ(thread.setThreadName("ZRGstBus"), 0);
    ASSERT_EQ(thread.startThread(&Visit::enter, &visit), 0);
    const long number = visit.waitForThread();
    EXPECT_EQ(visit.nameAtEntry, "ZRGstBus");
    EXPECT_EQ(kernelName(number), "ZRGstBus");
    visit.mayEnd();
    thread.join();
}

TEST(Thread, a_name_given_after_the_start_is_shown) {
    Visit visit;
    ZRThread thread;
    ASSERT_EQ(thread.startThread(&Visit::enter, &visit), 0);
    const long number = visit.waitForThread();
    EXPECT_EQ(thread.setThreadName("ZRGstBus"), 0);
    EXPECT_EQ(kernelName(number), "ZRGstBus");
    visit.mayEnd();
    thread.join();
}

TEST(Thread, naming_leaves_the_calling_thread_alone) {
    const std::string before = kernelName(::syscall(SYS_gettid));
    ZRThread thread;
    EXPECT_EQ(thread.setThreadName("ZRGstBus"), 0);
    EXPECT_EQ(kernelName(::syscall(SYS_gettid)), before);
}

TEST(Thread, a_long_name_is_cut_to_15_bytes) {
    Visit visit;
    ZRThread thread;
    EXPECT_EQ(thread.setThreadName("0123456789abcdefgh"), 0);
    ASSERT_EQ(thread.startThread(&Visit::enter, &visit), 0);
    const long number = visit.waitForThread();
    EXPECT_EQ(visit.nameAtEntry, "0123456789abcde");
    EXPECT_EQ(thread.setThreadName("another 0123456789"), 0);
    EXPECT_EQ(kernelName(number), "another 0123456");
    EXPECT_EQ(thread.setThreadName("exactly 15 byte"), 0);
    EXPECT_EQ(kernelName(number), "exactly 15 byte");
    visit.mayEnd();
    thread.join();
}

TEST(Thread_pure, join_of_a_thread_that_was_never_started_returns_at_once) {
    ZRThread thread;
    EXPECT_EQ(thread.join(), 0);
}

TEST(Thread_pure, a_second_join_returns_at_once) {
    std::atomic<bool> done{false};
    ZRThread thread;
    ASSERT_EQ(thread.startThread(setTrue, &done), 0);
    EXPECT_EQ(thread.join(), 0);
    EXPECT_EQ(thread.join(), 0);
}

TEST(Thread_pure, a_second_start_is_refused_until_the_first_was_joined) {
    Visit visit;
    std::atomic<bool> second{false};
    ZRThread thread;
    ASSERT_EQ(thread.startThread(&Visit::enter, &visit), 0);
    visit.waitForThread();
    EXPECT_EQ(thread.startThread(setTrue, &second), EBUSY);
    visit.mayEnd();
    EXPECT_EQ(thread.join(), 0);
    EXPECT_FALSE(second);
    EXPECT_EQ(thread.startThread(setTrue, &second), 0);
    EXPECT_EQ(thread.join(), 0);
    EXPECT_TRUE(second);
}

TEST(Thread_pure, a_null_entry_is_refused) {
    ZRThread thread;
    EXPECT_EQ(thread.startThread(nullptr, nullptr), EINVAL);
    EXPECT_EQ(thread.join(), 0);
}

TEST(Thread_pure, a_thread_cannot_join_itself) {
    struct Self {
        ZRThread thread;
        std::promise<void> started;
        int status = -1;
    } self;
    const auto joinSelf = [](void* argument) {
        auto* const own = static_cast<Self*>(argument);
        own->started.get_future().wait();
        own->status = own->thread.join();
    };
    ASSERT_EQ(self.thread.startThread(joinSelf, &self), 0);
    self.started.set_value();
    EXPECT_EQ(self.thread.join(), 0);
    EXPECT_EQ(self.status, EDEADLK);
}

TEST(Thread_pure, destroying_the_object_leaves_its_thread_running) {
    // Never destroyed: the thread that nobody joins uses it until the process ends.
    static Visit& visit = *new Visit;
    auto thread = std::make_unique<ZRThread>();
    ASSERT_EQ(thread->startThread(&Visit::enter, &visit), 0);
    visit.waitForThread();
    thread.reset();
    visit.mayEnd();
    EXPECT_EQ(visit.runs, 1);
}

TEST(Thread_pure, the_process_may_exit_while_a_thread_runs) {
    EXPECT_EXIT(exitWhileRunning(), testing::ExitedWithCode(0), "");
}

TEST(Thread, a_thread_that_cannot_be_made_is_reported) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer ends the process when a thread cannot be made";
#endif
    const Trace trace = traceSystemCalls(
        [](TracedRun& run) {
            std::atomic<bool> ran{false};
            ZRThread thread;
            run.begin();
            const int status = thread.startThread(setTrue, &ran);
            run.end();
            const int joined = thread.join();
            run.say(std::to_string(status) + ' ' + std::to_string(joined) + ' ' +
                    std::to_string(ran));
        },
        {{}, {{SYS_clone3, 1, EAGAIN, 0}, {SYS_clone, 1, EAGAIN, 0}}});
    EXPECT_EQ(trace.text, std::to_string(EAGAIN) + " 0 0");
}

}  // namespace ZR::test
