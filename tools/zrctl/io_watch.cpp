#include <algorithm>
#include <csignal>
#include <ctime>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include "tools/zrctl/io_channel.h"
#include "tools/zrctl/output.h"

namespace zrctl {
namespace {

constexpr long long defaultInterval = 200;
constexpr long long longestInterval = 60000;
constexpr long long unlimited = std::numeric_limits<long long>::max();

/// The end that a user asks for by Ctrl-C, or the system by SIGTERM. The signals stay blocked and
/// are only ever taken by waiting for them, so that none is lost and none interrupts a reading.
class EndRequest {
  public:
    EndRequest() {
        sigemptyset(&signals_);
        sigaddset(&signals_, SIGINT);
        sigaddset(&signals_, SIGTERM);
        (void)sigprocmask(SIG_BLOCK, &signals_, nullptr);
    }

    /// @return true when the end was asked for before the time was over
    bool wait(long long milliseconds) const {
        const timespec time{milliseconds / 1000, milliseconds % 1000 * 1000000};
        return sigtimedwait(&signals_, nullptr, &time) > 0;
    }

  private:
    sigset_t signals_;
};

struct WatchedChannel {
    std::unique_ptr<Channel> channel;
    std::optional<int> shown;
};

struct Watch {
    std::vector<WatchedChannel> channels;
    long long interval;
    long long linesLeft;
};

Watch parseWatch(const Words& words) {
    const Arguments arguments(words, {"--interval", "--count"});
    if (arguments.operands().empty())
        throw UsageError("io watch needs a channel; 'zrctl io list' shows them all");
    Watch watch{{}, defaultInterval, unlimited};
    if (const auto interval = arguments.value("--interval"))
        watch.interval = parseNumber(*interval, "interval", 1, longestInterval);
    if (const auto count = arguments.value("--count"))
        watch.linesLeft = parseNumber(*count, "count", 1, std::numeric_limits<int>::max());
    std::vector<ChannelName> names;
    for (const std::string& word : arguments.operands())
        names.push_back(parseChannel(word));
    for (const ChannelName& name : names)
        watch.channels.push_back({std::make_unique<Channel>(name), std::nullopt});
    return watch;
}

/// Reads all channels once and shows what changed. @return the exit status of a reading that failed
int showChanges(Watch& watch, const CommonOptions& common) {
    for (WatchedChannel& watched : watch.channels) {
        const Reading reading = read(*watched.channel);
        if (reading.outcome.succeeded() && reading.value == watched.shown)
            continue;
        watched.shown = reading.value;
        const int status = show(readingReport(*watched.channel, reading), common);
        if (status != statusSuccess || --watch.linesLeft == 0)
            return status;
    }
    return statusSuccess;
}

}  // namespace

int runIoWatch(const Words& words, const CommonOptions& common) {
    const EndRequest endRequest;
    Watch watch = parseWatch(words);
    try {
        for (;;) {
            const int status = showChanges(watch, common);
            if (status != statusSuccess || watch.linesLeft == 0)
                return status;
            if (endRequest.wait(watch.interval) || outputReaderLeft())
                return statusSuccess;
        }
    } catch (const OutputError& error) {
        // A reader that has seen enough ends a watch as Ctrl-C does.
        if (error.readerLeft())
            return statusSuccess;
        throw;
    }
}

}  // namespace zrctl
