#include "tests/support/substitutes/eeprom_substitute.h"

#include <algorithm>
#include <stdexcept>

#include "common/zrapi_common/zr_eeprom.h"

namespace ZR::test {

unsigned int EepromSubstitute::result = 0;
unsigned char EepromSubstitute::firstByte = 0;
unsigned char EepromSubstitute::otherBytes = 0;
bool EepromSubstitute::throws = false;
std::vector<EepromCall> EepromSubstitute::calls;

}  // namespace ZR::test

namespace ZR {

unsigned int ZREeprom::readDataFromEeprom(ZREEPROMCommand command, ZREEPROMMessageData& data) {
    using test::EepromSubstitute;
    const bool zero = std::all_of(std::begin(data.data), std::end(data.data),
                                  [](auto byte) { return byte == 0; });
    EepromSubstitute::calls.push_back({command, zero});
    if (EepromSubstitute::throws)
        throw std::runtime_error("EEPROM");
    std::fill(std::begin(data.data), std::end(data.data), EepromSubstitute::otherBytes);
    data.data[0] = EepromSubstitute::firstByte;
    return EepromSubstitute::result;
}

}  // namespace ZR
