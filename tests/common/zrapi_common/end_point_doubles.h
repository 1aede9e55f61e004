#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "common/file_descriptor_internal.h"
#include "common/zrapi_common/zr_end_point_manager.h"

/// End points over real descriptors, and handlers that write down what they are told.

namespace ZR::test {

/// What a test waits for at most. Nothing takes this long unless it never comes.
constexpr std::chrono::seconds limit{30};

/// Opened once, by one thread, for any number of waiting ones.
class Gate {
  public:
    void open();

    /// False when the limit passed.
    bool wait();

  private:
    std::mutex mutex_;
    std::condition_variable opened_;
    bool open_ = false;
};

/// An end point whose answers a test sets, at any time and from any thread.
class TestEndPoint : public ZREndPoint {
  public:
    /// Takes the descriptor and closes it at its end.
    explicit TestEndPoint(int taken) : descriptor(taken) {}
    TestEndPoint(const TestEndPoint&) = delete;
    TestEndPoint& operator=(const TestEndPoint&) = delete;
    ~TestEndPoint() override;

    int getReadEndPointID() const override { return descriptor; }
    int getWriteEndPointID() const override { return descriptor; }
    bool isConnected() const override { return connected; }
    unsigned int reconnect() override;

    /// Waits until reconnect() was called @p count times; false when the limit passed.
    bool waitForTries(std::size_t count);

    /// When reconnect() was called.
    std::vector<std::chrono::steady_clock::time_point> tries() const;

    std::atomic<int> descriptor;
    std::atomic<bool> connected{true};
    std::function<unsigned int()> onReconnect;  ///< set before the end point is added; none: 11
    std::function<void()> onEnd;                ///< called by the destructor

  private:
    mutable std::mutex mutex_;
    std::condition_variable tried_;
    std::vector<std::chrono::steady_clock::time_point> tries_;
};

/// A connection whose reading end belongs to an end point.
struct Line {
    std::shared_ptr<TestEndPoint> endPoint;
    std::unique_ptr<FileDescriptor> writer;  ///< null once hung up

    void send(const std::string& bytes) const;
    void hangUp() { writer.reset(); }
};

Line makePipe();

/// @param type  SOCK_STREAM, SOCK_SEQPACKET or SOCK_DGRAM
Line makeSocketPair(int type);

/// An end point that is readable for ever, whoever reads.
std::shared_ptr<TestEndPoint> makeAlwaysReadable();

/// Reads what fits into @p most bytes.
std::string readSome(const ZREndPoint& endPoint, std::size_t most = 64);

/// Writes down each call, after what the test has set to be done in it.
class RecordingHandler : public ZREndPointHandler {
  public:
    using Action = std::function<void(const std::shared_ptr<ZREndPoint>&, ZREndPointManager*)>;

    void onEndPointReadable(std::shared_ptr<ZREndPoint> endPoint,
                            ZREndPointManager* manager) override;
    void onEndPointReconnected(std::shared_ptr<ZREndPoint> endPoint) override;
    void onEndPointDisconnected(std::shared_ptr<ZREndPoint> endPoint) override;

    /// How often a call was made: "readable", "reconnected", "disconnected".
    std::size_t count(const std::string& call) const;

    /// The calls in their order, separated by blanks.
    std::string calls() const;

    /// What was read by the default action.
    std::string received() const;

    /// Wait until so much was written down; false when the limit passed.
    bool waitFor(const std::string& call, std::size_t times = 1);
    bool waitForBytes(std::size_t bytes);

    Action readable;  ///< set before an end point is added; none: reads up to 64 bytes
    Action reconnected;
    Action disconnected;

  private:
    void record(const std::string& call, const std::string& bytes);

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> calls_;
    std::string received_;
};

/// Expects the process to take next to no processor time. A thread that spins takes all that other
/// programs leave; one that waits takes none.
void expectIdle();

}  // namespace ZR::test
