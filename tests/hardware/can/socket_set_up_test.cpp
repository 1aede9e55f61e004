#include <fcntl.h>
#include <sys/resource.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "tests/hardware/can/can_calls.h"
#include "tests/support/output_capture.h"

// interfaceInit and the end of a socket.

namespace ZR::test {
namespace {

using CanSocketSetUp = CanSocketTest;

template <typename Record>
std::string bytes(const Record& record) {
    return hexadecimal(&record, sizeof record);
}

bool isEmpty(const fd_set& set) {
    return bytes(set) == bytes(fd_set{});
}

int openDescriptors() {
    int count = 0;
    for (int descriptor = 0; descriptor < 256; ++descriptor)
        if (::fcntl(descriptor, F_GETFD) >= 0)
            ++count;
    return count;
}

TEST_F(CanSocketSetUp, a_new_socket_has_done_nothing_yet) {
    const OpenSocket socket;
    EXPECT_EQ(socket.port, 0xFFFFFFFFU);
    EXPECT_EQ(bytes(socket.bindAddress), bytes(sockaddr_can{}));
    EXPECT_EQ(bytes(socket.interfaceRequest), bytes(ifreq{}));
    EXPECT_EQ(socket.addressLength, 24);
    EXPECT_TRUE(isEmpty(socket.readSet));
    EXPECT_FALSE(socket.initialized);
    EXPECT_FALSE(socket.polling);
    EXPECT_EQ(socket.pollTimeout, 0U);
    EXPECT_EQ(socket.socketDescriptor, -1);
    EXPECT_FALSE(socket.connected);
    EXPECT_TRUE(socket.filters.empty());
    EXPECT_EQ(socket.retryCount, 0);
    EXPECT_EQ(socket.retryDelay, 0);
    EXPECT_EQ(socket.lastError, 0);
    EXPECT_EQ(socket.lastErrno, 0);
    EXPECT_EQ(calls(), Calls{});
}

TEST_F(CanSocketSetUp, both_descriptors_are_the_socket_and_minus_1_before) {
    OpenSocket socket;
    EXPECT_EQ(socket.getReadEndPointID(), -1);
    EXPECT_EQ(socket.getWriteEndPointID(), -1);
    ASSERT_EQ(socket.interfaceInit("can0"), 0U);
    EXPECT_GE(socket.socketDescriptor, 0);
    EXPECT_EQ(socket.getReadEndPointID(), socket.socketDescriptor);
    EXPECT_EQ(socket.getWriteEndPointID(), socket.socketDescriptor);
}

TEST_F(CanSocketSetUp, makes_the_socket_sets_it_non_blocking_asks_the_index_and_binds) {
    OpenSocket socket;
    EXPECT_EQ(socket.interfaceInit("can1"), 0U);
    EXPECT_EQ(calls(), openingSocket("s1", "can1", 8));
    EXPECT_EQ(log_.reports(), Reports{});
}

TEST_F(CanSocketSetUp, the_socket_does_not_block_and_is_closed_on_exec) {
    OpenSocket socket;
    ASSERT_EQ(socket.interfaceInit("can0"), 0U);
    EXPECT_NE(::fcntl(socket.socketDescriptor, F_GETFL) & O_NONBLOCK, 0);
    EXPECT_NE(::fcntl(socket.socketDescriptor, F_GETFD) & FD_CLOEXEC, 0);
}

TEST_F(CanSocketSetUp, leaves_address_request_and_read_set_behind) {
    OpenSocket socket;
    ASSERT_EQ(socket.interfaceInit("can2"), 0U);
    EXPECT_EQ(socket.bindAddress.can_family, AF_CAN);
    EXPECT_EQ(socket.bindAddress.can_ifindex, 9);
    EXPECT_STREQ(socket.interfaceRequest.ifr_name, "can2");
    EXPECT_EQ(socket.interfaceRequest.ifr_ifindex, 9);
    fd_set expected{};
    FD_SET(socket.socketDescriptor, &expected);
    EXPECT_EQ(bytes(socket.readSet), bytes(expected));
    EXPECT_TRUE(socket.initialized);
}

TEST_F(CanSocketSetUp, what_was_in_the_read_set_before_is_gone) {
    OpenSocket socket;
    FD_SET(500, &socket.readSet);
    ASSERT_EQ(socket.interfaceInit("can0"), 0U);
    EXPECT_FALSE(FD_ISSET(500, &socket.readSet));
}

TEST_F(CanSocketSetUp, says_nothing_about_the_connection_and_the_port) {
    OpenSocket socket;
    ASSERT_EQ(socket.interfaceInit("can0"), 0U);
    EXPECT_FALSE(socket.isConnected());
    EXPECT_EQ(socket.port, 0xFFFFFFFFU);
}

TEST_F(CanSocketSetUp, a_second_time_returns_3_and_keeps_the_socket) {
    OpenSocket socket;
    ASSERT_EQ(socket.interfaceInit("can0"), 0U);
    const int descriptor = socket.socketDescriptor;
    CanSocketSubstitute::calls.clear();
    EXPECT_EQ(socket.interfaceInit("can1"), 3U);
    EXPECT_EQ(calls(), Calls{});
    EXPECT_EQ(socket.socketDescriptor, descriptor);
    EXPECT_STREQ(socket.interfaceRequest.ifr_name, "can0");
    EXPECT_EQ(log_.reports(), Reports{rawReport("interface has been initialized before!")});
}

TEST_F(CanSocketSetUp, a_failed_socket_returns_4_after_its_flags_were_set_in_vain) {
    for (const int error : {EAFNOSUPPORT, EMFILE, EPERM, EINTR}) {
        CanSocketSubstitute::reset();
        log_.clear();
        CanSocketSubstitute::answer("socket", {{-1, error}});
        OpenSocket socket;
        EXPECT_EQ(socket.interfaceInit("can0"), 4U);
        EXPECT_EQ(calls(), (Calls{makingSocket(), settingFlags("-1", O_NONBLOCK)}));
        EXPECT_EQ(log_.reports(), Reports{rawReport("creating sockets")});
        EXPECT_EQ(socket.socketDescriptor, -1);
        EXPECT_FALSE(socket.initialized);
    }
}

TEST_F(CanSocketSetUp, refused_flags_do_not_end_it) {
    CanSocketSubstitute::answer("fcntl", {{-1, EINVAL}});
    OpenSocket socket;
    EXPECT_EQ(socket.interfaceInit("can0"), 0U);
    EXPECT_EQ(calls(), openingSocket("s1", "can0", 7));
    EXPECT_EQ(log_.reports(), Reports{});
}

TEST_F(CanSocketSetUp, a_missing_interface_returns_4_and_leaves_the_socket_open) {
    OpenSocket socket;
    EXPECT_EQ(socket.interfaceInit("can9"), 4U);
    EXPECT_EQ(calls(),
              (Calls{makingSocket(), settingFlags("s1", O_NONBLOCK), askingIndex("s1", "can9")}));
    EXPECT_EQ(log_.reports(), Reports{rawReport("ioctl sock")});
    EXPECT_GE(::fcntl(socket.socketDescriptor, F_GETFD), 0);
    EXPECT_FALSE(socket.initialized);
    EXPECT_TRUE(isEmpty(socket.readSet));
}

TEST_F(CanSocketSetUp, a_failed_bind_returns_4_with_the_reason_and_leaves_the_socket_open) {
    for (const int error : {ENODEV, ENETDOWN, EINTR}) {
        log_.clear();
        CanSocketSubstitute::answer("bind", {{-1, error}});
        OpenSocket socket;
        EXPECT_EQ(socket.interfaceInit("can0"), 4U);
        EXPECT_EQ(log_.reports(),
                  Reports{rawReport(std::string("bind sock error:  ") + std::strerror(error))});
        EXPECT_GE(::fcntl(socket.socketDescriptor, F_GETFD), 0);
        EXPECT_FALSE(socket.initialized);
        EXPECT_TRUE(isEmpty(socket.readSet));
    }
}

TEST_F(CanSocketSetUp, a_failed_bind_is_reported_byte_for_byte) {
    CanSocketSubstitute::answer("bind", {{-1, ENODEV}});
    OpenSocket socket;
    EXPECT_EQ(socket.interfaceInit("can0"), 4U);
    EXPECT_EQ(log_.reports(), Reports{rawReport("bind sock error:  No such device")});
}

TEST_F(CanSocketSetUp, only_minus_1_is_a_failure_of_ioctl_and_bind) {
    CanSocketSubstitute::answer("ioctl", {{1, 0}});
    CanSocketSubstitute::answer("bind", {{1, 0}});
    OpenSocket socket;
    EXPECT_EQ(socket.interfaceInit("can0"), 0U);
}

TEST_F(CanSocketSetUp, the_next_attempt_closes_what_a_failed_one_has_left_before_it_makes_its_own) {
    const int before = openDescriptors();
    OpenSocket socket;
    EXPECT_EQ(socket.interfaceInit("can9"), 4U);
    EXPECT_EQ(socket.interfaceInit("can8"), 4U);
    CanSocketSubstitute::calls.clear();
    EXPECT_EQ(socket.interfaceInit("can1"), 0U);
    Calls expected{"close s2"};
    for (const std::string& call : openingSocket("s3", "can1", 8))
        expected.push_back(call);
    EXPECT_EQ(calls(), expected);
    EXPECT_EQ(openDescriptors(), before + 1);
}

TEST_F(CanSocketSetUp, a_socket_that_cannot_be_made_after_a_failed_attempt_leaves_none) {
    const int before = openDescriptors();
    OpenSocket socket;
    EXPECT_EQ(socket.interfaceInit("can9"), 4U);
    CanSocketSubstitute::answer("socket", {{-1, EMFILE}});
    EXPECT_EQ(socket.interfaceInit("can0"), 4U);
    EXPECT_EQ(socket.socketDescriptor, -1);
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(CanSocketSetUp, the_next_attempt_asks_with_a_clean_request) {
    OpenSocket socket;
    EXPECT_EQ(socket.interfaceInit("a-long-name"), 4U);
    CanSocketSubstitute::answer("bind", {{-1, ENODEV}});
    EXPECT_EQ(socket.interfaceInit("can2"), 4U);
    CanSocketSubstitute::calls.clear();
    EXPECT_EQ(socket.interfaceInit("can0"), 0U);
    EXPECT_EQ(calls().at(3), askingIndex("s3", "can0"));
    EXPECT_EQ(calls().at(4), binding("s3", 7));
}

TEST_F(CanSocketSetUp, a_name_is_cut_at_15_characters) {
    CanSocketSubstitute::interfaces["123456789012345"] = 15;
    for (const char* const name : {"123456789012345", "1234567890123456", "12345678901234567890"}) {
        OpenSocket socket;
        EXPECT_EQ(socket.interfaceInit(name), 0U) << name;
        EXPECT_EQ(socket.bindAddress.can_ifindex, 15);
        EXPECT_STREQ(socket.interfaceRequest.ifr_name, "123456789012345");
    }
    EXPECT_EQ(calls().at(2), askingIndex("s1", "123456789012345"));
}

TEST_F(CanSocketSetUp, an_empty_name_is_asked_as_it_is) {
    OpenSocket socket;
    EXPECT_EQ(socket.interfaceInit(""), 4U);
    EXPECT_EQ(calls().at(2), askingIndex("s1", ""));
}

TEST_F(CanSocketSetUp, a_descriptor_of_1024_and_more_leaves_the_read_set_empty) {
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    if (limit.rlim_max < 1100)
        GTEST_SKIP() << "a process may have only " << limit.rlim_max << " descriptors here";
    limit.rlim_cur = 1100;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
    for (const int descriptor : {1023, 1024, 1025, 1032}) {
        CanSocketSubstitute::lowestDescriptor = descriptor;
        OpenSocket socket;
        EXPECT_EQ(socket.interfaceInit("can0"), 0U);
        EXPECT_EQ(socket.socketDescriptor, descriptor);
        EXPECT_EQ(isEmpty(socket.readSet), descriptor >= 1024);
        EXPECT_TRUE(socket.initialized);
        EXPECT_FALSE(socket.polling);  // what stands behind the set
    }
}

TEST_F(CanSocketSetUp, the_destructor_closes_the_socket) {
    const int before = openDescriptors();
    auto socket = std::make_unique<OpenSocket>();
    ASSERT_EQ(socket->interfaceInit("can0"), 0U);
    CanSocketSubstitute::calls.clear();
    socket.reset();
    EXPECT_EQ(calls(), Calls{"close s1"});
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(CanSocketSetUp, the_destructor_closes_what_a_failed_attempt_has_left) {
    const int before = openDescriptors();
    auto socket = std::make_unique<OpenSocket>();
    EXPECT_EQ(socket->interfaceInit("can9"), 4U);
    EXPECT_EQ(openDescriptors(), before + 1);
    socket.reset();
    EXPECT_EQ(calls().back(), "close s1");
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(CanSocketSetUp, the_destructor_closes_also_minus_1) {
    { const OpenSocket socket; }
    EXPECT_EQ(calls(), Calls{"close -1"});
    EXPECT_EQ(log_.reports(), Reports{});
}

TEST_F(CanSocketSetUp, an_end_point_is_destroyed_by_its_base) {
    auto socket = std::make_unique<OpenSocket>();
    ASSERT_EQ(socket->interfaceInit("can0"), 0U);
    std::unique_ptr<ZREndPoint> endPoint = std::move(socket);
    CanSocketSubstitute::calls.clear();
    endPoint.reset();
    EXPECT_EQ(calls(), Calls{"close s1"});
}

TEST_F(CanSocketSetUp, reports_go_nowhere_else) {
    const OutputCapture capture;
    OpenSocket socket;
    EXPECT_EQ(socket.interfaceInit("can9"), 4U);
    EXPECT_EQ(capture.output() + capture.errors(), "");
}

}  // namespace
}  // namespace ZR::test
