#include "benchmarks/video/thread_time.h"

#include <gst/gst.h>
#include <poll.h>
#include <sys/eventfd.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>

#include "common/file_descriptor_internal.h"
#include "hardware/video_input/gstreamer_video_input/functional/gst_handles_internal.h"

namespace ZR::benchmarks {
namespace {

constexpr const char* ownThreads = "/proc/self/task";
constexpr const char* ownStatus = "/proc/self/status";
constexpr const char* anonymousField = "RssAnon:";
constexpr int messageWait = 100;  // ms
constexpr std::chrono::milliseconds walkPause(25);

std::chrono::nanoseconds timeOfCaller() {
    timespec time{};
    (void)::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

}  // namespace

std::chrono::nanoseconds threadTime(const std::string& name) {
    for (const auto& thread : std::filesystem::directory_iterator(ownThreads)) {
        std::string found;
        std::getline(std::ifstream(thread.path() / "comm"), found);
        long long nanoseconds = 0;
        if (found == name && std::ifstream(thread.path() / "schedstat") >> nanoseconds)
            return std::chrono::nanoseconds(nanoseconds);
    }
    return {};
}

std::chrono::nanoseconds idleWaits(int inputs, std::chrono::milliseconds time, const Wait& wait) {
    const auto end = std::chrono::steady_clock::now() + time;
    const auto before = timeOfCaller();
    while (std::chrono::steady_clock::now() < end) {
        for (int input = 0; input < inputs; ++input)
            wait();
        std::this_thread::sleep_for(walkPause);
    }
    return timeOfCaller() - before;
}

Wait bareWait() {
    return [silent = std::make_shared<FileDescriptor>(::eventfd(0, EFD_CLOEXEC))] {
        pollfd waited = {silent->get(), POLLIN, 0};
        (void)::poll(&waited, 1, messageWait);
    };
}

Wait busWait() {
    return [bus = std::shared_ptr<GstBus>(gst_bus_new(), DropGstObject())] {
        (void)gst_bus_timed_pop_filtered(bus.get(), messageWait * GST_MSECOND, GST_MESSAGE_ERROR);
    };
}

long anonymousMemory() {
    std::ifstream status(ownStatus);
    std::string field;
    long kibibytes = 0;
    while (status >> field) {
        if (field == anonymousField && status >> kibibytes)
            return kibibytes;
    }
    return 0;
}

}  // namespace ZR::benchmarks
