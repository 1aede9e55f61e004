#include "hardware/netlink/event_interface.h"

#include <linux/genetlink.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "common/zrapi_common/zr_end_point_manager.h"
#include "common/zrapi_common/zr_event_queue.h"
#include "hardware/netlink/zr_netlink.h"
#include "tools/zrctl/command.h"
#include "tools/zrctl/end_request.h"
#include "tools/zrctl/event_sockets.h"
#include "tools/zrctl/event_text.h"
#include "tools/zrctl/output.h"

namespace zrctl {

const char* const eventsHelp =
    R"(Usage: zrctl events [FAMILY...] [--count N] [--time-limit SECONDS] [--json]

Shows what the drivers notify, until Ctrl-C, until N events are written, or until
the time is over.

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
    if (request.families.empty())
        request.families = known;
    if (const auto count = arguments.value("--count"))
        request.count = parseNumber(*count, "count", 1, highest);
    if (const auto seconds = arguments.value("--time-limit"))
        request.seconds = parseNumber(*seconds, "time limit", 1, highest);
    return request;
}

/// Tells whether a driver has registered its family. The dispatcher does not say it of its own
/// connections.
bool familyExists(const std::string& family) {
    int familyId = 0;
    int groupId = 0;
    char groupName[GENL_NAMSIZ];
    const int socket = event_if_connect(family.c_str(), &familyId, groupName, &groupId);
    if (socket != -1)
        event_if_disconnect(socket);
    return socket != -1;
}

void tellMissing(const std::string& family, const CommonOptions& common) {
    const std::string text = family + ": no such notifications; check that the driver is loaded";
    printError(text);
    if (common.json)
        print(JsonObject().addText("family", family).addText("error", text).text() + '\n');
}

/// @return how many families are connected to
int connect(const Words& families, const CommonOptions& common) {
    int connected = 0;
    for (const std::string& family : families) {
        if (!familyExists(family)) {
            tellMissing(family, common);
            continue;
        }
        (void)ZR::ZRNetlink::instance()->addFamily(family);
        ++connected;
    }
    return connected;
}

/// Shows events until the end comes.
void showEvents(ZR::ZREventQueue& queue, const EventsRequest& request, const EndRequest& endRequest,
                const CommonOptions& common) {
    const Deadline deadline(request.seconds);
    long long left = request.count;
    ZR::ZREvent event;
    for (;;) {
        std::vector<pollfd> ready{{queue.getEventDescriptor(), POLLIN, 0}};
        const bool end = endRequest.wait(ready, deadline.left()) || deadline.isOver();
        std::string text;
        for (; left > 0 && queue.waitForEvent(event, 0); --left)
            text += common.json ? eventDocument(event) : eventLine(event);
        if (!text.empty())
            print(text);
        if (end || left == 0)
            return;
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
    ZR::ZREndPointManager manager;
    ZR::ZRNetlink& dispatcher = *ZR::ZRNetlink::instance();
    dispatcher.setEndPointManager(&manager);
    dispatcher.addEventQueue(&queue);
    if (connect(request.families, common) == 0)
        return statusFailure;
    enlargeEventSockets();
    dispatcher.addAllEndpointsToEndpointManager();
    try {
        showEvents(queue, request, endRequest, common);
        return reportLoss(common);
    } catch (const OutputError& error) {
        // A reader that has seen enough ends it as Ctrl-C does.
        if (error.readerLeft())
            return statusSuccess;
        throw;
    }
}

}  // namespace zrctl
