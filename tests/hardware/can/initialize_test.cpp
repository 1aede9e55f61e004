#include <cerrno>

#include "tests/hardware/can/can_calls.h"
#include "tests/support/substitutes/libsocketcan_substitute.h"

// Both initialize operations and reconnect.

namespace ZR::test {
namespace {

const Report failedSetUp = rawReport("Error initializing the SocketCAN interface!!");
const Report initializedBefore = rawReport("interface has been initialized before!");

/// can0 to can2 with a controller each.
class CanInitialize : public CanSocketTest {
  protected:
    CanInitialize() {
        LibsocketcanSubstitute::reset();
        for (const char* const name : {"can0", "can1", "can2"})
            LibsocketcanSubstitute::controllers[name].bitrate = 125000;
    }

    static SimulatedController& controller(const std::string& name) {
        return LibsocketcanSubstitute::controllers[name];
    }
};

using CanReconnect = CanInitialize;

TEST_F(CanInitialize, initialize_3_binds_can2) {
    OpenSocket socket;
    EXPECT_EQ(socket.initialize(3), 0U);
    EXPECT_EQ(calls(), openingSocket("s1", "can2", 9));
    EXPECT_TRUE(socket.isConnected());
    EXPECT_EQ(socket.port, 3U);
}

TEST_F(CanInitialize, initialize_of_a_port_alone_leaves_the_controllers_alone) {
    OpenSocket socket;
    EXPECT_EQ(socket.initialize(1), 0U);
    EXPECT_EQ(LibsocketcanSubstitute::calls, Calls{});
    EXPECT_EQ(log_.reports(), Reports{});
}

TEST_F(CanInitialize, a_port_alone_becomes_one_character) {
    const std::vector<std::pair<unsigned int, std::string>> names{
        {0, "can/"}, {1, "can0"}, {10, "can9"}, {11, "can:"}, {0xFFFFFFFF, "can."}};
    for (const auto& [port, name] : names) {
        CanSocketSubstitute::reset();
        CanSocketSubstitute::interfaces = {{name, 3}};
        OpenSocket socket;
        EXPECT_EQ(socket.initialize(port), 0U) << port;
        EXPECT_EQ(calls(), openingSocket("s1", name, 3)) << port;
        EXPECT_EQ(socket.port, port);
    }
}

TEST_F(CanInitialize, a_port_alone_that_is_missing_returns_4_with_one_report) {
    OpenSocket socket;
    EXPECT_EQ(socket.initialize(4), 4U);
    EXPECT_FALSE(socket.isConnected());
    EXPECT_EQ(socket.port, 4U);
    EXPECT_EQ(log_.reports(), Reports{rawReport("ioctl sock")});
}

TEST_F(CanInitialize, a_port_alone_a_second_time_returns_3_and_stays_connected) {
    OpenSocket socket;
    ASSERT_EQ(socket.initialize(1), 0U);
    EXPECT_EQ(socket.initialize(2), 3U);
    EXPECT_TRUE(socket.isConnected());
    EXPECT_EQ(socket.port, 2U);
    EXPECT_EQ(socket.bindAddress.can_ifindex, 7);
    EXPECT_EQ(log_.reports(), Reports{initializedBefore});
}

TEST_F(CanInitialize, with_a_rate_sets_the_rate_and_opens_the_socket) {
    OpenSocket socket;
    EXPECT_EQ(socket.initialize(2, 250000, "can1"), 0U);
    EXPECT_EQ(controller("can1").bitrate, 250000U);
    EXPECT_EQ(controller("can1").state, CAN_STATE_ERROR_ACTIVE);
    EXPECT_EQ(calls(), openingSocket("s1", "can1", 8));
    EXPECT_TRUE(socket.isConnected());
    EXPECT_EQ(socket.port, 2U);
    EXPECT_EQ(log_.reports(), Reports{});
}

TEST_F(CanInitialize, the_rate_goes_to_the_port_and_the_socket_to_the_name) {
    OpenSocket socket;
    EXPECT_EQ(socket.initialize(1, 250000, "can2"), 0U);
    EXPECT_EQ(controller("can0").bitrate, 250000U);
    EXPECT_EQ(controller("can2").bitrate, 125000U);
    EXPECT_EQ(calls(), openingSocket("s1", "can2", 9));
}

TEST_F(CanInitialize, sets_a_rate_that_is_right_again_with_each_socket) {
    for (int i = 0; i < 2; ++i) {
        LibsocketcanSubstitute::calls.clear();
        OpenSocket socket;
        EXPECT_EQ(socket.initialize(1, 125000, "can0"), 0U);
        EXPECT_EQ(LibsocketcanSubstitute::calls.at(i == 0 ? 7 : 8), "can_set_bitrate can0 125000");
    }
}

TEST_F(CanInitialize, the_status_of_a_refused_rate_passes_through_and_no_socket_is_made) {
    OpenSocket socket;
    LibsocketcanSubstitute::fail("can_set_bitrate");
    EXPECT_EQ(socket.initialize(1, 1, "can0"), 6U);
    EXPECT_EQ(calls(), Calls{});
    EXPECT_FALSE(socket.isConnected());
    EXPECT_EQ(socket.port, 1U);
    EXPECT_EQ(log_.reports(), (Reports{{1, "zr_can", "Error: unable to set bitrate 1!"},
                                       rawReport("Error setting the baudrate!")}));
}

TEST_F(CanInitialize, a_port_without_controller_returns_2_and_makes_no_socket) {
    for (const unsigned int port : {0U, 4U, 5U, 0xFFFFFFFFU}) {
        log_.clear();
        OpenSocket socket;
        EXPECT_EQ(socket.initialize(port, 250000, "can0"), 2U) << port;
        EXPECT_EQ(socket.port, port);
        EXPECT_EQ(log_.reports(), Reports{rawReport("Error setting the baudrate!")});
    }
    EXPECT_EQ(CanSocketSubstitute::calls, (Calls(4, "close -1")));
}

TEST_F(CanInitialize, a_failed_start_passes_through) {
    OpenSocket socket;
    LibsocketcanSubstitute::fail("can_do_start");
    EXPECT_EQ(socket.initialize(1, 250000, "can0"), 0xFFFFFFFFU);
    EXPECT_EQ(log_.reports(), Reports{rawReport("Error setting the baudrate!")});
}

TEST_F(CanInitialize, an_interface_left_stopped_by_its_rate_still_gets_its_socket) {
    controller("can0").takesBitrate = 500000;
    OpenSocket socket;
    EXPECT_EQ(socket.initialize(1, 250000, "can0"), 0U);
    EXPECT_TRUE(socket.isConnected());
    EXPECT_EQ(controller("can0").state, CAN_STATE_STOPPED);
}

TEST_F(CanInitialize, a_missing_name_returns_4_with_two_reports) {
    OpenSocket socket;
    EXPECT_EQ(socket.initialize(1, 250000, "can9"), 4U);
    EXPECT_FALSE(socket.isConnected());
    EXPECT_EQ(log_.reports(), (Reports{rawReport("ioctl sock"), failedSetUp}));
}

TEST_F(CanInitialize, a_second_time_sets_the_rate_and_returns_3) {
    OpenSocket socket;
    ASSERT_EQ(socket.initialize(1, 250000, "can0"), 0U);
    EXPECT_EQ(socket.initialize(2, 500000, "can1"), 3U);
    EXPECT_EQ(controller("can1").bitrate, 500000U);
    EXPECT_TRUE(socket.isConnected());
    EXPECT_EQ(socket.bindAddress.can_ifindex, 7);
    EXPECT_EQ(log_.reports(), (Reports{initializedBefore, failedSetUp}));
}

TEST_F(CanReconnect, an_initialised_socket_returns_3_and_leaves_the_old_one_in_use) {
    OpenSocket socket;
    ASSERT_EQ(socket.initialize(2, 250000, "can1"), 0U);
    const int descriptor = socket.socketDescriptor;
    CanSocketSubstitute::calls.clear();
    LibsocketcanSubstitute::calls.clear();
    EXPECT_EQ(socket.reconnect(), 3U);
    EXPECT_EQ(socket.reconnect(), 3U);
    EXPECT_EQ(calls(), Calls{});
    EXPECT_EQ(LibsocketcanSubstitute::calls, Calls{});
    EXPECT_EQ(socket.getReadEndPointID(), descriptor);
    EXPECT_TRUE(socket.isConnected());
    EXPECT_EQ(log_.reports(), (Reports{initializedBefore, initializedBefore}));
}

TEST_F(CanReconnect, a_socket_whose_set_up_failed_is_opened_on_the_interface_of_its_port) {
    OpenSocket socket;
    CanSocketSubstitute::answer("bind", {{-1, ENODEV}});
    ASSERT_EQ(socket.initialize(3, 250000, "can2"), 4U);
    LibsocketcanSubstitute::calls.clear();
    CanSocketSubstitute::calls.clear();
    EXPECT_EQ(socket.reconnect(), 0U);
    Calls expected{"close s1"};
    for (const std::string& call : openingSocket("s2", "can2", 9))
        expected.push_back(call);
    EXPECT_EQ(calls(), expected);
    EXPECT_EQ(LibsocketcanSubstitute::calls, Calls{});
    EXPECT_TRUE(socket.isConnected());
}

TEST_F(CanReconnect, a_socket_whose_rate_failed_is_opened_too) {
    OpenSocket socket;
    LibsocketcanSubstitute::fail("can_do_start");
    ASSERT_NE(socket.initialize(1, 250000, "can0"), 0U);
    EXPECT_EQ(socket.reconnect(), 0U);
    EXPECT_TRUE(socket.isConnected());
}

TEST_F(CanReconnect, an_interface_that_comes_later_is_found) {
    OpenSocket socket;
    EXPECT_EQ(socket.initialize(4), 4U);
    EXPECT_EQ(socket.reconnect(), 4U);
    CanSocketSubstitute::interfaces["can3"] = 10;
    EXPECT_EQ(socket.reconnect(), 0U);
    EXPECT_EQ(socket.bindAddress.can_ifindex, 10);
}

TEST_F(CanReconnect, before_any_initialize_the_port_is_unset_and_nothing_is_found) {
    OpenSocket socket;
    EXPECT_EQ(socket.reconnect(), 4U);
    EXPECT_EQ(calls().back(), askingIndex("s1", "can."));
    EXPECT_EQ(socket.port, 0xFFFFFFFFU);
}

struct OwnInitialize : OpenSocket {
    unsigned int initialize(unsigned int newPort) override {
        asked.push_back(newPort);
        return 77;
    }
    unsigned int initialize(unsigned int /*port*/, unsigned int /*bitrate*/,
                            const char* /*name*/) override {
        return 78;
    }
    std::vector<unsigned int> asked;
};

TEST_F(CanReconnect, calls_the_initialize_of_a_derived_class) {
    OwnInitialize socket;
    socket.port = 3;
    ZREndPoint& endPoint = socket;
    EXPECT_EQ(endPoint.reconnect(), 77U);
    EXPECT_EQ(socket.asked, std::vector<unsigned int>{3});
    EXPECT_EQ(calls(), Calls{});
}

}  // namespace
}  // namespace ZR::test
