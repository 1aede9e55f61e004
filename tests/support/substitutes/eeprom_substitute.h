#pragma once

#include <vector>

/// Takes the place of the board's EEPROM reader; link `zrapi_substitute_eeprom`.

namespace ZR::test {

struct EepromCall {
    unsigned int command;
    bool recordWasZero;  ///< all 36 bytes that came in
};

struct EepromSubstitute {
    static unsigned int result;       ///< what every read answers, at first 0
    static unsigned char firstByte;   ///< stored into byte 0 of the record
    static unsigned char otherBytes;  ///< stored into the others
    static bool throws;               ///< raises std::runtime_error instead
    static std::vector<EepromCall> calls;
};

}  // namespace ZR::test
