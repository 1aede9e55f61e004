#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "can_witness.h"
#include "common/zrapi_common/zr_end_point_manager.h"

namespace ZR::test {
namespace {

using Lines = std::vector<std::string>;

/// Writes down what an end point's manager tells: frames, statuses of failed reads, "reconnected" and
/// "disconnected".
class Listener : public ZREndPointHandler {
  public:
    void onEndPointReadable(std::shared_ptr<ZREndPoint> endPoint,
                            ZREndPointManager* /*manager*/) override {
        ZRCANMessage received{};
        const unsigned int status = static_cast<ZRCANRaw&>(*endPoint).receive(&received);
        tell(status == 0 ? notation(received) : "status " + std::to_string(status));
    }
    void onEndPointReconnected(std::shared_ptr<ZREndPoint> /*endPoint*/) override {
        tell("reconnected");
    }
    void onEndPointDisconnected(std::shared_ptr<ZREndPoint> /*endPoint*/) override {
        tell("disconnected");
    }

    Lines told() const {
        const std::lock_guard lock(mutex_);
        return told_;
    }

    /// False after 30 s.
    bool waitFor(std::size_t count) const {
        return eventually([&] { return told().size() >= count; });
    }

  protected:
    void tell(const std::string& what) {
        const std::lock_guard lock(mutex_);
        told_.push_back(what);
    }

  private:
    mutable std::mutex mutex_;
    Lines told_;
};

/// Never reads.
class DeafListener : public Listener {
  public:
    void onEndPointReadable(std::shared_ptr<ZREndPoint> /*endPoint*/,
                            ZREndPointManager* /*manager*/) override {
        tell("called");
    }
};

class CanBoardEndPoint : public CanPorts {};

}  // namespace

TEST_F(CanBoardEndPoint, frames_arrive_by_callback_in_order) {
    joinBoth();
    const auto sender = openPort(1);
    Listener listener;
    ZREndPointManager manager;
    manager.addEndPoint(openPort(2), &listener);
    Lines expected;
    for (std::uint32_t id = 0; id < 200; ++id) {
        ASSERT_TRUE(eventually([&] { return send(*sender, message(id)) == 0; }));
        expected.push_back(notation(message(id)));
    }
    EXPECT_TRUE(listener.waitFor(200));
    EXPECT_EQ(expected, listener.told());
}

TEST_F(CanBoardEndPoint, two_end_points_of_one_manager_hear_their_own_ports) {
    joinBoth();
    Listener first;
    Listener second;
    ZREndPointManager manager;
    manager.addEndPoint(openPort(1), &first);
    manager.addEndPoint(openPort(3), &second);
    ASSERT_EQ(0U, send(*openPort(2), message(0x111, {1})));
    ASSERT_EQ(0U, send(*openPort(3), message(0x222, {2})));
    EXPECT_TRUE(first.waitFor(1) && second.waitFor(1));
    EXPECT_EQ(Lines{"111#01"}, first.told());
    EXPECT_EQ(Lines{"222#02"}, second.told());
}

TEST_F(CanBoardEndPoint, an_interface_taken_down_is_one_callback_and_no_loss) {
    joinBoth();
    Listener listener;
    ZREndPointManager manager;
    manager.addEndPoint(openPort(2), &listener);
    setLink("can1", false);
    EXPECT_TRUE(listener.waitFor(1));
    setLink("can1", true);
    ASSERT_EQ(0U, send(*openPort(1), message(0x123)));
    EXPECT_TRUE(listener.waitFor(2));
    EXPECT_EQ((Lines{"status 5", "123#"}), listener.told());
}

TEST_F(CanBoardEndPoint, an_interface_that_is_removed_is_two_callbacks_at_most_and_no_loss) {
    VirtualPort port("can5");
    Listener listener;
    ZREndPointManager manager;
    const std::shared_ptr<CANSocket> dead = openPort(6);
    manager.addEndPoint(dead, &listener);
    // The kernel takes an interface down before it removes it. Who is quick hears of both.
    setLink("can5", false);
    EXPECT_TRUE(listener.waitFor(1));
    port.remove();
    EXPECT_TRUE(listener.waitFor(2));
    // The socket never works again: its owner replaces it.
    manager.removeEndPoint(dead);
    const VirtualPort again("can5");
    manager.addEndPoint(openPort(6), &listener);
    ASSERT_EQ(0U, send(*openPort(6), message(0x123)));
    EXPECT_TRUE(listener.waitFor(3));
    EXPECT_EQ((Lines{"status 5", "status 5", "123#"}), listener.told());
}

TEST_F(CanBoardEndPoint, a_dead_end_point_leaves_the_others_of_its_manager_alone) {
    joinBoth();
    Listener dead;
    Listener alive;
    ZREndPointManager manager;
    manager.addEndPoint(openPort(2), &dead);
    manager.addEndPoint(openPort(3), &alive);
    UnpluggedController unplugged("can1");
    EXPECT_TRUE(dead.waitFor(1));
    for (std::size_t frame = 1; frame <= 3; ++frame) {
        ASSERT_EQ(0U, send(*openPort(3), message(0x123)));
        EXPECT_TRUE(alive.waitFor(frame));
    }
    EXPECT_EQ((Lines{"123#", "123#", "123#"}), alive.told());
    // One error for the stop and one for the removal, or the last of them alone.
    EXPECT_LE(dead.told().size(), 2U);
    EXPECT_EQ("status 5", dead.told().back());
}

TEST_F(CanBoardEndPoint, a_handler_that_does_not_read_an_error_loses_the_end_point) {
    joinBoth();
    DeafListener listener;
    ZREndPointManager manager;
    const std::shared_ptr<CANSocket> socket = openPort(2);
    manager.addEndPoint(socket, &listener);
    setLink("can1", false);
    EXPECT_TRUE(eventually([&] {
        return !listener.told().empty() &&  //
               listener.told().back() == "disconnected";
    }));
    EXPECT_LE(listener.told().size(), 20U);
    // Not while the manager may ask the end point to reconnect.
    manager.removeEndPoint(socket);
    ZRCANMessage received{};
    EXPECT_EQ(5U, socket->receive(&received));
    setLink("can1", true);
    Listener reader;
    manager.addEndPoint(socket, &reader);
    ASSERT_EQ(0U, send(*openPort(1), message(0x123)));
    EXPECT_TRUE(reader.waitFor(1));
    EXPECT_EQ(Lines{"123#"}, reader.told());
}

TEST_F(CanBoardEndPoint, an_end_point_whose_interface_was_missing_comes_by_itself) {
    Listener listener;
    ZREndPointManager manager;
    const auto socket = std::make_shared<CANSocket>();
    ASSERT_EQ(4U, socket->initialize(6));
    manager.addEndPoint(socket, &listener);
    const VirtualPort port("can5");
    EXPECT_TRUE(listener.waitFor(1));
    EXPECT_TRUE(socket->isConnected());
    ASSERT_EQ(0U, send(*openPort(6), message(0x123)));
    EXPECT_TRUE(listener.waitFor(2));
    EXPECT_EQ((Lines{"reconnected", "123#"}), listener.told());
}

TEST_F(CanBoardEndPoint, an_end_point_that_is_removed_hears_nothing_more) {
    Listener listener;
    ZREndPointManager manager;
    const std::shared_ptr<CANSocket> socket = openPort(3);
    manager.addEndPoint(socket, &listener);
    ASSERT_EQ(0U, send(*openPort(3), message(0x111)));
    EXPECT_TRUE(listener.waitFor(1));
    manager.removeEndPoint(socket);
    ASSERT_EQ(0U, send(*openPort(3), message(0x222)));
    EXPECT_EQ("222#", receivedSoon(*socket));
    EXPECT_EQ(Lines{"111#"}, listener.told());
}

}  // namespace ZR::test
