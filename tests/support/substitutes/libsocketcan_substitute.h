#pragma once

#include <linux/can/netlink.h>

#include <map>
#include <string>
#include <vector>

/// Takes the place of libsocketcan; link `zrapi_substitute_libsocketcan`.
/// Controllers that behave as the kernel's do: rate and restart time only while stopped.

namespace ZR::test {

struct SimulatedController {
    int state = CAN_STATE_STOPPED;
    unsigned int bitrate = 0;       ///< 0: never set, and so not readable
    unsigned int takesBitrate = 0;  ///< what it takes instead of the rate asked for; 0: that one
    unsigned int restartMilliseconds = 0;
};

struct LibsocketcanSubstitute {
    /// By interface; at first there are none.
    static std::map<std::string, SimulatedController> controllers;

    /// Each call with what it was given: "can_set_bitrate can0 250000". The state that came in is
    /// part of can_get_state; a record that was not all zero shows behind can_get_bittiming.
    static std::vector<std::string> calls;

    /// Makes one call of @p function fail with @p result, the next one or a later one. What it then
    /// leaves in its out value is the truth, which nobody is to use.
    static void fail(const std::string& function, int result = -1, int occurrence = 1);

    /// Neither controllers nor calls nor failures.
    static void reset();
};

}  // namespace ZR::test
