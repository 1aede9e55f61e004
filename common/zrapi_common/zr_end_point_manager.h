#pragma once

#include <memory>

#include "common/zrapi_common/zr_end_point.h"
#include "common/zrapi_common/zr_end_point_handler.h"
#include "common/zrapi_export.h"

namespace ZR {

/// Waits on the read descriptors of end points and calls their handlers, on one thread of its own.
///
/// The thread runs from construction to destruction, under the name "ZREndPoints" and with all
/// signals blocked. addEndPoint() and removeEndPoint() may be called from any thread, also inside a
/// callback. Whoever calls them on another thread than the manager's holds no lock that a callback
/// takes: both may wait for a callback's end.
///
/// An end point that is not connected, or whose descriptor is negative or refused by the kernel (not
/// open, a regular file, watched for another end point already), is kept and not watched. It is
/// tried again on the manager's thread after 1 s, then at distances that double up to 30 s: what
/// works by then is watched, what is not connected is asked to ZREndPoint::reconnect(). Once that
/// answered 11, the end point is not tried again as long as it is registered.
///
/// The functions of an end point are called on the thread that adds it and on the manager's thread.
/// What a callback, or a function of an end point on the manager's thread, raises is reported under
/// the section "zr_end_point" and goes no further, if it derives from std::exception; anything else
/// ends the process.
///
/// Destroy a manager before the handlers that it knows, and before `main` returns: singletons that
/// handle events die at process exit. A manager does not survive fork() in the child.
class ZRAPI_EXPORT ZREndPointManager {
  public:
    /// Starts the thread.
    /// @throws std::system_error when the kernel gives no descriptor or no thread
    ZREndPointManager();
    ZREndPointManager(const ZREndPointManager&) = delete;
    ZREndPointManager& operator=(const ZREndPointManager&) = delete;

    /// Ends the thread, waiting for a callback that runs, and lets go of all end points. Never call
    /// it inside a callback.
    ~ZREndPointManager();

    /// Watches an end point. Adding one that is known replaces its handler: when the call returns on
    /// another thread than the manager's, no callback of the former one runs or starts. It also
    /// watches what is connected by now, without an announcement.
    ///
    /// ZREndPointHandler::onEndPointReadable() is called whenever the read descriptor is readable
    /// or reports an error or a hang-up, possibly before this call returns. An end point that is no
    /// longer connected after it counts as lost. So does one that has hung up, with the second
    /// callback that left nothing less to read, and one with an error that a read does not clear,
    /// with the 16th. A lost one is announced by onEndPointDisconnected() and is not watched until a
    /// later try succeeds, which onEndPointReconnected() announces.
    ///
    /// The descriptor is taken here, after each callback and after each reconnect.
    /// @param endPoint  kept until it is removed or the manager ends; null is ignored
    /// @param handler   outlives the registration; null is ignored
    /// @throws std::bad_alloc when there is no memory; nothing has changed then
    void addEndPoint(std::shared_ptr<ZREndPoint> endPoint, ZREndPointHandler* handler);

    /// Forgets an end point; one that is not known is ignored.
    ///
    /// When it returns on another thread than the manager's, no callback for the end point runs or
    /// starts, and neither does its reconnect(). Inside a callback of the end point itself, that one
    /// is the last. Remove an end point before its descriptor is closed: until then a copy of the
    /// descriptor, in a child process for instance, may keep the thread busy.
    void removeEndPoint(const std::shared_ptr<ZREndPoint>& endPoint);

  private:
    class Loop;
    std::unique_ptr<Loop> loop_;
};

}  // namespace ZR
