#include <algorithm>
#include <utility>

#include "common/zrapi_common/zr_end_point_loop_internal.h"

namespace ZR {

void ZREndPointManager::Loop::add(std::shared_ptr<ZREndPoint> endPoint,
                                  ZREndPointHandler* handler) {
    const Condition condition = conditionOf(*endPoint, false);
    Lock lock(mutex_);
    Registration* registration = find(endPoint.get());
    const bool known = registration != nullptr;
    if (!known) {
        registration = &freePlace();
        registration->endPoint = std::move(endPoint);
    }
    registration->handler = handler;
    if (condition.usable() && registration->descriptor != condition.descriptor) {
        unwatch(*registration);
        if (!watch(*registration, condition.descriptor))
            retryIn(*registration, firstReconnectDelay);
    } else if (!known) {
        retryIn(*registration, firstReconnectDelay);
    }
    if (known)
        awaitCallback(lock, registration->endPoint.get());
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
    registration.closed = false;
    registration.fault = {};
    registration.due = never;
    return true;
}

void ZREndPointManager::Loop::unwatch(Registration& registration) {
    ++registration.generation;
    if (registration.descriptor < 0 || set_.unwatch(std::exchange(registration.descriptor, -1)))
        return;
    stale_ = true;
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

void ZREndPointManager::Loop::wakeUnlessOwnThread() const {
    if (std::this_thread::get_id() != thread_.get_id())
        set_.wake();
}

void ZREndPointManager::Loop::awaitCallback(Lock& lock, const ZREndPoint* endPoint) {
    if (called_ != endPoint || std::this_thread::get_id() == thread_.get_id())
        return;
    callbackEnded_.wait(lock, [this, call = calls_] { return calls_ != call; });
}

}  // namespace ZR
