// What event_if_waitevent asks the kernel, and wake-ups that a real socket does not give on demand.

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <cerrno>
#include <string>
#include <vector>

#include "hardware/netlink/event_interface.h"
#include "tests/hardware/netlink/message.h"
#include "tests/hardware/netlink/netlink_call_substitute.h"

namespace ZR::test {
namespace {

using Calls = std::vector<std::string>;

constexpr int family = 30;
constexpr int fd = 17;

const std::string receives = "recv 17 276 " + std::to_string(MSG_DONTWAIT);

TEST(WaitEventCalls, watch_one_descriptor_for_reading_and_receive_without_waiting) {
    NetlinkCalls kernel;
    kernel.reply = message(family, attribute(1, "x"));
    char copy = '-';
    EXPECT_EQ(event_if_waitevent(fd, family, 1, 1500000, 1, &copy), 1);
    EXPECT_EQ(copy, 'x');
    EXPECT_EQ(kernel.calls, (Calls{"select 18 17 none none 0 1500000", receives}));
}

TEST(WaitEventCalls, end_with_an_interruption) {
    NetlinkCalls kernel;
    kernel.selects = {{-1, EINTR}};
    EXPECT_EQ(event_if_waitevent(fd, family, 1, 1000, 0), -1);
    EXPECT_EQ(errno, EINTR);
    EXPECT_EQ(kernel.calls, Calls{"select 18 17 none none 0 1000"});
}

TEST(WaitEventCalls, end_with_the_time) {
    NetlinkCalls kernel;
    kernel.selects = {{0, 0}};
    EXPECT_EQ(event_if_waitevent(fd, family, 1, 1000, 0), 0);
    EXPECT_EQ(kernel.calls.size(), 1U);
}

TEST(WaitEventCalls, are_answered_0_when_nothing_can_be_received) {
    for (const int error : {EAGAIN, ENOBUFS, EINTR}) {
        NetlinkCalls kernel;
        kernel.fail("recv", 1, error);
        EXPECT_EQ(event_if_waitevent(fd, family, 1, 1000, 0), 0);
        EXPECT_EQ(kernel.calls.size(), 2U);
    }
}

TEST(WaitEventCalls, are_not_made_for_a_descriptor_that_does_not_fit_a_set) {
    NetlinkCalls kernel;
    EXPECT_EQ(event_if_waitevent(-1, family, 1, 1000, 0), -1);
    EXPECT_EQ(event_if_waitevent(1024, family, 1, 1000, 0), -1);
    EXPECT_EQ(kernel.calls, Calls{});
}

}  // namespace
}  // namespace ZR::test
