#include "tests/support/substitutes/libsocketcan_substitute.h"

#include <libsocketcan.h>

#include <algorithm>
#include <cstring>

namespace ZR::test {

std::map<std::string, SimulatedController> LibsocketcanSubstitute::controllers;
std::vector<std::string> LibsocketcanSubstitute::calls;

namespace {

struct Failure {
    std::string function;
    int result;
    int occurrence;  ///< 0 once it has come
};

std::vector<Failure>& failures() {
    static std::vector<Failure> all;
    return all;
}

/// What the call that is being made is to fail with, 0 for nothing.
int failureOf(const std::string& function) {
    int result = 0;
    for (Failure& failure : failures())
        if (failure.function == function && failure.occurrence > 0 && --failure.occurrence == 0)
            result = failure.result;
    return result;
}

/// The controller that @p name has, or null.
SimulatedController* find(const char* name) {
    const auto found = LibsocketcanSubstitute::controllers.find(name);
    return found != LibsocketcanSubstitute::controllers.end() ? &found->second : nullptr;
}

/// Logs a call. Null when it is to fail, then with @p result.
SimulatedController* called(const std::string& function, const char* name,
                            const std::string& argument, int& result) {
    LibsocketcanSubstitute::calls.push_back(function + ' ' + name + argument);
    SimulatedController* const controller = find(name);
    result = failureOf(function);
    if (result == 0 && controller == nullptr)
        result = -1;
    return result == 0 ? controller : nullptr;
}

/// Logs a call that the kernel refuses while the interface is up.
SimulatedController* configured(const std::string& function, const char* name, unsigned int value,
                                int& result) {
    SimulatedController* const controller =
        called(function, name, ' ' + std::to_string(value), result);
    if (controller == nullptr || controller->state == CAN_STATE_STOPPED)
        return controller;
    result = -1;
    return nullptr;
}

bool isZero(const can_bittiming& timing) {
    const can_bittiming zero{};
    return std::memcmp(&timing, &zero, sizeof zero) == 0;
}

}  // namespace

void LibsocketcanSubstitute::fail(const std::string& function, int result, int occurrence) {
    failures().push_back({function, result, occurrence});
}

void LibsocketcanSubstitute::reset() {
    controllers.clear();
    calls.clear();
    failures().clear();
}

}  // namespace ZR::test

using ZR::test::SimulatedController;

extern "C" {

int can_get_state(const char* name, int* state) {
    int result = 0;
    (void)ZR::test::called("can_get_state", name, ' ' + std::to_string(*state), result);
    if (const SimulatedController* const controller = ZR::test::find(name))
        *state = controller->state;
    return result;
}

int can_get_bittiming(const char* name, struct can_bittiming* timing) {
    int result = 0;
    (void)ZR::test::called("can_get_bittiming", name, ZR::test::isZero(*timing) ? "" : " not zero",
                           result);
    const SimulatedController* const controller = ZR::test::find(name);
    if (controller == nullptr || controller->bitrate == 0)
        return result != 0 ? result : -1;
    timing->bitrate = controller->bitrate;
    return result;
}

int can_do_start(const char* name) {
    int result = 0;
    if (SimulatedController* const controller = ZR::test::called("can_do_start", name, "", result))
        controller->state = CAN_STATE_ERROR_ACTIVE;
    return result;
}

int can_do_stop(const char* name) {
    int result = 0;
    if (SimulatedController* const controller = ZR::test::called("can_do_stop", name, "", result))
        controller->state = CAN_STATE_STOPPED;
    return result;
}

int can_set_restart_ms(const char* name, __u32 milliseconds) {
    int result = 0;
    if (SimulatedController* const controller =
            ZR::test::configured("can_set_restart_ms", name, milliseconds, result))
        controller->restartMilliseconds = milliseconds;
    return result;
}

int can_set_bitrate(const char* name, __u32 bitrate) {
    int result = 0;
    if (SimulatedController* const controller =
            ZR::test::configured("can_set_bitrate", name, bitrate, result))
        controller->bitrate = controller->takesBitrate != 0 ? controller->takesBitrate : bitrate;
    return result;
}

}  // extern "C"
