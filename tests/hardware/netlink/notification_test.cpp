// A driver's message, taken apart without a socket.

#include <gtest/gtest.h>

#include <string>

#include "hardware/netlink/notification_internal.h"
#include "tests/hardware/netlink/message.h"

namespace ZR::test {
namespace {

constexpr int family = 30;
constexpr char dropped[] = "dropped";

std::string textOf(const Payload& payload) {
    return payload.isPresent()
               ? std::string(reinterpret_cast<const char*>(payload.bytes), payload.size)
               : "absent";
}

/// The three attributes, or "dropped".
std::string parse(const std::string& bytes, std::int64_t count) {
    const MessageBuffer buffer = received(bytes);
    Notification notification;
    if (!parseNotification(buffer, count, family, notification))
        return dropped;
    return textOf(notification.channel) + ' ' + textOf(notification.flags) + ' ' +
           textOf(notification.value);
}

std::string parse(const std::string& bytes) {
    return parse(bytes, static_cast<std::int64_t>(bytes.size()));
}

std::string parseAttributes(std::string_view attributes) {
    return parse(message(family, attributes));
}

const std::string three = attribute(1, "name") + attribute(2, "flag") + attribute(3, "word");
constexpr char threeTexts[] = "name flag word";

TEST(Notification_pure, has_three_attributes_taken_by_their_types) {
    EXPECT_EQ(parseAttributes(three), threeTexts);
    EXPECT_EQ(parseAttributes(attribute(3, "word") + attribute(1, "name") + attribute(2, "flag")),
              threeTexts);
}

TEST(Notification_pure, with_any_other_number_of_attributes_is_dropped) {
    EXPECT_EQ(parseAttributes(""), dropped);
    EXPECT_EQ(parseAttributes(attribute(1, "name")), dropped);
    EXPECT_EQ(parseAttributes(attribute(1, "name") + attribute(3, "word")), dropped);
    EXPECT_EQ(parseAttributes(three + attribute(4, "")), dropped);
    EXPECT_EQ(parseAttributes(three + three), dropped);
}

TEST(Notification_pure, may_have_any_command) {
    for (const int command : {0, 1, 2, 255})
        EXPECT_EQ(parse(message(family, three, command)), threeTexts) << command;
}

TEST(Notification_pure, of_another_family_is_dropped) {
    for (const int type : {0, 2, 3, 29, 31, 0xFFFF})
        EXPECT_EQ(parse(message(type, three)), dropped) << type;
}

TEST(Notification_pure, is_dropped_for_an_end_point_without_family) {
    const MessageBuffer buffer = received(message(0xFFFF, three));
    Notification notification;
    EXPECT_FALSE(parseNotification(buffer, 44, -1, notification));
    EXPECT_TRUE(parseNotification(buffer, 44, 0xFFFF, notification));
    EXPECT_FALSE(parseNotification(buffer, 44, 0x1FFFF, notification));
}

TEST(Notification_pure, leaves_out_what_has_another_type) {
    EXPECT_EQ(parseAttributes(attribute(1, "name") + attribute(4, "flag") + attribute(3, "word")),
              "name absent word");
    EXPECT_EQ(parseAttributes(attribute(0, "a") + attribute(4, "b") + attribute(5, "c")),
              "absent absent absent");
}

TEST(Notification_pure, compares_types_as_they_come_with_their_flags) {
    EXPECT_EQ(parseAttributes(attribute(1 | NLA_F_NESTED, "name") +
                              attribute(2 | NLA_F_NET_BYTEORDER, "flag") + attribute(3, "word")),
              "absent absent word");
    EXPECT_EQ(parseAttributes(attribute(1, "name") + attribute(2, "flag") +
                              attribute(3 | NLA_F_NESTED, "word")),
              "name flag absent");
}

TEST(Notification_pure, takes_the_last_of_two_attributes_of_one_type) {
    EXPECT_EQ(parseAttributes(attribute(1, "old") + attribute(1, "new") + attribute(3, "word")),
              "new absent word");
    EXPECT_EQ(parseAttributes(attribute(3, "1") + attribute(3, "2") + attribute(3, "")),
              "absent absent ");
    EXPECT_EQ(parseAttributes(attribute(2, "1234") + attribute(2, "5678") + attribute(1, "n")),
              "n 5678 absent");
}

TEST(Notification_pure, that_did_not_come_whole_is_dropped) {
    const std::string good = message(family, three);
    const auto size = static_cast<std::int64_t>(good.size());
    EXPECT_EQ(parse(good, size), threeTexts);
    EXPECT_EQ(parse(good, size + 1), threeTexts);
    for (const std::int64_t count : {size - 1, std::int64_t{20}, std::int64_t{16}, std::int64_t{15},
                                     std::int64_t{4}, std::int64_t{0}, std::int64_t{-1}})
        EXPECT_EQ(parse(good, count), dropped) << count;
}

TEST(Notification_pure, with_a_length_field_that_cannot_be_is_dropped) {
    const std::string good = message(family, three);
    const auto beyond = static_cast<std::uint32_t>(good.size() + 1);
    for (const std::uint32_t length :
         {0U, 1U, 8U, 15U, 16U, 17U, 18U, 19U, 20U, beyond, 277U, 0x80000000U, 0xFFFFFFFFU})
        EXPECT_EQ(parse(withLength(good, length)), dropped) << length;
}

TEST(Notification_pure, may_fill_the_buffer_and_not_one_byte_more) {
    const std::string front = attribute(1, "name") + attribute(3, "word");
    const std::string flags(MessageBuffer::size - 20 - front.size() - 4, 'x');
    const std::string full = message(family, front + attribute(2, flags));
    ASSERT_EQ(full.size(), MessageBuffer::size);
    EXPECT_EQ(parse(full), "name " + flags + " word");
    EXPECT_EQ(parse(withLength(full, 277)), dropped);
    EXPECT_EQ(parse(withLength(full, 277), 277), dropped);
}

TEST(Notification_pure, longer_than_the_buffer_is_dropped_as_the_kernel_cuts_it_off) {
    const std::string longer = message(family, three + attribute(4, std::string(4096, 'x')));
    EXPECT_EQ(parse(longer, MessageBuffer::size), dropped);
}

TEST(Notification_pure, with_an_attribute_that_leaves_it_is_dropped) {
    const std::string two = attribute(1, "name") + attribute(2, "flag");
    EXPECT_EQ(parseAttributes(two + attributeHeader(9, 3) + "word"), dropped);
    EXPECT_EQ(parseAttributes(two + attributeHeader(0xFFFF, 3) + "word"), dropped);
    EXPECT_EQ(parseAttributes(attributeHeader(200, 1) + three), dropped);
}

TEST(Notification_pure, with_an_attribute_shorter_than_its_header_is_dropped) {
    for (const int length : {0, 1, 2, 3}) {
        const std::string bad = attributeHeader(length, 3);
        EXPECT_EQ(parseAttributes(attribute(1, "name") + attribute(2, "flag") + bad), dropped);
        EXPECT_EQ(parseAttributes(bad + attribute(1, "name") + attribute(2, "flag")), dropped);
    }
}

TEST(Notification_pure, with_a_last_attribute_of_one_to_three_bytes_is_dropped) {
    for (const char* const left : {"a", "ab", "abc"}) {
        EXPECT_EQ(parseAttributes(attribute(1, "name") + attribute(3, "word") + left), dropped);
        EXPECT_EQ(parseAttributes(three + left), dropped);
    }
}

TEST(Notification_pure, may_end_without_the_padding_of_its_last_attribute) {
    EXPECT_EQ(
        parseAttributes(attribute(1, "name") + attribute(2, "") + attributeHeader(5, 3) + "w"),
        "name  w");
}

}  // namespace
}  // namespace ZR::test
