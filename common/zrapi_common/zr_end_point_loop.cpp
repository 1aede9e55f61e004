#include <pthread.h>

#include <algorithm>
#include <csignal>
#include <exception>
#include <utility>

#include "common/zrapi_common/zr_debug.h"
#include "common/zrapi_common/zr_end_point_loop_internal.h"
#include "common/zrapi_common/zr_result.h"

namespace ZR {
namespace {

constexpr char threadName[] = "ZREndPoints";
constexpr char sectionName[] = "zr_end_point";

/// Blocks signals for a thread that is started meanwhile: the application's own threads shall
/// receive them. A fault of the thread itself is no one else's: blocked, it would end the process
/// past the application's handler.
class BlockedSignals {
  public:
    BlockedSignals() {
        sigset_t blocked{};
        ::sigfillset(&blocked);
        for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS})
            ::sigdelset(&blocked, fault);
        ::pthread_sigmask(SIG_SETMASK, &blocked, &before_);
    }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;
    ~BlockedSignals() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

  private:
    sigset_t before_{};
};

void report(const char* function, const std::exception& error) {
    try {
        ZRDebug::debugPrintError(ZRDebug::levelError, ZRDebug::insertNewDebugSection(sectionName),
                                 "%s%s%s", function, " raised ", error.what());
    } catch (const std::exception&) {
        // No memory to say so with.
        return;
    }
}

/// Calls the application's code. Only what derives from std::exception is caught: the cancellation
/// of a thread comes as an exception too, and must not be held up.
template <typename Call>
void guarded(const char* function, Call call) {
    try {
        call();
    } catch (const std::exception& error) {
        report(function, error);
    }
}

}  // namespace

ZREndPointManager::Loop::Loop(ZREndPointManager* manager) : manager_(manager) {
    const BlockedSignals blocked;
    thread_ = std::thread(&Loop::run, this);
}

void ZREndPointManager::Loop::end() {
    Lock lock(mutex_);
    stopped_ = true;
    lock.unlock();
    set_.wake();
    thread_.join();
    lock.lock();
    // Destructors that call back find an empty list, not one that is being taken down.
    const std::vector<Registration> dropped = std::exchange(registrations_, {});
    lock.unlock();
}

void ZREndPointManager::Loop::run() {
    (void)::pthread_setname_np(::pthread_self(), threadName);
    WatchSet::Events events{};
    Lock lock(mutex_);
    while (!stopped_) {
        const int milliseconds = timeout();
        lock.unlock();
        const std::size_t count = set_.wait(events, milliseconds);
        lock.lock();
        for (std::size_t i = 0; i < count && !stopped_; ++i)
            deliver(lock, events[i]);
        retryOne(lock);
        renew();
        askAll(lock);
    }
}

int ZREndPointManager::Loop::timeout() const {
    if (questions_)
        return 0;
    if (nextTry_ == never)
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(nextTry_ - Clock::now());
    return static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0));
}

template <typename Action>
void ZREndPointManager::Loop::withoutLock(Lock& lock, const Registration& registration,
                                          Action action) {
    std::shared_ptr<ZREndPoint> endPoint = registration.endPoint;
    ZREndPointHandler* const handler = registration.handler;
    called_ = endPoint.get();
    lock.unlock();
    action(endPoint, *handler);
    // The last reference goes here when the callback removed the end point: not under the lock.
    endPoint.reset();
    lock.lock();
    called_ = nullptr;
    ++calls_;
    callbackEnded_.notify_all();
}

void ZREndPointManager::Loop::deliver(Lock& lock, const epoll_event& event) {
    const Key key = event.data.u64;
    Registration* registration = find(key);
    if (registration == nullptr)
        return;
    const bool suspicious = (event.events & WatchSet::faultEvents) != 0;
    Condition condition;
    withoutLock(lock, *registration, [&](const auto& endPoint, ZREndPointHandler& handler) {
        guarded("onEndPointReadable", [&] { handler.onEndPointReadable(endPoint, manager_); });
        guarded("an end point", [&] { condition = conditionOf(*endPoint, suspicious); });
    });
    registration = find(key);
    if (registration == nullptr)
        return;
    // A callback that saw a hang-up may have opened its end point anew under the same number, which
    // the kernel has then forgotten. Asking each time would cost a call an event.
    if (suspicious && condition.descriptor == registration->descriptor)
        watchAgain(*registration);
    judge(lock, *registration, condition);
}

/// @param suspicious  whether it is worth asking the kernel, which no ordinary event is
ZREndPointManager::Loop::Condition ZREndPointManager::Loop::conditionOf(const ZREndPoint& endPoint,
                                                                        bool suspicious) {
    Condition condition{endPoint.isConnected(), endPoint.getReadEndPointID(), Fault::None, 0};
    if (suspicious && condition.descriptor >= 0)
        condition.fault = faultOf(condition.descriptor);
    if (condition.fault != Fault::None)
        condition.unread = unreadBytes(condition.descriptor);
    return condition;
}

void ZREndPointManager::Loop::judge(Lock& lock, Registration& registration,
                                    const Condition& condition) {
    if (condition.connected && condition.descriptor == registration.descriptor &&
        registration.descriptor >= 0 &&
        !registration.fault.persists(condition.fault, condition.unread))
        return;
    const bool replaced = condition.connected && condition.descriptor != registration.descriptor;
    unwatch(registration);
    // A callback may have opened the end point anew by itself.
    if (replaced && condition.descriptor >= 0 && watch(registration, condition.descriptor))
        return;
    lose(lock, registration);
}

void ZREndPointManager::Loop::lose(Lock& lock, Registration& registration) {
    retryIn(registration, firstReconnectDelay);
    withoutLock(lock, registration, [](const auto& endPoint, ZREndPointHandler& handler) {
        guarded("onEndPointDisconnected", [&] { handler.onEndPointDisconnected(endPoint); });
    });
}

/// Tries one end point a round, so that a reconnect that takes its time holds up the callbacks of
/// the others no longer than that.
void ZREndPointManager::Loop::retryOne(Lock& lock) {
    if (nextTry_ == never || stopped_)
        return;
    const Clock::time_point now = Clock::now();
    if (now < nextTry_)
        return;
    const auto earlier = [](const Registration& left, const Registration& right) {
        return left.due < right.due;
    };
    const auto next = std::min_element(registrations_.begin(), registrations_.end(), earlier);
    if (next != registrations_.end() && next->due <= now)
        retry(lock, *next);
    const auto following = std::min_element(registrations_.begin(), registrations_.end(), earlier);
    nextTry_ = following != registrations_.end() ? following->due : never;
}

void ZREndPointManager::Loop::retry(Lock& lock, Registration& registration) {
    const Key key = keyOf(registration);
    const bool mayReconnect = registration.reconnects;
    Attempt outcome;
    withoutLock(lock, registration, [&](const auto& endPoint, const ZREndPointHandler& /*unused*/) {
        guarded("reconnect", [&] { outcome = attempt(*endPoint, mayReconnect); });
    });
    Registration* const tried = find(key);
    if (tried == nullptr || tried->descriptor >= 0)
        return;
    if (outcome.condition.usable() && watch(*tried, outcome.condition.descriptor)) {
        withoutLock(lock, *tried, [](const auto& endPoint, ZREndPointHandler& handler) {
            guarded("onEndPointReconnected", [&] { handler.onEndPointReconnected(endPoint); });
        });
        return;
    }
    tried->reconnects = tried->reconnects && outcome.result != ResultNotSupported;
    tried->due = never;
    if (tried->reconnects)
        retryIn(*tried, nextReconnectDelay(tried->delay));
}

/// Reconnects what is not connected, or reports an error; what works again by itself is left as it
/// is. An end point that did not reconnect counts as not connected, whatever it says.
ZREndPointManager::Loop::Attempt ZREndPointManager::Loop::attempt(ZREndPoint& endPoint,
                                                                  bool mayReconnect) {
    Attempt outcome{ResultSuccess, conditionOf(endPoint, true)};
    if (!mayReconnect || outcome.condition.usable())
        return outcome;
    outcome.result = endPoint.reconnect();
    outcome.condition = outcome.result == ResultSuccess ? conditionOf(endPoint, true) : Condition{};
    return outcome;
}

/// Asks each end point that there is a question to. The list may grow meanwhile.
void ZREndPointManager::Loop::askAll(Lock& lock) {
    if (!std::exchange(questions_, false))
        return;
    for (std::size_t place = 0; place < registrations_.size() && !stopped_; ++place) {
        const Question question = std::exchange(registrations_[place].question, Question::None);
        if (question != Question::None)
            ask(lock, registrations_[place], question);
    }
}

void ZREndPointManager::Loop::ask(Lock& lock, const Registration& registration, Question question) {
    const Key key = keyOf(registration);
    Condition condition;
    withoutLock(lock, registration, [&](const auto& endPoint, const ZREndPointHandler& /*unused*/) {
        guarded("an end point", [&] { condition = conditionOf(*endPoint, false); });
    });
    Registration* const asked = find(key);
    if (asked == nullptr)
        return;
    if (question == Question::Gone)
        judge(lock, *asked, condition);
    else if (condition.usable())
        follow(*asked, condition.descriptor);
}

}  // namespace ZR
