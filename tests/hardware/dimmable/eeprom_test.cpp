#include <stdexcept>

#include "tests/hardware/dimmable/dimmable_board.h"
#include "tests/support/private_root.h"
#include "tests/support/substitutes/eeprom_substitute.h"

namespace ZR::test {
namespace {

using DimmableEeprom = DimmableTest;

TEST_F(DimmableEeprom, is_read_once_with_command_2_and_a_zeroed_record) {
    makeBoard();
    (void)device();
    (void)getMinimum();
    ASSERT_EQ(EepromSubstitute::calls.size(), 1U);
    EXPECT_EQ(EepromSubstitute::calls[0].command, 2U);
    EXPECT_TRUE(EepromSubstitute::calls[0].recordWasZero);
}

TEST_F(DimmableEeprom, a_first_byte_of_6_makes_the_minimum_10) {
    makeBoard();
    EepromSubstitute::firstByte = 6;
    EXPECT_EQ(getMinimum(), (Reading{0, 10}));
    EXPECT_EQ(device().setIntensity(9, DisplayBacklight), 24U);
    EXPECT_EQ(device().setIntensity(10, DisplayBacklight), 0U);
    EXPECT_EQ(firstLine(platformDisplay), "26\n");
}

TEST_F(DimmableEeprom, a_first_byte_of_6_raises_a_display_that_is_read) {
    makeBoard();
    makeFile(platformDisplay, "13\n");
    EepromSubstitute::firstByte = 6;
    EXPECT_EQ(getIntensity(DisplayBacklight), (Reading{0, 10}));
    EXPECT_EQ(readFile(platformDisplay), "26\n");
}

TEST_F(DimmableEeprom, a_first_byte_of_5_leaves_the_minimum_at_5) {
    makeBoard();
    EepromSubstitute::firstByte = 5;
    EXPECT_EQ(getMinimum(), (Reading{0, 5}));
}

TEST_F(DimmableEeprom, a_first_byte_of_7_leaves_the_minimum_at_5) {
    makeBoard();
    EepromSubstitute::firstByte = 7;
    EXPECT_EQ(getMinimum(), (Reading{0, 5}));
}

TEST_F(DimmableEeprom, only_the_first_byte_counts) {
    makeBoard();
    EepromSubstitute::otherBytes = 6;
    EXPECT_EQ(getMinimum(), (Reading{0, 5}));
}

TEST_F(DimmableEeprom, its_result_is_ignored) {
    makeBoard();
    EepromSubstitute::firstByte = 6;
    EepromSubstitute::result = 5;
    EXPECT_EQ(getMinimum(), (Reading{0, 10}));
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableEeprom, an_exception_of_its_reader_leaves_getInstance_which_may_be_tried_again) {
    makeBoard();
    EepromSubstitute::throws = true;
    EXPECT_THROW((void)ZRDimmable::getInstance(), std::runtime_error);
    EXPECT_EQ(readFile(keyTrigger), "");
    EepromSubstitute::throws = false;
    EXPECT_EQ(getMinimum(), (Reading{0, 5}));
}

}  // namespace
}  // namespace ZR::test
