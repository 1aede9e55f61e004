#pragma once

#include <gst/gst.h>

#include <deque>
#include <functional>

/// Takes the place of gst_element_set_state, gst_element_get_state, gst_bus_timed_pop_filtered,
/// gst_init, usleep and nanosleep in a program, for what real elements cannot be made to show. Logs
/// to CaptureCallLog: "set_state PLAYING", "get_state 100000000" with the time-out in ns, "pop
/// 100000000 MASK", "gst_init", "usleep 10000", "nanosleep 25000000".

namespace ZR::test {

struct GstCallSubstitute {
    /// Whether calls are logged.
    static bool isLogging;

    /// What the next calls of gst_element_get_state find, one each; the real one answers after them.
    static std::deque<GstState> states;

    /// Whether gst_element_set_state does nothing but be logged.
    static bool leavesStates;

    /// Done instead of each usleep, if there is one.
    static std::function<void()> insteadOfSleep;

    /// Done before and after each gst_init, if there is one.
    static std::function<void()> beforeInit;
    static std::function<void()> afterInit;

    static void reset();
};

}  // namespace ZR::test
