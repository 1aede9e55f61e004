#include <cerrno>
#include <memory>
#include <string>

#include "hardware/netlink/event_interface.h"
#include "hardware/netlink/zr_netlink.h"
#include "tests/hardware/fault_injection/fault_case.h"
#include "tests/hardware/netlink/dispatcher.h"
#include "tests/hardware/netlink/message.h"
#include "tests/hardware/netlink/private_network.h"

namespace ZR::test {
namespace {

constexpr int family = 30;

/// What the operation works on, built before it.
struct Driver {
    SocketPair sockets;
    EventLog queue;
    std::shared_ptr<ZRNetlinkEndPoint> endPoint;
};

Driver* driver = nullptr;

void nothing() {}

std::string connect() {
    int familyId = -2;
    int groupId = -2;
    char groupName[MessageBuffer::size] = "none";
    errno = 0;
    const int fd = event_if_connect(controllerName, &familyId, groupName, &groupId);
    return (fd < 0 ? "failed " : "connected ") + std::to_string(familyId) + ' ' + groupName + ' ' +
           std::to_string(groupId);
}

FaultCase connecting() {
    const std::string line = " failed with error {error} ({reason})\n";
    const std::string before = "failed -2 none -2 | ";
    const std::string unresolved =
        "failed -1 none -2 | Retrieving family and multicast ID from driver" + line;
    return {"event_if_connect",
            nothing,
            nullptr,
            connect,
            nullptr,
            "connected 16 notify 16",
            {fails("socket", before + "Creating generic netlink socket" + line),
             fails("bind", before + "Binding to generic netlink socket" + line),
             fails("setsockopt", before + "Connecting to CTRL multicast group" + line),
             fails("sendto", unresolved), fails("recvfrom", unresolved),
             fails("setsockopt",
                   "failed 16 notify 16 | Connecting to multicast group of driver" + line)}};
}

void prepareNotifications() {
    driver = new Driver;
    driver->endPoint = makeEndPoint("ZR_DI", family, driver->sockets.reader());
    addTo(*ZRNetlink::instance(), driver->endPoint);
    ZRNetlink::instance()->addEventQueue(&driver->queue);
    for (int i = 0; i < 2; ++i)
        driver->sockets.send(
            message(family, attribute(1, 1U) + attribute(2, 0U) + attribute(3, 1U)));
}

std::string takeNotification() {
    driver->queue.events.clear();
    ZRNetlink::instance()->onEndPointReadable(driver->endPoint, nullptr);
    return std::to_string(driver->queue.events.size()) + " events";
}

FaultCase takingNotification() {
    return {"taking_a_notification",
            nothing,
            prepareNotifications,
            takeNotification,
            nullptr,
            "1 events",
            {fails("recvfrom", "0 events")}};
}

}  // namespace

std::vector<FaultCase> netlinkCases() {
    return {connecting(), takingNotification()};
}

}  // namespace ZR::test
