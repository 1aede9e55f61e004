#include <algorithm>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include "tools/zrctl/end_request.h"
#include "tools/zrctl/io_channel.h"
#include "tools/zrctl/output.h"

namespace zrctl {
namespace {

constexpr long long defaultInterval = 200;
constexpr long long longestInterval = 60000;
constexpr long long unlimited = std::numeric_limits<long long>::max();

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
            if (endRequest.wait(static_cast<int>(watch.interval)))
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
