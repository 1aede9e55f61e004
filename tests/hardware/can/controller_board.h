#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "hardware/can/can_libsocketcan.h"
#include "tests/support/report_log.h"
#include "tests/support/substitutes/libsocketcan_substitute.h"

namespace ZR::test {

using Calls = std::vector<std::string>;
using Reports = std::vector<Report>;

/// A report of ZRCAN and CANLibsocketcan.
inline Report controllerReport(const std::string& message) {
    return {1, "zr_can", message};
}

/// A controller whose members the tests can see.
struct OpenController : CANLibsocketcan {
    using CANLibsocketcan::baudrateSet;
    using CANLibsocketcan::name;
    using CANLibsocketcan::present;
};

/// A machine with the controllers that a test gives it.
class ControllerTest : public testing::Test {
  protected:
    ControllerTest() { LibsocketcanSubstitute::reset(); }

    static SimulatedController& controller(const std::string& name) {
        return LibsocketcanSubstitute::controllers[name];
    }

    /// The calls since the last time that they were taken.
    static Calls takeCalls() {
        Calls calls;
        calls.swap(LibsocketcanSubstitute::calls);
        return calls;
    }

    ReportLog log_;
};

}  // namespace ZR::test
