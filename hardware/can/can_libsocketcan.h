#pragma once

#include <string>

#include "common/zrapi_export.h"
#include "hardware/can/zr_can.h"

namespace ZR {

/// ZRCAN over libsocketcan, for the interfaces can0 to can3.
class ZRAPI_EXPORT CANLibsocketcan : public ZRCAN {
  public:
    /// Looks which of the four interfaces have a CAN controller. Interfaces that appear later are
    /// not seen by this object; a `vcan` interface has no controller and never counts.
    CANLibsocketcan();

    unsigned int setBaudrate(unsigned int port, unsigned int bitrate) override;
    unsigned int getBaudrate(unsigned int port) const override;

    /// Tells whether an interface's bit rate is the wanted one, or less than 1.5 % of its own rate
    /// away from it.
    /// @param name     interface, for instance "can0"
    /// @param bitrate  wanted rate, bit/s
    /// @param isSet    receives the answer; unchanged on failure
    /// @return 0 success, 5 rate not readable ("Error: unable to read current bitrate!")
    static unsigned int isBaudrateSet(const std::string& name, unsigned int bitrate, bool& isSet);

  protected:
    static constexpr unsigned int portCount = 4;

    std::string name;               ///< empty; kept for the layout
    bool present[portCount];        ///< state readable at construction, by 0-based number
    bool baudrateSet[portCount]{};  ///< this object has set the rate; only ever becomes true

  private:
    bool isPresent(unsigned int port) const;
};

}  // namespace ZR
