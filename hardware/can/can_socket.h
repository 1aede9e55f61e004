#pragma once

#include <linux/can.h>
#include <net/if.h>
#include <sys/select.h>

#include <cstdint>
#include <vector>

#include "common/zrapi_export.h"
#include "hardware/can/zr_can_raw.h"

namespace ZR {

/// ZRCANRaw over a SocketCAN socket, for classic frames.
///
/// The socket does not block from the start on and is close-on-exec. The kernel keeps 278 frames
/// that were not taken yet (default buffer) and drops more without a word.
class ZRAPI_EXPORT CANSocket : public ZRCANRaw {
  public:
    CANSocket() = default;

    /// Closes the socket.
    ~CANSocket() override;

    /// Returns the socket, -1 before the first initialize().
    int getReadEndPointID() const override;
    int getWriteEndPointID() const override;
    bool isConnected() const override;

    /// Tries initialize(port) again for the port given before: on "can" and its digit, whatever
    /// name was given with a bit rate, and without setting the rate. Only an end point whose set-up
    /// failed can come back: one that was initialised keeps its socket and answers 3.
    /// @return as initialize(port)
    unsigned int reconnect() override;

    unsigned int initialize(unsigned int port, unsigned int bitrate,
                            const char* interfaceName) override;
    unsigned int initialize(unsigned int port) override;
    unsigned int send(ZRCANMessage* message) override;
    unsigned int receive(ZRCANMessage* message) override;
    int setPolling(bool enable, unsigned int milliseconds) override;
    unsigned int addIDFilter(unsigned int id, unsigned int mask) override;

    /// Sets how often send() tries again.
    /// @param count              further attempts; below 1 none
    /// @param delayMicroseconds  time before each of them; a negative one counts as 0
    void setRetry(int count, int delayMicroseconds);

    /// Opens the socket and binds it to an interface; initialize() calls it.
    /// @param name  interface, at most 15 characters; must not be null
    /// @return 0 success, 3 "interface has been initialized before!", 4 "creating sockets",
    ///         "ioctl sock" (no such interface) or "bind sock error: " with the reason
    unsigned int interfaceInit(const char* name);

  protected:
    std::uint32_t port = 0xFFFFFFFF;  ///< 1-based; all bits set before the first initialize()
    sockaddr_can bindAddress{};
    ifreq interfaceRequest{};
    int addressLength = sizeof(sockaddr_can);
    fd_set readSet{};               ///< the socket, where its number fits
    bool initialized = false;       ///< socket bound; never cleared
    bool polling = false;           ///< setPolling(true, ...) was called
    std::uint32_t pollTimeout = 0;  ///< microseconds
    int socketDescriptor = -1;
    bool connected = false;
    std::vector<can_filter> filters;  ///< every filter ever given
    int retryCount = 0;
    int retryDelay = 0;  ///< microseconds
    int lastError = 0;   ///< status of the last failure of send() that was printed
    int lastErrno = 0;   ///< its `errno`

  private:
    unsigned int sendAgain(const can_frame& frame);
    void printSendFailure(int error) const;
    unsigned int receiveFailed(long result, int error) const;
};

}  // namespace ZR
