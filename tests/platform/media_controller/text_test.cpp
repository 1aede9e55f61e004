#include "platform/media_controller/text_internal.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <string>

namespace ZR::media_controller {
namespace {

/// What is left of a text after something was taken.
std::string left(const Text& text) {
    return text.position();
}

TEST(MediaText_pure, skips_the_six_blanks_and_nothing_else) {
    Text text(" \t\n\v\f\r\x85x ");
    text.skipBlanks();
    EXPECT_EQ(left(text), "\x85x ");
}

TEST(MediaText_pure, takes_an_expected_text_whole_or_not_at_all) {
    Text text("fmt:fm");
    EXPECT_TRUE(text.take("fmt:"));
    EXPECT_FALSE(text.take("fmt:"));
    EXPECT_EQ(left(text), "fm");
}

TEST(MediaText_pure, takes_nothing_from_behind_the_end) {
    const std::string behind("\0abc", 4);
    Text text(behind.c_str());
    EXPECT_FALSE(text.take("a"));
    text.skipBlanks();
    EXPECT_EQ(text.takeUntil("c"), "");
    EXPECT_EQ(text.takeWord(true), "");
    EXPECT_EQ(text.takeNumber(), 0U);
    EXPECT_EQ(text.position(), behind.c_str());
}

TEST(MediaText_pure, takes_up_to_one_of_the_ends_or_all) {
    Text text("ab/cd");
    EXPECT_EQ(text.takeUntil("/ "), "ab");
    EXPECT_EQ(text.takeUntil("x"), "/cd");
    EXPECT_EQ(left(text), "");
}

TEST(MediaText_pure, words_are_letters_and_strokes_and_digits_where_asked_for) {
    Text text("seq-TB2_");
    EXPECT_EQ(text.takeWord(false), "seq-TB");
    EXPECT_EQ(text.takeWord(true), "2");
    EXPECT_EQ(left(text), "_");
}

TEST(MediaText_pure, compares_words_without_their_case) {
    EXPECT_TRUE(isSameWord("seq-tb", "SEQ-tB"));
    EXPECT_FALSE(isSameWord("seq-tb", "seq-t"));
    EXPECT_FALSE(isSameWord("seq-t", "seq-tb"));
    EXPECT_FALSE(isSameWord("@", "`"));
}

TEST(MediaText_pure, takes_a_number_with_blanks_and_a_sign_before_it) {
    Text text(" \t+42x");
    EXPECT_EQ(text.takeNumber(), 42U);
    EXPECT_EQ(left(text), "x");
    EXPECT_EQ(Text("-1").takeNumber(), UINT_MAX);
    EXPECT_EQ(Text("010").takeNumber(), 10U);
}

TEST(MediaText_pure, what_is_no_number_is_0_and_stays) {
    Text text(" +x");
    EXPECT_EQ(text.takeNumber(), 0U);
    EXPECT_EQ(left(text), " +x");
}

TEST(MediaText_pure, a_number_without_end_is_the_largest_and_leaves_errno_alone) {
    errno = EBUSY;
    Text text("99999999999999999999999999x");
    EXPECT_EQ(text.takeNumber(), UINT_MAX);
    EXPECT_EQ(left(text), "x");
    EXPECT_EQ(errno, EBUSY);
}

}  // namespace
}  // namespace ZR::media_controller
