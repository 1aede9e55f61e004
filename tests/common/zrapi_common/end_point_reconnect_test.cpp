#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <vector>

#include "common/zrapi_common/zr_end_point_manager.h"
#include "tests/common/zrapi_common/end_point_doubles.h"
#include "tests/support/report_log.h"

namespace ZR::test {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr unsigned int openFailed = 2;

/// A pipe whose end point is not connected, and connects when it is asked to.
Line makeUnconnected() {
    Line line = makePipe();
    line.endPoint->connected = false;
    line.endPoint->onReconnect = [endPoint = line.endPoint.get()] {
        endPoint->connected = true;
        return 0U;
    };
    return line;
}

}  // namespace

TEST(EndPointReconnect_pure, is_tried_after_one_second_then_announced_and_watched) {
    const Line line = makeUnconnected();
    RecordingHandler handler;
    line.send("x");
    ZREndPointManager manager;
    const Clock::time_point added = Clock::now();
    manager.addEndPoint(line.endPoint, &handler);
    ASSERT_TRUE(handler.waitForBytes(1));
    EXPECT_EQ(handler.calls(), "reconnected readable");
    ASSERT_EQ(line.endPoint->tries().size(), 1U);
    EXPECT_GE(line.endPoint->tries()[0] - added, milliseconds(1000));
}

TEST(EndPointReconnect_pure, takes_the_descriptor_anew) {
    Line line = makePipe();
    const auto endPoint = std::make_shared<TestEndPoint>(-1);
    endPoint->onReconnect = [&] {
        endPoint->descriptor = line.endPoint->descriptor.exchange(-1);
        return 0U;
    };
    RecordingHandler handler;
    ZREndPointManager manager;
    manager.addEndPoint(endPoint, &handler);
    ASSERT_TRUE(handler.waitFor("reconnected"));
    line.send("x");
    EXPECT_TRUE(handler.waitForBytes(1));
}

TEST(EndPointReconnect_pure, distances_double_and_what_is_not_supported_is_never_tried_again) {
    const Line failing = makePipe();
    const Line unsupported = makePipe();
    const Line removed = makePipe();
    for (const Line* const line : {&failing, &unsupported, &removed}) {
        line->endPoint->connected = false;
        line->endPoint->onReconnect = [] { return openFailed; };
    }
    unsupported.endPoint->onReconnect = nullptr;
    RecordingHandler handler;
    ZREndPointManager manager;
    const Clock::time_point added = Clock::now();
    for (const Line* const line : {&failing, &unsupported, &removed})
        manager.addEndPoint(line->endPoint, &handler);
    ASSERT_TRUE(removed.endPoint->waitForTries(1));
    manager.removeEndPoint(removed.endPoint);
    ASSERT_TRUE(failing.endPoint->waitForTries(3));
    const std::vector<Clock::time_point> tries = failing.endPoint->tries();
    EXPECT_GE(tries[0] - added, milliseconds(1000));
    EXPECT_GE(tries[1] - tries[0], milliseconds(2000));
    EXPECT_GE(tries[2] - tries[1], milliseconds(4000));
    EXPECT_EQ(unsupported.endPoint->tries().size(), 1U);
    EXPECT_EQ(removed.endPoint->tries().size(), 1U);
    EXPECT_EQ(handler.calls(), "");
}

TEST(EndPointReconnect_pure, success_without_a_connection_counts_as_a_failed_try) {
    const Line line = makePipe();
    line.endPoint->connected = false;
    std::atomic<int> tries{0};
    line.endPoint->onReconnect = [&] {
        line.endPoint->connected = ++tries == 2;
        return 0U;
    };
    RecordingHandler handler;
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    ASSERT_TRUE(handler.waitFor("reconnected"));
    EXPECT_EQ(tries, 2);
    EXPECT_EQ(handler.calls(), "reconnected");
}

TEST(EndPointReconnect_pure, what_it_raises_counts_as_a_failed_try_and_is_reported) {
    const ReportLog log;
    const Line line = makeUnconnected();
    std::atomic<int> tries{0};
    line.endPoint->onReconnect = [&] {
        if (++tries == 1)
            throw std::runtime_error("on purpose");
        line.endPoint->connected = true;
        return 0U;
    };
    RecordingHandler handler;
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    ASSERT_TRUE(handler.waitFor("reconnected"));
    EXPECT_EQ(tries, 2);
    const std::vector<Report> expected{{1, "zr_end_point", "reconnect raised on purpose"}};
    EXPECT_EQ(log.reports(), expected);
}

TEST(EndPointReconnect_pure, distances_begin_anew_after_a_success) {
    const Line line = makeUnconnected();
    const Line later = makeUnconnected();
    RecordingHandler handler;
    RecordingHandler laterHandler;
    handler.readable = [&](const auto& endPoint, auto* /*manager*/) {
        readSome(*endPoint);
        line.endPoint->connected = false;
    };
    std::atomic<int> failures{1};
    line.endPoint->onReconnect = [&] {
        if (failures-- > 0)
            return openFailed;
        line.endPoint->connected = true;
        return 0U;
    };
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    ASSERT_TRUE(handler.waitFor("reconnected"));
    line.send("x");
    ASSERT_TRUE(handler.waitFor("disconnected"));
    // What is added now is tried in one second, and so after what was lost before.
    manager.addEndPoint(later.endPoint, &laterHandler);
    ASSERT_TRUE(laterHandler.waitFor("reconnected"));
    EXPECT_EQ(line.endPoint->tries().size(), 3U);
    ASSERT_TRUE(handler.waitFor("reconnected", 2));
    EXPECT_EQ(handler.calls(), "reconnected readable disconnected reconnected");
}

TEST(EndPointReconnect_pure, is_not_called_when_the_end_point_connected_by_itself) {
    const Line line = makeUnconnected();
    RecordingHandler handler;
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    line.endPoint->connected = true;
    ASSERT_TRUE(handler.waitFor("reconnected"));
    EXPECT_TRUE(line.endPoint->tries().empty());
    line.send("x");
    EXPECT_TRUE(handler.waitForBytes(1));
}

TEST(EndPointReconnect_pure, is_not_needed_when_the_end_point_is_added_again_connected) {
    const Line line = makeUnconnected();
    RecordingHandler handler;
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    line.endPoint->connected = true;
    manager.addEndPoint(line.endPoint, &handler);
    line.send("x");
    ASSERT_TRUE(handler.waitForBytes(1));
    EXPECT_EQ(handler.calls(), "readable");
    EXPECT_TRUE(line.endPoint->tries().empty());
}

TEST(EndPointReconnect_pure, an_end_point_that_refused_it_is_watched_when_it_is_added_connected) {
    const Line line = makePipe();
    line.endPoint->connected = false;
    RecordingHandler handler;
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    ASSERT_TRUE(line.endPoint->waitForTries(1));
    line.endPoint->connected = true;
    manager.addEndPoint(line.endPoint, &handler);
    line.send("x");
    EXPECT_TRUE(handler.waitForBytes(1));
}

TEST(EndPointReconnect_pure, is_tried_on_an_end_point_that_says_connected_but_has_hung_up) {
    Line line = makePipe();
    Line next = makePipe();
    line.endPoint->onReconnect = [&] {
        ::close(line.endPoint->descriptor.exchange(next.endPoint->descriptor.exchange(-1)));
        return 0U;
    };
    RecordingHandler handler;
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    line.hangUp();
    ASSERT_TRUE(handler.waitFor("reconnected"));
    next.send("x");
    ASSERT_TRUE(handler.waitForBytes(1));
    EXPECT_EQ(handler.calls(), "readable readable disconnected reconnected readable");
}

TEST(EndPointReconnect_pure, of_one_end_point_does_not_keep_others_from_being_served) {
    const Line waiting = makePipe();
    waiting.endPoint->connected = false;
    waiting.endPoint->onReconnect = [] { return openFailed; };
    const Line line = makePipe();
    RecordingHandler handler;
    ZREndPointManager manager;
    manager.addEndPoint(waiting.endPoint, &handler);
    manager.addEndPoint(line.endPoint, &handler);
    for (std::size_t sent = 1; waiting.endPoint->tries().empty(); ++sent) {
        line.send("x");
        ASSERT_TRUE(handler.waitForBytes(sent));
    }
    line.send("last");
    EXPECT_TRUE(handler.waitFor("readable"));
}

TEST(EndPointReconnect_pure, the_second_end_point_of_a_descriptor_is_watched_after_the_first) {
    const Line line = makePipe();
    const auto second = std::make_shared<TestEndPoint>(line.endPoint->descriptor);
    RecordingHandler handler;
    RecordingHandler secondHandler;
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    manager.addEndPoint(second, &secondHandler);
    line.send("a");
    ASSERT_TRUE(handler.waitForBytes(1));
    EXPECT_EQ(secondHandler.calls(), "");
    manager.removeEndPoint(line.endPoint);
    ASSERT_TRUE(secondHandler.waitFor("reconnected"));
    line.send("b");
    ASSERT_TRUE(secondHandler.waitForBytes(1));
    EXPECT_TRUE(second->tries().empty());
    manager.removeEndPoint(second);
    second->descriptor = -1;
}

}  // namespace ZR::test
