#pragma once

#include <cstdint>
#include <memory>

#include "common/zrapi_common/zr_end_point.h"
#include "common/zrapi_export.h"

namespace ZR {

/// One classic CAN frame.
struct ZRCANMessage {
    std::uint32_t reserved;  ///< neither read nor written
    /// Identifier. On send, numbers below 2048 go out as standard 11-bit identifiers, all others as
    /// extended ones. On receive, the kernel's word as it is: bit 31 marks an extended identifier,
    /// bit 30 a remote frame, bit 29 an error frame.
    std::uint32_t id;
    std::uint32_t length;     ///< bytes of data, 0 to 8
    std::uint8_t data[8];     ///< payload; on receive, bytes beyond the length stay as they were
    std::uint32_t timeStamp;  ///< set on receive: low 32 bits of the tick count, milliseconds
};

/// A raw CAN socket as an end point, to be read when its manager says so.
///
/// No locks: an end point is used by one thread at a time. Failures of the set-up are reported to
/// the debug section "zr_can_raw"; failed sends and receives are lines on standard output.
class ZRAPI_EXPORT ZRCANRaw : public ZREndPoint {
  public:
    /// Sets the bit rate through a ZRCAN of its own, which starts the interface, then opens the
    /// socket. Needs CAP_NET_ADMIN. An end point that is initialised already answers 3 only after
    /// the rate was set again, which takes the interface down and up.
    /// @param port           1-based port, 1 to 4; also printed in reports
    /// @param bitrate        bit/s
    /// @param interfaceName  interface to bind to, at most 15 characters, for instance "can0"; not
    ///                       kept; must not be null
    /// @return 0 success, 3 initialised before or no controller, 4 socket, interface or bind
    ///         failed, else the status of ZRCAN::setBaudrate()
    virtual unsigned int initialize(unsigned int port, unsigned int bitrate,
                                    const char* interfaceName) = 0;

    /// Opens the socket and leaves the interface as it is.
    /// @param port  1-based port; the interface is "can" and the one character '0' + port - 1
    /// @return 0 success, 3 initialised before, 4 socket, interface or bind failed
    virtual unsigned int initialize(unsigned int port) = 0;

    /// Sends one frame, trying again as often as the retry setting says.
    /// @param message  frame; of its length the low byte counts; must not be null
    /// @return 0 the kernel took the frame, 7 it did not. Without retries a failure is silent;
    ///         with them the first of consecutive failures with one `errno` prints one line
    virtual unsigned int send(ZRCANMessage* message) = 0;

    /// Takes one frame that has arrived; never waits.
    /// @param message  receives the frame; unchanged on failure; must not be null
    /// @return 0 success, 5 nothing there (silent) or read failed (one line on standard output; an
    ///         interface that is down gives one ENETDOWN, one that was removed one ENODEV),
    ///         1 fewer bytes than a frame
    virtual unsigned int receive(ZRCANMessage* message) = 0;

    /// Sets the socket's file status flags.
    /// @param enable        true: O_NONBLOCK, and the time is remembered; false: the number given
    ///                      becomes the flags as it is, on purpose, so 0 makes receive() wait
    /// @param milliseconds  time to remember, or file status flags
    /// @return what `fcntl` gave: 0, or -1 (also before initialize())
    virtual int setPolling(bool enable, unsigned int milliseconds) = 0;

    /// Lets only frames through that match the filter: `(frame id & mask) == (id & mask)`. The
    /// kernel keeps the last filter that was given; the ones before have no effect any more.
    /// @param id    identifier word, flag bits included; bit 29 (CAN_INV_FILTER) inverts the filter
    /// @param mask  bits that are compared
    /// @return 0 always; before initialize() the filter has no effect
    virtual unsigned int addIDFilter(unsigned int id, unsigned int mask) = 0;

    /// Makes an end point and initialises it. The end point is returned also when that failed:
    /// ask isConnected().
    /// @param port           1-based port, 1 to 4
    /// @param bitrate        bit/s
    /// @param interfaceName  interface to bind to, for instance "can0"; must not be null
    /// @param retryCount     further attempts of a failed send
    /// @param retryDelay     microseconds before each of them, during which send() blocks
    /// @param reserved       ignored
    /// @throws what construction or initialisation throws (std::bad_alloc)
    static std::unique_ptr<ZRCANRaw> create(int port, unsigned int bitrate,
                                            const char* interfaceName, int retryCount,
                                            int retryDelay, int reserved);

    /// Makes an end point that the caller initialises.
    /// @param retryCount  further attempts of a failed send
    /// @param retryDelay  microseconds before each of them, during which send() blocks
    /// @param reserved    ignored
    static std::unique_ptr<ZRCANRaw> create(int retryCount, int retryDelay, int reserved);

    /// Reads the kernel's count of frames that an interface has received.
    /// @param port   1-based port, up to 4; 0 is not rejected but names an interface that cannot be
    /// @param count  receives the count, cut to an int; unchanged with 2 and 20
    /// @return 0 success (0 is stored for a counter that is no number), 2 no such interface,
    ///         20 port above 4
    static unsigned int getRxPackages(unsigned int port, int& count);

    /// Reads the kernel's count of frames that an interface has sent; otherwise as
    /// getRxPackages().
    static unsigned int getTxPackages(unsigned int port, int& count);

    static int hardwareInterfaceType;  ///< 0; neither read nor written by the library

  protected:
    static unsigned int debugSection;
};

}  // namespace ZR
