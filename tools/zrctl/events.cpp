#include "hardware/netlink/zr_netlink.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/zrapi_common/zr_end_point_manager.h"
#include "common/zrapi_common/zr_event_queue.h"
#include "tools/zrctl/command.h"
#include "tools/zrctl/end_request.h"
#include "tools/zrctl/event_sockets.h"
#include "tools/zrctl/event_text.h"
#include "tools/zrctl/output.h"

namespace zrctl {

const char* const eventsHelp =
    R"(Usage: zrctl events [FAMILY...] [--count N] [--time-limit SECONDS] [--json]

Shows what the drivers notify, until Ctrl-C, until N events are written, or until
the time is over. Standard error tells which drivers it listens to.

Families: ZR_DI digital inputs, ZR_DO digital outputs, ANALOG analog inputs and
sensors; all three without a name. A family whose driver is missing gives a line
on standard error, and the others are shown. It is not looked for again: a driver
that comes later is seen by the next zrctl only.

An event is shown as the channel and its new value, as 'zrctl io' shows them.

What the library does, and zrctl shows as it is:
  An event carries the number of a channel and a value, not the family. 4, 5 and
  6 are shown as power, temperature and light; a fifth to seventh digital input,
  which the terminal has not got, would look the same. So would a fourth digital
  output look as di4.
  A channel that the driver left out is shown as 0xffffffff, a digital value as -.
  Light is at most 1000. Readings that the driver calls invalid and messages that
  do not hold together give no event.
  Of a burst that is too long for the kernel's buffer, which zrctl enlarges, a
  part is lost. zrctl then says how much at the end and fails.
)";

namespace {

constexpr std::size_t muchText = 65536;
constexpr long long longestRest = 10;  // seconds
constexpr int shortWait = 10;          // milliseconds

struct EventsRequest {
    Words families;
    long long count = std::numeric_limits<long long>::max();
    std::optional<long long> seconds;
};

Words allFamilies() {
    Words families;
    for (int i = 0; const char* const name = ZR::ZRNetlink::getFamilyName(i); ++i)
        families.emplace_back(name);
    return families;
}

EventsRequest parseEvents(const Words& words) {
    constexpr int highest = std::numeric_limits<int>::max();
    const Arguments arguments(words, {"--count", "--time-limit"});
    const Words known = allFamilies();
    EventsRequest request{arguments.operands(), std::numeric_limits<long long>::max(), {}};
    for (const std::string& family : request.families) {
        if (std::find(known.begin(), known.end(), family) == known.end())
            throw UsageError("no family " + quote(family) + "; give ZR_DI, ZR_DO or ANALOG");
    }
    std::sort(request.families.begin(), request.families.end());
    request.families.erase(std::unique(request.families.begin(), request.families.end()),
                           request.families.end());
    if (request.families.empty())
        request.families = known;
    if (const auto count = arguments.value("--count"))
        request.count = parseNumber(*count, "count", 1, highest);
    if (const auto seconds = arguments.value("--time-limit"))
        request.seconds = parseNumber(*seconds, "time limit", 1, highest);
    return request;
}

/// @return false when the driver has not registered its family. The dispatcher keeps that to itself,
///         but has then opened no socket.
bool connect(const std::string& family) {
    const std::size_t before = countEventSockets();
    (void)ZR::ZRNetlink::instance()->addFamily(family);
    return countEventSockets() > before;
}

void tellMissing(const std::string& family, const CommonOptions& common) {
    const std::string text = family + ": no such notifications; check that the driver is loaded";
    printError(text);
    if (common.json)
        print(JsonObject().addText("family", family).addText("error", text).text() + '\n');
}

/// @return false when no family is there
bool connectAll(const Words& families, const CommonOptions& common) {
    std::string connected;
    for (const std::string& family : families) {
        if (connect(family))
            connected += (connected.empty() ? "" : ", ") + family;
        else
            tellMissing(family, common);
    }
    if (!connected.empty())
        printError("listening to " + connected);
    return !connected.empty();
}

/// Shows the events that wait, as many as are wanted or fit into one write.
/// @return false when none did
bool showWaiting(ZR::ZREventQueue& queue, long long& wanted, const CommonOptions& common) {
    std::string text;
    ZR::ZREvent event;
    while (wanted > 0 && text.size() < muchText && queue.waitForEvent(event, 0)) {
        text += common.json ? eventDocument(event) : eventLine(event);
        --wanted;
    }
    if (!text.empty())
        print(text);
    return !text.empty();
}

/// Shows events until the end comes.
void showUntilEnd(ZR::ZREventQueue& queue, long long& wanted, const Deadline& deadline,
                  const EndRequest& endRequest, const CommonOptions& common) {
    bool end = false;
    while (wanted > 0 && !end) {
        std::vector<pollfd> ready{{queue.getEventDescriptor(), POLLIN, 0}};
        end = endRequest.wait(ready, deadline.left()) || deadline.isOver();
        (void)showWaiting(queue, wanted, common);
    }
}

/// Shows what had come before the end and the manager has yet to take; a flood that goes on is not
/// waited for. Ends the manager: what it took last is in the queue then.
void showRest(ZR::ZREventQueue& queue, long long& wanted,
              std::unique_ptr<ZR::ZREndPointManager> manager, const CommonOptions& common) {
    const Deadline deadline(longestRest);
    while (wanted > 0 && eventsWait() && !deadline.isOver()) {
        // Not for long: of what waits there may come no event.
        pollfd ready{queue.getEventDescriptor(), POLLIN, 0};
        (void)::poll(&ready, 1, shortWait);
        (void)showWaiting(queue, wanted, common);
    }
    manager.reset();
    while (showWaiting(queue, wanted, common)) {
    }
}

/// @return the exit status
int reportLoss(const CommonOptions& common) {
    const unsigned int lost = lostEvents();
    if (lost == 0)
        return statusSuccess;
    const std::string text =
        std::to_string(lost) + " events were lost: they came faster than they could be taken";
    printError(text);
    if (common.json)
        print(JsonObject().addNumber("lost", lost).addText("error", text).text() + '\n');
    return statusFailure;
}

}  // namespace

int runEvents(const Words& words, const CommonOptions& common) {
    const EventsRequest request = parseEvents(words);
    // Before the manager's thread, which takes over what is blocked.
    const EndRequest endRequest;
    ZR::ZREventQueue queue;
    auto manager = std::make_unique<ZR::ZREndPointManager>();
    ZR::ZRNetlink& dispatcher = *ZR::ZRNetlink::instance();
    dispatcher.setEndPointManager(manager.get());
    dispatcher.addEventQueue(&queue);
    if (!connectAll(request.families, common))
        return statusFailure;
    enlargeEventSockets();
    dispatcher.addAllEndpointsToEndpointManager();
    try {
        long long wanted = request.count;
        showUntilEnd(queue, wanted, Deadline(request.seconds), endRequest, common);
        showRest(queue, wanted, std::move(manager), common);
        return reportLoss(common);
    } catch (const OutputError& error) {
        // A reader that has seen enough ends it as Ctrl-C does.
        if (error.readerLeft())
            return statusSuccess;
        throw;
    }
}

}  // namespace zrctl
