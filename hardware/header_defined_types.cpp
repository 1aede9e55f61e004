#include <memory>

#include "common/zrapi_common/zr_end_point.h"
#include "common/zrapi_common/zr_end_point_handler.h"
#include "common/zrapi_common/zr_event.h"

// Puts the tables and destructors of the classes that are defined in headers alone into this
// library, whichever of them its own code happens to need: programs built against it, and another
// maker's common library, may rely on them. Compiled without optimising, which would leave out what
// nothing here calls.

namespace ZR {
namespace {

class AnyEndPoint : public ZREndPoint {
  public:
    int getReadEndPointID() const override { return -1; }
    int getWriteEndPointID() const override { return -1; }
    bool isConnected() const override { return false; }
    unsigned int reconnect() override { return 0; }
};

class AnyHandler : public ZREndPointHandler {
  public:
    void onEndPointReadable(std::shared_ptr<ZREndPoint> /*endPoint*/,
                            ZREndPointManager* /*manager*/) override {}
    void onEndPointReconnected(std::shared_ptr<ZREndPoint> /*endPoint*/) override {}
    void onEndPointDisconnected(std::shared_ptr<ZREndPoint> /*endPoint*/) override {}
};

[[gnu::used]] void emitTables() {
    const AnyEndPoint endPoint;
    const AnyHandler handler;
    const ZREvent event;
    const ZRTrigger trigger;
    const ZRSignal signal;
}

}  // namespace
}  // namespace ZR
