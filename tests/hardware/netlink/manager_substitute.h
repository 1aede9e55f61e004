#pragma once

#include <memory>
#include <vector>

#include "common/zrapi_common/zr_end_point_manager.h"

/// Takes the place of ZR::ZREndPointManager::addEndPoint: logs, watches nothing.

namespace ZR::test {

struct Registration {
    ZREndPointManager* manager;
    std::shared_ptr<ZREndPoint> endPoint;
    ZREndPointHandler* handler;
};

struct ManagerSubstitute {
    static std::vector<Registration> calls;
};

}  // namespace ZR::test
