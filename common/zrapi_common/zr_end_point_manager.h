#pragma once

#include <memory>

#include "common/zrapi_common/zr_end_point.h"
#include "common/zrapi_common/zr_end_point_handler.h"
#include "common/zrapi_export.h"

namespace ZR {

/// Waits on the read descriptors of end points and calls their handlers, on one thread of its own.
///
/// The thread runs from construction to destruction, under the name "ZREndPoints". All signals are
/// blocked in it but those that its own faults raise (SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP,
/// SIGSYS). A program started in a callback inherits this mask: it hears no SIGTERM unless whoever
/// starts it sets another mask in the child.
///
/// addEndPoint() and removeEndPoint() may be called from any thread, also inside a callback.
/// Whoever calls them on another thread than the manager's holds no lock that a callback takes:
/// both may wait for a callback's end.
///
/// An end point that is not connected, or whose descriptor is negative or refused by the kernel
/// (not open, a regular file, watched for another end point already), is kept and not watched. It
/// is tried again on the manager's thread after 1 s, then at distances that double up to 30 s: what
/// works by then is watched. What is not connected, or says it is but has hung up, is asked to
/// ZREndPoint::reconnect(). Once that answered 11, the end point is not tried again as long as it
/// is registered.
///
/// The functions of an end point are called on the thread that adds it while it is not known, else
/// on the manager's thread. What a callback, or a function of an end point on the manager's thread,
/// raises is reported under the section "zr_end_point" and goes no further, if it derives from
/// std::exception; anything else ends the process.
///
/// Destroy a manager before the handlers that it knows, and before `main` returns: singletons that
/// handle events die at process exit. A manager does not survive fork() in the child, which lacks
/// the thread and may have copied a lock that it held: a child that destroys one, and be it by
/// exit() with a manager of static life, may wait for ever. It leaves with _exit() or starts
/// another program.
class ZRAPI_EXPORT ZREndPointManager {
  public:
    /// Starts the thread.
    /// @throws std::system_error when the kernel gives no descriptor or no thread
    ZREndPointManager();
    ZREndPointManager(const ZREndPointManager&) = delete;
    ZREndPointManager& operator=(const ZREndPointManager&) = delete;

    /// Ends the thread, waiting for a callback that runs, and lets go of all end points. Their
    /// destructors may still call this manager; what they add is not kept. Never call it inside a
    /// callback.
    ~ZREndPointManager();

    /// Watches an end point. Adding one that is known replaces its handler: when the call returns
    /// on another thread than the manager's, no callback of the former one runs or starts. It also
    /// has what is connected by now watched, without an announcement.
    ///
    /// ZREndPointHandler::onEndPointReadable() is called whenever the read descriptor is readable
    /// or reports an error or a hang-up, possibly before this call returns. An end point that is no
    /// longer connected after it counts as lost. So does one that has hung up, with the second
    /// callback that left nothing less to read, and one with an error that a read does not clear,
    /// with the 16th. A lost one is announced by onEndPointDisconnected() and is not watched until
    /// a later try succeeds, which onEndPointReconnected() announces. A loss without an event on
    /// the descriptor, because another thread disconnects the end point for instance, is noticed
    /// with the next event only.
    ///
    /// The descriptor is taken here, after each callback and after each reconnect. The kernel
    /// watches a file, not its number. An end point that was closed and opened anew under the same
    /// number is therefore added again, or removed and added; this is not needed where it was done
    /// inside the callback of a hang-up or an error. When an end point is added under the number of
    /// another one, that one counts as closed.
    /// @param endPoint  kept until it is removed or the manager ends; null is ignored
    /// @param handler   outlives the registration; null is ignored
    /// @throws std::bad_alloc when there is no memory, and whatever isConnected() and
    ///         getReadEndPointID() of the end point raise on the adding thread; nothing has changed
    ///         then
    void addEndPoint(std::shared_ptr<ZREndPoint> endPoint, ZREndPointHandler* handler);

    /// Forgets an end point; one that is not known is ignored.
    ///
    /// When it returns on another thread than the manager's, no callback for the end point runs or
    /// starts, and neither does its reconnect(). Inside a callback of the end point itself, that is
    /// the last one. Remove an end point before its descriptor is closed: until then a copy of the
    /// descriptor, in a child process for instance, may keep the thread busy.
    void removeEndPoint(const std::shared_ptr<ZREndPoint>& endPoint);

  private:
    class Loop;
    std::unique_ptr<Loop> loop_;
};

}  // namespace ZR
