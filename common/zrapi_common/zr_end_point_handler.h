#pragma once

#include <memory>

#include "common/zrapi_common/zr_end_point.h"
#include "common/zrapi_export.h"

namespace ZR {

class ZREndPointManager;

/// What an end-point manager calls back, always on the manager's thread.
///
/// Managers keep plain pointers: a handler outlives its registrations. A handler may add and remove
/// end points inside a callback. A callback that blocks delays all end points of its manager; a
/// reader that could block reads without blocking, because a wake-up may be a false one.
class ZRAPI_EXPORT ZREndPointHandler {
  public:
    /// The read descriptor is readable, or reports an error or a hang-up, which a read then shows.
    /// Called again for as long as it stays readable.
    /// @param endPoint  the end point; the handler may keep it
    /// @param manager   the manager that calls
    virtual void onEndPointReadable(std::shared_ptr<ZREndPoint> endPoint,
                                    ZREndPointManager* manager) = 0;

    /// An end point that was not watched works: ZREndPoint::reconnect() succeeded, or there was no
    /// need for it. It is watched from now on.
    virtual void onEndPointReconnected(std::shared_ptr<ZREndPoint> endPoint) = 0;

    /// The end point was connected and is lost; it is not watched any more.
    virtual void onEndPointDisconnected(std::shared_ptr<ZREndPoint> endPoint) = 0;

    ZRAPI_EXPORT virtual ~ZREndPointHandler() = default;
};

}  // namespace ZR
