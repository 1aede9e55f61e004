#include "benchmarks/notification_latency.h"

#include <sys/socket.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#include "benchmarks/notification_line.h"
#include "common/zrapi_common/zr_end_point_manager.h"

namespace ZR::benchmarks {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds longestWait{10};
// The other thread should wait when the notification comes; if it does not yet, no harm is done.
constexpr std::chrono::microseconds settlingTime{200};

/// One thread's word to another, with the time it was given.
class Signal {
  public:
    void give() {
        const Clock::time_point now = Clock::now();
        const std::lock_guard<std::mutex> lock(mutex_);
        time_ = now;
        given_ = true;
        condition_.notify_one();
    }

    /// Waits for the word and takes it; false when it does not come.
    bool take(Clock::time_point& time) {
        std::unique_lock<std::mutex> lock(mutex_);
        const bool came = condition_.wait_for(lock, longestWait, [this] { return given_; });
        given_ = false;
        time = time_;
        return came;
    }

  private:
    std::mutex mutex_;
    std::condition_variable condition_;
    Clock::time_point time_;
    bool given_ = false;
};

/// Sends one notification and returns the seconds until @p arrival was given.
double secondsUntil(Signal& arrival) {
    std::this_thread::sleep_for(settlingTime);
    const Clock::time_point sent = Clock::now();
    Clock::time_point arrived;
    if (!notificationLine()->send(1) || !arrival.take(arrived))
        return -1;
    return std::chrono::duration<double>(arrived - sent).count();
}

/// Receives one notification each time it is told to.
class BareReceiver {
  public:
    BareReceiver() : thread_([this] { run(); }) {}
    BareReceiver(const BareReceiver&) = delete;
    BareReceiver& operator=(const BareReceiver&) = delete;
    ~BareReceiver() {
        ending_ = true;
        start_.give();
        thread_.join();
    }

    double measure() {
        start_.give();
        return secondsUntil(arrival_);
    }

  private:
    void run() {
        const int socket = notificationLine()->socket();
        MessageBuffer message;  // NOLINT(*-init): filled by the kernel
        Clock::time_point time;
        while (!ending_) {
            if (start_.take(time) && !ending_ &&
                ::recv(socket, message.bytes.data(), MessageBuffer::size, 0) > 0)
                arrival_.give();
        }
    }

    std::atomic<bool> ending_{false};
    Signal start_;
    Signal arrival_;
    std::thread thread_;
};

/// Tells when an event comes and keeps none.
class SignallingQueue : public ZREventQueue {
  public:
    explicit SignallingQueue(Signal& arrival) : arrival_(arrival) {}
    void postEvent(ZREvent& /*event*/) override { arrival_.give(); }

  private:
    Signal& arrival_;
};

/// Has the manager wait for one notification each time.
class ManagedReceiver {
  public:
    ManagedReceiver() : queue_(arrival_), dispatcher_(notificationLine()->endPoint(), &queue_) {}

    double measure() {
        manager_.addEndPoint(notificationLine()->endPoint(), &dispatcher_);
        const double seconds = secondsUntil(arrival_);
        manager_.removeEndPoint(notificationLine()->endPoint());
        return seconds;
    }

  private:
    Signal arrival_;
    SignallingQueue queue_;
    Dispatcher dispatcher_;
    ZREndPointManager manager_;
};

/// A second thread makes locks and counters of the whole process dearer: it comes with its first
/// batch, not before.
template <typename Receiver>
Batch latencyOf() {
    const auto receiver = std::make_shared<std::unique_ptr<Receiver>>();
    return [receiver](long /*notifications*/) {
        if (*receiver == nullptr)
            *receiver = std::make_unique<Receiver>();
        return (*receiver)->measure();
    };
}

}  // namespace

Batch bareLatency() {
    return latencyOf<BareReceiver>();
}

Batch managedLatency() {
    return latencyOf<ManagedReceiver>();
}

}  // namespace ZR::benchmarks
