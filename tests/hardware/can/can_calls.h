#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "hardware/can/can_socket.h"
#include "tests/support/report_log.h"
#include "tests/support/substitutes/can_socket_substitute.h"

namespace ZR::test {

using Calls = std::vector<std::string>;
using Reports = std::vector<Report>;

/// Calls on a CAN socket as CanSocketSubstitute logs them.
std::string makingSocket();
std::string settingFlags(const std::string& socket, int flags);
std::string askingIndex(const std::string& socket, const std::string& interface);
std::string binding(const std::string& socket, int index);
std::string writing(const std::string& socket, const can_frame& frame);
std::string settingFilter(const std::string& socket, const can_filter& filter);

/// All that opening a socket takes.
Calls openingSocket(const std::string& socket, const std::string& interface, int index);

/// A report of ZRCANRaw and CANSocket.
Report rawReport(const std::string& message);

/// A socket whose members the tests can see.
struct OpenSocket : CANSocket {
    using CANSocket::addressLength;
    using CANSocket::bindAddress;
    using CANSocket::connected;
    using CANSocket::filters;
    using CANSocket::initialized;
    using CANSocket::interfaceRequest;
    using CANSocket::lastErrno;
    using CANSocket::lastError;
    using CANSocket::polling;
    using CANSocket::pollTimeout;
    using CANSocket::port;
    using CANSocket::readSet;
    using CANSocket::retryCount;
    using CANSocket::retryDelay;
    using CANSocket::socketDescriptor;
};

/// A machine with the interfaces can0, can1 and can2 and the indices 7, 8 and 9.
class CanSocketTest : public testing::Test {
  protected:
    CanSocketTest();

    static const Calls& calls() { return CanSocketSubstitute::calls; }

    ReportLog log_;
};

/// One end of a connected pair of sockets in the place of the CAN socket.
class ConnectedSocketTest : public CanSocketTest {
  protected:
    ConnectedSocketTest();
    ~ConnectedSocketTest() override;

    OpenSocket socket_;
    int peer_ = -1;  ///< the other end
};

}  // namespace ZR::test
