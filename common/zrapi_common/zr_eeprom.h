#pragma once

#include "common/zrapi_export.h"

namespace ZR {

/// What ZREeprom::readDataFromEeprom reads. Commands are the board's own; the one named here is the
/// one the library uses.
enum ZREEPROMCommand : unsigned int {
    EepromReadDisplayData = 2,  ///< display data; byte 0 equal to 6 raises the minimum backlight
};

/// The record of one command; what the bytes mean depends on the command.
struct ZREEPROMMessageData {
    unsigned char data[36];
};

/// Reader of the board's EEPROM.
class ZRAPI_EXPORT ZREeprom {
  public:
    /// Reads one record.
    ///
    /// This open implementation knows no board and therefore no device: it always reports failure.
    /// An integrator's platform library brings the board's reader under the same name.
    ///
    /// @param command  record to read
    /// @param data     receives the record; untouched on failure
    /// @return 0, or 2 (file or device cannot be opened)
    static unsigned int readDataFromEeprom(ZREEPROMCommand command, ZREEPROMMessageData& data);
};

}  // namespace ZR
