#include "common/zrapi_common/zr_end_point_manager.h"

#include <utility>

#include "common/zrapi_common/zr_end_point_loop_internal.h"

namespace ZR {

ZREndPointManager::ZREndPointManager() : loop_(std::make_unique<Loop>(this)) {}

ZREndPointManager::~ZREndPointManager() {
    loop_->end();
}

void ZREndPointManager::addEndPoint(std::shared_ptr<ZREndPoint> endPoint,
                                    ZREndPointHandler* handler) {
    if (endPoint != nullptr && handler != nullptr)
        loop_->add(std::move(endPoint), handler);
}

void ZREndPointManager::removeEndPoint(const std::shared_ptr<ZREndPoint>& endPoint) {
    if (endPoint != nullptr)
        loop_->remove(endPoint.get());
}

}  // namespace ZR
