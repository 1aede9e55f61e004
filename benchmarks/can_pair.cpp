#include "benchmarks/can_pair.h"

#include <fcntl.h>
#include <linux/can.h>
#include <linux/can/raw.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "hardware/can/can_socket.h"

namespace ZR::benchmarks {
namespace {

constexpr char virtualInterface[] = "/sys/devices/virtual/net/can";
constexpr unsigned int portCount = 4;
constexpr int waitMilliseconds = 10000;

/// A socket of the library over a descriptor that was opened elsewhere.
class AdoptedSocket : public CANSocket {
  public:
    explicit AdoptedSocket(int descriptor) {
        socketDescriptor = descriptor;
        connected = true;
    }
};

/// The first port that is a virtual interface, or 0.
unsigned int virtualPort() {
    for (unsigned int port = 1; port <= portCount; ++port) {
        if (std::filesystem::exists(virtualInterface + std::to_string(port - 1)))
            return port;
    }
    return 0;
}

bool hearItself(int descriptor) {
    const int on = 1;
    return ::setsockopt(descriptor, SOL_CAN_RAW, CAN_RAW_RECV_OWN_MSGS, &on, sizeof on) == 0;
}

bool takeFrames(int descriptor, long frames) {
    can_frame frame{};
    for (long taken = 0; taken < frames; ++taken) {
        ssize_t size = ::read(descriptor, &frame, sizeof frame);
        if (size < 0 && errno == EAGAIN && waitForFrame(descriptor))
            size = ::read(descriptor, &frame, sizeof frame);
        if (size != sizeof frame)
            return false;
    }
    return true;
}

}  // namespace

bool waitForFrame(int descriptor) {
    pollfd waiting{descriptor, POLLIN, 0};
    return ::poll(&waiting, 1, waitMilliseconds) == 1;
}

CanPair::CanPair() {
    if (!openInterface())
        openSocketPair();
}

bool CanPair::openInterface() {
    const unsigned int port = virtualPort();
    if (port == 0)
        return false;
    // The kernel serves the socket that was opened last first: once the peer has got one of its own
    // frames, the measured end has got it too.
    peer_ = std::make_shared<CANSocket>();
    socket_ = std::make_shared<CANSocket>();
    if (peer_->initialize(port) != 0 || socket_->initialize(port) != 0 ||
        !hearItself(peer_->getReadEndPointID()))
        return false;
    peerHearsItself_ = true;
    description_ = "virtual interface can" + std::to_string(port - 1);
    return true;
}

void CanPair::openSocketPair() {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) != 0)
        throw std::system_error(errno, std::generic_category(), "socket pair");
    peer_ = std::make_shared<AdoptedSocket>(ends[0]);
    socket_ = std::make_shared<AdoptedSocket>(ends[1]);
    description_ = "socket pair, no virtual interface here";
}

bool CanPair::fill(long frames) const {
    const int descriptor = peer_->getWriteEndPointID();
    can_frame frame{};
    frame.can_id = 0x123;
    frame.can_dlc = CAN_MAX_DLEN;
    for (long sent = 0; sent < frames; ++sent) {
        if (::write(descriptor, &frame, sizeof frame) != sizeof frame)
            return false;
    }
    return !peerHearsItself_ || takeFrames(descriptor, frames);
}

bool CanPair::drain(long frames) const {
    return takeFrames(peer_->getReadEndPointID(), frames);
}

const std::shared_ptr<const CanPair>& canPair() {
    static const std::shared_ptr<const CanPair> pair = std::make_shared<CanPair>();
    return pair;
}

}  // namespace ZR::benchmarks
