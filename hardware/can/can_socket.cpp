#include "hardware/can/can_socket.h"

#include <fcntl.h>
#include <linux/can/raw.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <string>

#include "common/zrapi_common/zr_result.h"
#include "common/zrapi_os_abs/zr_tick.h"
#include "hardware/can/can_internal.h"
#include "hardware/can/zr_can.h"
#include "hardware/print_line_internal.h"
#include "hardware/report_internal.h"

namespace ZR {

CANSocket::~CANSocket() {
    (void)::close(socketDescriptor);
}

int CANSocket::getReadEndPointID() const {
    return socketDescriptor;
}

int CANSocket::getWriteEndPointID() const {
    return socketDescriptor;
}

bool CANSocket::isConnected() const {
    return connected;
}

unsigned int CANSocket::reconnect() {
    // Kept: a reconnect re-opens only a socket whose first set-up failed.
    return initialize(port);
}

unsigned int CANSocket::initialize(unsigned int newPort, unsigned int bitrate,
                                   const char* interfaceName) {
    port = newPort;
    // A controller of its own each time: it has set nothing yet, so it sets the rate for certain.
    const std::unique_ptr<ZRCAN> controller = ZRCAN::create(0);
    if (controller == nullptr)
        return ResultWrongType;
    unsigned int status = controller->setBaudrate(newPort, bitrate);
    if (status != ResultSuccess) {
        report(debugSection, "%s", "Error setting the baudrate!");
        return status;
    }
    status = interfaceInit(interfaceName);
    if (status != ResultSuccess)
        report(debugSection, "%s", "Error initializing the SocketCAN interface!!");
    else
        connected = true;
    return status;
}

unsigned int CANSocket::initialize(unsigned int newPort) {
    port = newPort;
    const char name[] = {'c', 'a', 'n', static_cast<char>('0' + (newPort - 1)), '\0'};
    const unsigned int status = interfaceInit(name);
    if (status == ResultSuccess)
        connected = true;
    return status;
}

unsigned int CANSocket::interfaceInit(const char* name) {
    if (initialized) {
        report(debugSection, "%s", "interface has been initialized before!");
        return ResultWrongType;
    }
    // What an attempt that failed has left open.
    if (socketDescriptor >= 0)
        (void)::close(socketDescriptor);
    socketDescriptor = ::socket(AF_CAN, SOCK_RAW | SOCK_CLOEXEC, CAN_RAW);
    (void)::fcntl(socketDescriptor, F_SETFL, O_NONBLOCK);
    if (socketDescriptor < 0) {
        report(debugSection, "%s", "creating sockets");
        return ResultSocketFailed;
    }

    interfaceRequest = {};
    std::strncpy(interfaceRequest.ifr_name, name, IFNAMSIZ - 1);
    if (::ioctl(socketDescriptor, SIOCGIFINDEX, &interfaceRequest) == -1) {
        report(debugSection, "%s", "ioctl sock");
        return ResultSocketFailed;
    }

    bindAddress = {};
    bindAddress.can_family = AF_CAN;
    bindAddress.can_ifindex = interfaceRequest.ifr_ifindex;
    const auto* address = reinterpret_cast<const sockaddr*>(&bindAddress);
    if (::bind(socketDescriptor, address, static_cast<socklen_t>(addressLength)) == -1) {
        report(debugSection, "%s %s", "bind sock error: ", std::strerror(errno));
        return ResultSocketFailed;
    }

    FD_ZERO(&readSet);
    // A descriptor beyond the set's size would be written outside of it.
    if (socketDescriptor < FD_SETSIZE)
        FD_SET(socketDescriptor, &readSet);
    initialized = true;
    return ResultSuccess;
}

unsigned int CANSocket::send(ZRCANMessage* message) {
    const can_frame frame = kernelFrame(*message);
    if (::write(socketDescriptor, &frame, sizeof frame) >= 0)
        return ResultSuccess;
    return retryCount < 1 ? static_cast<unsigned int>(ResultSendFailed) : sendAgain(frame);
}

unsigned int CANSocket::sendAgain(const can_frame& frame) {
    const auto delay = static_cast<useconds_t>(std::max(retryDelay, 0));
    int error = 0;
    for (int attempt = 0; attempt < retryCount; ++attempt) {
        (void)::usleep(delay);
        // Unlike the first attempt, these take 0 for a failure, on purpose.
        if (::write(socketDescriptor, &frame, sizeof frame) > 0)
            return ResultSuccess;
        error = errno;
    }
    // A bus that stays broken is told of once, not with every frame.
    if (lastError != ResultSendFailed || lastErrno != error) {
        lastError = ResultSendFailed;
        lastErrno = error;
        printSendFailure(error);
    }
    return ResultSendFailed;
}

void CANSocket::printSendFailure(int error) const {
    printLine({"CANSocket::send failed on port ", std::to_string(port), " even after ",
               std::to_string(retryCount), " retries. Errno: ", std::to_string(error),
               " == ", std::strerror(error)});
}

unsigned int CANSocket::receive(ZRCANMessage* message) {
    can_frame frame{};
    const ssize_t result = ::read(socketDescriptor, &frame, sizeof frame);
    if (result != sizeof frame)
        return receiveFailed(result, errno);
    message->timeStamp = static_cast<std::uint32_t>(ZRTick::getTickCount());
    storeFrame(frame, *message);
    return ResultSuccess;
}

// Of its own, and never put into receive(): its texts would cost each frame that arrives.
[[gnu::noinline]] unsigned int CANSocket::receiveFailed(long result, int error) const {
    if (result >= 0) {
        printLine({"CANSocket::receive() on port ", std::to_string(port), ": ERROR: read only ",
                   std::to_string(result), " bytes instead of ", std::to_string(sizeof(can_frame)),
                   "."});
        return ResultFailure;
    }
    if (error != EAGAIN)
        printLine({"CANSocket::receive() on port ", std::to_string(port),
                   ": ERROR: read failed: ", std::to_string(result),
                   ", errno: ", std::to_string(error), " (", std::strerror(error), ")."});
    return ResultReadFailed;
}

int CANSocket::setPolling(bool enable, unsigned int milliseconds) {
    // Kept: without polling the number is taken for the file status flags as it is.
    if (!enable)
        return ::fcntl(socketDescriptor, F_SETFL, static_cast<int>(milliseconds));
    constexpr std::uint32_t microsecondsPerMillisecond = 1000;
    polling = true;
    pollTimeout = milliseconds * microsecondsPerMillisecond;
    return ::fcntl(socketDescriptor, F_SETFL, O_NONBLOCK);
}

unsigned int CANSocket::addIDFilter(unsigned int id, unsigned int mask) {
    const can_filter filter{id, mask};
    try {
        filters.push_back(filter);
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): the kernel's filter counts
    }
    // The kernel replaces its list: the last filter is the one in effect, on purpose.
    (void)::setsockopt(socketDescriptor, SOL_CAN_RAW, CAN_RAW_FILTER, &filter, sizeof filter);
    return ResultSuccess;
}

void CANSocket::setRetry(int count, int delayMicroseconds) {
    retryCount = count;
    retryDelay = delayMicroseconds;
}

}  // namespace ZR
