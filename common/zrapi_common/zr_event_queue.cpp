#include "common/zrapi_common/zr_event_queue.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <system_error>
#include <utility>

#include "common/file_descriptor_internal.h"

namespace ZR {
namespace {

using Clock = std::chrono::steady_clock;

/// The end of a wait; negative times have none.
class Deadline {
  public:
    explicit Deadline(int timeoutMilliseconds)
        : unlimited_(timeoutMilliseconds < 0),
          end_(Clock::now() + std::chrono::milliseconds(timeoutMilliseconds)) {}

    /// The time left as poll() takes it, rounded up.
    int milliseconds() const {
        if (unlimited_)
            return -1;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end_ - Clock::now());
        return static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0));
    }

  private:
    bool unlimited_;
    Clock::time_point end_;
};

}  // namespace

/// The events, and an eventfd that counts 1 while there are any and 0 while there are none. It is
/// touched at these two edges only.
class __attribute__((visibility("hidden"))) ZREventQueue::Storage {
  public:
    Storage() : readable_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
        if (!readable_.isOpen())
            throw std::system_error(errno, std::generic_category(), "eventfd");
    }

    void post(const ZREvent& event) {
        const std::lock_guard<std::mutex> lock(mutex_);
        events_.push_back(event);
        if (events_.size() > 1)
            return;
        constexpr std::uint64_t once = 1;
        (void)::write(readable_.get(), &once, sizeof once);
    }

    bool take(ZREvent& event) {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (events_.empty())
            return false;
        // The text is handed over, so that no copy can fail for want of memory.
        std::string name = std::move(events_.front().name);
        events_.front().name.clear();
        event = events_.front();
        event.name = std::move(name);
        events_.pop_front();
        if (!events_.empty())
            return true;
        std::uint64_t count = 0;
        (void)::read(readable_.get(), &count, sizeof count);
        return true;
    }

    int descriptor() const { return readable_.get(); }

  private:
    FileDescriptor readable_;
    std::mutex mutex_;
    std::deque<ZREvent> events_;
};

ZREventQueue::ZREventQueue() : storage_(std::make_unique<Storage>()) {}

ZREventQueue::~ZREventQueue() = default;

void ZREventQueue::postEvent(ZREvent& event) {
    storage_->post(event);
}

bool ZREventQueue::waitForEvent(ZREvent& event, int timeoutMilliseconds) {
    if (storage_->take(event))
        return true;
    if (timeoutMilliseconds == 0)
        return false;
    const Deadline deadline(timeoutMilliseconds);
    for (;;) {
        // Awake may mean an event, one that another thread took meanwhile, or a signal.
        const int left = deadline.milliseconds();
        pollfd question{storage_->descriptor(), POLLIN, 0};
        const int ready = ::poll(&question, 1, left);
        // A wait that is refused would be refused again.
        const bool refused = ready < 0 && errno != EINTR;
        if (storage_->take(event))
            return true;
        if (ready == 0 || left == 0 || refused)
            return false;
    }
}

int ZREventQueue::getEventDescriptor() const {
    return storage_->descriptor();
}

}  // namespace ZR
