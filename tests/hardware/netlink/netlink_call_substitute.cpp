#include "tests/hardware/netlink/netlink_call_substitute.h"

#include <dlfcn.h>
#include <linux/netlink.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace ZR::test {
namespace {

NetlinkCalls* substitute = nullptr;

template <typename... Numbers>
std::string listed(Numbers... numbers) {
    std::string list;
    ((list += ' ' + std::to_string(numbers)), ...);
    return list;
}

std::string listed(const sockaddr* address) {
    sockaddr_nl netlink{};
    std::memcpy(&netlink, address, sizeof netlink);
    return listed(netlink.nl_family, netlink.nl_pid, netlink.nl_groups);
}

/// What select() was asked to watch.
std::string watched(const fd_set* set) {
    if (set == nullptr)
        return " none";
    std::string list;
    for (int fd = 0; fd < FD_SETSIZE; ++fd)
        if (FD_ISSET(fd, set))
            list += ' ' + std::to_string(fd);
    return list;
}

template <typename Function>
Function* real(Function* /*substitute*/, const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

long give(const NetlinkAnswer& answer) {
    if (answer.error != 0)
        errno = answer.error;
    return answer.result;
}

long next(std::deque<NetlinkAnswer>& answers, long otherwise) {
    if (answers.empty())
        return otherwise;
    const NetlinkAnswer answer = answers.front();
    answers.pop_front();
    return give(answer);
}

}  // namespace

NetlinkCalls::NetlinkCalls() {
    substitute = this;
}

NetlinkCalls::~NetlinkCalls() {
    substitute = nullptr;
}

void NetlinkCalls::fail(const std::string& name, int occurrence, int error) {
    failures_.push_back({name, occurrence, error});
}

bool NetlinkCalls::isToFail(const std::string& name, const std::string& arguments) {
    calls.push_back(name + arguments);
    for (Failure& failure : failures_) {
        if (failure.name == name && --failure.left == 0) {
            errno = failure.error;
            return true;
        }
    }
    return false;
}

}  // namespace ZR::test

using ZR::test::listed;
using ZR::test::real;
using ZR::test::substitute;
using ZR::test::watched;

// The executable's definitions come before the C library's for all libraries of the process.
extern "C" {

int socket(int domain, int type, int protocol) noexcept {
    if (substitute == nullptr)
        return real(&socket, "socket")(domain, type, protocol);
    if (substitute->isToFail("socket", listed(domain, type, protocol)))
        return -1;
    return substitute->socket = ::dup(STDERR_FILENO);
}

int bind(int fd, const sockaddr* address, socklen_t size) noexcept {
    if (substitute == nullptr)
        return real(&bind, "bind")(fd, address, size);
    return substitute->isToFail("bind", listed(fd) + listed(address) + listed(size)) ? -1 : 0;
}

int setsockopt(int fd, int level, int name, const void* value, socklen_t size) noexcept {
    if (substitute == nullptr)
        return real(&setsockopt, "setsockopt")(fd, level, name, value, size);
    int number = -1;
    std::memcpy(&number, value, sizeof number);
    return substitute->isToFail("setsockopt", listed(fd, level, name, number, size)) ? -1 : 0;
}

ssize_t sendto(int fd, const void* bytes, std::size_t count, int flags, const sockaddr* address,
               socklen_t size) {
    if (substitute == nullptr)
        return real(&sendto, "sendto")(fd, bytes, count, flags, address, size);
    if (substitute->isToFail("sendto", listed(fd, count, flags) + listed(address) + listed(size)))
        return -1;
    const ssize_t taken = ZR::test::next(substitute->sends, static_cast<long>(count));
    if (taken > 0)
        substitute->sent.append(static_cast<const char*>(bytes), static_cast<std::size_t>(taken));
    return taken;
}

ssize_t recv(int fd, void* bytes, std::size_t count, int flags) {
    if (substitute == nullptr)
        return real(&recv, "recv")(fd, bytes, count, flags);
    if (substitute->isToFail("recv", listed(fd, count, flags)))
        return -1;
    const std::size_t given = std::min(count, substitute->reply.size());
    std::memcpy(bytes, substitute->reply.data(), given);
    return static_cast<ssize_t>(given);
}

int select(int count, fd_set* reads, fd_set* writes, fd_set* errors, timeval* timeout) {
    if (substitute == nullptr)
        return real(&select, "select")(count, reads, writes, errors, timeout);
    if (substitute->isToFail("select", listed(count) + watched(reads) + watched(writes) +
                                           watched(errors) +
                                           listed(timeout->tv_sec, timeout->tv_usec)))
        return -1;
    return static_cast<int>(ZR::test::next(substitute->selects, 1));
}

}  // extern "C"
