#include <gtest/gtest.h>

#include <climits>
#include <locale>
#include <string>

#include "common/zrapi_utility/zr_to_string.h"

namespace ZR::test {
namespace {

class GroupedDigits : public std::numpunct<char> {
  protected:
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

}  // namespace

TEST(ToString_pure, renders_decimal_digits_with_a_minus_sign_for_negatives) {
    EXPECT_EQ(toString(0), "0");
    EXPECT_EQ(toString(7), "7");
    EXPECT_EQ(toString(-1), "-1");
    EXPECT_EQ(toString(-120), "-120");
}

TEST(ToString_pure, renders_the_ends_of_the_range) {
    EXPECT_EQ(toString(INT_MAX), "2147483647");
    EXPECT_EQ(toString(INT_MIN), "-2147483648");
}

TEST(ToString_pure, ignores_a_global_locale_that_groups_digits) {
    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new GroupedDigits));
    EXPECT_EQ(toString(1234567), "1234567");
    std::locale::global(before);
}

}  // namespace ZR::test
