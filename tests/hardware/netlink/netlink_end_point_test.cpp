// End points and families, with a driver that is there or not as the test wants.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "hardware/netlink/zr_netlink.h"
#include "tests/hardware/netlink/dispatcher.h"
#include "tests/hardware/netlink/driver_connection_substitute.h"
#include "tests/support/output_capture.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::test {
namespace {

using Names = std::vector<std::string>;

constexpr char notConnected[] =
    "Connecting to generic netlink event interface ZR_DI failed, disabling event handling\n";

/// A descriptor that tells whether it was closed.
int openDescriptor() {
    return ::dup(STDERR_FILENO);
}

bool isOpen(int fd) {
    return ::fcntl(fd, F_GETFD) != -1;
}

void driverIsThere(int socket) {
    DriverConnection::socket = socket;
    DriverConnection::familyId = 30;
}

TEST(NetlinkEndPoint, has_the_socket_of_its_connection_for_reading_and_writing) {
    driverIsThere(17);
    OutputCapture capture;
    const ZRNetlinkEndPoint endPoint("ZR_DI");
    capture.release();
    EXPECT_EQ(endPoint.getReadEndPointID(), 17);
    EXPECT_EQ(endPoint.getWriteEndPointID(), 17);
    EXPECT_TRUE(endPoint.isConnected());
    EXPECT_EQ(familyNameOf(endPoint), "ZR_DI");
    EXPECT_EQ(familyIdOf(endPoint), 30);
    EXPECT_EQ(capture.output(), "");
    EXPECT_EQ(DriverConnection::names, Names{"ZR_DI"});
    EXPECT_EQ(DriverConnection::familyIdBefore, 0);
}

TEST(NetlinkEndPoint, says_that_it_is_not_connected) {
    OutputCapture capture;
    const ZRNetlinkEndPoint endPoint("ZR_DI");
    capture.release();
    EXPECT_EQ(capture.output(), notConnected);
    EXPECT_EQ(endPoint.getReadEndPointID(), -1);
    EXPECT_EQ(endPoint.getWriteEndPointID(), -1);
    EXPECT_FALSE(endPoint.isConnected());
    EXPECT_EQ(familyNameOf(endPoint), "ZR_DI");
}

TEST(NetlinkEndPoint, keeps_the_number_that_a_failed_connection_left) {
    const OutputCapture silence;
    for (const int left : {-1, 0, 30}) {
        DriverConnection::familyId = left;
        EXPECT_EQ(familyIdOf(ZRNetlinkEndPoint("ZR_DI")), left);
    }
}

TEST(NetlinkEndPoint, is_connected_on_descriptor_0_too) {
    driverIsThere(0);
    OutputCapture capture;
    const ZRNetlinkEndPoint endPoint("ZR_DI");
    capture.release();
    EXPECT_TRUE(endPoint.isConnected());
    EXPECT_EQ(capture.output(), "");
}

TEST(NetlinkEndPoint, prints_long_and_empty_names_as_they_are) {
    OutputCapture capture;
    const std::string name(1000, 'n');
    const ZRNetlinkEndPoint longEndPoint(name);
    const ZRNetlinkEndPoint empty("");
    capture.release();
    const std::string front = "Connecting to generic netlink event interface ";
    const std::string back = " failed, disabling event handling\n";
    EXPECT_EQ(capture.output(), front + name + back + front + back);
}

TEST(NetlinkEndPoint, does_not_support_reconnecting) {
    OutputCapture capture;
    ZRNetlinkEndPoint endPoint("ZR_DI");
    DriverConnection::names.clear();
    driverIsThere(17);
    EXPECT_EQ(endPoint.reconnect(), 11U);
    EXPECT_FALSE(endPoint.isConnected());
    EXPECT_EQ(endPoint.getReadEndPointID(), -1);
    EXPECT_EQ(DriverConnection::names, Names{});
    capture.release();
    EXPECT_EQ(capture.output(), notConnected);
}

TEST(NetlinkEndPoint, asks_the_kernel_nothing_to_reconnect) {
    if (!whyNotTraceable().empty())
        GTEST_SKIP() << "[  SKIPPED ] " << whyNotTraceable();
    const Trace trace = traceSystemCalls([](TracedRun& run) {
        driverIsThere(17);
        ZRNetlinkEndPoint endPoint("ZR_DI");
        run.begin();
        const unsigned int result = endPoint.reconnect();
        run.end();
        run.say(std::to_string(result));
    });
    EXPECT_EQ(trace.text, "11");
    EXPECT_EQ(trace.names(), "");
}

TEST(NetlinkEndPoint, leaves_its_socket_open_at_its_end) {
    const int fd = openDescriptor();
    driverIsThere(fd);
    std::make_unique<ZRNetlinkEndPoint>("ZR_DI").reset();
    EXPECT_TRUE(isOpen(fd));
    ::close(fd);
}

TEST(NetlinkFamilies, have_their_names) {
    EXPECT_STREQ(ZRNetlink::getFamilyName(0), "ANALOG");
    EXPECT_STREQ(ZRNetlink::getFamilyName(1), "ZR_DI");
    EXPECT_STREQ(ZRNetlink::getFamilyName(2), "ZR_DO");
    for (const int index : {-1, 3, 4, 1000, -1000})
        EXPECT_EQ(ZRNetlink::getFamilyName(index), nullptr) << index;
}

TEST(NetlinkFamilies, belong_to_one_dispatcher) {
    EXPECT_NE(ZRNetlink::instance(), nullptr);
    EXPECT_EQ(ZRNetlink::instance(), ZRNetlink::instance());
    EXPECT_TRUE(endPointsOf(*ZRNetlink::instance()).empty());
}

TEST(NetlinkFamilies, are_added_once) {
    driverIsThere(17);
    ZRNetlink* const dispatcher = ZRNetlink::instance();
    EXPECT_EQ(dispatcher->addFamily("ZR_DI"), 0U);
    EXPECT_EQ(dispatcher->addFamily("ZR_DI"), 25U);
    EXPECT_EQ(dispatcher->addFamily("ZR_DO"), 0U);
    EXPECT_EQ(dispatcher->addFamily("ANALOG"), 0U);
    EXPECT_EQ(dispatcher->addFamily("ANALOG"), 25U);
    EXPECT_EQ(DriverConnection::names, (Names{"ZR_DI", "ZR_DO", "ANALOG"}));
    EXPECT_EQ(endPointsOf(*dispatcher).size(), 3U);
    for (const char* const name : {"ZR_DI", "ZR_DO", "ANALOG"}) {
        const auto endPoint = endPointOf(*dispatcher, name);
        ASSERT_NE(endPoint, nullptr);
        EXPECT_EQ(endPointsOf(*dispatcher).count(endPoint), 1U);
        EXPECT_EQ(familyNameOf(*endPoint), name);
    }
}

TEST(NetlinkFamilies, are_added_also_when_their_driver_is_missing) {
    const OutputCapture silence;
    ZRNetlink* const dispatcher = ZRNetlink::instance();
    EXPECT_EQ(dispatcher->addFamily("ZR_DI"), 0U);
    driverIsThere(17);
    EXPECT_EQ(dispatcher->addFamily("ZR_DI"), 25U);
    EXPECT_EQ(DriverConnection::names, Names{"ZR_DI"});
    const auto endPoint = endPointOf(*dispatcher, "ZR_DI");
    ASSERT_NE(endPoint, nullptr);
    EXPECT_FALSE(endPoint->isConnected());
    EXPECT_EQ(endPointsOf(*dispatcher).count(endPoint), 1U);
}

TEST(NetlinkFamilies, may_have_any_name) {
    driverIsThere(17);
    EXPECT_EQ(ZRNetlink::instance()->addFamily("nlctrl"), 0U);
    EXPECT_EQ(ZRNetlink::instance()->addFamily(""), 0U);
    EXPECT_EQ(ZRNetlink::instance()->addFamily(""), 25U);
    EXPECT_EQ(DriverConnection::names, (Names{"nlctrl", ""}));
}

}  // namespace
}  // namespace ZR::test
