// Shows what the drivers of inputs and outputs notify: watch_events COUNT

#include <cstdlib>
#include <iostream>
#include <string>

#include <common/zrapi_common/zr_end_point_manager.h>
#include <common/zrapi_common/zr_event.h>
#include <common/zrapi_common/zr_event_queue.h>
#include <hardware/netlink/zr_netlink.h>

namespace {

constexpr int notificationKind = 6;
constexpr int notificationCode = 900;
constexpr int longestWait = 60000;  // milliseconds

}  // namespace

int main(int argc, char** argv) {
    const std::string word = argc == 2 ? argv[1] : "";
    const int count = std::atoi(word.c_str());
    if (count <= 0 || word != std::to_string(count)) {
        std::cerr << "usage: watch_events COUNT\n";
        return 2;
    }

    ZR::ZRNetlink& dispatcher = *ZR::ZRNetlink::instance();
    // The manager is made last and ends first: its thread posts to the queue.
    ZR::ZREventQueue queue;
    ZR::ZREndPointManager manager;
    dispatcher.setEndPointManager(&manager);
    dispatcher.addEventQueue(&queue);
    // A driver that is missing is told of on standard output, and the others are heard.
    for (int i = 0; const char* const family = ZR::ZRNetlink::getFamilyName(i); ++i)
        (void)dispatcher.addFamily(family);
    dispatcher.addAllEndpointsToEndpointManager();
    std::cout << "watching" << std::endl;

    // An application with an event loop watches queue.getEventDescriptor() instead.
    ZR::ZREvent event;
    for (int left = count; left > 0;) {
        if (!queue.waitForEvent(event, longestWait)) {
            std::cerr << "nothing changed for a minute\n";
            return 1;
        }
        if (event.kind != notificationKind || event.code != notificationCode)
            continue;
        std::cout << "channel 0x" << std::hex << event.value1 << std::dec << " is " << event.value2
                  << std::endl;
        --left;
    }
    return 0;
}
