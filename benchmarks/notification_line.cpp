#include "benchmarks/notification_line.h"

#include <fcntl.h>
#include <linux/genetlink.h>
#include <linux/netlink.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

#include "benchmarks/standard_output.h"

namespace ZR::benchmarks {
namespace {

constexpr char family[] = "ZR_DI";
constexpr char knobFile[] = "/sys/kernel/debug/zr_terminal/zr_di.0/state/value";
constexpr int anyFamilyId = NLMSG_MIN_TYPE + 7;
// A notification that never comes is a failure, not a hang.
constexpr timeval longestWait{10, 0};

/// An end point over a socket that was opened elsewhere.
class AdoptedEndPoint : public ZRNetlinkEndPoint {
  public:
    explicit AdoptedEndPoint(int descriptor) : ZRNetlinkEndPoint(family) {
        if (connected)
            (void)::close(socketFd);
        socketFd = descriptor;
        familyId = anyFamilyId;
        connected = true;
    }
};

void check(bool succeeded, const char* what) {
    if (!succeeded)
        throw std::system_error(errno, std::generic_category(), what);
}

/// Netlink between sockets of user space: the one protocol that needs no privilege for it.
int openNetlink() {
    const int descriptor = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_USERSOCK);
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    check(::bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0,
          "netlink socket");
    return descriptor;
}

void connectTo(int descriptor, int receiver) {
    sockaddr_nl address{};
    socklen_t size = sizeof address;
    check(::getsockname(receiver, reinterpret_cast<sockaddr*>(&address), &size) == 0 &&
              ::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), size) == 0,
          "netlink connection");
}

unsigned char* putWord(unsigned char* to, std::uint16_t type, std::uint32_t word) {
    nlattr attribute{};
    attribute.nla_len = NLA_HDRLEN + sizeof word;
    attribute.nla_type = type;
    std::memcpy(to, &attribute, sizeof attribute);
    std::memcpy(to + NLA_HDRLEN, &word, sizeof word);
    return to + NLA_HDRLEN + sizeof word;
}

}  // namespace

std::size_t buildNotification(MessageBuffer& message, int familyId, std::uint32_t state) {
    constexpr std::uint16_t channel = 1;
    constexpr std::uint16_t flags = 2;
    constexpr std::uint16_t value = 3;
    message.bytes.fill(0);
    unsigned char* end = message.bytes.data() + messageHeaderSize;
    end = putWord(end, channel, 0);
    end = putWord(end, flags, 1);
    end = putWord(end, value, state);
    genlmsghdr generic{};
    generic.cmd = 1;
    generic.version = 1;
    std::memcpy(message.bytes.data() + NLMSG_HDRLEN, &generic, sizeof generic);
    nlmsghdr header{};
    header.nlmsg_len = static_cast<std::uint32_t>(end - message.bytes.data());
    header.nlmsg_type = static_cast<std::uint16_t>(familyId);
    std::memcpy(message.bytes.data(), &header, sizeof header);
    return header.nlmsg_len;
}

NotificationLine::NotificationLine()
    : knob_(::open(knobFile, O_RDWR | O_CLOEXEC)), sender_(knob_.isOpen() ? -1 : openNetlink()) {
    if (knob_.isOpen())
        openDriver();
    else
        openSocket();
    check(::setsockopt(socket(), SOL_SOCKET, SO_RCVTIMEO, &longestWait, sizeof longestWait) == 0,
          "longest wait of the netlink socket");
}

void NotificationLine::openDriver() {
    endPoint_ = std::make_shared<ZRNetlinkEndPoint>(family);
    char text = '0';
    check(::pread(knob_.get(), &text, sizeof text, 0) == sizeof text, "knob of the digital input");
    state_ = text == '1' ? 1 : 0;
    description_ = "driver, by its knob";
}

void NotificationLine::openSocket() {
    const SilencedOutput silence;  // without a driver the end point says that it has none
    const int receiver = openNetlink();
    endPoint_ = std::make_shared<AdoptedEndPoint>(receiver);
    connectTo(sender_.get(), receiver);
    description_ = "netlink socket of user space, no driver here";
}

bool NotificationLine::send(long notifications) {
    for (long sent = 0; sent < notifications; ++sent) {
        state_ = 1 - state_;  // only a change is told of
        if (!(knob_.isOpen() ? turnKnob() : sendMessage()))
            return false;
    }
    return true;
}

bool NotificationLine::turnKnob() const {
    const char text = state_ == 0 ? '0' : '1';
    return ::pwrite(knob_.get(), &text, sizeof text, 0) == sizeof text;
}

bool NotificationLine::sendMessage() const {
    MessageBuffer message;  // NOLINT(*-init): filled by the next call
    const std::size_t length = buildNotification(message, anyFamilyId, state_);
    return ::send(sender_.get(), message.bytes.data(), length, 0) == static_cast<ssize_t>(length);
}

const std::shared_ptr<NotificationLine>& notificationLine() {
    static const auto line = std::make_shared<NotificationLine>();
    return line;
}

}  // namespace ZR::benchmarks
