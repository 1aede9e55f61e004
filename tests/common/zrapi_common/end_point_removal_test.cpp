#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <set>
#include <thread>

#include "common/zrapi_common/zr_end_point_manager.h"
#include "tests/common/zrapi_common/end_point_doubles.h"

namespace ZR::test {
namespace {

/// Long enough for a call that does not wait to return.
constexpr std::chrono::milliseconds aMoment{50};

/// A callback that is held until the test lets it go.
struct HeldCallback {
    Gate entered;
    Gate goOn;
    std::atomic<bool> ended{false};

    void hold() {
        entered.open();
        goOn.wait();
        ended = true;
    }
};

/// Runs @p call on a thread of its own, lets the callback go a moment later, and tells whether the
/// callback had ended when the call returned.
template <typename Call>
bool waitsForCallback(HeldCallback& callback, Call call) {
    if (!callback.entered.wait())
        return false;
    bool endedBefore = false;
    Gate started;
    std::thread caller([&] {
        started.open();
        call();
        endedBefore = callback.ended;
    });
    started.wait();
    std::this_thread::sleep_for(aMoment);
    callback.goOn.open();
    caller.join();
    return endedBefore;
}

/// Notes on which threads it is asked.
class NotingEndPoint : public TestEndPoint {
  public:
    using TestEndPoint::TestEndPoint;

    bool isConnected() const override {
        const std::lock_guard<std::mutex> lock(mutex_);
        askers_.insert(std::this_thread::get_id());
        return TestEndPoint::isConnected();
    }

    /// Those noted since the last call.
    std::set<std::thread::id> takeAskers() {
        const std::lock_guard<std::mutex> lock(mutex_);
        return std::move(askers_);
    }

  private:
    mutable std::mutex mutex_;
    mutable std::set<std::thread::id> askers_;
};

}  // namespace

TEST(EndPointRemoval_pure, on_another_thread_waits_for_the_running_callback) {
    const std::shared_ptr<TestEndPoint> endPoint = makeAlwaysReadable();
    HeldCallback callback;
    RecordingHandler handler;
    handler.readable = [&](const auto& /*own*/, auto* /*manager*/) { callback.hold(); };
    ZREndPointManager manager;
    manager.addEndPoint(endPoint, &handler);
    EXPECT_TRUE(waitsForCallback(callback, [&] { manager.removeEndPoint(endPoint); }));
    EXPECT_EQ(handler.count("readable"), 1U);
}

TEST(EndPointRemoval_pure, waits_also_when_the_callback_has_removed_its_end_point_already) {
    const std::shared_ptr<TestEndPoint> endPoint = makeAlwaysReadable();
    HeldCallback callback;
    RecordingHandler handler;
    handler.readable = [&](const auto& own, auto* manager) {
        manager->removeEndPoint(own);
        callback.hold();
    };
    ZREndPointManager manager;
    manager.addEndPoint(endPoint, &handler);
    EXPECT_TRUE(waitsForCallback(callback, [&] { manager.removeEndPoint(endPoint); }));
}

TEST(EndPointRemoval_pure, a_new_handler_waits_for_a_callback_of_the_former) {
    const std::shared_ptr<TestEndPoint> endPoint = makeAlwaysReadable();
    HeldCallback callback;
    RecordingHandler former;
    former.readable = [&](const auto& /*own*/, auto* /*manager*/) { callback.hold(); };
    RecordingHandler handler;
    handler.readable = [](const auto& /*own*/, auto* /*manager*/) {};
    ZREndPointManager manager;
    manager.addEndPoint(endPoint, &former);
    EXPECT_TRUE(waitsForCallback(callback, [&] { manager.addEndPoint(endPoint, &handler); }));
    ASSERT_TRUE(handler.waitFor("readable"));
    EXPECT_EQ(former.count("readable"), 1U);
    manager.removeEndPoint(endPoint);
}

TEST(EndPointRemoval_pure, an_end_point_added_again_is_asked_on_the_managers_thread) {
    const Line line = makePipe();
    const auto endPoint = std::make_shared<NotingEndPoint>(line.endPoint->descriptor.exchange(-1));
    RecordingHandler handler;
    std::thread::id managersThread;
    handler.readable = [&](const auto& own, auto* /*manager*/) {
        readSome(*own);
        managersThread = std::this_thread::get_id();
    };
    ZREndPointManager manager;
    manager.addEndPoint(endPoint, &handler);
    const std::set<std::thread::id> first = endPoint->takeAskers();
    EXPECT_EQ(first, std::set<std::thread::id>{std::this_thread::get_id()});
    manager.addEndPoint(endPoint, &handler);
    line.send("x");
    ASSERT_TRUE(handler.waitFor("readable"));
    manager.removeEndPoint(endPoint);
    EXPECT_EQ(endPoint->takeAskers(), std::set<std::thread::id>{managersThread});
}

TEST(EndPointRemoval_pure, adding_waits_for_the_callback_that_has_removed_the_end_point) {
    const std::shared_ptr<TestEndPoint> endPoint = makeAlwaysReadable();
    HeldCallback callback;
    RecordingHandler former;
    former.readable = [&](const auto& own, auto* manager) {
        manager->removeEndPoint(own);
        callback.hold();
    };
    RecordingHandler handler;
    ZREndPointManager manager;
    manager.addEndPoint(endPoint, &former);
    EXPECT_TRUE(waitsForCallback(callback, [&] { manager.addEndPoint(endPoint, &handler); }));
    EXPECT_TRUE(handler.waitFor("readable"));
}

TEST(EndPointRemoval_pure, waits_for_a_reconnect_and_nothing_is_announced_after_it) {
    const Line line = makePipe();
    line.endPoint->connected = false;
    HeldCallback callback;
    line.endPoint->onReconnect = [&] {
        callback.hold();
        line.endPoint->connected = true;
        return 0U;
    };
    RecordingHandler handler;
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    EXPECT_TRUE(waitsForCallback(callback, [&] { manager.removeEndPoint(line.endPoint); }));
    EXPECT_EQ(handler.calls(), "");
}

TEST(EndPointRemoval_pure, does_not_wait_for_the_callback_of_another_end_point) {
    const std::shared_ptr<TestEndPoint> busy = makeAlwaysReadable();
    const Line idle = makePipe();
    HeldCallback callback;
    RecordingHandler handler;
    handler.readable = [&](const auto& /*own*/, auto* /*manager*/) { callback.hold(); };
    ZREndPointManager manager;
    manager.addEndPoint(busy, &handler);
    manager.addEndPoint(idle.endPoint, &handler);
    ASSERT_TRUE(callback.entered.wait());
    manager.removeEndPoint(idle.endPoint);
    EXPECT_FALSE(callback.ended);
    callback.goOn.open();
    manager.removeEndPoint(busy);
}

TEST(EndPointRemoval_pure, no_callback_starts_after_it_however_ready_the_end_point_is) {
    const std::shared_ptr<TestEndPoint> endPoint = makeAlwaysReadable();
    std::atomic<bool> allowed{false};
    std::atomic<int> late{0};
    std::atomic<int> calls{0};
    RecordingHandler handler;
    handler.readable = [&](const auto& /*own*/, auto* /*manager*/) {
        late += allowed ? 0 : 1;
        ++calls;
    };
    ZREndPointManager manager;
    for (int round = 0; round < 500; ++round) {
        allowed = true;
        manager.addEndPoint(endPoint, &handler);
        while (calls <= round)
            std::this_thread::yield();
        manager.removeEndPoint(endPoint);
        allowed = false;
    }
    EXPECT_EQ(late, 0);
}

TEST(EndPointRemoval_pure, of_an_unknown_end_point_is_ignored) {
    const Line line = makePipe();
    const Line known = makePipe();
    RecordingHandler handler;
    ZREndPointManager manager;
    manager.addEndPoint(known.endPoint, &handler);
    manager.removeEndPoint(line.endPoint);
    manager.removeEndPoint(line.endPoint);
    known.send("x");
    EXPECT_TRUE(handler.waitForBytes(1));
}

TEST(EndPointRemoval_pure, an_end_point_that_goes_with_its_own_callback_may_remove_others) {
    Line line = makePipe();
    const Line other = makePipe();
    RecordingHandler handler;
    Gate gone;
    ZREndPointManager manager;
    handler.readable = [&](const auto& own, auto* /*manager*/) {
        readSome(*own);
        manager.removeEndPoint(own);
    };
    line.endPoint->onEnd = [&] {
        manager.removeEndPoint(other.endPoint);
        gone.open();
    };
    manager.addEndPoint(other.endPoint, &handler);
    manager.addEndPoint(line.endPoint, &handler);
    line.endPoint.reset();
    line.send("x");
    ASSERT_TRUE(gone.wait());
    EXPECT_EQ(other.endPoint.use_count(), 1);
}

TEST(EndPointRemoval_pure, an_end_point_that_goes_with_its_removal_may_remove_others) {
    Line line = makePipe();
    const Line other = makePipe();
    RecordingHandler handler;
    ZREndPointManager manager;
    line.endPoint->onEnd = [&] { manager.removeEndPoint(other.endPoint); };
    manager.addEndPoint(line.endPoint, &handler);
    manager.addEndPoint(other.endPoint, &handler);
    std::shared_ptr<ZREndPoint> last = std::move(line.endPoint);
    const std::shared_ptr<ZREndPoint> alias(std::shared_ptr<void>(), last.get());
    last.reset();
    manager.removeEndPoint(alias);
    EXPECT_EQ(other.endPoint.use_count(), 1);
}

TEST(EndPointRemoval_pure, an_end_point_that_goes_with_its_manager_may_remove_and_add_others) {
    Line line = makePipe();
    const Line other = makePipe();
    const Line added = makePipe();
    RecordingHandler handler;
    long holders = 0;
    auto owner = std::make_unique<ZREndPointManager>();
    line.endPoint->onEnd = [&, manager = owner.get()] {
        manager->removeEndPoint(other.endPoint);
        manager->addEndPoint(added.endPoint, &handler);
        holders = added.endPoint.use_count();
    };
    owner->addEndPoint(other.endPoint, &handler);
    owner->addEndPoint(line.endPoint, &handler);
    line.endPoint.reset();
    owner.reset();
    EXPECT_EQ(holders, 1);
    EXPECT_EQ(other.endPoint.use_count(), 1);
}

}  // namespace ZR::test
