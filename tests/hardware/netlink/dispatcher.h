#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "common/zrapi_common/zr_event.h"
#include "common/zrapi_common/zr_event_queue.h"
#include "hardware/netlink/zr_netlink.h"

namespace ZR::test {

/// An end point as if it had connected: of this family, on this socket.
std::shared_ptr<ZRNetlinkEndPoint> makeEndPoint(const std::string& family, int familyId,
                                                int socket);

/// What an end point protects.
int familyIdOf(const ZRNetlinkEndPoint& endPoint);
std::string familyNameOf(const ZRNetlinkEndPoint& endPoint);

/// Makes an end point one of the dispatcher's, as addFamily() does.
void addTo(ZRNetlink& dispatcher, const std::shared_ptr<ZRNetlinkEndPoint>& endPoint);

/// What the dispatcher protects.
const std::set<std::shared_ptr<ZRNetlinkEndPoint>>& endPointsOf(const ZRNetlink& dispatcher);
std::shared_ptr<ZRNetlinkEndPoint> endPointOf(const ZRNetlink& dispatcher, const std::string& name);

/// Keeps copies of the events that it is posted.
class EventLog : public ZREventQueue {
  public:
    void postEvent(ZREvent& event) override;

    std::vector<ZREvent> events;
    int signals = 0;  ///< how many of them were built as a ZRSignal
};

}  // namespace ZR::test
