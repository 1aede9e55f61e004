#pragma once

#include <memory>

#include "common/zrapi_common/zr_end_point.h"
#include "common/zrapi_common/zr_end_point_handler.h"
#include "common/zrapi_export.h"

namespace ZR {

/// Waits on the read descriptors of end points and calls their handlers, on one thread of its own.
///
/// The thread runs from construction to destruction. addEndPoint() and removeEndPoint() may be
/// called from any thread, also inside a callback. An end point that is not connected, or whose
/// descriptor is negative, is kept and not watched; its ZREndPoint::reconnect() is tried on the
/// manager's thread after 1 s, then at distances that double up to 30 s, and never again once it
/// answered 11.
///
/// Destroy a manager before the handlers that it knows, and before `main` returns: singletons that
/// handle events die at process exit.
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

    /// Watches an end point. Adding one that is known replaces its handler.
    ///
    /// ZREndPointHandler::onEndPointReadable() is called whenever the read descriptor is readable
    /// or reports an error or a hang-up. An end point whose error does not clear by that read, or
    /// that is no longer connected afterwards, counts as lost: it is announced by
    /// onEndPointDisconnected() and is not watched until a reconnect succeeds.
    /// @param endPoint  kept until it is removed or the manager ends; null is ignored
    /// @param handler   outlives the registration; null is ignored
    void addEndPoint(std::shared_ptr<ZREndPoint> endPoint, ZREndPointHandler* handler);

    /// Forgets an end point; one that is not known is ignored.
    ///
    /// When it returns on another thread than the manager's, no callback for the end point runs or
    /// starts. Remove an end point before its descriptor is closed.
    void removeEndPoint(const std::shared_ptr<ZREndPoint>& endPoint);

  private:
    class Loop;
    std::unique_ptr<Loop> loop_;
};

}  // namespace ZR
