#pragma once

#include <sys/epoll.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "common/file_descriptor_internal.h"
#include "common/zrapi_common/zr_reconnect_internal.h"

namespace ZR {

/// What is wrong with a descriptor. One that is not open has hung up.
Fault faultOf(int descriptor);

/// The bytes that wait to be read; 0 where the descriptor cannot tell.
int unreadBytes(int descriptor);

/// The conversation with epoll, and a descriptor that wakes the waiting thread.
class WatchSet {
  public:
    /// What epoll says along with "readable" about a descriptor that has a fault.
    static constexpr std::uint32_t faultEvents = EPOLLERR | EPOLLHUP | EPOLLRDHUP;

    using Events = std::array<epoll_event, 256>;

    /// @throws std::system_error when the kernel gives no descriptor
    WatchSet();

    /// Adds a descriptor; its events carry @p key, which is never wakeUpKey.
    /// @return false when the kernel refuses: not open, a regular file, in the set already
    bool watch(int descriptor, std::uint64_t key) const;

    /// Takes a descriptor out. One that was closed before cannot be: where its file is open under
    /// another number too, its events keep coming until renew().
    /// @return false when it could not be taken out
    bool unwatch(int descriptor) const;

    /// Begins anew with an empty set.
    /// @return false when the kernel gives no descriptor; nothing has changed then
    bool renew() const;

    /// Waits for events and takes wake-ups out of them.
    /// @param events   receives the events of one batch
    /// @param timeout  milliseconds, negative for no limit
    /// @return how many events there are, 0 also when the wait was interrupted
    std::size_t wait(Events& events, int timeout) const;

    /// Makes a wait return; from any thread.
    void wake() const;

  private:
    static constexpr std::uint64_t wakeUpKey = UINT64_MAX;

    FileDescriptor wakeUp_;
    FileDescriptor set_;
};

}  // namespace ZR
