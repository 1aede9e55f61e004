#include <stdexcept>

#include "tests/hardware/can/can_calls.h"
#include "tests/support/substitutes/controller_substitute.h"

// What initialize and create do with the controller that they make.

namespace ZR::test {
namespace {

class CanInitializeOrder : public CanSocketTest {
  protected:
    CanInitializeOrder() { ControllerSubstitute::reset(); }
};

TEST_F(CanInitializeOrder, a_controller_is_made_asked_and_destroyed) {
    OpenSocket socket;
    EXPECT_EQ(socket.initialize(3, 250000, "can2"), 0U);
    EXPECT_EQ(ControllerSubstitute::calls, (Calls{"create 0", "setBaudrate 3 250000", "destroy"}));
    EXPECT_EQ(calls(), openingSocket("s1", "can2", 9));
}

TEST_F(CanInitializeOrder, without_a_controller_initialize_returns_3_and_makes_no_socket) {
    ControllerSubstitute::exists = false;
    OpenSocket socket;
    EXPECT_EQ(socket.initialize(3, 250000, "can2"), 3U);
    EXPECT_EQ(socket.port, 3U);
    EXPECT_FALSE(socket.isConnected());
    EXPECT_EQ(calls(), Calls{});
    EXPECT_EQ(log_.reports(), Reports{});
}

TEST_F(CanInitializeOrder, any_status_of_the_controller_passes_through) {
    for (const unsigned int status : {1U, 2U, 5U, 6U, 77U, 0xFFFFFFFFU}) {
        log_.clear();
        CanSocketSubstitute::calls.clear();
        ControllerSubstitute::result = status;
        OpenSocket socket;
        EXPECT_EQ(socket.initialize(1, 250000, "can0"), status);
        EXPECT_EQ(calls(), Calls{});
        EXPECT_EQ(log_.reports(), Reports{rawReport("Error setting the baudrate!")});
        EXPECT_EQ(ControllerSubstitute::calls.back(), "destroy");
    }
}

TEST_F(CanInitializeOrder, the_controller_is_destroyed_also_when_the_socket_fails) {
    OpenSocket socket;
    EXPECT_EQ(socket.initialize(1, 250000, "can9"), 4U);
    EXPECT_EQ(ControllerSubstitute::calls.back(), "destroy");
}

TEST_F(CanInitializeOrder, an_exception_of_the_set_up_passes_create_which_destroys_the_end_point) {
    ControllerSubstitute::throws = true;
    EXPECT_THROW((void)ZRCANRaw::create(1, 250000, "can0", 0, 0, 0), std::runtime_error);
    EXPECT_EQ(ControllerSubstitute::calls.back(), "destroy");
    EXPECT_EQ(calls(), Calls{"close -1"});
}

}  // namespace
}  // namespace ZR::test
