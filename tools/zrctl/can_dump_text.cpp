#include "tools/zrctl/can_dump_text.h"

#include <linux/can.h>
#include <linux/can/error.h>

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>

namespace zrctl {
namespace {

constexpr std::int64_t microsecondsPerSecond = 1000000;

std::string frameDocument(const CanPort& port, const CapturedFrame& frame) {
    const ZR::ZRCANMessage& message = frame.message;
    const bool extended = (message.id & CAN_EFF_FLAG) != 0;
    JsonObject json = canPortJson(port);
    json.addNumber("timeMicroseconds", frame.time)
        .addText("frame", canFrameText(message))
        .addNumber("id", message.id & (extended ? CAN_EFF_MASK : CAN_SFF_MASK))
        .addBool("extended", extended)
        .addBool("remote", (message.id & CAN_RTR_FLAG) != 0)
        .addNumber("length", message.length)
        .addText("data", canDataText(message));
    return json.text() + '\n';
}

}  // namespace

std::string frameLine(const CanPort& port, const CapturedFrame& frame, bool json) {
    if (json)
        return frameDocument(port, frame);
    char time[40];
    (void)std::snprintf(time, sizeof time, "(%010" PRId64 ".%06" PRId64 ") ",
                        frame.time / microsecondsPerSecond, frame.time % microsecondsPerSecond);
    return time + port.interface() + ' ' + canFrameText(frame.message) + '\n';
}

bool isBusCondition(const CapturedFrame& frame) {
    return (frame.message.id & CAN_ERR_FLAG) != 0;
}

std::string busConditionText(const CapturedFrame& frame) {
    const std::uint32_t id = frame.message.id;
    const unsigned int controller = (id & CAN_ERR_CRTL) != 0 ? frame.message.data[1] : 0U;
    if ((id & CAN_ERR_BUSOFF) != 0)
        return "bus-off; frames follow once the controller is restarted";
    if ((id & CAN_ERR_RESTARTED) != 0)
        return "the controller was restarted";
    if ((controller & (CAN_ERR_CRTL_RX_OVERFLOW | CAN_ERR_CRTL_TX_OVERFLOW)) != 0)
        return "the controller's own buffer was full; it lost frames";
    if ((controller & (CAN_ERR_CRTL_RX_PASSIVE | CAN_ERR_CRTL_TX_PASSIVE)) != 0)
        return "error-passive; check wiring and bit rate";
    if ((controller & (CAN_ERR_CRTL_RX_WARNING | CAN_ERR_CRTL_TX_WARNING)) != 0)
        return "error-warning; check wiring and bit rate";
    if ((controller & CAN_ERR_CRTL_ACTIVE) != 0)
        return "error-active again";
    return "the controller reports " + canFrameText(frame.message);
}

std::string portErrorText(int error) {
    if (error == ENETDOWN)
        return "the port is down; frames follow once it is up";
    if (error == ENODEV)
        return "the interface was removed";
    return std::string("reading failed: ") + std::strerror(error);
}

}  // namespace zrctl
