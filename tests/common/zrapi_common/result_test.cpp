#include <gtest/gtest.h>

#include <set>
#include <string>

#include "common/zrapi_common/zr_result.h"

namespace ZR::test {

TEST(Result_pure, each_code_has_a_text_of_its_own) {
    std::set<std::string> texts{resultText(99)};
    for (const unsigned int code : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, 10U, 11U, 20U, 24U, 25U})
        EXPECT_TRUE(texts.insert(resultText(code)).second) << code;
}

TEST(Result_pure, codes_that_are_not_used_have_no_text) {
    for (const unsigned int code : {8U, 9U, 12U, 19U, 21U, 23U, 26U, 0xFFFFFFFFU})
        EXPECT_STREQ(resultText(code), "unknown result code") << code;
}

}  // namespace ZR::test
