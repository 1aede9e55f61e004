// The port of a UDP input: taken by another program, changed at all the wrong times.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tests/scene/faults/fault_test.h"
#include "tests/scene/support/streams.h"

namespace {

using namespace ZR;
using namespace ZR::test;

/// A UDP port that is bound for itself alone, as by another program.
class TakenPort {
  public:
    TakenPort() : port(freeUdpPort()), socket_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        if (::bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
            ADD_FAILURE() << "port " << port << " is not free";
    }
    TakenPort(const TakenPort&) = delete;
    TakenPort& operator=(const TakenPort&) = delete;
    ~TakenPort() { release(); }

    void release() {
        if (socket_ >= 0)
            ::close(socket_);
        socket_ = -1;
    }

    const int port;

  private:
    int socket_;
};

class PortFault : public FaultTest {
  protected:
    void start(int port) {
        scene_.place(input_, area);
        input_.setStreamType(StreamUdpJpeg);
        input_.setCurrentInterface(port);
        input_.start(0);
    }

    WatchedInput& input_ = input();
};

TEST_F(PortFault, a_port_in_use_is_an_error_and_is_tried_again_until_it_is_free) {
    TakenPort taken;
    const auto begin = Clock::now();
    start(taken.port);
    EXPECT_TRUE(isAfter(waitForRestarts(input_, 2), begin, 2000));
    EXPECT_EQ(quartersOf(scene_.grab(), area), waiting);
    EXPECT_FALSE(input_.isRunning(0));
    const std::vector<std::string> lines = texts();
    ASSERT_GE(lines.size(), 3U);
    EXPECT_EQ(lines[0], "GST Error : Could not get/set settings from/on resource.");
    EXPECT_EQ(lines[1].rfind("  Debugging information: ", 0), 0U) << lines[1];
    EXPECT_EQ(output_.count(timedOut), 0);
    taken.release();
    const auto sender = sendJpeg(taken.port);
    EXPECT_TRUE(scene_.waitForQuarters(area, upright));
    EXPECT_TRUE(scene_.waitForPictures(area));
    EXPECT_LT(input_.restarts(), 10U);
}

TEST_F(PortFault, changed_twice_while_playing_is_one_restart_with_the_last_port) {
    const int port = freeUdpPort();
    const auto sender = sendJpeg(port);
    start(port);
    ASSERT_TRUE(scene_.waitForQuarters(area, upright));
    const int last = freeUdpPort();
    const auto senderOfLast = sendJpeg(last);
    const auto changed = Clock::now();
    input_.setCurrentInterface(freeUdpPort());
    input_.handleQueuedCommands();
    input_.setCurrentInterface(last);
    input_.handleQueuedCommands();
    const auto restarted = waitForRestarts(input_, 1);
    EXPECT_TRUE(isAfter(restarted, changed, 100));
    EXPECT_EQ(texts(), std::vector<std::string>{restartIn100});
    EXPECT_TRUE(scene_.waitForQuarters(area, upright));
    EXPECT_TRUE(scene_.waitForPictures(area));
    EXPECT_EQ(texts(), std::vector<std::string>{restartIn100});
    EXPECT_EQ(input_.restarts(), 1U);
}

TEST_F(PortFault, changed_while_stopped_takes_the_pipeline_down_and_counts_at_the_next_start) {
    const int port = freeUdpPort();
    auto sender = sendJpeg(port);
    start(port);
    ASSERT_TRUE(scene_.waitForQuarters(area, upright));
    input_.stop(0);
    input_.handleQueuedCommands();
    EXPECT_NE(input_.getPipeline(), nullptr);
    const int other = freeUdpPort();
    input_.setCurrentInterface(other);
    input_.handleQueuedCommands();
    EXPECT_EQ(input_.getPipeline(), nullptr);
    EXPECT_FALSE(input_.isInitialized());
    expectNoLineFor(0.3);
    sender = sendJpeg(other);
    input_.start(0);
    EXPECT_TRUE(scene_.waitForQuarters(area, upright));
    EXPECT_EQ(texts(), std::vector<std::string>());
    EXPECT_EQ(input_.restarts(), 0U);
}

TEST_F(PortFault, changed_while_a_restart_is_pending_is_what_the_restart_listens_to) {
    const int port = freeUdpPort();
    const auto sender = sendJpeg(port);
    start(port);
    ASSERT_TRUE(scene_.waitForQuarters(area, upright));
    const int other = freeUdpPort();
    const auto otherSender = sendJpeg(other);
    sender->pause();
    ASSERT_TRUE(waitForLines(restartIn1000));
    input_.setCurrentInterface(other);
    EXPECT_TRUE(scene_.waitForQuarters(area, upright));
    EXPECT_TRUE(scene_.waitForPictures(area));
    EXPECT_EQ(texts(), (std::vector<std::string>{timedOut, restartIn1000}));
    EXPECT_EQ(input_.restarts(), 1U);
}

}  // namespace
