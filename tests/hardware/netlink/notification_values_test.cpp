// From a notification's attributes to the two values of its event.

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "hardware/netlink/notification_internal.h"
#include "tests/hardware/netlink/message.h"

namespace ZR::test {

namespace {

using namespace std::string_view_literals;
using Values = std::pair<std::uint32_t, std::uint32_t>;

constexpr std::uint32_t absent = 0xFFFFFFFF;
constexpr std::string_view valid = "\1\0\0\0"sv;

Payload payload(std::string_view bytes) {
    return {reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()};
}

Values pairOf(const NotificationValues& values) {
    return {values.value1, values.value2};
}

Values digitalInput(std::string_view channel, std::string_view value) {
    return pairOf(digitalInputValues({payload(channel), {}, payload(value)}));
}

Values digitalOutput(std::uint32_t channel) {
    const std::string bytes = bytesOf(channel);
    return pairOf(digitalOutputValues({payload(bytes), {}, payload("\1\0\0\0"sv)}));
}

/// The values of an analog notification that has an event.
Values analog(std::string_view name, std::string_view flags, std::string_view value) {
    NotificationValues values{0, 0};
    EXPECT_TRUE(analogValues({payload(name), payload(flags), payload(value)}, values));
    return pairOf(values);
}

bool hasEvent(const Notification& notification) {
    NotificationValues values{0, 0};
    return analogValues(notification, values);
}

std::uint32_t codeOf(std::string_view name) {
    return analog(name, valid, "\1").first;
}

std::uint32_t lightOf(std::uint32_t value) {
    return analog("light", valid, bytesOf(value)).second;
}

TEST(DigitalValues_pure, are_the_words_of_channel_and_value) {
    EXPECT_EQ(digitalInput("\2\0\0\0"sv, "\1\0\0\0"sv), (Values{2, 1}));
    EXPECT_EQ(digitalInput("\xEF\xCD\xAB\x89"sv, "\x12\x34\x56\xF8"sv),
              (Values{0x89ABCDEF, 0xF8563412}));
}

TEST(DigitalValues_pure, are_all_ones_when_absent) {
    EXPECT_EQ(pairOf(digitalInputValues({})), (Values{absent, absent}));
    EXPECT_EQ(pairOf(digitalInputValues({payload(valid), {}, {}})), (Values{1, absent}));
    EXPECT_EQ(pairOf(digitalInputValues({{}, payload(valid), payload(valid)})),
              (Values{absent, 1}));
    EXPECT_EQ(pairOf(digitalOutputValues({})), (Values{absent, absent}));
}

TEST(DigitalValues_pure, of_less_than_four_bytes_count_as_absent) {
    for (const std::string_view shorter : {""sv, "\1"sv, "\1\0"sv, "\1\0\0"sv}) {
        EXPECT_EQ(digitalInput(shorter, "\7\0\0\0"sv), (Values{absent, 7})) << shorter.size();
        EXPECT_EQ(digitalInput("\7\0\0\0"sv, shorter), (Values{7, absent})) << shorter.size();
    }
}

TEST(DigitalValues_pure, of_more_than_four_bytes_are_their_first_four) {
    EXPECT_EQ(digitalInput("\1\0\0\0\2"sv, "\3\0\0\0\4\0\0\0"sv), (Values{1, 3}));
}

TEST(DigitalValues_pure, of_outputs_have_channel_codes_from_16_to_18) {
    EXPECT_EQ(digitalOutput(0), (Values{16, 1}));
    EXPECT_EQ(digitalOutput(1), (Values{17, 1}));
    EXPECT_EQ(digitalOutput(2), (Values{18, 1}));
}

TEST(DigitalValues_pure, of_other_outputs_keep_their_channel) {
    for (const std::uint32_t channel : {3U, 4U, 16U, 0x80000000U, 0xFFFFFFFFU})
        EXPECT_EQ(digitalOutput(channel), (Values{channel, 1})) << channel;
}

TEST(DigitalValues_pure, of_inputs_keep_their_channel) {
    EXPECT_EQ(digitalInput("\0\0\0\0"sv, valid), (Values{0, 1}));
    EXPECT_EQ(digitalInput("\1\0\0\0"sv, valid), (Values{1, 1}));
}

TEST(AnalogValues_pure, have_the_code_of_their_channel) {
    EXPECT_EQ(codeOf("ai.0"), 0x10000U);
    EXPECT_EQ(codeOf("ai.1"), 0x10001U);
    EXPECT_EQ(codeOf("ai.2"), 0x10002U);
    EXPECT_EQ(codeOf("ai.3"), 0x10003U);
    EXPECT_EQ(codeOf("supply_vcc"), 4U);
    EXPECT_EQ(codeOf("board_12v_bat"), 4U);
    EXPECT_EQ(codeOf("temperature"), 5U);
    EXPECT_EQ(codeOf("light"), 6U);
    EXPECT_EQ(codeOf("frequency"), 256U);
}

TEST(AnalogValues_pure, search_the_name_for_every_part_but_light) {
    EXPECT_EQ(codeOf("ai.10"), 0x10001U);
    EXPECT_EQ(codeOf("xai.3x"), 0x10003U);
    EXPECT_EQ(codeOf("cpu_temperature_1"), 5U);
    EXPECT_EQ(codeOf("my_supply_vcc2"), 4U);
    EXPECT_EQ(codeOf("the_board_12v_bat"), 4U);
    EXPECT_EQ(codeOf("frequency_input"), 256U);
    EXPECT_EQ(codeOf("light2"), absent);
    EXPECT_EQ(codeOf("ambient_light"), absent);
    EXPECT_EQ(codeOf("Light"), absent);
    EXPECT_EQ(codeOf("light "), absent);
    EXPECT_EQ(codeOf("ligh"), absent);
}

TEST(AnalogValues_pure, of_unknown_channels_have_all_ones) {
    for (const std::string_view name :
         {""sv, "ai."sv, "ai.4"sv, "ai0"sv, "AI.0"sv, "supply_vc"sv, "board_12v"sv, "temp"sv,
          "Temperature"sv, "freq"sv, "radar"sv})
        EXPECT_EQ(codeOf(name), absent) << name;
}

TEST(AnalogValues_pure, of_a_name_with_two_parts_have_the_code_of_the_earlier_test) {
    EXPECT_EQ(codeOf("ai.3_ai.0"), 0x10000U);
    EXPECT_EQ(codeOf("ai.1_ai.0"), 0x10000U);
    EXPECT_EQ(codeOf("ai.2 ai.1"), 0x10001U);
    EXPECT_EQ(codeOf("ai.3 ai.2"), 0x10002U);
    EXPECT_EQ(codeOf("temperature_ai.2"), 0x10002U);
    EXPECT_EQ(codeOf("supply_vcc_ai.3"), 0x10003U);
    EXPECT_EQ(codeOf("temperature_of_supply_vcc"), 4U);
    EXPECT_EQ(codeOf("temperature_of_board_12v_bat"), 4U);
    EXPECT_EQ(codeOf("frequency_of_temperature"), 5U);
    EXPECT_EQ(codeOf("light_frequency"), 256U);
    EXPECT_EQ(codeOf("frequency light"), 256U);
}

TEST(AnalogValues_pure, end_the_name_at_its_first_nul) {
    EXPECT_EQ(codeOf("ai.0\0"sv), 0x10000U);
    EXPECT_EQ(codeOf("light\0"sv), 6U);
    EXPECT_EQ(codeOf("light\0light"sv), 6U);
    EXPECT_EQ(codeOf("light\0ai.0"sv), 6U);
    EXPECT_EQ(codeOf("\0light"sv), absent);
    EXPECT_EQ(codeOf("ai.\0000"sv), absent);
    EXPECT_EQ(codeOf("\0"sv), absent);
}

TEST(AnalogValues_pure, without_a_name_have_an_unknown_channel) {
    NotificationValues values{0, 0};
    ASSERT_TRUE(analogValues({{}, payload(valid), payload("\5")}, values));
    EXPECT_EQ(pairOf(values), (Values{absent, 5}));
}

TEST(AnalogValues_pure, are_put_together_from_the_lowest_byte_on) {
    EXPECT_EQ(analog("ai.0", valid, "\x81"sv).second, 0x81U);
    EXPECT_EQ(analog("ai.0", valid, "\x01\x82"sv).second, 0x8201U);
    EXPECT_EQ(analog("ai.0", valid, "\x01\x02\x83"sv).second, 0x830201U);
    EXPECT_EQ(analog("ai.0", valid, "\x01\x02\x03\x84"sv).second, 0x84030201U);
}

TEST(AnalogValues_pure, of_more_than_four_bytes_are_their_first_four) {
    EXPECT_EQ(analog("ai.0", valid, "\x01\x02\x03\x04\x05"sv).second, 0x04030201U);
    EXPECT_EQ(analog("ai.0", valid, "\x01\x02\x03\x84\x05\x06\x07\x08"sv).second, 0x84030201U);
}

TEST(AnalogValues_pure, without_a_value_are_no_event) {
    EXPECT_FALSE(hasEvent({payload("ai.0"), payload(valid), {}}));
    EXPECT_FALSE(hasEvent({payload("ai.0"), payload(valid), payload("")}));
    EXPECT_TRUE(hasEvent({payload("ai.0"), payload(valid), payload("\0"sv)}));
}

TEST(AnalogValues_pure, that_the_driver_does_not_call_valid_are_no_event) {
    for (const std::string_view flags : {"\0\0\0\0"sv, "\2\0\0\0"sv, "\xFE\xFF\xFF\xFF"sv,
                                         "\0\1\0\0"sv, "\0\0\0\1"sv, "\0\0\0\0\1"sv})
        EXPECT_FALSE(hasEvent({payload("ai.0"), payload(flags), payload("\5")}));
    for (const std::string_view flags :
         {"\1\0\0\0"sv, "\3\0\0\0"sv, "\xFF\xFF\xFF\xFF"sv, "\1\0\0\0\0"sv, "\1\0\0\0\2\0\0\0"sv})
        EXPECT_TRUE(hasEvent({payload("ai.0"), payload(flags), payload("\5")}));
}

TEST(AnalogValues_pure, without_four_bytes_of_flags_are_no_event) {
    EXPECT_FALSE(hasEvent({payload("ai.0"), {}, payload("\5")}));
    for (const std::string_view flags : {""sv, "\1"sv, "\1\0"sv, "\1\0\0"sv})
        EXPECT_FALSE(hasEvent({payload("ai.0"), payload(flags), payload("\5")})) << flags.size();
}

TEST(AnalogValues_pure, of_light_are_at_most_1000) {
    EXPECT_EQ(lightOf(0), 0U);
    EXPECT_EQ(lightOf(999), 999U);
    EXPECT_EQ(lightOf(1000), 1000U);
    EXPECT_EQ(lightOf(1001), 1000U);
    EXPECT_EQ(lightOf(1500), 1000U);
    EXPECT_EQ(lightOf(0x7FFFFFFF), 1000U);
}

TEST(AnalogValues_pure, of_light_are_compared_as_signed) {
    EXPECT_EQ(lightOf(0x80000000), 0x80000000U);
    EXPECT_EQ(lightOf(0xFFFFFFFF), 0xFFFFFFFFU);
}

TEST(AnalogValues_pure, of_other_channels_are_not_limited) {
    const std::string large = bytesOf(std::uint32_t{1500});
    for (const std::string_view name : {"ai.0", "temperature", "frequency", "ambient_light", ""})
        EXPECT_EQ(analog(name, valid, large).second, 1500U) << name;
}

}  // namespace
}  // namespace ZR::test
