// The conversation of event_if_connect, call by call, with a kernel that does what it is told.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/netlink.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "hardware/netlink/event_interface.h"
#include "tests/hardware/netlink/message.h"
#include "tests/hardware/netlink/netlink_call_substitute.h"
#include "tests/support/output_capture.h"

namespace ZR::test {
namespace {

using namespace std::string_view_literals;
using Calls = std::vector<std::string>;

constexpr long requestSize = 32;
constexpr int untouched = 4711;

std::string reply(const std::string& id) {
    const std::string group = attribute(2, 9U) + attribute(1, "events\0"sv);
    return message(0x10, attribute(2, "ZR_DI\0"sv) + id + attribute(3, 1U) + attribute(4, 0U) +
                             attribute(5, 3U) + attribute(7, attribute(1, group)));
}

const std::string goodReply = reply(attribute(1, "\x1E\0"sv));

std::string request() {
    const auto port = static_cast<std::uint32_t>(::getpid());
    return bytesOf(std::uint32_t{requestSize}) + std::string("\x10\0\1\0\0\0\0\0"sv) +
           bytesOf(port) + std::string("\3\1\0\0"sv) + std::string("\x0A\0\2\0ZR_DI\0\0\0"sv);
}

std::string failed(const std::string& what, int error) {
    return what + " failed with error " + std::to_string(error) + " (" + std::strerror(error) +
           ")\n";
}

class ConnectCalls : public testing::Test {
  protected:
    ConnectCalls() { kernel.reply = goodReply; }

    /// Connects, with nothing left in errno.
    int connect() {
        OutputCapture capture;
        errno = 0;
        const int fd = event_if_connect("ZR_DI", &familyId, groupName, &groupId);
        capture.release();
        output = capture.output();
        return fd;
    }

    bool isClosed() const { return ::fcntl(kernel.socket, F_GETFD) == -1; }

    /// The calls in the order of a good connection, up to the @p count-th.
    Calls callsUpTo(std::size_t count) const {
        const std::string fd = ' ' + std::to_string(kernel.socket) + ' ';
        const Calls all{"socket 16 " + std::to_string(SOCK_RAW | SOCK_CLOEXEC) + " 16",
                        "bind" + fd + "16 0 0 12",
                        "setsockopt" + fd + "270 1 16 4",
                        "sendto" + fd + "32 0 16 0 0 12",
                        "recv" + fd + "276 0",
                        "setsockopt" + fd + "270 1 9 4"};
        return {all.begin(), all.begin() + static_cast<std::ptrdiff_t>(count)};
    }

    void expectFailure(const std::string& what, int error, std::size_t calls) {
        EXPECT_EQ(connect(), -1);
        EXPECT_EQ(output, failed(what, error));
        EXPECT_EQ(kernel.calls, callsUpTo(calls));
        EXPECT_TRUE(isClosed());
    }

    void expectUnresolved(int error, std::size_t calls) {
        expectFailure("Retrieving family and multicast ID from driver", error, calls);
        EXPECT_EQ(familyId, -1);
        EXPECT_STREQ(groupName, "before");
        EXPECT_EQ(groupId, untouched);
    }

    NetlinkCalls kernel;
    int familyId = untouched;
    char groupName[64] = "before";
    int groupId = untouched;
    std::string output;
};

TEST_F(ConnectCalls, are_made_in_order_with_these_arguments) {
    const int fd = connect();
    EXPECT_EQ(fd, kernel.socket);
    EXPECT_FALSE(isClosed());
    EXPECT_EQ(kernel.calls, callsUpTo(6));
    EXPECT_EQ(kernel.sent, request());
    EXPECT_EQ(familyId, 0x1E);
    EXPECT_STREQ(groupName, "events");
    EXPECT_EQ(groupId, 9);
    EXPECT_EQ(output, "");
    event_if_disconnect(fd);
    EXPECT_TRUE(isClosed());
}

TEST_F(ConnectCalls, end_when_no_socket_is_given) {
    kernel.fail("socket", 1, EMFILE);
    EXPECT_EQ(connect(), -1);
    EXPECT_EQ(output,
              "Creating generic netlink socket failed with error 24 (Too many open files)\n");
    EXPECT_EQ(kernel.calls, callsUpTo(1));
    EXPECT_EQ(familyId, untouched);
}

TEST_F(ConnectCalls, end_when_the_socket_cannot_be_bound) {
    kernel.fail("bind", 1, EADDRINUSE);
    expectFailure("Binding to generic netlink socket", EADDRINUSE, 2);
    EXPECT_EQ(familyId, untouched);
}

TEST_F(ConnectCalls, end_when_the_controllers_group_cannot_be_joined) {
    kernel.fail("setsockopt", 1, EPERM);
    expectFailure("Connecting to CTRL multicast group", EPERM, 3);
    EXPECT_EQ(familyId, untouched);
}

TEST_F(ConnectCalls, end_when_the_question_cannot_be_sent) {
    kernel.fail("sendto", 1, ENOBUFS);
    expectUnresolved(ENOBUFS, 4);
}

TEST_F(ConnectCalls, end_when_the_answer_cannot_be_received) {
    kernel.fail("recv", 1, ENOMEM);
    expectUnresolved(ENOMEM, 5);
}

TEST_F(ConnectCalls, end_when_the_drivers_group_cannot_be_joined) {
    kernel.fail("setsockopt", 2, EPERM);
    expectFailure("Connecting to multicast group of driver", EPERM, 6);
    EXPECT_EQ(familyId, 0x1E);
    EXPECT_STREQ(groupName, "events");
    EXPECT_EQ(groupId, 9);
}

TEST_F(ConnectCalls, are_not_repeated_when_they_are_interrupted) {
    struct Step {
        const char* call;
        int occurrence;
        std::size_t calls;
    };
    for (const Step& step : {Step{"socket", 1, 1},
                             {"bind", 1, 2},
                             {"setsockopt", 1, 3},
                             {"sendto", 1, 4},
                             {"recv", 1, 5},
                             {"setsockopt", 2, 6}}) {
        kernel.calls.clear();
        kernel.fail(step.call, step.occurrence, EINTR);
        EXPECT_EQ(connect(), -1) << step.call;
        EXPECT_EQ(kernel.calls.size(), step.calls) << step.call;
        EXPECT_NE(output.find("failed with error 4 (Interrupted system call)\n"),
                  std::string::npos);
    }
}

TEST_F(ConnectCalls, print_errno_as_it_stands_when_the_answer_is_refused) {
    kernel.reply = message(NLMSG_ERROR, "1234");
    expectUnresolved(0, 5);
    EXPECT_EQ(output,
              "Retrieving family and multicast ID from driver failed with error 0 (Success)\n");
}

TEST_F(ConnectCalls, refuse_an_answer_that_is_short_cut_off_or_of_another_command) {
    for (const std::string& bad :
         {std::string(), goodReply.substr(0, 15), goodReply.substr(0, goodReply.size() - 1),
          withLength(goodReply, 277), withLength(goodReply, 15), message(0x10, "", 2)}) {
        kernel.calls.clear();
        kernel.reply = bad;
        expectUnresolved(0, 5);
    }
}

TEST_F(ConnectCalls, take_a_name_of_251_characters_and_no_longer_one) {
    OutputCapture capture;
    errno = 0;
    EXPECT_EQ(event_if_connect(std::string(252, 'x').c_str(), &familyId, groupName, &groupId), -1);
    EXPECT_EQ(kernel.calls, callsUpTo(3));
    EXPECT_TRUE(isClosed());
    EXPECT_EQ(familyId, -1);
    const int fd = event_if_connect(std::string(251, 'x').c_str(), &familyId, groupName, &groupId);
    capture.release();
    EXPECT_EQ(capture.output(),
              "Retrieving family and multicast ID from driver failed with error 0 (Success)\n");
    EXPECT_NE(fd, -1);
    EXPECT_EQ(kernel.sent.size(), 276U);
    event_if_disconnect(fd);
}

TEST_F(ConnectCalls, leave_family_0_when_the_answer_has_its_number_elsewhere) {
    kernel.reply = reply(attribute(9, "\x1E\0"sv));
    const int fd = connect();
    EXPECT_EQ(fd, kernel.socket);
    EXPECT_EQ(familyId, 0);
    EXPECT_EQ(kernel.calls, callsUpTo(6));
    event_if_disconnect(fd);
}

TEST_F(ConnectCalls, send_the_rest_of_a_question_that_was_taken_in_part) {
    kernel.sends = {{5, 0}, {1, 0}, {20, 0}};
    const int fd = connect();
    EXPECT_NE(fd, -1);
    EXPECT_EQ(kernel.sent, request());
    const std::string to = "sendto " + std::to_string(kernel.socket) + ' ';
    EXPECT_EQ(Calls(kernel.calls.begin() + 3, kernel.calls.begin() + 7),
              (Calls{to + "32 0 16 0 0 12", to + "27 0 16 0 0 12", to + "26 0 16 0 0 12",
                     to + "6 0 16 0 0 12"}));
    event_if_disconnect(fd);
}

TEST_F(ConnectCalls, send_again_when_the_socket_was_full) {
    kernel.sends = {{-1, EAGAIN}, {-1, EAGAIN}, {10, 0}, {-1, EAGAIN}};
    const int fd = connect();
    EXPECT_NE(fd, -1);
    EXPECT_EQ(kernel.sent, request());
    EXPECT_EQ(kernel.calls.size(), 10U);
    event_if_disconnect(fd);
}

TEST_F(ConnectCalls, end_when_the_rest_of_the_question_cannot_be_sent) {
    kernel.sends = {{10, 0}, {-1, ECONNREFUSED}};
    EXPECT_EQ(connect(), -1);
    EXPECT_EQ(output, failed("Retrieving family and multicast ID from driver", ECONNREFUSED));
    EXPECT_EQ(kernel.calls.size(), 5U);
    EXPECT_TRUE(isClosed());
}

TEST_F(ConnectCalls, end_when_nothing_of_the_question_is_taken) {
    kernel.sends = {{0, EIO}};
    expectUnresolved(EIO, 4);
}

TEST_F(ConnectCalls, go_on_when_nothing_was_taken_because_the_socket_was_full) {
    kernel.sends = {{0, EAGAIN}};
    const int fd = connect();
    EXPECT_NE(fd, -1);
    EXPECT_EQ(kernel.sent, request());
    event_if_disconnect(fd);
}

}  // namespace
}  // namespace ZR::test
