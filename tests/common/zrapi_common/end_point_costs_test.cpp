#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "common/zrapi_common/zr_end_point_manager.h"
#include "tests/common/zrapi_common/end_point_doubles.h"
#include "tests/common/zrapi_common/manager_on_this_thread.h"
#include "tests/support/allocation_counter.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::test {
namespace {

/// Reads one byte a callback and runs an action at a chosen one.
class ReadingHandler : public ZREndPointHandler {
  public:
    void onEndPointReadable(std::shared_ptr<ZREndPoint> endPoint,
                            ZREndPointManager* /*manager*/) override {
        if (++calls == first && atFirst)
            atFirst();
        char byte = 0;
        (void)!::read(endPoint->getReadEndPointID(), &byte, 1);
        if (calls == last)
            atLast();
    }
    void onEndPointReconnected(std::shared_ptr<ZREndPoint> /*endPoint*/) override {}
    void onEndPointDisconnected(std::shared_ptr<ZREndPoint> /*endPoint*/) override {}

    int calls = 0;
    int first = 1;
    int last = 0;
    std::function<void()> atFirst;
    std::function<void()> atLast;
};

struct Load {
    std::size_t ready;  ///< end points with something to read
    std::size_t idle;   ///< end points with nothing
    std::string sent;   ///< what each of the ready ones has been sent
};

std::vector<Line> linesOf(const Load& load) {
    std::vector<Line> lines;
    for (std::size_t i = 0; i < load.ready + load.idle; ++i) {
        lines.push_back(makePipe());
        if (i < load.ready)
            lines.back().send(load.sent);
    }
    return lines;
}

/// The calls of a manager's thread from its first callback to the end of its last.
Trace traceDispatch(const Load& load) {
    return traceSystemCalls([&load](TracedRun& run) {
        const std::vector<Line> lines = linesOf(load);
        ReadingHandler handler;
        handler.atFirst = [&run] { run.begin(); };
        handler.atLast = [&run] {
            run.end();
            ::_exit(0);
        };
        handler.last = static_cast<int>(load.ready * load.sent.size());
        putOffThreads(true);
        ZREndPointManager manager;
        for (const Line& line : lines)
            manager.addEndPoint(line.endPoint, &handler);
        threadPutOff()();
    });
}

bool isWait(const SystemCall& call) {
#ifdef SYS_epoll_wait
    if (call.number == SYS_epoll_wait)
        return true;
#endif
    return call.number == SYS_epoll_pwait;
}

/// The calls as "read" and "wait"; any other by its own name.
std::string pattern(const Trace& trace) {
    std::string text;
    for (const SystemCall& call : trace.calls)
        text += (text.empty() ? "" : " ") + (isWait(call) ? "wait" : call.name);
    return text;
}

std::string repeated(const std::string& text, std::size_t times) {
    std::string all;
    for (std::size_t i = 0; i < times; ++i)
        all += (all.empty() ? "" : " ") + text;
    return all;
}

class EndPointCosts : public testing::Test {
  protected:
    void SetUp() override {
        if (!whyNotTraceable().empty())
            GTEST_SKIP() << whyNotTraceable();
    }
};

/// What building a manager comes to when one of its system calls fails.
std::string built(long number, std::size_t occurrence, int error) {
    const Trace trace = traceSystemCalls(
        [](TracedRun& run) {
            run.begin();
            try {
                const ZREndPointManager manager;
                run.end();
                run.say("built");
            } catch (const std::system_error& failure) {
                run.end();
                run.say(std::to_string(failure.code().value()));
            }
        },
        {{}, {{number, occurrence, error, 0}}});
    EXPECT_FALSE(trace.died);
    EXPECT_TRUE(std::any_of(trace.calls.begin(), trace.calls.end(),
                            [](const SystemCall& call) { return call.injected; }));
    return trace.text;
}

}  // namespace

TEST_F(EndPointCosts, an_event_alone_is_one_wait_and_one_read) {
    EXPECT_EQ(pattern(traceDispatch({1, 0, std::string(50, 'x')})),
              "read " + repeated("wait read", 49));
}

TEST_F(EndPointCosts, a_batch_is_one_wait_and_a_read_an_event) {
    EXPECT_EQ(
        pattern(traceDispatch({16, 0, "xxx"})),
        repeated("read", 16) + " wait " + repeated("read", 16) + " wait " + repeated("read", 16));
    EXPECT_EQ(pattern(traceDispatch({256, 0, "xx"})),
              repeated("read", 256) + " wait " + repeated("read", 256));
}

TEST_F(EndPointCosts, idle_end_points_cost_no_call) {
    EXPECT_EQ(pattern(traceDispatch({1, 255, std::string(50, 'x')})),
              "read " + repeated("wait read", 49));
}

TEST(EndPointAllocations, dispatch_makes_none) {
    if (!canCountAllocations())
        GTEST_SKIP() << "a sanitizer owns the heap";
    const std::vector<Line> lines = linesOf({16, 16, std::string(20, 'x')});
    ReadingHandler handler;
    std::optional<AllocationCounter> counter;
    std::size_t allocations = 1;
    Gate done;
    handler.atFirst = [&counter] { counter.emplace(); };
    handler.atLast = [&] {
        allocations = counter->count();
        done.open();
    };
    handler.first = 20;
    handler.last = 320;
    ZREndPointManager manager;
    for (const Line& line : lines)
        manager.addEndPoint(line.endPoint, &handler);
    ASSERT_TRUE(done.wait());
    EXPECT_EQ(allocations, 0U);
}

TEST_F(EndPointCosts, building_a_manager_raises_what_the_kernel_refuses) {
    EXPECT_EQ(built(SYS_eventfd2, 1, EMFILE), std::to_string(EMFILE));
    EXPECT_EQ(built(SYS_epoll_create1, 1, ENFILE), std::to_string(ENFILE));
    EXPECT_EQ(built(SYS_epoll_ctl, 1, ENOSPC), std::to_string(ENOSPC));
    EXPECT_EQ(built(SYS_clone3, 1, EAGAIN), std::to_string(EAGAIN));
}

TEST_F(EndPointCosts, a_manager_that_was_not_built_leaves_no_descriptor_and_no_blocked_signal) {
    const Trace trace = traceSystemCalls(
        [](TracedRun& run) {
            sigset_t before{};
            ::sigprocmask(SIG_SETMASK, nullptr, &before);
            const int free = ::dup(0);
            ::close(free);
            run.begin();
            try {
                const ZREndPointManager manager;
            } catch (const std::system_error&) {
                run.say("raised");
            }
            run.end();
            const int freeAfterwards = ::dup(0);
            sigset_t after{};
            ::sigprocmask(SIG_SETMASK, nullptr, &after);
            run.say(freeAfterwards == free ? " closed" : " open");
            run.say(sigismember(&before, SIGTERM) == sigismember(&after, SIGTERM) ? " same"
                                                                                  : " other");
        },
        {{}, {{SYS_clone3, 1, EAGAIN, 0}}});
    EXPECT_EQ(trace.text, "raised closed same");
}

TEST_F(EndPointCosts, its_descriptors_are_closed_on_exec) {
    constexpr std::uint64_t closeOnExec = 02000000;
    const Trace trace = traceSystemCalls([](TracedRun& run) {
        putOffThreads(true);
        run.begin();
        // Never ended: there is no thread to join.
        new ZREndPointManager;
        run.end();
    });
    int made = 0;
    for (const SystemCall& call : trace.calls) {
        if (call.number != SYS_eventfd2 && call.number != SYS_epoll_create1)
            continue;
        ++made;
        const std::uint64_t flags = call.arguments[call.number == SYS_eventfd2 ? 1 : 0];
        EXPECT_EQ(flags & closeOnExec, closeOnExec) << call;
    }
    EXPECT_EQ(made, 2);
}

}  // namespace ZR::test
