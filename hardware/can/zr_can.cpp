#include "hardware/can/zr_can.h"

#include <libsocketcan.h>

#include "common/zrapi_common/zr_debug.h"
#include "common/zrapi_common/zr_result.h"
#include "hardware/can/can_internal.h"
#include "hardware/can/can_libsocketcan.h"

namespace ZR {

unsigned int ZRCAN::debugSection = ZRDebug::insertNewDebugSection("zr_can");

std::unique_ptr<ZRCAN> ZRCAN::create(int /*reserved*/) {
    return std::make_unique<CANLibsocketcan>();
}

unsigned int ZRCAN::setState(unsigned int port, int state) {
    const std::string name = canInterface(port);
    if (state == 1)
        return can_do_start(name.c_str()) == 0 ? ResultSuccess : ResultFailure;
    if (state != 0)
        return ResultValueOutOfRange;
    if (can_do_stop(name.c_str()) != 0)
        return ResultFailure;
    // The kernel takes the restart time of a stopped interface only.
    (void)can_set_restart_ms(name.c_str(), restartMilliseconds);
    return ResultSuccess;
}

unsigned int ZRCAN::getState(unsigned int port) {
    constexpr unsigned int unreadable = 255;
    int state = unreadable;
    if (can_get_state(canInterface(port).c_str(), &state) != 0)
        return unreadable;
    return stateCode(state);
}

}  // namespace ZR
