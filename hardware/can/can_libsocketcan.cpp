#include "hardware/can/can_libsocketcan.h"

#include <libsocketcan.h>

#include "common/zrapi_common/zr_result.h"
#include "hardware/can/can_internal.h"
#include "hardware/report_internal.h"

namespace ZR {
namespace {

constexpr unsigned int noBaudrate = 0xFFFFFFFF;

}  // namespace

CANLibsocketcan::CANLibsocketcan() {
    for (unsigned int i = 0; i < portCount; ++i) {
        int state = CAN_STATE_STOPPED;
        present[i] = can_get_state(canInterface(i + 1).c_str(), &state) == 0;
    }
}

bool CANLibsocketcan::isPresent(unsigned int port) const {
    return port >= 1 && port <= portCount && present[port - 1];
}

unsigned int CANLibsocketcan::isBaudrateSet(const std::string& name, unsigned int bitrate,
                                            bool& isSet) {
    can_bittiming timing{};
    if (can_get_bittiming(name.c_str(), &timing) != 0) {
        report(debugSection, "%s", "Error: unable to read current bitrate!");
        return ResultReadFailed;
    }
    isSet = isWithinTolerance(timing.bitrate, bitrate);
    return ResultSuccess;
}

unsigned int CANLibsocketcan::setBaudrate(unsigned int port, unsigned int bitrate) {
    if (!isPresent(port))
        return ResultOpenFailed;
    const std::string canName = canInterface(port);
    int state = CAN_STATE_STOPPED;
    const int stateStatus = can_get_state(canName.c_str(), &state);

    bool isSet = false;
    (void)isBaudrateSet(canName, bitrate, isSet);
    // A rate that is right but was not set by this object is set again: only then is the restart
    // time known to be set too.
    if (!isSet || !baudrateSet[port - 1]) {
        // The kernel refuses rate and restart time while the interface is up.
        if (stateStatus == 0 && state != CAN_STATE_STOPPED)
            (void)can_do_stop(canName.c_str());
        (void)can_set_restart_ms(canName.c_str(), restartMilliseconds);
        if (can_set_bitrate(canName.c_str(), bitrate) != 0) {
            report(debugSection, "%s%d%s", "Error: unable to set bitrate ",
                   static_cast<int>(bitrate), "!");
            return ResultWriteFailed;
        }
        baudrateSet[port - 1] = true;
        const unsigned int status = isBaudrateSet(canName, bitrate, isSet);
        if (status != ResultSuccess)
            return status;
        // The controller cannot do the rate: on a bus of another rate it would only disturb.
        if (!isSet)
            return ResultSuccess;
    }
    return static_cast<unsigned int>(can_do_start(canName.c_str()));
}

unsigned int CANLibsocketcan::getBaudrate(unsigned int port) const {
    if (!isPresent(port))
        return noBaudrate;
    const std::string canName = canInterface(port);
    if (!baudrateSet[port - 1]) {
        int state = CAN_STATE_STOPPED;
        // Stopped and never configured here: whatever rate is left over is not in use.
        if (can_get_state(canName.c_str(), &state) == 0 && state == CAN_STATE_STOPPED)
            return 0;
    }
    can_bittiming timing{};
    if (can_get_bittiming(canName.c_str(), &timing) != 0)
        return noBaudrate;
    return timing.bitrate;
}

}  // namespace ZR
