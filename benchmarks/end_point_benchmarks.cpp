#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <climits>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/comparison.h"
#include "benchmarks/operations.h"
#include "common/zrapi_common/zr_end_point_manager.h"

namespace ZR::benchmarks {
namespace {

using Clock = std::chrono::steady_clock;

/// Readable for longer than any measurement, or never. A read takes one off a counter: no other
/// descriptor is read for less, so that what is around the read shows most.
class Source : public ZREndPoint {
  public:
    explicit Source(bool ready) : descriptor_(::eventfd(0, EFD_CLOEXEC | EFD_SEMAPHORE)) {
        constexpr std::uint64_t many = INT_MAX;
        if (ready)
            (void)!::write(descriptor_, &many, sizeof many);
    }
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;
    ~Source() override { ::close(descriptor_); }

    int getReadEndPointID() const override { return descriptor_; }
    int getWriteEndPointID() const override { return descriptor_; }
    bool isConnected() const override { return descriptor_ >= 0; }
    unsigned int reconnect() override { return 1; }

  private:
    int descriptor_;
};

struct Load {
    long ready;
    long idle;
};

using Sources = std::vector<std::shared_ptr<Source>>;

/// The idle ones first: nothing is to be dispatched while there is still something to add.
Sources sourcesOf(const Load& load) {
    Sources sources;
    for (long i = 0; i < load.idle + load.ready; ++i)
        sources.push_back(std::make_shared<Source>(i >= load.idle));
    return sources;
}

bool readOne(int descriptor) {
    std::uint64_t one = 0;
    return ::read(descriptor, &one, sizeof one) == static_cast<ssize_t>(sizeof one);
}

/// Times a number of events. Those of the first round, one for each source, come before: pages and
/// caches are then as they stay.
class Stopwatch {
  public:
    Stopwatch(long first, long events) : first_(first), last_(first + events) {}

    /// To be called after each event; false when no more are wanted.
    bool count() {
        ++seen_;
        if (seen_ == first_)
            start_ = Clock::now();
        if (seen_ == last_)
            seconds_ = std::chrono::duration<double>(Clock::now() - start_).count();
        return seen_ < last_;
    }

    bool isOver() const { return seen_ >= last_; }
    double seconds() const { return seconds_; }

  private:
    long first_;
    long last_;
    long seen_ = 0;
    Clock::time_point start_;
    double seconds_ = -1;
};

/// The loop that an application would write by hand: descriptors as epoll's own data, no
/// registration, nothing that may change.
double secondsBare(const Sources& sources, long ready, long events) {
    const int set = ::epoll_create1(EPOLL_CLOEXEC);
    for (const std::shared_ptr<Source>& source : sources) {
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.fd = source->getReadEndPointID();
        (void)::epoll_ctl(set, EPOLL_CTL_ADD, event.data.fd, &event);
    }
    std::array<epoll_event, 256> batch{};
    Stopwatch stopwatch(ready, events);
    bool wanted = true;
    while (wanted) {
        const int count = ::epoll_wait(set, batch.data(), static_cast<int>(batch.size()), -1);
        wanted = count > 0;
        for (int i = 0; wanted && i < count; ++i)
            wanted = readOne(batch[static_cast<std::size_t>(i)].data.fd) && stopwatch.count();
    }
    ::close(set);
    return stopwatch.seconds();
}

/// Reads as the bare loop does, and tells when all is read.
class ReadingHandler : public ZREndPointHandler {
  public:
    ReadingHandler(long first, long events) : stopwatch_(first, events) {}

    void onEndPointReadable(std::shared_ptr<ZREndPoint> endPoint,
                            ZREndPointManager* /*manager*/) override {
        if (failed_ || stopwatch_.isOver())
            return;
        failed_ = !readOne(endPoint->getReadEndPointID());
        if (failed_ || !stopwatch_.count())
            finish();
    }
    void onEndPointReconnected(std::shared_ptr<ZREndPoint> /*endPoint*/) override {}
    void onEndPointDisconnected(std::shared_ptr<ZREndPoint> /*endPoint*/) override {}

    double awaitSeconds() {
        std::unique_lock<std::mutex> lock(mutex_);
        finished_.wait(lock, [this] { return done_; });
        return stopwatch_.seconds();
    }

  private:
    void finish() {
        const std::lock_guard<std::mutex> lock(mutex_);
        done_ = true;
        finished_.notify_one();
    }

    Stopwatch stopwatch_;
    bool failed_ = false;
    std::mutex mutex_;
    std::condition_variable finished_;
    bool done_ = false;
};

double secondsManaged(const Sources& sources, long ready, long events) {
    ReadingHandler handler(ready, events);
    ZREndPointManager manager;
    for (const std::shared_ptr<Source>& source : sources)
        manager.addEndPoint(source, &handler);
    return handler.awaitSeconds();
}

void compareDispatch(const Load& load) {
    const auto sources = std::make_shared<Sources>();
    // Not before the first batch: most runs are of other operations.
    const auto made = [sources, load]() -> const Sources& {
        if (sources->empty())
            *sources = sourcesOf(load);
        return *sources;
    };
    // Each batch starts a thread, which is not timed: few and long ones spare the reader's time.
    // Two rounds of 256 sources: the first event of a round has paid for its epoll_wait alone.
    constexpr long batchSize = 512;
    constexpr long batches = 300;
    Comparison dispatch;
    dispatch.shortestBatch = batchSize;
    dispatch.longestBatch = batchSize;
    dispatch.samples = batches;
    dispatch.operation = "dispatch/" + std::to_string(load.ready) + " ready of " +
                         std::to_string(load.ready + load.idle);
    dispatch.floor = [made, load](long events) { return secondsBare(made(), load.ready, events); };
    dispatch.library = [made, load](long events) {
        return secondsManaged(made(), load.ready, events);
    };
    registerComparison(std::move(dispatch));
}

}  // namespace

void compareEndPoints() {
    compareDispatch({1, 0});
    compareDispatch({16, 0});
    compareDispatch({256, 0});
    compareDispatch({1, 255});
}

}  // namespace ZR::benchmarks
