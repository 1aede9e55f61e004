#include <memory>

#include "tests/hardware/can/can_calls.h"
#include "tests/support/substitutes/libsocketcan_substitute.h"

namespace ZR::test {
namespace {

/// What the made end point holds in a member.
template <typename Member>
Member held(const ZRCANRaw& endPoint, Member CANSocket::*member) {
    return dynamic_cast<const CANSocket&>(endPoint).*member;
}

/// Opens what the class protects. Never built.
struct Inside : CANSocket {
    Inside() = delete;
    static constexpr auto portMember = &Inside::port;
    static constexpr auto countMember = &Inside::retryCount;
    static constexpr auto delayMember = &Inside::retryDelay;
};

class CanCreate : public CanSocketTest {
  protected:
    CanCreate() {
        LibsocketcanSubstitute::reset();
        LibsocketcanSubstitute::controllers["can0"].bitrate = 125000;
    }
};

TEST_F(CanCreate, with_six_arguments_makes_an_initialised_end_point) {
    const std::unique_ptr<ZRCANRaw> endPoint = ZRCANRaw::create(1, 250000, "can0", 3, 40, 0);
    ASSERT_NE(endPoint, nullptr);
    EXPECT_TRUE(endPoint->isConnected());
    EXPECT_EQ(LibsocketcanSubstitute::controllers["can0"].bitrate, 250000U);
    EXPECT_EQ(calls(), openingSocket("s1", "can0", 7));
    EXPECT_EQ(held(*endPoint, Inside::portMember), 1U);
    EXPECT_EQ(held(*endPoint, Inside::countMember), 3);
    EXPECT_EQ(held(*endPoint, Inside::delayMember), 40);
}

TEST_F(CanCreate, an_end_point_for_a_missing_interface_is_returned_not_connected) {
    const std::unique_ptr<ZRCANRaw> endPoint = ZRCANRaw::create(1, 250000, "can9", 0, 0, 0);
    ASSERT_NE(endPoint, nullptr);
    EXPECT_FALSE(endPoint->isConnected());
    EXPECT_EQ(log_.reports(), (Reports{rawReport("ioctl sock"),
                                       rawReport("Error initializing the SocketCAN interface!!")}));
}

TEST_F(CanCreate, an_end_point_for_a_port_without_controller_is_returned_not_connected) {
    for (const int port : {0, 2, 5, -1}) {
        const std::unique_ptr<ZRCANRaw> endPoint = ZRCANRaw::create(port, 250000, "can0", 1, 2, 0);
        ASSERT_NE(endPoint, nullptr);
        EXPECT_FALSE(endPoint->isConnected());
        EXPECT_EQ(endPoint->getReadEndPointID(), -1);
        EXPECT_EQ(held(*endPoint, Inside::portMember), static_cast<unsigned int>(port));
        EXPECT_EQ(held(*endPoint, Inside::countMember), 1);
    }
}

TEST_F(CanCreate, with_three_arguments_makes_an_end_point_that_has_done_nothing) {
    const std::unique_ptr<ZRCANRaw> endPoint = ZRCANRaw::create(5, 600, 0);
    ASSERT_NE(endPoint, nullptr);
    EXPECT_FALSE(endPoint->isConnected());
    EXPECT_EQ(endPoint->getReadEndPointID(), -1);
    EXPECT_EQ(held(*endPoint, Inside::portMember), 0xFFFFFFFFU);
    EXPECT_EQ(held(*endPoint, Inside::countMember), 5);
    EXPECT_EQ(held(*endPoint, Inside::delayMember), 600);
    EXPECT_EQ(calls(), Calls{});
    EXPECT_EQ(LibsocketcanSubstitute::calls, Calls{});
    EXPECT_EQ(log_.reports(), Reports{});
}

TEST_F(CanCreate, the_caller_initialises_what_three_arguments_made) {
    const std::unique_ptr<ZRCANRaw> endPoint = ZRCANRaw::create(0, 0, 0);
    EXPECT_EQ(endPoint->initialize(2), 0U);
    EXPECT_TRUE(endPoint->isConnected());
    EXPECT_EQ(calls(), openingSocket("s1", "can1", 8));
}

TEST_F(CanCreate, the_last_argument_is_ignored) {
    for (const int number : {0, 1, -1, 4711}) {
        CanSocketSubstitute::calls.clear();
        EXPECT_TRUE(ZRCANRaw::create(1, 250000, "can0", 0, 0, number)->isConnected());
        EXPECT_FALSE(ZRCANRaw::create(0, 0, number)->isConnected());
        EXPECT_EQ(calls().size(), 6U);
    }
}

TEST_F(CanCreate, the_end_point_can_be_shared) {
    const std::shared_ptr<ZREndPoint> endPoint = ZRCANRaw::create(1, 250000, "can0", 0, 0, 0);
    EXPECT_TRUE(endPoint->isConnected());
}

TEST_F(CanCreate, the_interface_type_is_0) {
    EXPECT_EQ(ZRCANRaw::hardwareInterfaceType, 0);
    (void)ZRCANRaw::create(1, 250000, "can0", 0, 0, 3);
    EXPECT_EQ(ZRCANRaw::hardwareInterfaceType, 0);
}

}  // namespace
}  // namespace ZR::test
