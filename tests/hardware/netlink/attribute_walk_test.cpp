// attr_count and attr_get on messages that hold together and on those that do not.

#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "hardware/netlink/event_interface.h"
#include "tests/hardware/netlink/message.h"

namespace ZR::test {
namespace {

constexpr int family = 30;

int countOf(const std::string& attributes) {
    return attr_count(ExactMessage(message(family, attributes)).header());
}

std::ptrdiff_t offsetOf(const std::string& attributes, int index) {
    const ExactMessage exact(message(family, attributes));
    return exact.offsetOf(attr_get(exact.header(), index));
}

TEST(AttributeWalk_pure, a_message_of_headers_only_has_no_attribute) {
    EXPECT_EQ(countOf(""), 0);
    EXPECT_EQ(offsetOf("", 0), -1);
}

TEST(AttributeWalk_pure, a_message_that_ends_before_or_in_the_generic_header_has_no_attribute) {
    for (const std::uint32_t length : {0U, 8U, 15U, 16U, 17U, 18U, 19U}) {
        const ExactMessage exact(withLength(message(family, ""), length));
        EXPECT_EQ(attr_count(exact.header()), 0) << length;
        EXPECT_EQ(attr_get(exact.header(), 0), nullptr) << length;
    }
}

TEST(AttributeWalk_pure, attributes_are_counted_and_found_at_their_places) {
    const std::string attributes =
        attribute(1, "ai.0") + attribute(2, "12345") + attribute(3, "") + attribute(4, 7U);
    EXPECT_EQ(countOf(attributes), 4);
    EXPECT_EQ(offsetOf(attributes, 0), 20);
    EXPECT_EQ(offsetOf(attributes, 1), 28);
    EXPECT_EQ(offsetOf(attributes, 2), 40);
    EXPECT_EQ(offsetOf(attributes, 3), 44);
}

TEST(AttributeWalk_pure, attr_get_at_attr_count_is_null) {
    const std::string three = attribute(1, 1U) + attribute(2, 2U) + attribute(3, 3U);
    for (const std::string& attributes :
         {std::string(), three, three + "x", three + attributeHeader(0, 1) + "rest",
          three + attributeHeader(99, 1)}) {
        const int count = countOf(attributes);
        EXPECT_EQ(offsetOf(attributes, count), -1) << count;
        EXPECT_EQ(offsetOf(attributes, count + 1), -1) << count;
        EXPECT_EQ(offsetOf(attributes, INT_MAX), -1) << count;
        EXPECT_EQ(count == 0, offsetOf(attributes, count - 1) == -1) << count;
    }
}

TEST(AttributeWalk_pure, attr_get_before_the_first_is_null) {
    EXPECT_EQ(offsetOf(attribute(1, 1U), -1), -1);
    EXPECT_EQ(offsetOf(attribute(1, 1U), INT_MIN), -1);
}

TEST(AttributeWalk_pure, one_to_three_bytes_that_are_left_count_as_an_attribute) {
    for (const char* const left : {"a", "ab", "abc"}) {
        const std::string attributes = attribute(1, 1U) + left;
        EXPECT_EQ(countOf(attributes), 2) << left;
        EXPECT_EQ(offsetOf(attributes, 1), 28) << left;
        EXPECT_EQ(offsetOf(attributes, 2), -1) << left;
        EXPECT_EQ(countOf(left), 1) << left;
    }
}

TEST(AttributeWalk_pure, a_length_of_0_counts_and_ends_the_walk) {
    const std::string attributes = attribute(1, 1U) + attributeHeader(0, 2) + attribute(3, 3U);
    EXPECT_EQ(countOf(attributes), 2);
    EXPECT_EQ(offsetOf(attributes, 1), 28);
    EXPECT_EQ(offsetOf(attributes, 2), -1);
}

TEST(AttributeWalk_pure, lengths_of_1_to_4_step_over_four_bytes) {
    for (const int length : {1, 2, 3, 4}) {
        const std::string attributes = attributeHeader(length, 1) + attribute(2, 2U);
        EXPECT_EQ(countOf(attributes), 2) << length;
        EXPECT_EQ(offsetOf(attributes, 1), 24) << length;
    }
}

TEST(AttributeWalk_pure, lengths_of_5_to_8_step_over_eight_bytes) {
    for (const int length : {5, 6, 7, 8}) {
        const std::string attributes = attributeHeader(length, 1) + "1234" + attribute(2, 2U);
        EXPECT_EQ(countOf(attributes), 2) << length;
        EXPECT_EQ(offsetOf(attributes, 1), 28) << length;
    }
}

TEST(AttributeWalk_pure, an_attribute_that_runs_past_the_end_counts_and_is_the_last) {
    for (const int length : {9, 12, 1000, 0x7FFF, 0xFFFC, 0xFFFD, 0xFFFF}) {
        const std::string attributes = attribute(1, 1U) + attributeHeader(length, 2) + "1234";
        EXPECT_EQ(countOf(attributes), 2) << length;
        EXPECT_EQ(offsetOf(attributes, 1), 28) << length;
        EXPECT_EQ(offsetOf(attributes, 2), -1) << length;
    }
}

TEST(AttributeWalk_pure, a_last_attribute_may_lack_its_padding) {
    const std::string attributes = attribute(1, 1U) + attributeHeader(5, 2) + "x";
    EXPECT_EQ(countOf(attributes), 2);
    EXPECT_EQ(offsetOf(attributes, 1), 28);
    EXPECT_EQ(offsetOf(attributes, 2), -1);
}

TEST(AttributeWalk_pure, a_walk_goes_through_all_that_the_length_field_covers) {
    std::string attributes;
    for (int i = 0; i < 10000; ++i)
        attributes += attributeHeader(4, 1);
    EXPECT_EQ(countOf(attributes), 10000);
    EXPECT_EQ(offsetOf(attributes, 9999), 20 + 4 * 9999);
    EXPECT_EQ(offsetOf(attributes, 10000), -1);
}

TEST(AttributeWalk_pure, what_stands_behind_the_length_field_is_no_attribute) {
    const ExactMessage exact(withLength(message(family, attribute(1, 1U) + attribute(2, 2U)), 28));
    EXPECT_EQ(attr_count(exact.header()), 1);
    EXPECT_EQ(attr_get(exact.header(), 1), nullptr);
}

TEST(AttributeWalk_pure, an_attribute_is_whole_when_header_and_payload_lie_inside) {
    const auto isWhole = [](const std::string& bytes) {
        const ExactMessage exact(message(family, bytes));
        return AttributeWalk(exact.header()).isWhole();
    };
    EXPECT_TRUE(isWhole(attributeHeader(4, 1)));
    EXPECT_TRUE(isWhole(attributeHeader(5, 1) + "x"));
    EXPECT_TRUE(isWhole(attributeHeader(8, 1) + "1234"));
    EXPECT_FALSE(isWhole(attributeHeader(9, 1) + "1234"));
    EXPECT_FALSE(isWhole(attributeHeader(6, 1) + "x"));
    for (const int length : {0, 1, 2, 3})
        EXPECT_FALSE(isWhole(attributeHeader(length, 1) + "1234")) << length;
    EXPECT_FALSE(isWhole("abc"));
    EXPECT_FALSE(isWhole(""));
}

TEST(AttributeWalk_pure, is_for_messages_that_came_whole) {
    const auto isWhole = [](std::uint32_t length, std::int64_t count) {
        return isComplete(received(withLength(message(family, ""), length)), count);
    };
    EXPECT_TRUE(isWhole(16, 16));
    EXPECT_TRUE(isWhole(20, 20));
    EXPECT_TRUE(isWhole(20, 276));
    EXPECT_TRUE(isWhole(276, 276));
    EXPECT_FALSE(isWhole(15, 20));
    EXPECT_FALSE(isWhole(0, 20));
    EXPECT_FALSE(isWhole(21, 20));
    EXPECT_FALSE(isWhole(277, 276));
    EXPECT_FALSE(isWhole(0xFFFFFFFF, 276));
    EXPECT_FALSE(isWhole(8, 15));
    EXPECT_FALSE(isWhole(0, 0));
    EXPECT_FALSE(isWhole(0, -1));
}

}  // namespace
}  // namespace ZR::test
