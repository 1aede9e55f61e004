#include "tools/zrctl/event_sockets.h"

#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <vector>

namespace zrctl {
namespace {

// The kernel doubles it: room for some 10000 notifications.
constexpr int bufferSize = 4 * 1024 * 1024;
// A tool that has just started has opened a handful.
constexpr int descriptorsLookedAt = 256;

int optionOf(int descriptor, int option) {
    int value = -1;
    socklen_t size = sizeof value;
    return ::getsockopt(descriptor, SOL_SOCKET, option, &value, &size) == 0 ? value : -1;
}

std::vector<int> eventSockets() {
    std::vector<int> sockets;
    for (int descriptor = STDERR_FILENO + 1; descriptor < descriptorsLookedAt; ++descriptor) {
        if (optionOf(descriptor, SO_DOMAIN) == AF_NETLINK &&
            optionOf(descriptor, SO_PROTOCOL) == NETLINK_GENERIC)
            sockets.push_back(descriptor);
    }
    return sockets;
}

/// What the kernel counts of all of them.
std::uint32_t sumOfMemory(std::size_t counter) {
    std::uint32_t sum = 0;
    for (const int socket : eventSockets()) {
        std::array<std::uint32_t, SK_MEMINFO_VARS> memory{};
        socklen_t size = sizeof memory;
        (void)::getsockopt(socket, SOL_SOCKET, SO_MEMINFO, memory.data(), &size);
        sum += memory[counter];
    }
    return sum;
}

}  // namespace

std::size_t countEventSockets() {
    return eventSockets().size();
}

void enlargeEventSockets() {
    for (const int socket : eventSockets()) {
        // Beyond the system's limit where that is allowed, else up to it.
        if (::setsockopt(socket, SOL_SOCKET, SO_RCVBUFFORCE, &bufferSize, sizeof bufferSize) != 0)
            (void)::setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &bufferSize, sizeof bufferSize);
    }
}

bool eventsWait() {
    return sumOfMemory(SK_MEMINFO_RMEM_ALLOC) > 0;
}

unsigned int lostEvents() {
    return sumOfMemory(SK_MEMINFO_DROPS);
}

}  // namespace zrctl
