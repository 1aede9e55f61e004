// How the dispatcher hands its end points to a manager.

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "hardware/netlink/zr_netlink.h"
#include "tests/hardware/netlink/dispatcher.h"
#include "tests/hardware/netlink/driver_connection_substitute.h"
#include "tests/hardware/netlink/manager_substitute.h"
#include "tests/support/output_capture.h"

namespace ZR::test {
namespace {

class HandOver : public testing::Test {
  protected:
    void addFamilies() {
        const OutputCapture silence;
        for (int i = 0; ZRNetlink::getFamilyName(i) != nullptr; ++i) {
            // One of them without a driver.
            DriverConnection::socket = i == 1 ? -1 : 17;
            ASSERT_EQ(dispatcher->addFamily(ZRNetlink::getFamilyName(i)), 0U);
        }
    }

    const std::vector<Registration>& calls = ManagerSubstitute::calls;
    ZRNetlink* dispatcher = ZRNetlink::instance();
    ZREndPointManager manager;
};

TEST_F(HandOver, does_nothing_without_a_manager) {
    addFamilies();
    dispatcher->addAllEndpointsToEndpointManager();
    dispatcher->setEndPointManager(&manager);
    dispatcher->setEndPointManager(nullptr);
    dispatcher->addAllEndpointsToEndpointManager();
    EXPECT_TRUE(calls.empty());
}

TEST_F(HandOver, does_nothing_without_families) {
    dispatcher->setEndPointManager(&manager);
    dispatcher->addAllEndpointsToEndpointManager();
    EXPECT_TRUE(calls.empty());
}

TEST_F(HandOver, gives_every_end_point_in_the_sets_order_with_the_dispatcher_as_handler) {
    addFamilies();
    dispatcher->setEndPointManager(&manager);
    dispatcher->addAllEndpointsToEndpointManager();
    const auto& endPoints = endPointsOf(*dispatcher);
    ASSERT_EQ(calls.size(), 3U);
    auto expected = endPoints.begin();
    for (const Registration& call : calls) {
        EXPECT_EQ(call.manager, &manager);
        EXPECT_EQ(call.endPoint, *expected++);
        EXPECT_EQ(call.handler, dispatcher);
    }
    EXPECT_LT(calls[0].endPoint.get(), calls[1].endPoint.get());
    EXPECT_LT(calls[1].endPoint.get(), calls[2].endPoint.get());
}

TEST_F(HandOver, goes_to_the_manager_that_was_set_last) {
    ZREndPointManager second;
    addFamilies();
    dispatcher->setEndPointManager(&manager);
    dispatcher->setEndPointManager(&second);
    dispatcher->addAllEndpointsToEndpointManager();
    ASSERT_EQ(calls.size(), 3U);
    EXPECT_EQ(calls[0].manager, &second);
}

TEST_F(HandOver, is_repeated_when_it_is_asked_for_again) {
    addFamilies();
    dispatcher->setEndPointManager(&manager);
    dispatcher->addAllEndpointsToEndpointManager();
    dispatcher->addAllEndpointsToEndpointManager();
    EXPECT_EQ(calls.size(), 6U);
}

}  // namespace
}  // namespace ZR::test
