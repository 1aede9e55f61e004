#pragma once

#include <cstdint>

#include "common/zrapi_export.h"

namespace ZR {

/// Something with a descriptor that an end-point manager waits on: a socket that does not read
/// itself.
///
/// End points are held by `std::shared_ptr`; they live as long as the longest holder. The class is
/// defined in this header alone, so that each library that derives from it brings its own table.
class ZRAPI_EXPORT ZREndPoint {
  public:
    ZREndPoint() = default;
    ZREndPoint(const ZREndPoint&) = delete;
    ZREndPoint& operator=(const ZREndPoint&) = delete;
    ZRAPI_EXPORT virtual ~ZREndPoint() = default;

    /// Returns the descriptor that is waited on for reading, negative while there is none.
    virtual int getReadEndPointID() const = 0;

    /// Returns the descriptor for writing, negative while there is none.
    virtual int getWriteEndPointID() const = 0;

    /// Tells whether the end point can be used.
    virtual bool isConnected() const = 0;

    /// Tries to connect an end point that is not connected, or one that counts as lost while it
    /// says that it is: it has hung up, or reports an error that no read clears.
    /// @return 0 success, 11 this end point does not support it; other codes are the class's own
    virtual unsigned int reconnect() = 0;

  protected:
    std::uint32_t reserved = 0;  ///< neither read nor written; kept for the layout
};

}  // namespace ZR
