#pragma once

#include <memory>

#include "common/zrapi_common/zr_event.h"
#include "common/zrapi_export.h"

namespace ZR {

/// A queue of copied events, oldest first, for any number of posting and waiting threads.
///
/// An application waits with waitForEvent(), or lets its event loop (poll, epoll or a
/// QSocketNotifier) watch getEventDescriptor(). The queue has no limit: whoever posts is never held
/// up, and nothing is dropped while there is memory.
///
/// The kernel is asked only where the queue becomes empty or ceases to be: a post to an empty queue
/// is one system call, taking the last event is one, waiting is one more; all others are none.
class ZRAPI_EXPORT ZREventQueue {
  public:
    /// @throws std::system_error when the kernel gives no descriptor
    ZREventQueue();
    ZREventQueue(const ZREventQueue&) = delete;
    ZREventQueue& operator=(const ZREventQueue&) = delete;

    /// Drops what is left. No thread may be inside an operation.
    virtual ~ZREventQueue();

    /// Appends a copy of an event; one waiting thread gets it. What a derived class adds to ZREvent
    /// is not kept.
    /// @param event  unchanged; may be destroyed as soon as the call returns
    /// @throws std::bad_alloc when there is no memory; the queue is as before
    virtual void postEvent(ZREvent& event);

    /// Takes the oldest event, waiting for one if there is none.
    /// @param event                receives the copy; unchanged with false
    /// @param timeoutMilliseconds  longest wait; 0 does not wait, negative waits without limit.
    ///                             Signals and changes of the date neither shorten nor lengthen it
    /// @return true with an event; false when the time passed without one, or at once when the
    ///         kernel refuses to wait, also without limit (no memory, no descriptors allowed)
    bool waitForEvent(ZREvent& event, int timeoutMilliseconds);

    /// Returns a descriptor that is readable for as long as events wait. It belongs to the queue:
    /// watch it, neither read nor close it. After a wake-up take events with a time of 0 until that
    /// answers false.
    int getEventDescriptor() const;

  private:
    class Storage;
    std::unique_ptr<Storage> storage_;
};

}  // namespace ZR
