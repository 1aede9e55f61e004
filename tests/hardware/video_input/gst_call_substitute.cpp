#include "tests/hardware/video_input/gst_call_substitute.h"

#include <dlfcn.h>
#include <time.h>
#include <unistd.h>

#include <string>

#include "tests/support/substitutes/capture_call_log.h"

namespace ZR::test {

bool GstCallSubstitute::isLogging = false;
std::deque<GstState> GstCallSubstitute::states;
bool GstCallSubstitute::leavesStates = false;
std::function<void()> GstCallSubstitute::insteadOfSleep;
std::function<void()> GstCallSubstitute::beforeInit;
std::function<void()> GstCallSubstitute::afterInit;

void GstCallSubstitute::reset() {
    isLogging = false;
    states.clear();
    leavesStates = false;
    insteadOfSleep = nullptr;
    beforeInit = nullptr;
    afterInit = nullptr;
}

namespace {

template <typename Function>
Function* real(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

template <typename Number>
void log(const char* call, Number number) {
    if (GstCallSubstitute::isLogging)
        CaptureCallLog::add([=] { return std::string(call) + ' ' + std::to_string(number); });
}

}  // namespace

}  // namespace ZR::test

using ZR::test::CaptureCallLog;
using ZR::test::GstCallSubstitute;

extern "C" {

GstStateChangeReturn gst_element_set_state(GstElement* element, GstState state) {
    if (GstCallSubstitute::isLogging)
        CaptureCallLog::add(
            [=] { return std::string("set_state ") + gst_element_state_get_name(state); });
    if (GstCallSubstitute::leavesStates)
        return GST_STATE_CHANGE_FAILURE;
    return ZR::test::real<decltype(gst_element_set_state)>("gst_element_set_state")(element, state);
}

GstStateChangeReturn gst_element_get_state(GstElement* element, GstState* state, GstState* pending,
                                           GstClockTime timeout) {
    ZR::test::log("get_state", timeout);
    if (GstCallSubstitute::states.empty())
        return ZR::test::real<decltype(gst_element_get_state)>("gst_element_get_state")(
            element, state, pending, timeout);
    *state = GstCallSubstitute::states.front();
    GstCallSubstitute::states.pop_front();
    return GST_STATE_CHANGE_SUCCESS;
}

GstMessage* gst_bus_timed_pop_filtered(GstBus* bus, GstClockTime timeout, GstMessageType types) {
    if (GstCallSubstitute::isLogging)
        CaptureCallLog::add([=] {
            return "pop " + std::to_string(timeout) + ' ' + std::to_string(static_cast<int>(types));
        });
    return ZR::test::real<decltype(gst_bus_timed_pop_filtered)>("gst_bus_timed_pop_filtered")(
        bus, timeout, types);
}

void gst_init(int* count, char*** arguments) {
    if (GstCallSubstitute::isLogging)
        CaptureCallLog::add([] { return std::string("gst_init"); });
    if (GstCallSubstitute::beforeInit)
        GstCallSubstitute::beforeInit();
    ZR::test::real<decltype(gst_init)>("gst_init")(count, arguments);
    if (GstCallSubstitute::afterInit)
        GstCallSubstitute::afterInit();
}

int usleep(useconds_t time) {
    ZR::test::log("usleep", time);
    if (GstCallSubstitute::insteadOfSleep) {
        GstCallSubstitute::insteadOfSleep();
        return 0;
    }
    const timespec wait{time / 1000000, static_cast<long>(time % 1000000) * 1000};
    return ::clock_nanosleep(CLOCK_MONOTONIC, 0, &wait, nullptr);
}

int nanosleep(const timespec* wait, timespec* left) {
    ZR::test::log("nanosleep", wait->tv_sec * 1000000000L + wait->tv_nsec);
    return ZR::test::real<decltype(nanosleep)>("nanosleep")(wait, left);
}

}  // extern "C"
