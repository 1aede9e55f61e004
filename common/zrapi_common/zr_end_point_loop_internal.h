#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "common/zrapi_common/zr_end_point_manager.h"
#include "common/zrapi_common/zr_reconnect_internal.h"
#include "common/zrapi_common/zr_watch_set_internal.h"

namespace ZR {

/// The manager's thread and what it knows.
///
/// No function of an end point or a handler is called with the lock held: they may call back.
/// Whoever let go of the lock looks its registration up again by the key it had.
class __attribute__((visibility("hidden"))) ZREndPointManager::Loop {
  public:
    explicit Loop(ZREndPointManager* manager);
    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;
    ~Loop() = default;

    void add(std::shared_ptr<ZREndPoint> endPoint, ZREndPointHandler* handler);
    void remove(const ZREndPoint* endPoint);

    /// Ends the thread and lets go of all end points, whose destructors may still call add() and
    /// remove(). Called once, before the destructor.
    void end();

  private:
    using Clock = std::chrono::steady_clock;
    using Lock = std::unique_lock<std::mutex>;

    /// Place and generation of a registration: late events of what is gone find nothing.
    using Key = std::uint64_t;

    static constexpr Clock::time_point never = Clock::time_point::max();

    /// What the manager's thread is still to ask an end point for.
    enum class Question {
        None,
        Added,  ///< it was added again on a thread that must not ask it
        Gone,   ///< its descriptor is not open, or another end point's: it may be lost
    };

    struct Registration {
        std::shared_ptr<ZREndPoint> endPoint;  ///< null: the place is free
        ZREndPointHandler* handler = nullptr;
        std::uint32_t generation = 0;  ///< counts what is watched at this place, one after another
        int descriptor = -1;           ///< the watched one, negative while none is
        bool reconnects = true;        ///< false once the end point answered "not supported"
        Question question = Question::None;
        Clock::time_point due = never;
        std::chrono::seconds delay = firstReconnectDelay;
        PersistentFault fault;
    };

    /// What an end point says of itself.
    struct Condition {
        bool connected = false;
        int descriptor = -1;
        Fault fault = Fault::None;
        int unread = 0;

        bool usable() const { return connected && descriptor >= 0 && fault == Fault::None; }
    };

    /// What came out of one try to get an end point back.
    struct Attempt {
        unsigned int result = 0;
        Condition condition;
    };

    static Condition conditionOf(const ZREndPoint& endPoint, bool suspicious);
    static Attempt attempt(ZREndPoint& endPoint, bool mayReconnect);

    // zr_end_point_registrations.cpp; all need the lock
    Key keyOf(const Registration& registration) const;
    Registration* find(Key key);
    Registration* find(const ZREndPoint* endPoint);
    Registration& freePlace();
    bool watch(Registration& registration, int descriptor);
    void watchAgain(Registration& registration);
    void unwatch(Registration& registration);
    void follow(Registration& registration, int descriptor);
    void takeFromOthers(const Registration& owner);
    void askLater(Registration& registration, Question question);
    void retryIn(Registration& registration, std::chrono::seconds delay);
    void markStale();
    void renew();
    bool onOwnThread() const;
    void wakeUnlessOwnThread() const;
    void awaitCallback(Lock& lock, const ZREndPoint* endPoint);

    // zr_end_point_loop.cpp; on the manager's thread, with the lock held
    void run();
    int timeout() const;
    void deliver(Lock& lock, const epoll_event& event);
    void judge(Lock& lock, Registration& registration, const Condition& condition);
    void lose(Lock& lock, Registration& registration);
    void retryOne(Lock& lock);
    void retry(Lock& lock, Registration& registration);
    void askAll(Lock& lock);
    void ask(Lock& lock, const Registration& registration, Question question);
    template <typename Action>
    void withoutLock(Lock& lock, const Registration& registration, Action action);

    ZREndPointManager* manager_;
    WatchSet set_;
    std::mutex mutex_;
    std::condition_variable callbackEnded_;
    std::vector<Registration> registrations_;
    const ZREndPoint* called_ = nullptr;  ///< whose functions are being called; never dereferenced
    std::uint64_t calls_ = 0;
    Clock::time_point nextTry_ = never;  ///< no registration is due earlier
    bool stale_ = false;                 ///< the kernel may watch what is no longer registered
    bool questions_ = false;             ///< an end point is to be asked
    bool stopped_ = false;
    std::thread thread_;
};

}  // namespace ZR
