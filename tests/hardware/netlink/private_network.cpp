#include "tests/hardware/netlink/private_network.h"

#include <linux/netlink.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace ZR::test {
namespace {

void check(bool succeeded, const char* what) {
    if (!succeeded)
        throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
}

}  // namespace

std::string enterPrivateNetwork() {
    if (::unshare(CLONE_NEWNET) == 0)
        return {};
    return std::string("a network namespace is refused: ") + std::strerror(errno);
}

GroupSender::GroupSender(int group)
    : socket_(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_GENERIC)), group_(group) {
    check(socket_ >= 0, "socket");
}

GroupSender::~GroupSender() {
    ::close(socket_);
}

bool GroupSender::send(std::string_view bytes) const {
    sockaddr_nl group{};
    group.nl_family = AF_NETLINK;
    group.nl_groups = std::uint32_t{1} << (group_ - 1);
    return ::sendto(socket_, bytes.data(), bytes.size(), 0,
                    reinterpret_cast<const sockaddr*>(&group),
                    sizeof group) == static_cast<ssize_t>(bytes.size());
}

SocketPair::SocketPair() : ends_{-1, -1} {
    check(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends_) == 0, "socketpair");
}

SocketPair::~SocketPair() {
    hangUp();
    ::close(ends_[0]);
}

bool SocketPair::send(std::string_view bytes) const {
    return ::send(ends_[1], bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
           static_cast<ssize_t>(bytes.size());
}

bool SocketPair::holdsMessage() const {
    char byte = 0;
    return ::recv(ends_[0], &byte, sizeof byte, MSG_PEEK | MSG_DONTWAIT) > 0;
}

void SocketPair::hangUp() {
    if (ends_[1] >= 0)
        ::close(ends_[1]);
    ends_[1] = -1;
}

}  // namespace ZR::test
