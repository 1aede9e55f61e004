#pragma once

#include <libsocketcan.h>
#include <linux/can.h>

#include <cstdint>
#include <cstring>
#include <exception>
#include <string>

#include "common/zrapi_utility/zr_to_string.h"
#include "hardware/can/zr_can_raw.h"

namespace ZR {

/// When the kernel restarts a controller by itself after a bus-off.
constexpr unsigned int restartMilliseconds = 1000;

/// The interface of a 1-based port; port 0 gives "can-1", which no interface is called.
/// A name that the text service cannot make is empty, which is no interface's either.
inline std::string canInterface(unsigned int port) {
    try {
        return "can" + toString(static_cast<int>(port - 1));
    } catch (const std::exception&) {
        return {};
    }
}

/// The state code of a state that libsocketcan read.
constexpr unsigned int stateCode(int state) {
    constexpr unsigned int unknown = 255;
    switch (state) {
        case CAN_STATE_ERROR_ACTIVE:
            return 1;
        case CAN_STATE_ERROR_WARNING:
            return 2;
        case CAN_STATE_ERROR_PASSIVE:
            return 3;
        case CAN_STATE_BUS_OFF:
            return 4;
        case CAN_STATE_STOPPED:
        case CAN_STATE_SLEEPING:
            return 0;
        default:
            return unknown;
    }
}

/// Tells whether a wanted rate is the current one, or less than 1.5 % of the current one away.
constexpr bool isWithinTolerance(unsigned int current, unsigned int wanted) {
    const double tolerance = current * 0.015;
    return current == wanted || (current - tolerance < wanted && wanted < current + tolerance);
}

/// The identifier word of a frame to send. Numbers that do not fit 11 bits are extended ones.
constexpr canid_t identifierWord(std::uint32_t id) {
    return id <= CAN_SFF_MASK ? id : id | CAN_EFF_FLAG;
}

/// The kernel's form of a message. All eight bytes go along, whatever the length.
inline can_frame kernelFrame(const ZRCANMessage& message) {
    can_frame frame{};
    frame.can_id = identifierWord(message.id);
    frame.can_dlc = static_cast<std::uint8_t>(message.length);
    std::memcpy(frame.data, message.data, sizeof frame.data);
    return frame;
}

/// Stores a received frame. The length is stored as it came, also one that no classic frame has.
inline void storeFrame(const can_frame& frame, ZRCANMessage& message) {
    message.id = frame.can_id;
    message.length = frame.can_dlc;
    if (frame.can_dlc >= CAN_MAX_DLEN)
        std::memcpy(message.data, frame.data, CAN_MAX_DLEN);  // most frames: no call
    else
        std::memcpy(message.data, frame.data, frame.can_dlc);
}

}  // namespace ZR
