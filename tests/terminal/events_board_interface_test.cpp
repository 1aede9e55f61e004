#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/genetlink.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "board.h"
#include "events_application.h"
#include "hardware/netlink/event_interface.h"
#include "tests/hardware/netlink/message.h"
#include "tests/support/output_capture.h"

namespace ZR::test {
namespace {

constexpr int wait = longest * 1000;  // microseconds
constexpr int command = 1;
constexpr int controllerGroup = 16;
constexpr char notResolved[] =
    "Retrieving family and multicast ID from driver failed with error 0 (Success)\n";

std::uint32_t bitOf(int group) {
    return 1U << static_cast<unsigned int>(group - 1);
}

/// What one connection attempt left behind.
struct Attempt {
    explicit Attempt(const std::string& family) {
        const OutputCapture capture;
        errno = 0;
        socket = event_if_connect(family.c_str(), &familyId, groupName, &groupId);
        printed = capture.output();
    }
    Attempt(const Attempt&) = delete;
    Attempt& operator=(const Attempt&) = delete;
    ~Attempt() {
        if (socket >= 0)
            event_if_disconnect(socket);
    }

    int socket = -2;
    int familyId = -7;
    int groupId = -7;
    char groupName[16] = "untouched";
    std::string printed;
};

/// What event_if_waitevent() copied of a digital notification.
struct Copied {
    std::uint32_t channel = 0xEEEEEEEE;
    std::uint32_t flags = 0xEEEEEEEE;
    std::uint32_t value = 0xEEEEEEEE;

    int waitOn(const Attempt& connection, int expectedCommand = command, int timeout = wait) {
        return event_if_waitevent(connection.socket, connection.familyId, expectedCommand, timeout,
                                  3, &channel, &flags, &value);
    }
    bool isUntouched() const {
        return channel == 0xEEEEEEEE && flags == 0xEEEEEEEE && value == 0xEEEEEEEE;
    }
};

/// The next message of a socket as it came.
MessageBuffer nextMessage(int socket) {
    MessageBuffer buffer{};
    EXPECT_GT(::recv(socket, buffer.bytes.data(), MessageBuffer::size, MSG_DONTWAIT), 0);
    return buffer;
}

std::string payloadOf(const nlattr* attribute) {
    return {reinterpret_cast<const char*>(attribute) + NLA_HDRLEN,
            attribute->nla_len - std::size_t{NLA_HDRLEN}};
}

class EventsBoardInterface : public EventsBoard {};

}  // namespace

TEST_F(EventsBoardInterface, a_connection_knows_the_family_and_the_group_that_genl_knows) {
    for (const char* name : {inputs, outputs, analog}) {
        const Attempt connection(name);
        const Family family = seenByGenl(name);
        EXPECT_GE(connection.socket, 0) << name;
        EXPECT_GT(family.id, 0) << name;
        EXPECT_EQ(family.id, connection.familyId) << name;
        EXPECT_EQ(family.groupId, connection.groupId) << name;
        EXPECT_EQ(family.groupName, connection.groupName) << name;
        EXPECT_STREQ("events", connection.groupName) << name;
        EXPECT_EQ("", connection.printed);
    }
}

TEST_F(EventsBoardInterface, a_connection_is_in_the_controller_s_and_the_driver_s_group_alone) {
    for (const char* name : {inputs, outputs, analog}) {
        const Attempt connection(name);
        const SocketState state = seenByKernel(connection.socket);
        EXPECT_EQ(bitOf(controllerGroup) | bitOf(connection.groupId), state.groups) << name;
        EXPECT_EQ(0, state.unread) << name;
        EXPECT_EQ(FD_CLOEXEC, ::fcntl(connection.socket, F_GETFD)) << name;
    }
}

TEST_F(EventsBoardInterface, an_unknown_family_is_told_and_leaves_nothing_open) {
    const int before = openDescriptors();
    for (const char* name :
         {"ZR_XX", "zr_di", "ZR_DI ", "", "a name far longer than any family's"}) {
        const Attempt connection(name);
        EXPECT_EQ(-1, connection.socket) << name;
        EXPECT_EQ(-1, connection.familyId) << name;
        EXPECT_STREQ("untouched", connection.groupName) << name;
        EXPECT_EQ(-7, connection.groupId) << name;
        EXPECT_EQ(notResolved, connection.printed) << name;
    }
    EXPECT_EQ(before, openDescriptors());
}

TEST_F(EventsBoardInterface, a_family_without_a_group_is_told_and_leaves_nothing_open) {
    turn("notify/ZR_QUIET/registered", "1");
    EXPECT_GT(seenByGenl("ZR_QUIET").id, 0);
    const int before = openDescriptors();
    const Attempt connection("ZR_QUIET");
    EXPECT_EQ(-1, connection.socket);
    EXPECT_EQ(-1, connection.familyId);
    EXPECT_EQ(notResolved, connection.printed);
    EXPECT_EQ(before, openDescriptors());
}

TEST_F(EventsBoardInterface, the_kernel_s_own_families_are_resolved_as_genl_resolves_them) {
    const Attempt controller("nlctrl");
    EXPECT_EQ(16, controller.familyId);
    EXPECT_EQ(seenByGenl("nlctrl").groupId, controller.groupId);
    EXPECT_STREQ("notify", controller.groupName);
    const Attempt power("acpi_event");
    EXPECT_EQ(seenByGenl("acpi_event").id, power.familyId);
    EXPECT_EQ(seenByGenl("acpi_event").groupId, power.groupId);
}

TEST_F(EventsBoardInterface, a_notification_is_waited_for_and_copied) {
    const Attempt connection(inputs);
    Copied copied;
    turn("zr_di.1/state/value", "5");
    EXPECT_EQ(1, copied.waitOn(connection));
    EXPECT_EQ(1U, copied.channel);
    EXPECT_EQ(1U, copied.flags);
    EXPECT_EQ(5U, copied.value);
}

TEST_F(EventsBoardInterface, a_channel_s_name_is_copied_with_its_nul) {
    const Attempt connection(analog);
    char name[16] = "***************";
    std::uint32_t flags = 0;
    std::uint32_t value = 0;
    turn("ai.2/value/value", "4711");
    EXPECT_EQ(1, event_if_waitevent(connection.socket, connection.familyId, command, wait, 3, name,
                                    &flags, &value));
    EXPECT_EQ(std::string("ai.2\0**********", 15), std::string(name, 15));
    EXPECT_EQ(1U, flags);
    EXPECT_EQ(4711U, value);
}

TEST_F(EventsBoardInterface, silence_is_0_after_the_time) {
    const Attempt connection(outputs);
    Copied copied;
    EXPECT_EQ(0, copied.waitOn(connection, command, 0));
    EXPECT_EQ(0, copied.waitOn(connection, command, 1000));
    EXPECT_TRUE(copied.isUntouched());
}

TEST_F(EventsBoardInterface, another_command_is_0_and_gone) {
    const Attempt connection(inputs);
    Copied copied;
    turn("zr_di.0/state/value", "5");
    EXPECT_EQ(0, copied.waitOn(connection, command + 1));
    EXPECT_TRUE(copied.isUntouched());
    EXPECT_EQ(0, seenByKernel(connection.socket).unread);
    turn("notify/ZR_DI/malformed", "wrong_command");
    EXPECT_EQ(1, copied.waitOn(connection, command + 1));
    EXPECT_EQ(1U, copied.value);
}

TEST_F(EventsBoardInterface, one_attribute_more_or_less_is_0_and_copies_nothing) {
    const Attempt connection(inputs);
    Copied copied;
    for (const char* word : {"two", "four", "none"}) {
        turn("notify/ZR_DI/malformed", word);
        EXPECT_EQ(0, copied.waitOn(connection)) << word;
        EXPECT_TRUE(copied.isUntouched()) << word;
    }
    turn("zr_di.0/state/value", "5");
    EXPECT_EQ(1, copied.waitOn(connection));
    EXPECT_EQ(5U, copied.value);
}

TEST_F(EventsBoardInterface, four_attributes_are_copied_to_who_expects_four) {
    const Attempt connection(inputs);
    Copied copied;
    std::uint32_t fourth = 0;
    turn("notify/ZR_DI/malformed", "four");
    EXPECT_EQ(1, event_if_waitevent(connection.socket, connection.familyId, command, wait, 4,
                                    &copied.channel, &copied.flags, &copied.value, &fourth));
    EXPECT_EQ(0x01010101U, fourth);
    turn("notify/ZR_DI/malformed", "none");
    EXPECT_EQ(1, event_if_waitevent(connection.socket, connection.familyId, command, wait, 0));
}

TEST_F(EventsBoardInterface, what_does_not_hold_together_is_0_and_copies_nothing) {
    const Attempt connection(inputs);
    Copied copied;
    for (const char* word : {"zero_length", "zero_length_last", "short_length", "past_end",
                             "past_end_first", "cut_header", "long", "wrong_family", "length_below",
                             "length_headers", "length_above", "truncated", "empty"}) {
        turn("notify/ZR_DI/malformed", word);
        EXPECT_EQ(0, copied.waitOn(connection)) << word;
        EXPECT_TRUE(copied.isUntouched()) << word;
        const Told good = sentinel(inputs);
        Copied next;
        EXPECT_EQ(1, next.waitOn(connection)) << word;
        EXPECT_EQ(good, (Told{next.channel, next.value})) << word;
    }
}

TEST_F(EventsBoardInterface, the_controller_s_notices_are_0) {
    const Attempt connection(inputs);
    Copied copied;
    turn("notify/ZR_QUIET/registered", "1");
    EXPECT_GT(seenByKernel(connection.socket).unread, 0);
    EXPECT_EQ(0, copied.waitOn(connection));
    EXPECT_TRUE(copied.isUntouched());
}

TEST_F(EventsBoardInterface, attributes_of_a_real_notification_are_counted_and_found) {
    const Attempt connection(analog);
    turn("light/value/value", "1500");
    const MessageBuffer buffer = nextMessage(connection.socket);
    const nlmsghdr* const message = buffer.header();
    ASSERT_EQ(3, attr_count(message));
    for (int index = 0; index < 3; ++index)
        EXPECT_EQ(index + 1, attr_get(message, index)->nla_type);
    EXPECT_EQ(std::string("light\0", 6), payloadOf(attr_get(message, 0)));
    EXPECT_EQ(bytesOf(1U), payloadOf(attr_get(message, 1)));
    EXPECT_EQ(bytesOf(1500U), payloadOf(attr_get(message, 2)));
    EXPECT_EQ(nullptr, attr_get(message, 3));
    EXPECT_EQ(nullptr, attr_get(message, -1));
}

TEST_F(EventsBoardInterface, attributes_of_the_controller_s_notice_are_counted_and_found) {
    const Attempt connection(inputs);
    turn("notify/ZR_QUIET/registered", "1");
    const MessageBuffer buffer = nextMessage(connection.socket);
    const nlmsghdr* const message = buffer.header();
    ASSERT_EQ(GENL_ID_CTRL, message->nlmsg_type);
    ASSERT_GE(attr_count(message), 2);
    EXPECT_EQ(std::string("ZR_QUIET\0", 9), payloadOf(attr_get(message, 0)));
    const std::string number = payloadOf(attr_get(message, 1));
    EXPECT_EQ(bytesOf(static_cast<std::uint16_t>(seenByGenl("ZR_QUIET").id)), number);
    EXPECT_EQ(nullptr, attr_get(message, attr_count(message)));
}

TEST_F(EventsBoardInterface, a_message_without_attributes_counts_none) {
    const Attempt connection(outputs);
    turn("notify/ZR_DO/malformed", "none");
    const MessageBuffer buffer = nextMessage(connection.socket);
    EXPECT_EQ(0, attr_count(buffer.header()));
    EXPECT_EQ(nullptr, attr_get(buffer.header(), 0));
}

TEST_F(EventsBoardInterface, each_listener_hears_every_notification) {
    const Attempt first(outputs);
    const Attempt second(outputs);
    Application application;
    turn("zr_do.1/state/value", "1");
    EXPECT_EQ((Told{17, 1}), application.next());
    for (const Attempt* connection : {&first, &second}) {
        Copied copied;
        EXPECT_EQ(1, copied.waitOn(*connection));
        EXPECT_EQ(1U, copied.channel);
        EXPECT_EQ(1U, copied.value);
    }
}

TEST_F(EventsBoardInterface, a_disconnected_socket_is_closed) {
    int familyId = 0;
    int groupId = 0;
    char groupName[16];
    const int before = openDescriptors();
    const int socket = event_if_connect(inputs, &familyId, groupName, &groupId);
    ASSERT_GE(socket, 0);
    event_if_disconnect(socket);
    EXPECT_EQ(-1, ::fcntl(socket, F_GETFD));
    EXPECT_EQ(before, openDescriptors());
}

TEST_F(EventsBoardInterface, a_hundred_connections_one_after_another_work) {
    for (int round = 0; round < 100; ++round) {
        const Attempt connection(inputs);
        ASSERT_GE(connection.socket, 0) << round;
    }
    const Attempt connection(inputs);
    Copied copied;
    turn("zr_di.0/state/value", "1");
    EXPECT_EQ(1, copied.waitOn(connection));
}

}  // namespace ZR::test
