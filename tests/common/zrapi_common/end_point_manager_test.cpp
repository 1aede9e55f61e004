#include "common/zrapi_common/zr_end_point_manager.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <array>
#include <atomic>
#include <csignal>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include "tests/common/zrapi_common/end_point_doubles.h"
#include "tests/support/report_log.h"

namespace ZR::test {
namespace {

/// Holds a manager's thread in a callback, so that what becomes ready meanwhile is one batch.
class Pause {
  public:
    explicit Pause(ZREndPointManager& manager) : manager_(manager) {
        handler_.readable = [this](const auto& endPoint, auto* /*manager*/) {
            readSome(*endPoint);
            entered_.open();
            goOn_.wait();
        };
        manager_.addEndPoint(line_.endPoint, &handler_);
        line_.send("x");
        entered_.wait();
    }
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;
    ~Pause() {
        end();
        manager_.removeEndPoint(line_.endPoint);
    }

    void end() { goOn_.open(); }

  private:
    ZREndPointManager& manager_;
    Line line_ = makePipe();
    RecordingHandler handler_;
    Gate entered_;
    Gate goOn_;
};

/// True when a manager still serves an end point, after all that was ready before it.
bool serves(ZREndPointManager& manager) {
    const Line line = makePipe();
    RecordingHandler handler;
    manager.addEndPoint(line.endPoint, &handler);
    line.send("x");
    const bool served = handler.waitForBytes(1);
    manager.removeEndPoint(line.endPoint);
    return served;
}

}  // namespace

TEST(EndPointManager_pure, calls_the_handler_when_a_descriptor_becomes_readable) {
    const Line line = makePipe();
    RecordingHandler handler;
    std::shared_ptr<ZREndPoint> passedEndPoint;
    ZREndPointManager* passedManager = nullptr;
    handler.readable = [&](const auto& endPoint, auto* manager) {
        readSome(*endPoint);
        passedEndPoint = endPoint;
        passedManager = manager;
    };
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    line.send("x");
    ASSERT_TRUE(handler.waitFor("readable"));
    EXPECT_EQ(passedEndPoint, line.endPoint);
    EXPECT_EQ(passedManager, &manager);
    EXPECT_EQ(handler.calls(), "readable");
}

TEST(EndPointManager_pure, sees_what_was_readable_before_the_end_point_was_added) {
    const Line line = makePipe();
    RecordingHandler handler;
    line.send("early");
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    EXPECT_TRUE(handler.waitForBytes(5));
}

TEST(EndPointManager_pure, calls_again_while_something_is_left_to_read) {
    const Line line = makePipe();
    RecordingHandler handler;
    std::string received;
    handler.readable = [&](const auto& endPoint, auto* /*manager*/) {
        received += readSome(*endPoint, 1);
    };
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    line.send("abc");
    ASSERT_TRUE(handler.waitFor("readable", 3));
    manager.removeEndPoint(line.endPoint);
    EXPECT_EQ(received, "abc");
    EXPECT_EQ(handler.count("readable"), 3U);
}

TEST(EndPointManager_pure, calls_on_one_named_thread_of_its_own) {
    std::set<std::thread::id> threads;
    std::array<char, 16> name{};
    RecordingHandler handler;
    handler.readable = [&](const auto& endPoint, auto* /*manager*/) {
        readSome(*endPoint);
        threads.insert(std::this_thread::get_id());
        ::pthread_getname_np(::pthread_self(), name.data(), name.size());
    };
    const Line first = makePipe();
    const Line second = makePipe();
    {
        ZREndPointManager manager;
        manager.addEndPoint(first.endPoint, &handler);
        manager.addEndPoint(second.endPoint, &handler);
        first.send("x");
        second.send("x");
        ASSERT_TRUE(handler.waitFor("readable", 2));
    }
    EXPECT_EQ(threads.size(), 1U);
    EXPECT_EQ(threads.count(std::this_thread::get_id()), 0U);
    EXPECT_STREQ(name.data(), "ZREndPoints");
}

TEST(EndPointManager_pure, leaves_signals_to_the_application_but_those_of_its_own_faults) {
    sigset_t inside{};
    sigset_t before{};
    ::pthread_sigmask(SIG_SETMASK, nullptr, &before);
    const Line line = makePipe();
    RecordingHandler handler;
    handler.readable = [&](const auto& endPoint, auto* /*manager*/) {
        readSome(*endPoint);
        ::pthread_sigmask(SIG_SETMASK, nullptr, &inside);
    };
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    line.send("x");
    ASSERT_TRUE(handler.waitFor("readable"));
    sigset_t after{};
    ::pthread_sigmask(SIG_SETMASK, nullptr, &after);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGUSR1, SIGALRM, SIGCHLD, SIGPIPE}) {
        EXPECT_EQ(sigismember(&inside, signal), 1) << signal;
        EXPECT_EQ(sigismember(&after, signal), sigismember(&before, signal)) << signal;
    }
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS})
        EXPECT_EQ(sigismember(&inside, fault), 0) << fault;
}

TEST(EndPointManager_pure, ignores_null) {
    const Line line = makePipe();
    RecordingHandler handler;
    ZREndPointManager manager;
    manager.addEndPoint(nullptr, &handler);
    manager.addEndPoint(line.endPoint, nullptr);
    manager.removeEndPoint(nullptr);
    manager.removeEndPoint(line.endPoint);
    EXPECT_EQ(line.endPoint.use_count(), 1);
    EXPECT_TRUE(serves(manager));
}

TEST(EndPointManager_pure, keeps_an_end_point_until_it_is_removed_or_the_manager_ends) {
    std::weak_ptr<ZREndPoint> removed;
    std::weak_ptr<ZREndPoint> left;
    RecordingHandler handler;
    {
        ZREndPointManager manager;
        Line first = makePipe();
        Line second = makePipe();
        removed = first.endPoint;
        left = second.endPoint;
        manager.addEndPoint(first.endPoint, &handler);
        manager.addEndPoint(second.endPoint, &handler);
        first.endPoint.reset();
        second.endPoint.reset();
        EXPECT_FALSE(removed.expired());
        manager.removeEndPoint(removed.lock());
        EXPECT_TRUE(removed.expired());
        EXPECT_FALSE(left.expired());
    }
    EXPECT_TRUE(left.expired());
}

TEST(EndPointManager_pure, adding_twice_replaces_the_handler) {
    const Line line = makePipe();
    RecordingHandler former;
    RecordingHandler handler;
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &former);
    manager.addEndPoint(line.endPoint, &handler);
    line.send("x");
    EXPECT_TRUE(handler.waitForBytes(1));
    EXPECT_EQ(former.calls(), "");
    manager.removeEndPoint(line.endPoint);
    EXPECT_EQ(line.endPoint.use_count(), 1);
}

TEST(EndPointManager_pure, serves_more_end_points_than_fit_into_one_batch) {
    constexpr std::size_t many = 300;
    std::vector<Line> lines;
    std::vector<std::unique_ptr<RecordingHandler>> handlers;
    ZREndPointManager manager;
    for (std::size_t i = 0; i < many; ++i) {
        lines.push_back(makePipe());
        handlers.push_back(std::make_unique<RecordingHandler>());
        manager.addEndPoint(lines.back().endPoint, handlers.back().get());
    }
    for (const Line& line : lines)
        line.send(std::to_string(&line - lines.data()));
    for (std::size_t i = 0; i < many; ++i) {
        ASSERT_TRUE(handlers[i]->waitForBytes(std::to_string(i).size())) << i;
        EXPECT_EQ(handlers[i]->received(), std::to_string(i));
    }
    for (const Line& line : lines)
        manager.removeEndPoint(line.endPoint);
}

TEST(EndPointManager_pure, a_callback_may_add_another_end_point) {
    const Line line = makePipe();
    const Line other = makePipe();
    RecordingHandler otherHandler;
    RecordingHandler handler;
    handler.readable = [&](const auto& endPoint, auto* manager) {
        readSome(*endPoint);
        manager->addEndPoint(other.endPoint, &otherHandler);
    };
    other.send("x");
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    line.send("x");
    EXPECT_TRUE(otherHandler.waitForBytes(1));
}

TEST(EndPointManager_pure, a_callback_that_removes_its_end_point_is_the_last_one) {
    const std::shared_ptr<TestEndPoint> endPoint = makeAlwaysReadable();
    RecordingHandler handler;
    handler.readable = [](const auto& own, auto* manager) { manager->removeEndPoint(own); };
    ZREndPointManager manager;
    manager.addEndPoint(endPoint, &handler);
    ASSERT_TRUE(handler.waitFor("readable"));
    EXPECT_TRUE(serves(manager));
    EXPECT_EQ(handler.calls(), "readable");
    EXPECT_EQ(endPoint.use_count(), 1);
}

TEST(EndPointManager_pure, a_callback_may_remove_its_end_point_and_add_it_again) {
    const Line line = makePipe();
    RecordingHandler handler;
    handler.readable = [&handler](const auto& own, auto* manager) {
        readSome(*own, 1);
        manager->removeEndPoint(own);
        manager->addEndPoint(own, &handler);
    };
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    line.send("abc");
    ASSERT_TRUE(handler.waitFor("readable", 3));
    EXPECT_TRUE(serves(manager));
    EXPECT_EQ(handler.count("readable"), 3U);
}

TEST(EndPointManager_pure, an_end_point_removed_earlier_in_its_batch_is_not_called) {
    const std::shared_ptr<TestEndPoint> first = makeAlwaysReadable();
    const std::shared_ptr<TestEndPoint> second = makeAlwaysReadable();
    RecordingHandler handler;
    handler.readable = [&](const auto& /*own*/, auto* manager) {
        manager->removeEndPoint(first);
        manager->removeEndPoint(second);
    };
    ZREndPointManager manager;
    Pause pause(manager);
    manager.addEndPoint(first, &handler);
    manager.addEndPoint(second, &handler);
    pause.end();
    ASSERT_TRUE(handler.waitFor("readable"));
    EXPECT_TRUE(serves(manager));
    EXPECT_EQ(handler.calls(), "readable");
}

TEST(EndPointManager_pure, an_event_from_before_an_end_point_was_added_again_is_dropped) {
    // Both are emptied by whichever is called first: a call to the other one would read nothing.
    const std::array<Line, 2> lines{makePipe(), makePipe()};
    RecordingHandler handler;
    handler.readable = [&](const auto& /*own*/, auto* manager) {
        for (const Line& line : lines) {
            manager->removeEndPoint(line.endPoint);
            readSome(*line.endPoint);
            manager->addEndPoint(line.endPoint, &handler);
        }
    };
    ZREndPointManager manager;
    Pause pause(manager);
    for (const Line& line : lines) {
        line.send("x");
        manager.addEndPoint(line.endPoint, &handler);
    }
    pause.end();
    ASSERT_TRUE(handler.waitFor("readable"));
    EXPECT_TRUE(serves(manager));
    EXPECT_EQ(handler.calls(), "readable");
    for (const Line& line : lines)
        manager.removeEndPoint(line.endPoint);
}

TEST(EndPointManager_pure, what_a_handler_raises_is_reported_and_the_end_point_stays_watched) {
    const ReportLog log;
    const Line line = makePipe();
    RecordingHandler handler;
    int calls = 0;
    handler.readable = [&](const auto& endPoint, auto* /*manager*/) {
        readSome(*endPoint, 1);
        if (++calls == 1)
            throw std::runtime_error("on purpose");
    };
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    line.send("ab");
    ASSERT_TRUE(handler.waitFor("readable"));
    const std::vector<Report> expected{{1, "zr_end_point", "onEndPointReadable raised on purpose"}};
    EXPECT_EQ(log.reports(), expected);
    EXPECT_EQ(handler.calls(), "readable");
}

TEST(EndPointManager_pure, its_end_waits_for_the_running_callback_and_starts_no_other) {
    RecordingHandler handler;
    Gate entered;
    Gate goOn;
    std::atomic<bool> callbackEnded{false};
    handler.readable = [&](const auto& /*own*/, auto* /*manager*/) {
        entered.open();
        goOn.wait();
        callbackEnded = true;
    };
    auto manager = std::make_unique<ZREndPointManager>();
    {
        const Pause pause(*manager);
        manager->addEndPoint(makeAlwaysReadable(), &handler);
        manager->addEndPoint(makeAlwaysReadable(), &handler);
    }
    ASSERT_TRUE(entered.wait());
    std::thread opener([&goOn] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        goOn.open();
    });
    manager.reset();
    EXPECT_TRUE(callbackEnded);
    opener.join();
    EXPECT_EQ(handler.count("readable"), 1U);
}

TEST(EndPointManager_pure, ends_while_all_its_end_points_are_ready) {
    RecordingHandler handler;
    handler.readable = [](const auto& /*own*/, auto* /*manager*/) {};
    std::vector<std::shared_ptr<TestEndPoint>> endPoints;
    for (int i = 0; i < 10; ++i)
        endPoints.push_back(makeAlwaysReadable());
    for (int round = 0; round < 20; ++round) {
        ZREndPointManager manager;
        for (const std::shared_ptr<TestEndPoint>& endPoint : endPoints)
            manager.addEndPoint(endPoint, &handler);
    }
    for (const std::shared_ptr<TestEndPoint>& endPoint : endPoints)
        EXPECT_EQ(endPoint.use_count(), 1);
}

}  // namespace ZR::test
