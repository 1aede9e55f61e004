#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "common/zrapi_common/zr_end_point_manager.h"
#include "tests/common/zrapi_common/end_point_doubles.h"

namespace ZR::test {
namespace {

/// Adds an end point of a descriptor that cannot be watched, and expects no more than silence.
void expectNotWatched(const std::shared_ptr<TestEndPoint>& endPoint) {
    const Line other = makePipe();
    RecordingHandler handler;
    RecordingHandler otherHandler;
    ZREndPointManager manager;
    manager.addEndPoint(endPoint, &handler);
    manager.addEndPoint(other.endPoint, &otherHandler);
    other.send("x");
    EXPECT_TRUE(otherHandler.waitForBytes(1));
    expectIdle();
    EXPECT_EQ(handler.calls(), "");
}

/// A UDP socket on this machine, and its address.
int udpSocket(sockaddr_in& address) {
    const int descriptor = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (descriptor >= 0 &&
        (::bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
         ::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length) != 0)) {
        ::close(descriptor);
        return -1;
    }
    return descriptor;
}

/// An end point connected to a port where nobody listens: each byte sent comes back as an error.
/// Null where there is no loopback network.
std::shared_ptr<TestEndPoint> makeRefused() {
    sockaddr_in own{};
    sockaddr_in peer{};
    auto endPoint = std::make_shared<TestEndPoint>(udpSocket(own));
    const FileDescriptor closedAtOnce(udpSocket(peer));
    if (endPoint->descriptor < 0 || !closedAtOnce.isOpen() ||
        ::connect(endPoint->descriptor, reinterpret_cast<sockaddr*>(&peer), sizeof peer) != 0)
        return nullptr;
    return endPoint;
}

bool sendByte(const TestEndPoint& endPoint) {
    return ::send(endPoint.descriptor, "x", 1, 0) == 1;
}

class HangUp_pure : public testing::TestWithParam<int> {
  protected:
    static Line makeLine() { return GetParam() < 0 ? makePipe() : makeSocketPair(GetParam()); }
};

}  // namespace

TEST_P(HangUp_pure, is_delivered_as_readable_then_announced_and_never_spins) {
    Line line = makeLine();
    RecordingHandler handler;
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    line.hangUp();
    ASSERT_TRUE(handler.waitFor("disconnected"));
    EXPECT_EQ(handler.calls(), "readable readable disconnected");
    expectIdle();
    EXPECT_EQ(handler.calls(), "readable readable disconnected");
}

TEST_P(HangUp_pure, comes_after_all_that_was_sent_before) {
    Line line = makeLine();
    RecordingHandler handler;
    std::string received;
    handler.readable = [&](const auto& endPoint, auto* /*manager*/) {
        received += readSome(*endPoint, 1);
    };
    for (const char* const letter : {"a", "b", "c", "d", "e", "f", "g", "h"})
        line.send(letter);
    line.hangUp();
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    ASSERT_TRUE(handler.waitFor("disconnected"));
    EXPECT_EQ(received, "abcdefgh");
}

TEST_P(HangUp_pure, never_spins_when_the_handler_reads_nothing) {
    Line line = makeLine();
    RecordingHandler handler;
    handler.readable = [](const auto& /*endPoint*/, auto* /*manager*/) {};
    line.send("never read");
    line.hangUp();
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    ASSERT_TRUE(handler.waitFor("disconnected"));
    EXPECT_EQ(handler.calls(), "readable readable readable disconnected");
    expectIdle();
}

INSTANTIATE_TEST_SUITE_P(Lines, HangUp_pure, testing::Values(-1, SOCK_STREAM, SOCK_SEQPACKET),
                         [](const testing::TestParamInfo<int>& each) {
                             return std::string(each.param < 0              ? "pipe"
                                                : each.param == SOCK_STREAM ? "stream"
                                                                            : "packets");
                         });

TEST(EndPointLoss_pure, a_peer_that_sends_no_more_is_a_hang_up) {
    const Line line = makeSocketPair(SOCK_STREAM);
    RecordingHandler handler;
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    ASSERT_EQ(::shutdown(line.writer->get(), SHUT_WR), 0);
    ASSERT_TRUE(handler.waitFor("disconnected"));
    EXPECT_EQ(handler.calls(), "readable readable disconnected");
    expectIdle();
}

TEST(EndPointLoss_pure, an_error_that_a_read_clears_is_no_loss) {
    const std::shared_ptr<TestEndPoint> endPoint = makeRefused();
    if (endPoint == nullptr || !sendByte(*endPoint))
        GTEST_SKIP() << "no loopback network";
    RecordingHandler handler;
    std::atomic<int> refusals{0};
    handler.readable = [&](const auto& each, auto* /*manager*/) {
        std::array<char, 8> buffer{};
        if (::recv(each->getReadEndPointID(), buffer.data(), buffer.size(), MSG_DONTWAIT) < 0 &&
            errno == ECONNREFUSED)
            ++refusals;
    };
    ZREndPointManager manager;
    manager.addEndPoint(endPoint, &handler);
    for (std::size_t sent = 1; sent < 10; ++sent) {
        ASSERT_TRUE(handler.waitFor("readable", sent)) << sent;
        ASSERT_TRUE(sendByte(*endPoint)) << sent;
    }
    ASSERT_TRUE(handler.waitFor("readable", 10));
    EXPECT_EQ(refusals, 10);
    EXPECT_EQ(handler.count("disconnected"), 0U);
}

TEST(EndPointLoss_pure, an_error_that_no_read_clears_is_a_loss_and_never_spins) {
    const std::shared_ptr<TestEndPoint> endPoint = makeRefused();
    constexpr int on = 1;
    // Errors are also kept in a queue of their own, which the handler does not look into.
    if (endPoint == nullptr ||
        ::setsockopt(endPoint->descriptor, IPPROTO_IP, IP_RECVERR, &on, sizeof on) != 0 ||
        !sendByte(*endPoint))
        GTEST_SKIP() << "no loopback network";
    RecordingHandler handler;
    handler.readable = [](const auto& each, auto* /*manager*/) {
        std::array<char, 8> buffer{};
        (void)::recv(each->getReadEndPointID(), buffer.data(), buffer.size(), MSG_DONTWAIT);
    };
    ZREndPointManager manager;
    manager.addEndPoint(endPoint, &handler);
    ASSERT_TRUE(handler.waitFor("disconnected"));
    expectIdle();
    EXPECT_EQ(handler.count("readable"), 16U);
}

TEST(EndPointLoss_pure, an_end_point_that_is_not_connected_after_a_callback_is_lost_at_once) {
    const std::shared_ptr<TestEndPoint> endPoint = makeAlwaysReadable();
    RecordingHandler handler;
    handler.readable = [&](const auto& /*own*/, auto* /*manager*/) { endPoint->connected = false; };
    ZREndPointManager manager;
    manager.addEndPoint(endPoint, &handler);
    ASSERT_TRUE(handler.waitFor("disconnected"));
    expectIdle();
    EXPECT_EQ(handler.calls(), "readable disconnected");
}

TEST(EndPointLoss_pure, a_callback_may_remove_the_end_point_that_it_disconnects) {
    const std::shared_ptr<TestEndPoint> endPoint = makeAlwaysReadable();
    RecordingHandler handler;
    handler.readable = [&](const auto& own, auto* manager) {
        endPoint->connected = false;
        manager->removeEndPoint(own);
    };
    ZREndPointManager manager;
    manager.addEndPoint(endPoint, &handler);
    ASSERT_TRUE(handler.waitFor("readable"));
    expectIdle();
    EXPECT_EQ(handler.calls(), "readable");
}

TEST(EndPointLoss_pure, a_callback_may_open_its_end_point_anew) {
    const std::shared_ptr<TestEndPoint> endPoint = makeAlwaysReadable();
    const Line line = makePipe();
    RecordingHandler handler;
    std::string received;
    handler.readable = [&](const auto& own, auto* /*manager*/) {
        received += readSome(*own, 1) == "x" ? "x" : "-";
        if (received == "-")
            line.endPoint->descriptor = endPoint->descriptor.exchange(line.endPoint->descriptor);
    };
    ZREndPointManager manager;
    manager.addEndPoint(endPoint, &handler);
    ASSERT_TRUE(handler.waitFor("readable"));
    line.send("x");
    ASSERT_TRUE(handler.waitFor("readable", 2));
    manager.removeEndPoint(endPoint);
    EXPECT_EQ(received, "-x");
    EXPECT_EQ(handler.count("disconnected"), 0U);
}

TEST(EndPointLoss_pure, an_end_point_without_descriptor_is_not_watched) {
    expectNotWatched(std::make_shared<TestEndPoint>(-1));
}

TEST(EndPointLoss_pure, an_end_point_that_is_not_connected_is_not_watched) {
    const std::shared_ptr<TestEndPoint> endPoint = makeAlwaysReadable();
    endPoint->connected = false;
    expectNotWatched(endPoint);
}

TEST(EndPointLoss_pure, a_descriptor_that_is_not_open_is_not_watched) {
    const Line line = makePipe();
    ::close(line.endPoint->descriptor.exchange(1000000));
    expectNotWatched(line.endPoint);
    line.endPoint->descriptor = -1;
}

TEST(EndPointLoss_pure, a_regular_file_is_not_watched) {
    const int file = ::memfd_create("file", MFD_CLOEXEC);
    ASSERT_GE(file, 0);
    expectNotWatched(std::make_shared<TestEndPoint>(file));
}

TEST(EndPointLoss_pure, a_descriptor_closed_before_its_removal_takes_no_time_after_it) {
    const std::shared_ptr<TestEndPoint> endPoint = makeAlwaysReadable();
    const FileDescriptor copy(::fcntl(endPoint->descriptor, F_DUPFD_CLOEXEC, 0));
    RecordingHandler handler;
    handler.readable = [](const auto& /*own*/, auto* /*manager*/) {};
    const Line other = makePipe();
    RecordingHandler otherHandler;
    ZREndPointManager manager;
    manager.addEndPoint(other.endPoint, &otherHandler);
    manager.addEndPoint(endPoint, &handler);
    ASSERT_TRUE(handler.waitFor("readable"));
    ::close(endPoint->descriptor);
    manager.removeEndPoint(endPoint);
    endPoint->descriptor = -1;
    expectIdle();
    other.send("x");
    EXPECT_TRUE(otherHandler.waitForBytes(1));
}

TEST(EndPointLoss_pure, an_end_point_whose_descriptor_was_closed_is_lost_when_watches_are_renewed) {
    Line closed = makePipe();
    const std::shared_ptr<TestEndPoint> removed = makeAlwaysReadable();
    RecordingHandler handler;
    handler.readable = [](const auto& /*own*/, auto* /*manager*/) {};
    RecordingHandler closedHandler;
    ZREndPointManager manager;
    manager.addEndPoint(closed.endPoint, &closedHandler);
    manager.addEndPoint(removed, &handler);
    ::close(closed.endPoint->descriptor);
    ::close(removed->descriptor);
    manager.removeEndPoint(removed);
    EXPECT_TRUE(closedHandler.waitFor("disconnected"));
    expectIdle();
    manager.removeEndPoint(closed.endPoint);
    closed.endPoint->descriptor = -1;
    removed->descriptor = -1;
}

}  // namespace ZR::test
