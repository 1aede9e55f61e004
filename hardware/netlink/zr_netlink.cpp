#include "hardware/netlink/zr_netlink.h"

#include <sys/socket.h>

#include <algorithm>
#include <exception>
#include <string_view>

#include "common/zrapi_common/zr_event.h"
#include "common/zrapi_common/zr_result.h"
#include "hardware/netlink/event_interface.h"
#include "hardware/netlink/netlink_message_internal.h"
#include "hardware/netlink/notification_internal.h"
#include "hardware/print_line_internal.h"

namespace ZR {
namespace {

constexpr std::string_view analogFamily = "ANALOG";
constexpr std::string_view digitalInputFamily = "ZR_DI";
constexpr std::string_view digitalOutputFamily = "ZR_DO";

constexpr int notificationKind = 6;
constexpr int notificationCode = 900;

/// Takes one message off a socket. Without waiting: a false alarm must not hold the manager up.
bool receiveNotification(int socket, int familyId, MessageBuffer& message,
                         Notification& notification) {
    const ssize_t received =
        ::recv(socket, message.bytes.data(), MessageBuffer::size, MSG_DONTWAIT);
    return parseNotification(message, received, familyId, notification);
}

}  // namespace

ZRNetlinkEndPoint::ZRNetlinkEndPoint(const std::string& family) : familyName(family) {
    // The kernel's group names are shorter than its GENL_NAMSIZ; nothing in a message is longer
    // than the message.
    char groupName[MessageBuffer::size];
    int groupId = 0;
    socketFd = event_if_connect(familyName.c_str(), &familyId, groupName, &groupId);
    connected = socketFd != -1;
    if (!connected)
        printLine({"Connecting to generic netlink event interface ", familyName,
                   " failed, disabling event handling"});
}

// Kept: the socket stays open, see the header.
ZRNetlinkEndPoint::~ZRNetlinkEndPoint() = default;

int ZRNetlinkEndPoint::getReadEndPointID() const {
    return socketFd;
}

int ZRNetlinkEndPoint::getWriteEndPointID() const {
    return socketFd;
}

bool ZRNetlinkEndPoint::isConnected() const {
    return connected;
}

unsigned int ZRNetlinkEndPoint::reconnect() {
    return ResultNotSupported;
}

ZRNetlink::ZRNetlink() = default;
ZRNetlink::~ZRNetlink() = default;

ZRNetlink* ZRNetlink::instance() {
    static ZRNetlink dispatcher;
    return &dispatcher;
}

const char* ZRNetlink::getFamilyName(int index) {
    switch (index) {
        case 0:
            return analogFamily.data();
        case 1:
            return digitalInputFamily.data();
        case 2:
            return digitalOutputFamily.data();
        default:
            return nullptr;
    }
}

unsigned int ZRNetlink::addFamily(const std::string& name) {
    if (endPoints.count(name) != 0)
        return ResultAlreadyPresent;
    const auto endPoint = std::make_shared<ZRNetlinkEndPoint>(name);
    endPoints.emplace(name, endPoint);
    endPointSet.insert(endPoint);
    return ResultSuccess;
}

void ZRNetlink::addAllEndpointsToEndpointManager() {
    if (endPointManager == nullptr)
        return;
    for (const auto& endPoint : endPointSet)
        endPointManager->addEndPoint(endPoint, this);
}

void ZRNetlink::addEventQueue(ZREventQueue* queue) {
    eventQueue = queue;
}

void ZRNetlink::setEndPointManager(ZREndPointManager* manager) {
    endPointManager = manager;
}

void ZRNetlink::onEndPointReadable(std::shared_ptr<ZREndPoint> endPoint,
                                   ZREndPointManager* /*manager*/) {
    // Nothing but our own end points is in the set: null and strangers are not found. There are a
    // few of them, so looking at each costs less than a cast and a search.
    const auto known = std::find(endPointSet.begin(), endPointSet.end(), endPoint);
    if (known == endPointSet.end())
        return;
    const std::string_view family = (*known)->familyName;
    if (family == digitalInputFamily)
        handleDigitalInputEndpoint(*known);
    else if (family == digitalOutputFamily)
        handleDigitalOutputEndpoint(*known);
    else if (family == analogFamily)
        handleAnalogInputEndpoint(*known);
}

void ZRNetlink::onEndPointReconnected(std::shared_ptr<ZREndPoint> /*endPoint*/) {}

void ZRNetlink::onEndPointDisconnected(std::shared_ptr<ZREndPoint> /*endPoint*/) {}

// By value, as callers know these operations: a reference would change their names in the library.
// NOLINTBEGIN(performance-unnecessary-value-param)

void ZRNetlink::handleDigitalInputEndpoint(std::shared_ptr<ZRNetlinkEndPoint> endPoint) {
    MessageBuffer message;  // NOLINT(*-init): filled by the kernel
    Notification notification;
    if (receiveNotification(endPoint->socketFd, endPoint->familyId, message, notification))
        post(digitalInputValues(notification));
}

void ZRNetlink::handleDigitalOutputEndpoint(std::shared_ptr<ZRNetlinkEndPoint> endPoint) {
    MessageBuffer message;  // NOLINT(*-init): filled by the kernel
    Notification notification;
    if (receiveNotification(endPoint->socketFd, endPoint->familyId, message, notification))
        post(digitalOutputValues(notification));
}

void ZRNetlink::handleAnalogInputEndpoint(std::shared_ptr<ZRNetlinkEndPoint> endPoint) {
    MessageBuffer message;  // NOLINT(*-init): filled by the kernel
    Notification notification;
    NotificationValues values{};
    if (receiveNotification(endPoint->socketFd, endPoint->familyId, message, notification) &&
        analogValues(notification, values))
        post(values);
}

// NOLINTEND(performance-unnecessary-value-param)

void ZRNetlink::post(const NotificationValues& values) {
    if (eventQueue == nullptr)
        return;
    ZRSignal signal;
    signal.kind = notificationKind;
    signal.code = notificationCode;
    signal.value1 = values.value1;
    signal.value2 = values.value2;
    try {
        eventQueue->postEvent(signal);
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): the manager's thread goes on
    }
}

}  // namespace ZR
