#include <cerrno>
#include <stdexcept>

#include "common/zrapi_common/zr_debug.h"
#include "hardware/can/can_libsocketcan.h"
#include "tests/hardware/can/can_calls.h"
#include "tests/support/substitutes/libsocketcan_substitute.h"

// A debug facility that raises must not break a result code.

namespace ZR::test {
namespace {

[[noreturn]] void raise(int /*level*/, const char* /*section*/, const char* message) {
    throw std::runtime_error(message);
}

class CanRaisingReport : public CanSocketTest {
  protected:
    CanRaisingReport() {
        LibsocketcanSubstitute::reset();
        ZRDebug::setSink(raise);
    }
    ~CanRaisingReport() override { ZRDebug::setSink(nullptr); }
};

TEST_F(CanRaisingReport, leaves_the_statuses_of_the_set_up) {
    OpenSocket socket;
    EXPECT_EQ(socket.initialize(1, 250000, "can0"), 2U);
    CanSocketSubstitute::answer("socket", {{-1, EMFILE}});
    EXPECT_EQ(socket.interfaceInit("can0"), 4U);
    EXPECT_EQ(socket.interfaceInit("can9"), 4U);
    CanSocketSubstitute::answer("bind", {{-1, ENODEV}});
    EXPECT_EQ(socket.interfaceInit("can0"), 4U);
    EXPECT_EQ(socket.interfaceInit("can0"), 0U);
    EXPECT_EQ(socket.interfaceInit("can0"), 3U);
}

TEST_F(CanRaisingReport, leaves_the_statuses_of_a_rate) {
    LibsocketcanSubstitute::controllers["can0"].bitrate = 125000;
    bool isSet = false;
    EXPECT_EQ(CANLibsocketcan::isBaudrateSet("can1", 250000, isSet), 5U);
    LibsocketcanSubstitute::fail("can_set_bitrate");
    EXPECT_EQ(CANLibsocketcan().setBaudrate(1, 250000), 6U);
}

}  // namespace
}  // namespace ZR::test
