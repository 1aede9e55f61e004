#include "tests/hardware/netlink/manager_substitute.h"

#include <utility>

namespace ZR::test {

std::vector<Registration> ManagerSubstitute::calls;

}  // namespace ZR::test

namespace ZR {

void ZREndPointManager::addEndPoint(std::shared_ptr<ZREndPoint> endPoint,
                                    ZREndPointHandler* handler) {
    test::ManagerSubstitute::calls.push_back({this, std::move(endPoint), handler});
}

}  // namespace ZR
