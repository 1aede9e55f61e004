#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "common/zrapi_common/zr_eeprom.h"
#include "common/zrapi_common/zr_result.h"

namespace ZR::test {

TEST(Eeprom_pure, a_board_without_a_reader_reports_failure_and_leaves_the_record_alone) {
    ZREEPROMMessageData data{};
    std::memset(data.data, 0x5A, sizeof data.data);
    EXPECT_EQ(ZREeprom::readDataFromEeprom(EepromReadDisplayData, data), ResultOpenFailed);
    EXPECT_TRUE(std::all_of(std::begin(data.data), std::end(data.data),
                            [](unsigned char byte) { return byte == 0x5A; }));
}

}  // namespace ZR::test
