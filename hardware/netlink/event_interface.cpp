#include "hardware/netlink/event_interface.h"

#include <linux/genetlink.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "common/file_descriptor_internal.h"
#include "hardware/netlink/family_resolution_internal.h"
#include "hardware/netlink/netlink_message_internal.h"

namespace {

using ZR::AttributeWalk;
using ZR::FileDescriptor;
using ZR::MessageBuffer;

// Group of the controller's own notices, fixed by the kernel (GENL_ID_CTRL).
constexpr int controllerGroup = GENL_ID_CTRL;

/// Prints one failure with `errno` as it stands.
int fail(const char* what) {
    const int error = errno;
    std::printf("%s failed with error %d (%s)\n", what, error, std::strerror(error));
    (void)std::fflush(stdout);
    return -1;
}

bool bindToAnyPort(const FileDescriptor& socket) {
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    return ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

bool joinGroup(const FileDescriptor& socket, int group) {
    return ::setsockopt(socket.get(), SOL_NETLINK, NETLINK_ADD_MEMBERSHIP, &group, sizeof group) ==
           0;
}

bool sendToKernel(const FileDescriptor& socket, const MessageBuffer& message, std::size_t length) {
    sockaddr_nl kernel{};
    kernel.nl_family = AF_NETLINK;
    std::size_t done = 0;
    while (done < length) {
        const ssize_t sent = ::sendto(socket.get(), message.bytes.data() + done, length - done, 0,
                                      reinterpret_cast<const sockaddr*>(&kernel), sizeof kernel);
        if (sent < 1 && errno != EAGAIN)
            return false;
        done += sent > 0 ? static_cast<std::size_t>(sent) : 0;
    }
    return true;
}

int resolveFamily(const FileDescriptor& socket, const char* familyName, char* groupName,
                  int* groupId) {
    MessageBuffer message;  // NOLINT(*-init): filled by the request
    const std::size_t length =
        ZR::buildFamilyRequest(familyName, static_cast<std::uint32_t>(::getpid()), message);
    if (length == 0 || !sendToKernel(socket, message, length))
        return -1;
    const ssize_t received = ::recv(socket.get(), message.bytes.data(), MessageBuffer::size, 0);
    return ZR::parseFamilyReply(message, received, groupName, groupId);
}

/// Waits as `select` does: 1 readable, 0 time passed, -1 failure.
int waitUntilReadable(int fd, int timeoutUs) {
    // A descriptor beyond the set's size would be written outside of it.
    if (fd < 0 || fd >= FD_SETSIZE)
        return -1;
    fd_set set;
    FD_ZERO(&set);
    FD_SET(fd, &set);
    timeval timeout{};
    timeout.tv_usec = timeoutUs;
    return ::select(fd + 1, &set, nullptr, nullptr, &timeout);
}

bool matches(const MessageBuffer& message, ssize_t received, int familyId, int command,
             int attributeCount) {
    return ZR::isComplete(message, received) && message.header()->nlmsg_type == familyId &&
           ZR::hasCommand(message, command) && attr_count(message.header()) == attributeCount &&
           ZR::areAttributesWhole(message.header());
}

}  // namespace

int event_if_connect(const char* familyName, int* familyId, char* groupName, int* groupId) {
    FileDescriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_GENERIC));
    if (!socket.isOpen())
        return fail("Creating generic netlink socket");
    if (!bindToAnyPort(socket))
        return fail("Binding to generic netlink socket");
    // Joined before the question, so the notice of another driver can come before the answer; then
    // the connection fails. Kept: applications connect after the drivers are loaded.
    if (!joinGroup(socket, controllerGroup))
        return fail("Connecting to CTRL multicast group");
    *familyId = resolveFamily(socket, familyName, groupName, groupId);
    if (*familyId == -1)
        return fail("Retrieving family and multicast ID from driver");
    if (!joinGroup(socket, *groupId))
        return fail("Connecting to multicast group of driver");
    return socket.release();
}

void event_if_disconnect(int fd) {
    (void)::close(fd);
}

int attr_count(const struct nlmsghdr* msg) {
    int count = 0;
    for (AttributeWalk walk(msg); !walk.isAtEnd(); walk.next())
        ++count;
    return count;
}

struct nlattr* attr_get(const struct nlmsghdr* msg, int index) {
    AttributeWalk walk(msg);
    for (int i = 0; i < index && !walk.isAtEnd(); ++i)
        walk.next();
    if (index < 0 || walk.isAtEnd())
        return nullptr;
    // The interface hands out attributes without const, also those of a const message.
    auto* bytes = const_cast<unsigned char*>(walk.position());
    return reinterpret_cast<nlattr*>(bytes);
}

int event_if_waitevent(int fd, int familyId, int command, int timeoutUs, int attrCount, ...) {
    const int ready = waitUntilReadable(fd, timeoutUs);
    if (ready < 1)
        return ready;
    MessageBuffer message;  // NOLINT(*-init): filled by the kernel
    // Without waiting: readiness can be a false alarm, and the time is bounded.
    const ssize_t received = ::recv(fd, message.bytes.data(), MessageBuffer::size, MSG_DONTWAIT);
    if (!matches(message, received, familyId, command, attrCount))
        return 0;

    va_list destinations;
    va_start(destinations, attrCount);
    for (AttributeWalk walk(message.header()); !walk.isAtEnd(); walk.next()) {
        void* destination = va_arg(destinations, void*);
        const ZR::Payload payload = walk.payload();
        std::memcpy(destination, payload.bytes, payload.size);
    }
    va_end(destinations);
    return 1;
}
