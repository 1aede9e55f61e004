#include <algorithm>
#include <utility>

#include "common/zrapi_common/zr_end_point_loop_internal.h"

namespace ZR {

void ZREndPointManager::Loop::add(std::shared_ptr<ZREndPoint> endPoint,
                                  ZREndPointHandler* handler) {
    const ZREndPoint* const identity = endPoint.get();
    Lock lock(mutex_);
    // One that is not known may have been removed by its own callback, which still runs.
    if (find(identity) == nullptr)
        awaitCallback(lock, identity);
    Condition condition;
    // The manager's thread may be inside one that is known, at any time, and is left to ask it.
    if (onOwnThread() || find(identity) == nullptr) {
        lock.unlock();
        condition = conditionOf(*endPoint, false);
        lock.lock();
    }
    if (stopped_)
        return;
    Registration* registration = find(identity);
    const bool known = registration != nullptr;
    if (!known) {
        registration = &freePlace();
        registration->endPoint = std::move(endPoint);
    }
    registration->handler = handler;
    if (known && !onOwnThread()) {
        askLater(*registration, Question::Added);
        awaitCallback(lock, identity);
    } else if (condition.usable()) {
        follow(*registration, condition.descriptor);
    } else if (!known) {
        retryIn(*registration, firstReconnectDelay);
    }
}

void ZREndPointManager::Loop::remove(const ZREndPoint* endPoint) {
    // Dropped after the lock: this may be the last reference, and destructors may call back.
    std::shared_ptr<ZREndPoint> dropped;
    Lock lock(mutex_);
    if (Registration* const registration = find(endPoint)) {
        unwatch(*registration);
        dropped = std::move(registration->endPoint);
        Registration free;
        free.generation = registration->generation;
        *registration = std::move(free);
    }
    // Also one that is not known: it may have been removed by its own callback, which still runs.
    awaitCallback(lock, endPoint);
    lock.unlock();
}

ZREndPointManager::Loop::Key ZREndPointManager::Loop::keyOf(
    const Registration& registration) const {
    const auto place = static_cast<std::uint32_t>(&registration - registrations_.data());
    return static_cast<Key>(registration.generation) << 32U | place;
}

ZREndPointManager::Loop::Registration* ZREndPointManager::Loop::find(Key key) {
    const auto place = static_cast<std::uint32_t>(key);
    if (place >= registrations_.size())
        return nullptr;
    Registration& registration = registrations_[place];
    return registration.generation == key >> 32U ? &registration : nullptr;
}

ZREndPointManager::Loop::Registration* ZREndPointManager::Loop::find(const ZREndPoint* endPoint) {
    const auto found = std::find_if(
        registrations_.begin(), registrations_.end(),
        [endPoint](const Registration& each) { return each.endPoint.get() == endPoint; });
    return found != registrations_.end() ? &*found : nullptr;
}

ZREndPointManager::Loop::Registration& ZREndPointManager::Loop::freePlace() {
    Registration* const free = find(nullptr);
    return free != nullptr ? *free : registrations_.emplace_back();
}

bool ZREndPointManager::Loop::watch(Registration& registration, int descriptor) {
    if (!set_.watch(descriptor, keyOf(registration)))
        return false;
    registration.descriptor = descriptor;
    registration.fault = {};
    registration.due = never;
    takeFromOthers(registration);
    return true;
}

/// Watches a number whose file may have been closed and another opened there. The kernel takes the
/// second one only then.
void ZREndPointManager::Loop::watchAgain(Registration& registration) {
    if (!set_.watch(registration.descriptor, keyOf(registration)))
        return;
    registration.fault = {};
    markStale();
}

void ZREndPointManager::Loop::unwatch(Registration& registration) {
    ++registration.generation;
    if (registration.descriptor >= 0 && !set_.unwatch(std::exchange(registration.descriptor, -1)))
        markStale();
}

/// Watches the descriptor that an end point has now.
void ZREndPointManager::Loop::follow(Registration& registration, int descriptor) {
    if (registration.descriptor == descriptor) {
        watchAgain(registration);
        return;
    }
    unwatch(registration);
    if (!watch(registration, descriptor))
        retryIn(registration, firstReconnectDelay);
}

/// Whoever had the number before has closed it, or the kernel would not have taken it: from now on
/// its watch is the new owner's, which nobody else may take out or renew.
void ZREndPointManager::Loop::takeFromOthers(const Registration& owner) {
    for (Registration& each : registrations_) {
        if (&each == &owner || each.descriptor != owner.descriptor)
            continue;
        each.descriptor = -1;
        ++each.generation;
        askLater(each, Question::Gone);
        markStale();
    }
}

void ZREndPointManager::Loop::askLater(Registration& registration, Question question) {
    // A loss that is not announced yet is not forgotten.
    if (registration.question != Question::Gone)
        registration.question = question;
    questions_ = true;
    wakeUnlessOwnThread();
}

void ZREndPointManager::Loop::retryIn(Registration& registration, std::chrono::seconds delay) {
    registration.delay = delay;
    registration.due = Clock::now() + delay;
    if (registration.due >= nextTry_)
        return;
    nextTry_ = registration.due;
    wakeUnlessOwnThread();
}

/// Has all watches renewed: the kernel may watch a file that is no end point's any more.
void ZREndPointManager::Loop::markStale() {
    stale_ = true;
    wakeUnlessOwnThread();
}

/// Gets rid of watches whose descriptor was closed before it could be taken out. Whom that leaves
/// without a watch is asked later: a callback may add end points, and comes after all are watched.
void ZREndPointManager::Loop::renew() {
    if (!stale_ || !set_.renew())
        return;
    stale_ = false;
    for (Registration& each : registrations_) {
        const int descriptor = std::exchange(each.descriptor, -1);
        if (descriptor < 0)
            continue;
        ++each.generation;
        if (!watch(each, descriptor))
            askLater(each, Question::Gone);
    }
}

bool ZREndPointManager::Loop::onOwnThread() const {
    return std::this_thread::get_id() == thread_.get_id();
}

void ZREndPointManager::Loop::wakeUnlessOwnThread() const {
    if (!onOwnThread())
        set_.wake();
}

void ZREndPointManager::Loop::awaitCallback(Lock& lock, const ZREndPoint* endPoint) {
    if (called_ != endPoint || onOwnThread())
        return;
    callbackEnded_.wait(lock, [this, call = calls_] { return calls_ != call; });
}

}  // namespace ZR
