#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/zrapi_common/zr_end_point_manager.h"
#include "common/zrapi_common/zr_event_queue.h"

/// What tests on drivers' events need: an application that hears them, the knobs that make the
/// drivers speak, and witnesses that know nothing of the library.

namespace ZR::test {

inline constexpr char inputs[] = "ZR_DI";
inline constexpr char outputs[] = "ZR_DO";
inline constexpr char analog[] = "ANALOG";

/// Longest wait for what comes by itself, milliseconds.
inline constexpr int longest = 20000;

/// What an event tells.
struct Told {
    std::uint32_t value1;
    std::uint32_t value2;
};
bool operator==(const Told& left, const Told& right);
std::ostream& operator<<(std::ostream& stream, const Told& told);

using Tale = std::vector<Told>;

/// Takes the values out of an event, which must be a driver's: kind 6, code 900, all else zero.
Told toldBy(const ZREvent& event);

/// A queue, a manager and the dispatcher, brought together as applications do it. The manager stops
/// at the end of this object, the families stay with the dispatcher.
class Application {
  public:
    explicit Application(std::vector<std::string> families = {inputs, outputs, analog});
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;
    ~Application();

    /// The next event; a failure after 20 s.
    Told next();

    /// What has been heard of a family: all events up to one that is made now, which must arrive.
    Tale heardFrom(const std::string& family);

    /// The same of all its families.
    Tale heard();

    ZREventQueue queue;

  private:
    Tale heardUpTo(Tale awaited);

    std::vector<std::string> families_;
    std::optional<ZREndPointManager> manager_;
};

/// Adds a family whose connection fails to the dispatcher.
/// @return what that prints
std::string printedByAdding(const std::string& family);

/// What it is to print.
std::string connectionFailureOf(const std::string& family);

/// Has the driver of a family tell of a value that nothing else has, of channel 3, 2 or "frequency".
/// @return the event that it is to become
Told sentinel(const std::string& family);

/// Gives a knob bytes as they are, in one write.
void give(const std::string& knob, std::string_view bytes);

/// A knob that was opened by root and can be turned for as long as it lives, by whomever.
class OpenKnob {
  public:
    explicit OpenKnob(const std::string& knob);
    OpenKnob(const OpenKnob&) = delete;
    OpenKnob& operator=(const OpenKnob&) = delete;
    ~OpenKnob();

    void turn(const std::string& text) const;

  private:
    int file_;
};

/// Begins each case with the values, families and switches that the board has after its start.
class EventsBoard : public testing::Test {
  protected:
    void SetUp() override;
};

/// A generic netlink family as `genl` describes it.
struct Family {
    int id = -1;  ///< -1: there is none
    int groupId = -1;
    std::string groupName;
};
Family seenByGenl(const std::string& name);

/// A netlink socket as /proc/net/netlink shows it.
struct SocketState {
    std::uint32_t groups = 0;  ///< bit N-1: it has joined group N
    int unread = -1;           ///< bytes; -1: there is no such socket
    int lost = 0;              ///< messages that did not fit
};
SocketState seenByKernel(int socket);

/// How many descriptors the process has open.
int openDescriptors();

/// Waits until all that was sent to a socket has been taken off it; a failure after 20 s.
void awaitEmpty(int socket);

/// Tells whether the process leaves the processors alone while nothing happens.
bool restsWhileIdle();

/// The socket by which the dispatcher hears a family.
int socketOf(const std::string& family);

}  // namespace ZR::test
