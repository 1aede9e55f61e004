#pragma once

#include <memory>

#include "common/zrapi_export.h"

namespace ZR {

/// Control of the terminal's CAN controllers: start and stop, bus state, bit rate.
///
/// Ports are numbered from 1; port n is the network interface "can" followed by n - 1. All of it
/// goes through libsocketcan, whose calls are rtnetlink conversations: starting, stopping and
/// setting a rate need CAP_NET_ADMIN, reading a state takes about a dozen system calls, and a call
/// can block without limit when the interface vanishes in its middle. Keep them off the thread that
/// draws. Failures are reported to the debug section "zr_can" where an operation says so.
///
/// No locks: an object is used by one thread at a time. The static operations keep no state.
class ZRAPI_EXPORT ZRCAN {
  public:
    ZRCAN() = default;
    ZRCAN(const ZRCAN&) = delete;
    ZRCAN& operator=(const ZRCAN&) = delete;
    virtual ~ZRCAN() = default;

    /// Sets the bit rate of a port and starts its interface.
    ///
    /// A rate that this object has set before and that is still in effect (within 1.5 %) is not set
    /// again, the interface is only started. A rate that is right but was not set by this object is
    /// set again, on purpose. Setting stops a running interface first, asks the kernel to restart
    /// the controller 1000 ms after a bus-off, and leaves the interface stopped, with success, when
    /// the rate read back is out of tolerance.
    ///
    /// @param port     1-based port, 1 to 4
    /// @param bitrate  bit/s
    /// @return 0 success, 2 no such port or absent when this object was made, 5 rate not readable
    ///         after it was set ("Error: unable to read current bitrate!"), 6 rate refused by the
    ///         kernel ("Error: unable to set bitrate N!"), else what libsocketcan answered to the
    ///         start. The first report also comes, without a failure, on a port that never had a
    ///         rate.
    virtual unsigned int setBaudrate(unsigned int port, unsigned int bitrate) = 0;

    /// Reads the bit rate of a port.
    ///
    /// @param port  1-based port, 1 to 4
    /// @return bit/s; 0 for a stopped interface that this object never configured; 0xFFFFFFFF for
    ///         no such port, one that was absent when this object was made, or a rate that cannot
    ///         be read
    virtual unsigned int getBaudrate(unsigned int port) const = 0;

    /// Makes a controller object, which looks once which of can0 to can3 exist.
    /// @param reserved  ignored
    static std::unique_ptr<ZRCAN> create(int reserved);

    /// Starts or stops a port's interface. A stop also asks the kernel to restart the controller
    /// 1000 ms after a bus-off, once it runs again.
    /// @param port   1-based port; any number is tried
    /// @param state  0 stops, 1 starts
    /// @return 0 success, 1 start or stop failed, 24 any other state
    static unsigned int setState(unsigned int port, int state);

    /// Reads a port's bus state.
    /// @param port  1-based port; any number is tried
    /// @return 0 stopped or sleeping, 1 running (error active), 2 error warning, 3 error passive,
    ///         4 bus off, 255 unknown or no such interface (libsocketcan then writes two lines to
    ///         standard error)
    static unsigned int getState(unsigned int port);

  protected:
    static unsigned int debugSection;
};

}  // namespace ZR
