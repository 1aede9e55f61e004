#pragma once

#include <cstdint>
#include <string>

#include "common/zrapi_export.h"

namespace ZR {

// Defined in this header alone, destructors included, so that a library that builds events can
// bring their tables; the hardware library does. The order of the members and the virtual
// inheritance are part of the interface.

/// What event queues carry.
class ZRAPI_EXPORT ZREvent {
  public:
    ZREvent() = default;
    ZREvent(const ZREvent&) = default;
    ZREvent& operator=(const ZREvent&) = default;
    ZRAPI_EXPORT virtual ~ZREvent() = default;

    int kind = 0;              ///< what sort of event this is; 6 for the drivers' notifications
    int code = 0;              ///< which one of its kind; 900 for the drivers' notifications
    int reserved1 = 0;         ///< the common library's own
    double reserved2 = 0;      ///< the common library's own
    double reserved3 = 0;      ///< the common library's own
    std::uint32_t value1 = 0;  ///< first value; the channel of a driver's notification
    std::uint32_t value2 = 0;  ///< second value; the state or reading of a driver's notification
    std::string name;
};

/// An event that starts something.
class ZRAPI_EXPORT ZRTrigger : public virtual ZREvent {
  public:
    ZRTrigger() = default;
    ZRTrigger(const ZRTrigger&) = default;
    ZRTrigger& operator=(const ZRTrigger&) = default;
    ZRAPI_EXPORT ~ZRTrigger() override = default;

  protected:
    int reservedTrigger = 0;  ///< the common library's own
};

/// An event that tells of a change outside the application, such as a driver's notification.
class ZRAPI_EXPORT ZRSignal : public virtual ZRTrigger {
  public:
    ZRSignal() = default;
    ZRSignal(const ZRSignal&) = default;
    ZRSignal& operator=(const ZRSignal&) = default;
    ZRAPI_EXPORT ~ZRSignal() override = default;

  protected:
    int reservedSignal1 = 0;  ///< the common library's own
    int reservedSignal2 = 0;  ///< the common library's own
    int reservedSignal3 = 0;  ///< the common library's own
    int reservedSignal4 = 0;  ///< the common library's own
};

}  // namespace ZR
