#include <gtest/gtest.h>
#include <sys/socket.h>

#include <array>
#include <atomic>
#include <thread>
#include <vector>

#include "common/zrapi_common/zr_end_point_manager.h"
#include "common/zrapi_common/zr_event_queue.h"
#include "tests/common/zrapi_common/end_point_doubles.h"

namespace ZR::test {
namespace {

constexpr int rounds = 300;

/// Adds, uses and removes an end point of its own, and meets others' end points in between.
void work(ZREndPointManager& manager, const std::array<Line, 4>& shared,
          RecordingHandler& sharedHandler) {
    const std::shared_ptr<TestEndPoint> own = makeAlwaysReadable();
    std::atomic<bool> registered{false};
    std::atomic<int> late{0};
    RecordingHandler handler;
    handler.readable = [&](const auto& endPoint, auto* caller) {
        late += registered && endPoint == own ? 0 : 1;
        caller->addEndPoint(shared[0].endPoint, &sharedHandler);
    };
    for (std::size_t round = 0; round < rounds; ++round) {
        const Line& line = shared[round % shared.size()];
        registered = true;
        manager.addEndPoint(own, &handler);
        manager.addEndPoint(line.endPoint, &sharedHandler);
        line.send("x");
        manager.removeEndPoint(own);
        registered = false;
        if (round % 3 == 0)
            manager.removeEndPoint(line.endPoint);
    }
    EXPECT_EQ(late, 0);
}

}  // namespace

TEST(EndPointStress_pure, threads_that_add_and_remove_at_once_lose_nothing) {
    constexpr int workers = 4;
    const std::array<Line, 4> shared{makePipe(), makePipe(), makePipe(),
                                     makeSocketPair(SOCK_STREAM)};
    RecordingHandler handler;
    ZREndPointManager manager;
    std::vector<std::thread> threads;
    for (int i = 0; i < workers; ++i)
        threads.emplace_back([&] { work(manager, shared, handler); });
    for (std::thread& thread : threads)
        thread.join();
    for (const Line& line : shared)
        manager.addEndPoint(line.endPoint, &handler);
    EXPECT_TRUE(handler.waitForBytes(std::size_t{workers} * rounds));
    EXPECT_EQ(handler.count("disconnected"), 0U);
    for (const Line& line : shared)
        manager.removeEndPoint(line.endPoint);
}

TEST(EndPointStress_pure, events_go_from_many_end_points_through_a_queue_to_many_threads) {
    constexpr std::size_t lineCount = 8;
    constexpr int sent = 200;
    std::vector<Line> lines;
    ZREventQueue queue;
    RecordingHandler handler;
    handler.readable = [&queue](const auto& endPoint, auto* /*manager*/) {
        ZRSignal signal;
        signal.kind = 6;
        signal.name = readSome(*endPoint, 1);
        queue.postEvent(signal);
    };
    std::atomic<int> taken{0};
    std::vector<std::thread> takers;
    for (int i = 0; i < 3; ++i)
        takers.emplace_back([&] {
            ZREvent event;
            while (queue.waitForEvent(event, -1) && event.kind == 6)
                taken += event.name == "x" ? 1 : 0;
        });
    {
        ZREndPointManager manager;
        for (std::size_t i = 0; i < lineCount; ++i) {
            lines.push_back(makePipe());
            manager.addEndPoint(lines.back().endPoint, &handler);
        }
        for (int i = 0; i < sent; ++i)
            for (const Line& line : lines)
                line.send("x");
        EXPECT_TRUE(handler.waitFor("readable", lineCount * sent));
    }
    ZREvent last;
    for (std::size_t i = 0; i < takers.size(); ++i)
        queue.postEvent(last);
    for (std::thread& taker : takers)
        taker.join();
    EXPECT_EQ(taken, static_cast<int>(lineCount) * sent);
}

}  // namespace ZR::test
