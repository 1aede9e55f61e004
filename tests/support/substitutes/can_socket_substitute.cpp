#include "tests/support/substitutes/can_socket_substitute.h"

#include <fcntl.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <deque>

namespace ZR::test {

std::map<std::string, int> CanSocketSubstitute::interfaces;
std::vector<std::string> CanSocketSubstitute::calls;
bool CanSocketSubstitute::recording = true;
int CanSocketSubstitute::lowestDescriptor = 0;

namespace {

/// The number in the name of each descriptor's socket, 0 for what is none. Calls come before the
/// first object of this program is made, so it must not need making.
std::array<int, 4096> names;
int lastName = 0;

std::map<std::string, std::deque<Answer>>& answers() {
    static std::map<std::string, std::deque<Answer>> all;
    return all;
}

bool isOurs(int descriptor) {
    return descriptor >= 0 && descriptor < static_cast<int>(names.size()) &&
           names[static_cast<std::size_t>(descriptor)] != 0;
}

std::string nameOf(int descriptor) {
    return isOurs(descriptor) ? 's' + std::to_string(names[static_cast<std::size_t>(descriptor)])
                              : std::to_string(descriptor);
}

/// Tells whether a call is answered by the test, then with @p result. The text of the call is made
/// only where it is needed.
template <typename Text>
bool isAnswered(const char* function, Text text, long& result) {
    if (CanSocketSubstitute::recording)
        CanSocketSubstitute::calls.push_back(std::string(function) + ' ' + text());
    if (answers().empty())
        return false;
    std::deque<Answer>& next = answers()[function];
    if (next.empty())
        return false;
    const Answer answer = next.front();
    next.pop_front();
    result = answer.result;
    if (result < 0)
        errno = answer.error;
    return true;
}

/// The same for a call on a descriptor; what is neither -1 nor a CAN socket is never answered.
template <typename Text>
bool isAnswered(const char* function, int descriptor, Text text, long& result) {
    if (descriptor != -1 && !isOurs(descriptor))
        return false;
    return isAnswered(
        function, [descriptor, &text] { return nameOf(descriptor) + text(); }, result);
}

/// Moves a descriptor up to the lowest number that a socket may get.
int moved(int descriptor) {
    if (descriptor < 0 || descriptor >= CanSocketSubstitute::lowestDescriptor)
        return descriptor;
    const long higher =
        ::syscall(SYS_fcntl, descriptor, F_DUPFD_CLOEXEC, CanSocketSubstitute::lowestDescriptor);
    ::syscall(SYS_close, descriptor);
    return static_cast<int>(higher);
}

/// Asks the kernel for the one interface that every machine has, then gives the simulated index.
long indexOf(int descriptor, ifreq& request) {
    const std::string name(request.ifr_name, ::strnlen(request.ifr_name, IFNAMSIZ));
    std::memcpy(request.ifr_name, "lo", 3);
    const long result = ::syscall(SYS_ioctl, descriptor, SIOCGIFINDEX, &request);
    std::memset(request.ifr_name, 0, IFNAMSIZ);
    std::memcpy(request.ifr_name, name.data(), name.size());
    const auto found = CanSocketSubstitute::interfaces.find(name);
    if (result < 0 || found == CanSocketSubstitute::interfaces.end()) {
        errno = result < 0 ? errno : ENODEV;
        return -1;
    }
    request.ifr_ifindex = found->second;
    return 0;
}

}  // namespace

void CanSocketSubstitute::answer(const std::string& function, const std::vector<Answer>& given) {
    answers()[function].assign(given.begin(), given.end());
}

void CanSocketSubstitute::adopt(int descriptor) {
    if (descriptor >= 0)
        names.at(static_cast<std::size_t>(descriptor)) = ++lastName;
}

void CanSocketSubstitute::reset() {
    interfaces.clear();
    calls.clear();
    recording = true;
    lowestDescriptor = 0;
    answers().clear();
    names.fill(0);
    lastName = 0;
}

std::string hexadecimal(const void* memory, std::size_t size) {
    constexpr char digits[] = "0123456789abcdef";
    const auto* const bytes = static_cast<const unsigned char*>(memory);
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
        text += digits[bytes[i] >> 4];
        text += digits[bytes[i] & 15];
    }
    return text;
}

}  // namespace ZR::test

using ZR::test::hexadecimal;

extern "C" {

int socket(int domain, int type, int protocol) noexcept {
    long result = -1;
    const auto text = [=] {
        return std::to_string(domain) + ' ' + std::to_string(type) + ' ' + std::to_string(protocol);
    };
    if (domain != AF_CAN)
        return static_cast<int>(::syscall(SYS_socket, domain, type, protocol));
    if (ZR::test::isAnswered("socket", text, result))
        return static_cast<int>(result);
    constexpr int flags = SOCK_CLOEXEC | SOCK_NONBLOCK;
    const int made = ZR::test::moved(
        static_cast<int>(::syscall(SYS_socket, AF_UNIX, SOCK_DGRAM | (type & flags), 0)));
    ZR::test::CanSocketSubstitute::adopt(made);
    return made;
}

int fcntl(int descriptor, int command, ...) {
    std::va_list rest;
    va_start(rest, command);
    const long argument = va_arg(rest, long);
    va_end(rest);
    long result = -1;
    const auto text = [=] {
        return ' ' + std::to_string(command) + ' ' + std::to_string(static_cast<int>(argument));
    };
    // Tests look at the flags of a descriptor too; the library only sets them.
    if (command == F_SETFL && ZR::test::isAnswered("fcntl", descriptor, text, result))
        return static_cast<int>(result);
    return static_cast<int>(::syscall(SYS_fcntl, descriptor, command, argument));
}

int ioctl(int descriptor, unsigned long request, ...) noexcept {
    std::va_list rest;
    va_start(rest, request);
    void* const argument = va_arg(rest, void*);
    va_end(rest);
    long result = -1;
    const auto text = [=] {
        return ' ' + std::to_string(request) + ' ' + hexadecimal(argument, sizeof(ifreq));
    };
    if (ZR::test::isAnswered("ioctl", descriptor, text, result))
        return static_cast<int>(result);
    if (ZR::test::isOurs(descriptor) && request == SIOCGIFINDEX)
        return static_cast<int>(ZR::test::indexOf(descriptor, *static_cast<ifreq*>(argument)));
    return static_cast<int>(::syscall(SYS_ioctl, descriptor, request, argument));
}

int bind(int descriptor, const sockaddr* address, socklen_t length) noexcept {
    long result = -1;
    const auto text = [=] {
        return ' ' + hexadecimal(address, length) + ' ' + std::to_string(length);
    };
    if (ZR::test::isAnswered("bind", descriptor, text, result))
        return static_cast<int>(result);
    if (!ZR::test::isOurs(descriptor))
        return static_cast<int>(::syscall(SYS_bind, descriptor, address, length));
    // A local address of the kernel's choice.
    const sa_family_t local = AF_UNIX;
    return static_cast<int>(::syscall(SYS_bind, descriptor, &local, sizeof local));
}

int setsockopt(int descriptor, int level, int option, const void* value,
               socklen_t length) noexcept {
    long result = -1;
    const auto text = [=] {
        return ' ' + std::to_string(level) + ' ' + std::to_string(option) + ' ' +
               hexadecimal(value, length) + ' ' + std::to_string(length);
    };
    if (ZR::test::isAnswered("setsockopt", descriptor, text, result))
        return static_cast<int>(result);
    return static_cast<int>(::syscall(SYS_setsockopt, descriptor, level, option, value, length));
}

ssize_t write(int descriptor, const void* memory, size_t size) {
    long result = -1;
    const auto text = [=] { return ' ' + hexadecimal(memory, size) + ' ' + std::to_string(size); };
    if (ZR::test::isAnswered("write", descriptor, text, result))
        return result;
    return ::syscall(SYS_write, descriptor, memory, size);
}

ssize_t read(int descriptor, void* memory, size_t size) {
    long result = -1;
    const auto text = [=] { return ' ' + std::to_string(size); };
    if (ZR::test::isAnswered("read", descriptor, text, result))
        return result;
    return ::syscall(SYS_read, descriptor, memory, size);
}

int usleep(useconds_t microseconds) {
    long result = 0;
    (void)ZR::test::isAnswered(
        "usleep", [=] { return std::to_string(microseconds); }, result);
    return static_cast<int>(result);
}

int close(int descriptor) {
    long result = -1;
    const bool answered = ZR::test::isAnswered(
        "close", descriptor, [] { return std::string(); }, result);
    if (ZR::test::isOurs(descriptor))
        ZR::test::names[static_cast<std::size_t>(descriptor)] = 0;
    const long real = ::syscall(SYS_close, descriptor);
    return static_cast<int>(answered ? result : real);
}

}  // extern "C"
