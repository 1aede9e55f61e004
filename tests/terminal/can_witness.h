#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "board.h"
#include "hardware/can/can_socket.h"

/// What tests on CAN ports need: `ip`, `candump` and sysfs as witnesses that know nothing of the
/// library, and ways to take ports down and away behind its back.

namespace ZR::test {

/// Waits for what comes by itself. False after 30 s: it never comes.
bool eventually(const std::function<bool()>& condition);

/// The word behind @p words in what `ip` shows of an interface; empty when it shows none.
std::string shownByIp(const std::string& interface, const std::string& words);

/// What `ip` counts of a controller: restarts, bus errors, lost arbitrations, warnings, passives and
/// bus-offs, separated by blanks.
std::string errorsCountedByIp(const std::string& interface);

/// A counter of an interface in sysfs, for instance "rx_packets".
int counter(const std::string& interface, const std::string& name);

/// Takes an interface up or down.
void setLink(const std::string& interface, bool up);

bool isUp(const std::string& interface);

/// Starts an interface anew with a bit rate and a restart time, without the library.
void configure(const std::string& interface, unsigned int bitrate,
               unsigned int restartMilliseconds = 0);

/// Starts can0 and can1 anew with one bit rate, and without restarts.
void joinBoth(unsigned int bitrate = 250000);

/// Begins each case with can0 and can1 down, and collects the library's reports.
class CanPorts : public testing::Test {
  protected:
    void SetUp() override;

    const std::vector<std::string>& reports = collectReports();
};

/// A controller that the kernel has lost until this object ends; then it is back, never configured.
class UnpluggedController {
  public:
    explicit UnpluggedController(const std::string& interface);
    UnpluggedController(const UnpluggedController&) = delete;
    UnpluggedController& operator=(const UnpluggedController&) = delete;
    ~UnpluggedController() { plugIn(); }

    void plugIn();

  private:
    std::string slot_;
};

/// A virtual interface for the time of this object.
class VirtualPort {
  public:
    explicit VirtualPort(std::string interface);
    VirtualPort(const VirtualPort&) = delete;
    VirtualPort& operator=(const VirtualPort&) = delete;
    ~VirtualPort() { remove(); }

    void remove();

  private:
    std::string name_;
};

/// A running candump that has begun to listen.
class Candump {
  public:
    /// @param interface  with candump's filters behind a comma
    /// @param count      ends after so many frames
    Candump(const std::string& interface, int count);
    Candump(const Candump&) = delete;
    Candump& operator=(const Candump&) = delete;
    ~Candump();

    /// The frames it heard, as "123#1122", once it has ended; fewer after 30 s of silence.
    std::vector<std::string> frames();

  private:
    pid_t pid_ = -1;
    int output_ = -1;
};

/// A message whose unused data bytes are 0xEE.
ZRCANMessage message(std::uint32_t id, std::initializer_list<std::uint8_t> data = {});

/// Sends a copy of a message.
unsigned int send(ZRCANRaw& socket, ZRCANMessage sent);

/// A received message as candump writes it; an error frame keeps its flag in eight digits.
std::string notation(const ZRCANMessage& message);

/// What poll says of a socket at this moment.
int polled(const ZRCANRaw& socket);

/// Receives once something is there to read; 5 after 30 s.
unsigned int receiveSoon(ZRCANRaw& socket, ZRCANMessage& received);

/// As receiveSoon(), in candump's notation; the status when it failed.
std::string receivedSoon(ZRCANRaw& socket);

/// An end point on a port whose interface is left as it is.
std::unique_ptr<CANSocket> openPort(unsigned int port, int retryCount = 0);

/// Takes the process's capabilities away for the time of this object, as `setpriv --reuid` does.
class Unprivileged {
  public:
    Unprivileged();
    Unprivileged(const Unprivileged&) = delete;
    Unprivileged& operator=(const Unprivileged&) = delete;
    ~Unprivileged();
};

}  // namespace ZR::test
