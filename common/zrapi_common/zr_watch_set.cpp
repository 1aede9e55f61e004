#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "common/zrapi_common/zr_watch_set_internal.h"

namespace ZR {
namespace {

FileDescriptor opened(int descriptor, const char* what) {
    if (descriptor < 0)
        throw std::system_error(errno, std::generic_category(), what);
    return FileDescriptor(descriptor);
}

bool addTo(int set, int descriptor, std::uint64_t key) {
    epoll_event event{};
    // A peer that closed its writing half only is readable for ever and no hang-up.
    event.events = EPOLLIN | EPOLLRDHUP;
    event.data.u64 = key;
    return ::epoll_ctl(set, EPOLL_CTL_ADD, descriptor, &event) == 0;
}

}  // namespace

Fault faultOf(int descriptor) {
    pollfd question{descriptor, POLLIN | POLLRDHUP, 0};
    if (::poll(&question, 1, 0) != 1)
        return Fault::None;
    if ((question.revents & (POLLHUP | POLLRDHUP | POLLNVAL)) != 0)
        return Fault::HangUp;
    return (question.revents & POLLERR) != 0 ? Fault::Error : Fault::None;
}

int unreadBytes(int descriptor) {
    int bytes = 0;
    return ::ioctl(descriptor, FIONREAD, &bytes) == 0 ? bytes : 0;
}

WatchSet::WatchSet()
    : wakeUp_(opened(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd")),
      set_(opened(::epoll_create1(EPOLL_CLOEXEC), "epoll_create1")) {
    if (!addTo(set_.get(), wakeUp_.get(), wakeUpKey))
        throw std::system_error(errno, std::generic_category(), "epoll_ctl");
}

bool WatchSet::watch(int descriptor, std::uint64_t key) const {
    return addTo(set_.get(), descriptor, key);
}

bool WatchSet::unwatch(int descriptor) const {
    return ::epoll_ctl(set_.get(), EPOLL_CTL_DEL, descriptor, nullptr) == 0;
}

bool WatchSet::renew() const {
    const FileDescriptor fresh(::epoll_create1(EPOLL_CLOEXEC));
    return fresh.isOpen() && addTo(fresh.get(), wakeUp_.get(), wakeUpKey) &&
           ::dup3(fresh.get(), set_.get(), O_CLOEXEC) >= 0;
}

std::size_t WatchSet::wait(Events& events, int timeout) const {
    const int count =
        ::epoll_wait(set_.get(), events.data(), static_cast<int>(events.size()), timeout);
    std::size_t kept = 0;
    for (int i = 0; i < count; ++i) {
        const epoll_event& event = events[static_cast<std::size_t>(i)];
        if (event.data.u64 != wakeUpKey) {
            events[kept++] = event;
            continue;
        }
        std::uint64_t wakeUps = 0;
        (void)::read(wakeUp_.get(), &wakeUps, sizeof wakeUps);
    }
    return kept;
}

void WatchSet::wake() const {
    constexpr std::uint64_t once = 1;
    (void)::write(wakeUp_.get(), &once, sizeof once);
}

}  // namespace ZR
