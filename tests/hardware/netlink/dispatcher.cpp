#include "tests/hardware/netlink/dispatcher.h"

#include <typeinfo>

#include "tests/support/output_capture.h"

namespace ZR::test {
namespace {

/// Opens what the classes protect. Never built.
struct EndPointInside : ZRNetlinkEndPoint {
    EndPointInside() = delete;
    static constexpr auto familyNameMember = &EndPointInside::familyName;
    static constexpr auto familyIdMember = &EndPointInside::familyId;
    static constexpr auto socketMember = &EndPointInside::socketFd;
    static constexpr auto connectedMember = &EndPointInside::connected;
};

struct DispatcherInside : ZRNetlink {
    DispatcherInside() = delete;
    static constexpr auto mapMember = &DispatcherInside::endPoints;
    static constexpr auto setMember = &DispatcherInside::endPointSet;
};

}  // namespace

std::shared_ptr<ZRNetlinkEndPoint> makeEndPoint(const std::string& family, int familyId,
                                                int socket) {
    // No kernel has a family without a name: the line about it is not what is looked at.
    const OutputCapture silence;
    auto endPoint = std::make_shared<ZRNetlinkEndPoint>("");
    (*endPoint).*EndPointInside::familyNameMember = family;
    (*endPoint).*EndPointInside::familyIdMember = familyId;
    (*endPoint).*EndPointInside::socketMember = socket;
    (*endPoint).*EndPointInside::connectedMember = true;
    return endPoint;
}

int familyIdOf(const ZRNetlinkEndPoint& endPoint) {
    return endPoint.*EndPointInside::familyIdMember;
}

std::string familyNameOf(const ZRNetlinkEndPoint& endPoint) {
    return endPoint.*EndPointInside::familyNameMember;
}

void addTo(ZRNetlink& dispatcher, const std::shared_ptr<ZRNetlinkEndPoint>& endPoint) {
    (dispatcher.*DispatcherInside::mapMember).emplace(familyNameOf(*endPoint), endPoint);
    (dispatcher.*DispatcherInside::setMember).insert(endPoint);
}

const std::set<std::shared_ptr<ZRNetlinkEndPoint>>& endPointsOf(const ZRNetlink& dispatcher) {
    return dispatcher.*DispatcherInside::setMember;
}

std::shared_ptr<ZRNetlinkEndPoint> endPointOf(const ZRNetlink& dispatcher,
                                              const std::string& name) {
    const auto& endPoints = dispatcher.*DispatcherInside::mapMember;
    const auto found = endPoints.find(name);
    return found == endPoints.end() ? nullptr : found->second;
}

void EventLog::postEvent(ZREvent& event) {
    events.push_back(event);
    signals += typeid(event) == typeid(ZRSignal) ? 1 : 0;
}

}  // namespace ZR::test
