#include "tests/hardware/can/can_calls.h"

#include <fcntl.h>
#include <linux/can/raw.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <stdexcept>

namespace ZR::test {

std::string makingSocket() {
    return "socket " + std::to_string(AF_CAN) + ' ' + std::to_string(SOCK_RAW | SOCK_CLOEXEC) +
           ' ' + std::to_string(CAN_RAW);
}

std::string settingFlags(const std::string& socket, int flags) {
    return "fcntl " + socket + ' ' + std::to_string(F_SETFL) + ' ' + std::to_string(flags);
}

std::string askingIndex(const std::string& socket, const std::string& interface) {
    ifreq request{};
    std::memcpy(request.ifr_name, interface.data(), interface.size());
    return "ioctl " + socket + ' ' + std::to_string(SIOCGIFINDEX) + ' ' +
           hexadecimal(&request, sizeof request);
}

std::string binding(const std::string& socket, int index) {
    sockaddr_can address{};
    address.can_family = AF_CAN;
    address.can_ifindex = index;
    return "bind " + socket + ' ' + hexadecimal(&address, sizeof address) + " 24";
}

std::string writing(const std::string& socket, const can_frame& frame) {
    return "write " + socket + ' ' + hexadecimal(&frame, sizeof frame) + " 16";
}

std::string settingFilter(const std::string& socket, const can_filter& filter) {
    return "setsockopt " + socket + ' ' + std::to_string(SOL_CAN_RAW) + ' ' +
           std::to_string(CAN_RAW_FILTER) + ' ' + hexadecimal(&filter, sizeof filter) + " 8";
}

Calls openingSocket(const std::string& socket, const std::string& interface, int index) {
    return {makingSocket(), settingFlags(socket, O_NONBLOCK), askingIndex(socket, interface),
            binding(socket, index)};
}

Report rawReport(const std::string& message) {
    return {1, "zr_can_raw", message};
}

CanSocketTest::CanSocketTest() {
    CanSocketSubstitute::reset();
    CanSocketSubstitute::interfaces = {{"can0", 7}, {"can1", 8}, {"can2", 9}};
}

ConnectedSocketTest::ConnectedSocketTest() {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) != 0)
        throw std::runtime_error("socketpair");
    socket_.socketDescriptor = ends[0];
    peer_ = ends[1];
    CanSocketSubstitute::adopt(ends[0]);
}

ConnectedSocketTest::~ConnectedSocketTest() {
    ::close(peer_);
}

}  // namespace ZR::test
