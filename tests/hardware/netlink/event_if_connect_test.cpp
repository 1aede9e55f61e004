// event_if_connect on the kernel's own controller and families.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/netlink.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "hardware/netlink/event_interface.h"
#include "tests/hardware/netlink/message.h"
#include "tests/hardware/netlink/private_network.h"
#include "tests/support/output_capture.h"

namespace ZR::test {
namespace {

constexpr int untouched = 4711;
constexpr char notResolved[] =
    "Retrieving family and multicast ID from driver failed with error 0 (Success)\n";

/// The number that the next descriptor would have: the same before and after when none is left open.
int nextDescriptor() {
    const int fd = ::dup(STDERR_FILENO);
    ::close(fd);
    return fd;
}

class RealController : public testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = enterPrivateNetwork(); !reason.empty())
            GTEST_SKIP() << "[  SKIPPED ] " << reason;
    }

    int connect(const std::string& name) {
        OutputCapture capture;
        errno = 0;
        const int fd = event_if_connect(name.c_str(), &familyId, groupName, &groupId);
        capture.release();
        output = capture.output();
        return fd;
    }

    void expectUnresolved(const std::string& name) {
        const int free = nextDescriptor();
        EXPECT_EQ(connect(name), -1) << name;
        EXPECT_EQ(output, notResolved) << name;
        EXPECT_EQ(familyId, -1) << name;
        EXPECT_EQ(nextDescriptor(), free) << name;
    }

    int familyId = untouched;
    char groupName[276] = "before";
    int groupId = untouched;
    std::string output;
};

std::vector<int> groupsOf(int fd) {
    std::array<std::uint32_t, 32> bits{};
    socklen_t size = sizeof bits;
    EXPECT_EQ(::getsockopt(fd, SOL_NETLINK, NETLINK_LIST_MEMBERSHIPS, bits.data(), &size), 0);
    std::vector<int> groups;
    for (std::size_t i = 0; i < bits.size() * 32; ++i)
        if ((bits[i / 32] >> (i % 32) & 1U) != 0)
            groups.push_back(static_cast<int>(i + 1));
    return groups;
}

int option(int fd, int name) {
    int value = -1;
    socklen_t size = sizeof value;
    EXPECT_EQ(::getsockopt(fd, SOL_SOCKET, name, &value, &size), 0);
    return value;
}

TEST_F(RealController, resolves_its_own_family_and_joins_its_group) {
    const int fd = connect(controllerName);
    ASSERT_GE(fd, 0);
    EXPECT_EQ(familyId, controllerFamily);
    EXPECT_STREQ(groupName, "notify");
    EXPECT_EQ(groupId, controllerGroup);
    EXPECT_EQ(output, "");
    EXPECT_EQ(groupsOf(fd), std::vector<int>{controllerGroup});
    event_if_disconnect(fd);
}

TEST_F(RealController, gives_a_raw_socket_that_is_bound_and_closed_on_exec) {
    const int fd = connect(controllerName);
    ASSERT_GE(fd, 0);
    sockaddr_nl address{};
    socklen_t size = sizeof address;
    EXPECT_EQ(::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size), 0);
    EXPECT_NE(address.nl_pid, 0U);
    EXPECT_EQ(option(fd, SO_TYPE), SOCK_RAW);
    EXPECT_EQ(option(fd, SO_PROTOCOL), NETLINK_GENERIC);
    EXPECT_EQ(::fcntl(fd, F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(::fcntl(fd, F_GETFL) & O_NONBLOCK, 0);
    event_if_disconnect(fd);
}

TEST_F(RealController, joins_a_drivers_group_beside_its_own) {
    const int fd = connect("IOAM6");
    if (fd == -1)
        GTEST_SKIP() << "[  SKIPPED ] the kernel's family IOAM6 has no group or is missing";
    EXPECT_STREQ(groupName, "ioam6_events");
    EXPECT_GT(familyId, controllerFamily);
    EXPECT_EQ(groupsOf(fd), (std::vector<int>{groupId, controllerGroup}));
    event_if_disconnect(fd);
}

TEST_F(RealController, gives_a_connection_that_notifications_arrive_on) {
    const int fd = connect(controllerName);
    ASSERT_GE(fd, 0);
    const GroupSender driver(controllerGroup);
    ASSERT_TRUE(driver.send(message(controllerFamily, attribute(1, 7U) + attribute(3, 9U), 4)));
    std::uint32_t first = 0;
    std::uint32_t second = 0;
    EXPECT_EQ(event_if_waitevent(fd, familyId, 4, 999999, 2, &first, &second), 1);
    EXPECT_EQ(first, 7U);
    EXPECT_EQ(second, 9U);
    event_if_disconnect(fd);
}

TEST_F(RealController, does_not_know_a_family) {
    expectUnresolved("no_such_family");
    expectUnresolved("");
    expectUnresolved("NLCTRL");
}

TEST_F(RealController, refuses_names_longer_than_a_family_can_have) {
    expectUnresolved(std::string(16, 'x'));
    expectUnresolved(std::string(251, 'x'));
    expectUnresolved(std::string(252, 'x'));
    expectUnresolved(std::string(70000, 'x'));
}

TEST_F(RealController, has_families_without_groups_that_cannot_be_connected_to) {
    expectUnresolved("TASKSTATS");
    expectUnresolved("tcp_metrics");
}

TEST_F(RealController, gives_answers_longer_than_the_buffer_that_are_refused) {
    // Some 1 KiB of operations.
    expectUnresolved("ethtool");
}

TEST_F(RealController, leaves_what_errno_held_in_the_line) {
    OutputCapture capture;
    errno = ENOTTY;
    EXPECT_EQ(event_if_connect("no_such_family", &familyId, groupName, &groupId), -1);
    capture.release();
    EXPECT_EQ(capture.output(),
              "Retrieving family and multicast ID from driver failed with error 25 "
              "(Inappropriate ioctl for device)\n");
}

TEST_F(RealController, is_not_asked_without_a_descriptor) {
    rlimit none{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &none), 0);
    OutputCapture capture;
    none.rlim_cur = static_cast<rlim_t>(nextDescriptor());
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    const int fd = event_if_connect(controllerName, &familyId, groupName, &groupId);
    none.rlim_cur = none.rlim_max;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    capture.release();
    EXPECT_EQ(fd, -1);
    EXPECT_EQ(capture.output(),
              "Creating generic netlink socket failed with error 24 (Too many open files)\n");
    EXPECT_EQ(familyId, untouched);
}

TEST_F(RealController, is_forgotten_by_disconnect) {
    const int fd = connect(controllerName);
    ASSERT_GE(fd, 0);
    event_if_disconnect(fd);
    EXPECT_EQ(::fcntl(fd, F_GETFD), -1);
    event_if_disconnect(-1);
}

}  // namespace

/// The machine's own network: only there are families with their groups right behind the header.
TEST(MachineController, resolves_a_family_whose_groups_stand_at_index_5) {
    int familyId = untouched;
    char groupName[276];
    int groupId = untouched;
    OutputCapture capture;
    const int fd = event_if_connect("acpi_event", &familyId, groupName, &groupId);
    capture.release();
    if (fd == -1)
        GTEST_SKIP() << "[  SKIPPED ] the kernel has no family acpi_event";
    EXPECT_STREQ(groupName, "acpi_mc_group");
    EXPECT_GT(familyId, controllerFamily);
    EXPECT_EQ(groupsOf(fd), (std::vector<int>{groupId, controllerGroup}));
    event_if_disconnect(fd);
}

}  // namespace ZR::test
