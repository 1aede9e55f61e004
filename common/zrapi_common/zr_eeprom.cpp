#include "common/zrapi_common/zr_eeprom.h"

#include "common/zrapi_common/zr_result.h"

namespace ZR {

unsigned int ZREeprom::readDataFromEeprom(ZREEPROMCommand /*command*/,
                                          ZREEPROMMessageData& /*data*/) {
    return ResultOpenFailed;
}

}  // namespace ZR
