// event_if_waitevent on real sockets.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <string>

#include "hardware/netlink/event_interface.h"
#include "tests/hardware/netlink/message.h"
#include "tests/hardware/netlink/private_network.h"

namespace ZR::test {
namespace {

constexpr int family = 30;
constexpr int command = 2;
constexpr int briefly = 1000;
constexpr int amply = 999999;

/// A destination that shows what was written to it.
struct Destination {
    char bytes[16];
    Destination() { std::memset(bytes, '-', sizeof bytes); }
    std::string text() const { return {bytes, sizeof bytes}; }
};

const std::string untouched = Destination().text();

std::string copied(const std::string& payload) {
    return payload + untouched.substr(payload.size());
}

class WaitEvent : public testing::Test {
  protected:
    int wait(int count, int timeout = amply) {
        return event_if_waitevent(sockets.reader(), family, command, timeout, count, first.bytes,
                                  second.bytes, third.bytes);
    }

    void expectDropped(const std::string& bytes, int count) {
        ASSERT_TRUE(sockets.send(bytes));
        EXPECT_EQ(wait(count), 0);
        EXPECT_EQ(first.text() + second.text() + third.text(), untouched + untouched + untouched);
        EXPECT_FALSE(sockets.holdsMessage());
    }

    SocketPair sockets;
    Destination first;
    Destination second;
    Destination third;
};

const std::string two = attribute(1, "ai.0!") + attribute(3, "word");

TEST_F(WaitEvent, copies_each_payload_to_its_destination) {
    ASSERT_TRUE(sockets.send(
        message(family, attribute(9, "12345") + attribute(0, "") + attribute(1, "x"), command)));
    EXPECT_EQ(wait(3), 1);
    EXPECT_EQ(first.text(), copied("12345"));
    EXPECT_EQ(second.text(), untouched);
    EXPECT_EQ(third.text(), copied("x"));
}

TEST_F(WaitEvent, takes_one_message_a_call) {
    ASSERT_TRUE(sockets.send(message(family, two, command + 1)));
    ASSERT_TRUE(sockets.send(message(family, two, command)));
    EXPECT_EQ(wait(2), 0);
    EXPECT_EQ(wait(2), 1);
    EXPECT_EQ(first.text(), copied("ai.0!"));
    EXPECT_EQ(second.text(), copied("word"));
    EXPECT_EQ(wait(2, 0), 0);
}

TEST_F(WaitEvent, takes_a_message_without_attributes_when_none_is_expected) {
    ASSERT_TRUE(sockets.send(message(family, "", command)));
    EXPECT_EQ(wait(0), 1);
    EXPECT_EQ(first.text(), untouched);
}

TEST_F(WaitEvent, takes_a_last_attribute_without_padding) {
    ASSERT_TRUE(sockets.send(message(family, attributeHeader(5, 1) + "x", command)));
    EXPECT_EQ(wait(1), 1);
    EXPECT_EQ(first.text(), copied("x"));
}

TEST_F(WaitEvent, drops_another_family) {
    expectDropped(message(family + 1, two, command), 2);
    expectDropped(message(2, two, command), 2);
}

TEST_F(WaitEvent, compares_the_family_with_all_of_its_bits) {
    ASSERT_TRUE(sockets.send(message(family, two, command)));
    EXPECT_EQ(event_if_waitevent(sockets.reader(), family + 0x10000, command, amply, 2, first.bytes,
                                 second.bytes),
              0);
}

TEST_F(WaitEvent, drops_another_command) {
    expectDropped(message(family, two, command + 1), 2);
    ASSERT_TRUE(sockets.send(message(family, two, command)));
    EXPECT_EQ(event_if_waitevent(sockets.reader(), family, command + 0x100, amply, 2, first.bytes,
                                 second.bytes),
              0);
}

TEST_F(WaitEvent, drops_one_attribute_more_than_expected) {
    expectDropped(message(family, two + attribute(4, "more"), command), 2);
    expectDropped(message(family, attribute(1, "x"), command), 0);
}

TEST_F(WaitEvent, drops_one_attribute_less_than_expected) {
    expectDropped(message(family, two, command), 3);
    expectDropped(message(family, "", command), 1);
}

TEST_F(WaitEvent, drops_what_is_shorter_than_a_header) {
    expectDropped(message(family, "", command).substr(0, 15), 0);
    expectDropped("x", 0);
}

TEST_F(WaitEvent, drops_a_length_field_that_cannot_be) {
    const std::string good = message(family, two, command);
    for (const std::uint32_t length :
         {0U, 8U, 15U, static_cast<std::uint32_t>(good.size() + 1), 277U, 0x80000000U, 0xFFFFFFFFU})
        expectDropped(withLength(good, length), 2);
}

TEST_F(WaitEvent, drops_a_message_without_a_generic_header) {
    for (const std::uint32_t length : {16U, 17U, 18U, 19U}) {
        const std::string bytes = withLength(message(family, "", command), length);
        expectDropped(bytes, 0);
        ASSERT_TRUE(sockets.send(bytes));
        EXPECT_EQ(event_if_waitevent(sockets.reader(), family, -1, amply, 0), 0);
    }
}

TEST_F(WaitEvent, takes_276_bytes_and_drops_277) {
    const std::string room(MessageBuffer::size - messageHeaderSize - 4, 'x');
    const std::string longer =
        message(family, attributeHeader(MessageBuffer::size - 15, 1) + room + "x", command);
    ASSERT_EQ(longer.size(), MessageBuffer::size + 1);
    expectDropped(longer, 1);
    ASSERT_TRUE(sockets.send(message(family, attribute(1, room), command)));
    char large[MessageBuffer::size] = "";
    EXPECT_EQ(event_if_waitevent(sockets.reader(), family, command, amply, 1, large), 1);
    EXPECT_EQ(std::string(large), room);
}

TEST_F(WaitEvent, drops_attributes_that_do_not_lie_inside_the_message) {
    const std::string one = attribute(1, "good");
    expectDropped(message(family, one + attributeHeader(9, 3) + "1234", command), 2);
    expectDropped(message(family, one + attributeHeader(0xFFFF, 3), command), 2);
    expectDropped(message(family, one + attributeHeader(0, 3), command), 2);
    expectDropped(message(family, one + attributeHeader(3, 3), command), 2);
    expectDropped(message(family, one + "abc", command), 2);
    expectDropped(message(family, attributeHeader(0, 3) + one, command), 1);
    expectDropped(message(family, attributeHeader(2, 3) + one, command), 2);
}

TEST_F(WaitEvent, answers_0_after_the_time) {
    for (const int microseconds : {20000, 1050000}) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(wait(2, microseconds), 0);
        EXPECT_GE(std::chrono::steady_clock::now() - start,
                  std::chrono::microseconds(microseconds));
    }
}

TEST_F(WaitEvent, answers_minus_1_for_a_negative_time) {
    ASSERT_TRUE(sockets.send(message(family, two, command)));
    EXPECT_EQ(wait(2, -1), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_TRUE(sockets.holdsMessage());
}

TEST_F(WaitEvent, answers_minus_1_without_a_descriptor) {
    EXPECT_EQ(event_if_waitevent(-1, family, command, amply, 0), -1);
    const int closed = ::dup(STDERR_FILENO);
    ::close(closed);
    EXPECT_EQ(event_if_waitevent(closed, family, command, amply, 0), -1);
}

TEST_F(WaitEvent, answers_minus_1_for_a_descriptor_that_select_cannot_watch) {
    rlimit files{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &files), 0);
    files.rlim_cur = files.rlim_max;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &files), 0);
    if (files.rlim_cur <= FD_SETSIZE)
        GTEST_SKIP() << "[  SKIPPED ] the machine has no descriptors beyond those of select";
    ASSERT_TRUE(sockets.send(message(family, two, command)));
    ASSERT_EQ(::dup3(sockets.reader(), FD_SETSIZE, O_CLOEXEC), FD_SETSIZE);
    EXPECT_EQ(event_if_waitevent(FD_SETSIZE, family, command, amply, 2, first.bytes, second.bytes),
              -1);
    EXPECT_TRUE(sockets.holdsMessage());
    ASSERT_EQ(::dup3(sockets.reader(), FD_SETSIZE - 1, O_CLOEXEC), FD_SETSIZE - 1);
    EXPECT_EQ(
        event_if_waitevent(FD_SETSIZE - 1, family, command, amply, 2, first.bytes, second.bytes),
        1);
}

TEST_F(WaitEvent, answers_0_when_the_other_side_hung_up) {
    sockets.hangUp();
    EXPECT_EQ(wait(0, briefly), 0);
}

}  // namespace
}  // namespace ZR::test
