#include "common/zrapi_common/zr_event_queue.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>
#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <csignal>
#include <map>
#include <memory>
#include <thread>
#include <vector>

namespace ZR::test {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int longTime = 30000;

void post(ZREventQueue& queue, std::uint32_t value) {
    ZRSignal signal;
    signal.kind = 6;
    signal.value1 = value;
    queue.postEvent(signal);
}

bool isReadable(const ZREventQueue& queue) {
    pollfd question{queue.getEventDescriptor(), POLLIN, 0};
    return ::poll(&question, 1, 0) == 1;
}

std::atomic<int> signalsSeen{0};

void seeSignal(int /*signal*/) {
    ++signalsSeen;
}

}  // namespace

TEST(EventQueue_pure, hands_events_out_oldest_first) {
    ZREventQueue queue;
    for (std::uint32_t value = 0; value < 1000; ++value)
        post(queue, value);
    ZREvent event;
    for (std::uint32_t value = 0; value < 1000; ++value) {
        ASSERT_TRUE(queue.waitForEvent(event, 0));
        ASSERT_EQ(event.value1, value);
    }
    EXPECT_FALSE(queue.waitForEvent(event, 0));
}

TEST(EventQueue_pure, keeps_a_copy_of_the_event_part_of_a_signal) {
    ZREventQueue queue;
    {
        ZRSignal signal;
        signal.kind = 6;
        signal.code = 900;
        signal.reserved1 = 1;
        signal.reserved2 = 2.5;
        signal.reserved3 = 3.5;
        signal.value1 = 4;
        signal.value2 = 5;
        signal.name = "a name of more than fifteen letters";
        queue.postEvent(signal);
        EXPECT_EQ(signal.name, "a name of more than fifteen letters");
        signal.name = "changed";
        signal.value1 = 0;
    }
    ZREvent event;
    ASSERT_TRUE(queue.waitForEvent(event, 0));
    EXPECT_EQ(event.kind, 6);
    EXPECT_EQ(event.code, 900);
    EXPECT_EQ(event.reserved1, 1);
    EXPECT_EQ(event.reserved2, 2.5);
    EXPECT_EQ(event.reserved3, 3.5);
    EXPECT_EQ(event.value1, 4U);
    EXPECT_EQ(event.value2, 5U);
    EXPECT_EQ(event.name, "a name of more than fifteen letters");
}

TEST(EventQueue_pure, an_event_may_be_received_into_a_signal) {
    ZREventQueue queue;
    post(queue, 3);
    ZRSignal signal;
    signal.name = "before";
    ASSERT_TRUE(queue.waitForEvent(signal, 0));
    EXPECT_EQ(signal.value1, 3U);
    EXPECT_EQ(signal.name, "");
}

TEST(EventQueue_pure, leaves_the_event_unchanged_when_none_came) {
    ZREventQueue queue;
    ZREvent event;
    event.value1 = 7;
    event.name = "before";
    EXPECT_FALSE(queue.waitForEvent(event, 0));
    EXPECT_FALSE(queue.waitForEvent(event, 1));
    EXPECT_EQ(event.value1, 7U);
    EXPECT_EQ(event.name, "before");
}

TEST(EventQueue_pure, waits_no_shorter_than_it_was_told) {
    ZREventQueue queue;
    ZREvent event;
    for (const int time : {1, 20, 150}) {
        const Clock::time_point start = Clock::now();
        EXPECT_FALSE(queue.waitForEvent(event, time));
        EXPECT_GE(Clock::now() - start, milliseconds(time));
    }
}

TEST(EventQueue_pure, waits_for_an_event_however_long_it_may) {
    for (const int time : {longTime, INT_MAX, -1, INT_MIN}) {
        ZREventQueue queue;
        std::thread poster([&queue] {
            std::this_thread::sleep_for(milliseconds(20));
            post(queue, 9);
        });
        ZREvent event;
        EXPECT_TRUE(queue.waitForEvent(event, time)) << time;
        EXPECT_EQ(event.value1, 9U);
        poster.join();
    }
}

TEST(EventQueue_pure, a_signal_neither_ends_nor_prolongs_a_wait) {
    struct sigaction action {};
    action.sa_handler = seeSignal;
    ASSERT_EQ(::sigaction(SIGUSR1, &action, nullptr), 0);
    ZREventQueue queue;
    std::atomic<bool> over{false};
    std::thread interrupter([&over, waiter = ::pthread_self()] {
        while (!over) {
            ::pthread_kill(waiter, SIGUSR1);
            std::this_thread::sleep_for(milliseconds(5));
        }
    });
    ZREvent event;
    while (signalsSeen < 3) {
        const Clock::time_point start = Clock::now();
        EXPECT_FALSE(queue.waitForEvent(event, 200));
        EXPECT_GE(Clock::now() - start, milliseconds(200));
        EXPECT_LT(Clock::now() - start, milliseconds(longTime));
    }
    over = true;
    interrupter.join();
}

TEST(EventQueue_pure, a_wait_that_the_kernel_refuses_ends) {
    ZREventQueue queue;
    ZREvent event;
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    const Clock::time_point start = Clock::now();
    const bool taken = queue.waitForEvent(event, longTime);
    const Clock::duration waited = Clock::now() - start;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_FALSE(taken);
    EXPECT_LT(waited, milliseconds(longTime));
}

TEST(EventQueue_pure, its_descriptor_is_readable_for_as_long_as_events_wait) {
    ZREventQueue queue;
    EXPECT_FALSE(isReadable(queue));
    post(queue, 1);
    EXPECT_TRUE(isReadable(queue));
    post(queue, 2);
    ZREvent event;
    EXPECT_TRUE(queue.waitForEvent(event, 0));
    EXPECT_TRUE(isReadable(queue));
    EXPECT_TRUE(queue.waitForEvent(event, 0));
    EXPECT_FALSE(isReadable(queue));
    EXPECT_FALSE(queue.waitForEvent(event, 0));
    post(queue, 3);
    EXPECT_TRUE(isReadable(queue));
}

TEST(EventQueue_pure, its_descriptor_is_closed_on_exec_and_with_the_queue) {
    int descriptor = -1;
    {
        const ZREventQueue queue;
        descriptor = queue.getEventDescriptor();
        EXPECT_EQ(::fcntl(descriptor, F_GETFD), FD_CLOEXEC);
    }
    EXPECT_EQ(::fcntl(descriptor, F_GETFD), -1);
}

TEST(EventQueue_pure, each_event_goes_to_one_thread_and_in_order) {
    constexpr std::uint32_t posters = 3;
    constexpr std::uint32_t each = 2000;
    ZREventQueue queue;
    std::vector<std::thread> threads;
    for (std::uint32_t poster = 0; poster < posters; ++poster)
        threads.emplace_back([&queue, poster] {
            for (std::uint32_t i = 0; i < each; ++i)
                post(queue, poster << 16U | i);
        });
    std::vector<std::vector<std::uint32_t>> taken(3);
    for (std::vector<std::uint32_t>& own : taken)
        threads.emplace_back([&queue, &own] {
            ZREvent event;
            while (queue.waitForEvent(event, longTime) && event.value1 != UINT32_MAX)
                own.push_back(event.value1);
        });
    for (std::uint32_t poster = 0; poster < posters; ++poster)
        threads[poster].join();
    for (std::size_t i = 0; i < taken.size(); ++i)
        post(queue, UINT32_MAX);
    for (std::size_t i = posters; i < threads.size(); ++i)
        threads[i].join();
    std::map<std::uint32_t, int> counts;
    for (const std::vector<std::uint32_t>& own : taken) {
        std::map<std::uint32_t, std::uint32_t> last;
        for (const std::uint32_t value : own) {
            ++counts[value];
            EXPECT_TRUE(last.count(value >> 16U) == 0 || last[value >> 16U] < value);
            last[value >> 16U] = value;
        }
    }
    EXPECT_EQ(counts.size(), posters * each);
    EXPECT_FALSE(isReadable(queue));
}

TEST(EventQueue_pure, takes_as_many_events_as_there_is_memory_for) {
    constexpr std::uint32_t many = 200000;
    ZREventQueue queue;
    for (std::uint32_t value = 0; value < many; ++value)
        post(queue, value);
    ZREvent event;
    std::uint32_t taken = 0;
    while (queue.waitForEvent(event, 0) && event.value1 == taken)
        ++taken;
    EXPECT_EQ(taken, many);
}

TEST(EventQueue_pure, drops_what_is_left_at_its_end) {
    ZREvent event;
    event.name = "a name of more than fifteen letters";
    auto queue = std::make_unique<ZREventQueue>();
    queue->postEvent(event);
    const int descriptor = queue->getEventDescriptor();
    queue.reset();
    EXPECT_EQ(::fcntl(descriptor, F_GETFD), -1);
}

}  // namespace ZR::test
