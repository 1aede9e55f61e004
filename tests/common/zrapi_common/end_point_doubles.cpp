#include "tests/common/zrapi_common/end_point_doubles.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <thread>
#include <utility>

namespace ZR::test {
namespace {

using Clock = std::chrono::steady_clock;

int checked(int result, const char* what) {
    if (result < 0)
        throw std::runtime_error(what);
    return result;
}

/// On the system's clock: the thread sanitizer does not know the C library's wait on another one.
std::chrono::system_clock::time_point inTheEnd() {
    return std::chrono::system_clock::now() + limit;
}

Line lineOf(const std::array<int, 2>& ends) {
    return {std::make_shared<TestEndPoint>(ends[0]), std::make_unique<FileDescriptor>(ends[1])};
}

/// Processor time of the whole process up to now.
std::chrono::microseconds processorTime() {
    rusage usage{};
    checked(::getrusage(RUSAGE_SELF, &usage), "getrusage");
    const auto sum = [](const timeval& time) {
        return std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec);
    };
    return sum(usage.ru_utime) + sum(usage.ru_stime);
}

}  // namespace

void Gate::open() {
    const std::lock_guard<std::mutex> lock(mutex_);
    open_ = true;
    opened_.notify_all();
}

bool Gate::wait() {
    std::unique_lock<std::mutex> lock(mutex_);
    return opened_.wait_until(lock, inTheEnd(), [this] { return open_; });
}

TestEndPoint::~TestEndPoint() {
    if (onEnd)
        onEnd();
    if (descriptor >= 0)
        ::close(descriptor);
}

unsigned int TestEndPoint::reconnect() {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        tries_.push_back(Clock::now());
        tried_.notify_all();
    }
    constexpr unsigned int notSupported = 11;
    return onReconnect ? onReconnect() : notSupported;
}

bool TestEndPoint::waitForTries(std::size_t count) {
    std::unique_lock<std::mutex> lock(mutex_);
    return tried_.wait_until(lock, inTheEnd(), [&] { return tries_.size() >= count; });
}

std::vector<Clock::time_point> TestEndPoint::tries() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return tries_;
}

void Line::send(const std::string& bytes) const {
    if (::write(writer->get(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
        throw std::runtime_error("write");
}

Line makePipe() {
    std::array<int, 2> ends{};
    checked(::pipe2(ends.data(), O_CLOEXEC), "pipe2");
    return lineOf(ends);
}

Line makeSocketPair(int type) {
    std::array<int, 2> ends{};
    checked(::socketpair(AF_UNIX, type | SOCK_CLOEXEC, 0, ends.data()), "socketpair");
    return lineOf(ends);
}

std::shared_ptr<TestEndPoint> makeAlwaysReadable() {
    return std::make_shared<TestEndPoint>(checked(::eventfd(1, EFD_CLOEXEC), "eventfd"));
}

std::string readSome(const ZREndPoint& endPoint, std::size_t most) {
    std::array<char, 64> buffer{};
    const ssize_t count =
        ::read(endPoint.getReadEndPointID(), buffer.data(), std::min(most, buffer.size()));
    return {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
}

void RecordingHandler::onEndPointReadable(std::shared_ptr<ZREndPoint> endPoint,
                                          ZREndPointManager* manager) {
    std::string bytes;
    if (readable)
        readable(endPoint, manager);
    else
        bytes = readSome(*endPoint);
    record("readable", bytes);
}

void RecordingHandler::onEndPointReconnected(std::shared_ptr<ZREndPoint> endPoint) {
    if (reconnected)
        reconnected(endPoint, nullptr);
    record("reconnected", {});
}

void RecordingHandler::onEndPointDisconnected(std::shared_ptr<ZREndPoint> endPoint) {
    if (disconnected)
        disconnected(endPoint, nullptr);
    record("disconnected", {});
}

void RecordingHandler::record(const std::string& call, const std::string& bytes) {
    const std::lock_guard<std::mutex> lock(mutex_);
    calls_.push_back(call);
    received_ += bytes;
    changed_.notify_all();
}

std::size_t RecordingHandler::count(const std::string& call) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return static_cast<std::size_t>(std::count(calls_.begin(), calls_.end(), call));
}

std::string RecordingHandler::calls() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::string list;
    for (const std::string& call : calls_)
        list += (list.empty() ? "" : " ") + call;
    return list;
}

std::string RecordingHandler::received() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return received_;
}

bool RecordingHandler::waitFor(const std::string& call, std::size_t times) {
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_until(lock, inTheEnd(), [&] {
        return std::count(calls_.begin(), calls_.end(), call) >= static_cast<std::ptrdiff_t>(times);
    });
}

bool RecordingHandler::waitForBytes(std::size_t bytes) {
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_until(lock, inTheEnd(), [&] { return received_.size() >= bytes; });
}

void expectIdle() {
    constexpr std::chrono::milliseconds idleTime{300};
    const std::chrono::microseconds before = processorTime();
    std::this_thread::sleep_for(idleTime);
    EXPECT_LT(processorTime() - before, idleTime / 10);
}

}  // namespace ZR::test
