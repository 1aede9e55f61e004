#include <gtest/gtest.h>
#include <poll.h>
#include <sys/syscall.h>

#include <cerrno>
#include <functional>
#include <new>
#include <string>
#include <system_error>

#include "common/zrapi_common/zr_event_queue.h"
#include "tests/support/substitutes/operator_new_substitute.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::test {
namespace {

constexpr char longName[] = "a name of more than fifteen letters";

/// The calls that an operation makes on a queue which holds @p events events.
Trace traceQueue(int events, const std::function<void(ZREventQueue&)>& operation) {
    return traceSystemCalls([&](TracedRun& run) {
        ZREventQueue queue;
        ZREvent event;
        for (int i = 0; i < events; ++i)
            queue.postEvent(event);
        run.begin();
        operation(queue);
        run.end();
    });
}

void post(ZREventQueue& queue) {
    ZREvent event;
    queue.postEvent(event);
}

void take(ZREventQueue& queue) {
    ZREvent event;
    (void)queue.waitForEvent(event, 1000);
}

void lookFor(ZREventQueue& queue) {
    ZREvent event;
    (void)queue.waitForEvent(event, 0);
}

void awaitNothing(ZREventQueue& queue) {
    ZREvent event;
    (void)queue.waitForEvent(event, 1);
}

bool isReadable(const ZREventQueue& queue) {
    pollfd question{queue.getEventDescriptor(), POLLIN, 0};
    return ::poll(&question, 1, 0) == 1;
}

class EventQueueCosts : public testing::Test {
  protected:
    void SetUp() override {
        if (!whyNotTraceable().empty())
            GTEST_SKIP() << whyNotTraceable();
    }
};

}  // namespace

TEST_F(EventQueueCosts, a_post_is_one_call_on_an_empty_queue_and_none_on_another) {
    EXPECT_EQ(traceQueue(0, post).names(), "write");
    EXPECT_EQ(traceQueue(1, post).names(), "");
    EXPECT_EQ(traceQueue(3, post).names(), "");
}

TEST_F(EventQueueCosts, taking_is_one_call_for_the_last_event_and_none_for_others) {
    EXPECT_EQ(traceQueue(1, take).names(), "read");
    EXPECT_EQ(traceQueue(2, take).names(), "");
}

TEST_F(EventQueueCosts, finding_nothing_is_no_call_without_a_wait_and_one_with) {
    EXPECT_EQ(traceQueue(0, lookFor).names(), "");
    EXPECT_EQ(traceQueue(0, awaitNothing).calls.size(), 1U);
}

TEST_F(EventQueueCosts, a_wait_that_the_kernel_refuses_is_one_call) {
#ifdef SYS_poll
    constexpr long pollNumber = SYS_poll;
#else
    constexpr long pollNumber = SYS_ppoll;
#endif
    const Trace trace = traceSystemCalls(
        [](TracedRun& run) {
            ZREventQueue queue;
            ZREvent event;
            run.begin();
            const bool taken = queue.waitForEvent(event, 1000);
            run.end();
            run.say(taken ? "taken" : "none");
        },
        {{}, {{pollNumber, 1, ENOMEM, 0}}});
    EXPECT_EQ(trace.text, "none");
    EXPECT_EQ(trace.calls.size(), 1U);
}

TEST_F(EventQueueCosts, building_a_queue_raises_what_the_kernel_refuses) {
    const Trace trace = traceSystemCalls(
        [](TracedRun& run) {
            run.begin();
            try {
                const ZREventQueue queue;
            } catch (const std::system_error& failure) {
                run.say(std::to_string(failure.code().value()));
            }
            run.end();
        },
        {{}, {{SYS_eventfd2, 1, EMFILE, 0}}});
    EXPECT_EQ(trace.text, std::to_string(EMFILE));
}

TEST(EventQueueMemory, a_post_that_finds_none_raises_and_leaves_the_queue_as_before) {
    ZREventQueue queue;
    ZREvent event;
    event.name = longName;
    OperatorNewSubstitute::failNext = true;
    EXPECT_THROW(queue.postEvent(event), std::bad_alloc);
    EXPECT_FALSE(isReadable(queue));
    EXPECT_EQ(event.name, longName);
    queue.postEvent(event);
    ZREvent taken;
    EXPECT_TRUE(queue.waitForEvent(taken, 0));
    EXPECT_EQ(taken.name, longName);
    EXPECT_FALSE(queue.waitForEvent(taken, 0));
}

TEST(EventQueueMemory, taking_an_event_needs_none) {
    ZREventQueue queue;
    ZREvent event;
    event.name = longName;
    queue.postEvent(event);
    ZREvent taken;
    OperatorNewSubstitute::failNext = true;
    EXPECT_TRUE(queue.waitForEvent(taken, 0));
    EXPECT_TRUE(OperatorNewSubstitute::failNext);
    OperatorNewSubstitute::failNext = false;
    EXPECT_EQ(taken.name, longName);
}

}  // namespace ZR::test
