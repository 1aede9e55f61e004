#include "hardware/can/can_internal.h"

#include <gtest/gtest.h>

#include <string>

namespace ZR::test {
namespace {

TEST(CanTolerance_pure, the_same_rate_is_within_any_tolerance) {
    for (const unsigned int rate : {0U, 1U, 10000U, 250000U, 333333U, 1000000U, 4294967295U})
        EXPECT_TRUE(isWithinTolerance(rate, rate)) << rate;
}

TEST(CanTolerance_pure, a_rate_counts_up_to_but_not_including_one_and_a_half_percent_away) {
    EXPECT_TRUE(isWithinTolerance(250000, 253000));
    EXPECT_TRUE(isWithinTolerance(250000, 253749));
    EXPECT_FALSE(isWithinTolerance(250000, 253750));
    EXPECT_FALSE(isWithinTolerance(250000, 253751));
    EXPECT_TRUE(isWithinTolerance(250000, 246251));
    EXPECT_FALSE(isWithinTolerance(250000, 246250));
    EXPECT_FALSE(isWithinTolerance(250000, 246249));
}

TEST(CanTolerance_pure, the_tolerance_is_a_part_of_the_current_rate_not_of_the_wanted_one) {
    EXPECT_FALSE(isWithinTolerance(250000, 253800));
    EXPECT_TRUE(isWithinTolerance(253800, 250000));
}

TEST(CanTolerance_pure, a_fraction_of_a_bit_counts) {
    EXPECT_TRUE(isWithinTolerance(333333, 338332));  // 4999.995 away at most
    EXPECT_FALSE(isWithinTolerance(333333, 338333));
    EXPECT_FALSE(isWithinTolerance(10, 11));
}

TEST(CanTolerance_pure, no_rate_is_near_zero) {
    EXPECT_FALSE(isWithinTolerance(0, 1));
    EXPECT_FALSE(isWithinTolerance(1, 0));
}

TEST(CanTolerance_pure, rates_beyond_31_bits_do_not_wrap) {
    EXPECT_TRUE(isWithinTolerance(4294967295U, 4294967000U));
    EXPECT_FALSE(isWithinTolerance(4294967295U, 1000000));
}

TEST(CanState_pure, each_state_has_its_code) {
    EXPECT_EQ(stateCode(CAN_STATE_ERROR_ACTIVE), 1U);
    EXPECT_EQ(stateCode(CAN_STATE_ERROR_WARNING), 2U);
    EXPECT_EQ(stateCode(CAN_STATE_ERROR_PASSIVE), 3U);
    EXPECT_EQ(stateCode(CAN_STATE_BUS_OFF), 4U);
    EXPECT_EQ(stateCode(CAN_STATE_STOPPED), 0U);
    EXPECT_EQ(stateCode(CAN_STATE_SLEEPING), 0U);
}

TEST(CanState_pure, any_other_state_is_unknown) {
    for (const int state : {-1, 6, 7, 255, 2147483647})
        EXPECT_EQ(stateCode(state), 255U) << state;
}

TEST(CanInterface_pure, port_n_is_the_interface_with_the_number_before) {
    EXPECT_EQ(canInterface(1), "can0");
    EXPECT_EQ(canInterface(4), "can3");
    EXPECT_EQ(canInterface(11), "can10");
}

TEST(CanInterface_pure, port_0_is_an_interface_that_cannot_be) {
    EXPECT_EQ(canInterface(0), "can-1");
}

TEST(CanIdentifier_pure, identifier_2047_goes_out_as_standard_and_2048_as_extended) {
    EXPECT_EQ(identifierWord(0), 0U);
    EXPECT_EQ(identifierWord(2047), 2047U);
    EXPECT_EQ(identifierWord(2048), 0x80000800U);
    EXPECT_EQ(identifierWord(0x1FFFFFFF), 0x9FFFFFFFU);
}

TEST(CanIdentifier_pure, an_identifier_with_flag_bits_keeps_them) {
    EXPECT_EQ(identifierWord(0x40000001), 0xC0000001U);
    EXPECT_EQ(identifierWord(0x80000001), 0x80000001U);
}

TEST(CanFrame_pure, a_frame_takes_all_eight_bytes_whatever_the_length) {
    const ZRCANMessage message{9, 0x123, 2, {1, 2, 3, 4, 5, 6, 7, 8}, 9};
    const can_frame frame = kernelFrame(message);
    EXPECT_EQ(frame.can_id, 0x123U);
    EXPECT_EQ(frame.can_dlc, 2);
    EXPECT_EQ(std::memcmp(frame.data, message.data, 8), 0);
}

TEST(CanFrame_pure, only_the_low_byte_of_the_length_goes_out) {
    ZRCANMessage message{};
    message.length = 0xFFFFFF05;
    EXPECT_EQ(kernelFrame(message).can_dlc, 5);
    message.length = 0x100;
    EXPECT_EQ(kernelFrame(message).can_dlc, 0);
}

TEST(CanFrame_pure, the_padding_of_a_frame_is_zero) {
    const ZRCANMessage message{0xFFFFFFFF, 1, 8, {1, 2, 3, 4, 5, 6, 7, 8}, 0xFFFFFFFF};
    const can_frame frame = kernelFrame(message);
    const unsigned char expected[16] = {1, 0, 0, 0, 8, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8};
    static_assert(sizeof frame == sizeof expected);
    EXPECT_EQ(std::memcmp(&frame, expected, sizeof expected), 0);
}

TEST(CanFrame_pure, storing_takes_only_as_many_bytes_as_the_length_says) {
    can_frame frame{};
    frame.can_id = 0x80000123;
    frame.can_dlc = 3;
    std::memcpy(frame.data, "abcdefgh", 8);
    ZRCANMessage message{7, 0, 0, {'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x'}, 8};
    storeFrame(frame, message);
    EXPECT_EQ(message.id, 0x80000123U);
    EXPECT_EQ(message.length, 3U);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(message.data), 8), "abcxxxxx");
    EXPECT_EQ(message.reserved, 7U);
    EXPECT_EQ(message.timeStamp, 8U);
}

TEST(CanFrame_pure, a_length_above_8_is_stored_as_it_came_and_moves_8_bytes) {
    for (const unsigned int length : {8U, 9U, 15U, 255U}) {
        can_frame frame{};
        frame.can_dlc = static_cast<std::uint8_t>(length);
        std::memcpy(frame.data, "abcdefgh", 8);
        ZRCANMessage message{0, 0, 0, {}, 4711};
        storeFrame(frame, message);
        EXPECT_EQ(message.length, length);
        EXPECT_EQ(std::memcmp(message.data, "abcdefgh", 8), 0);
        EXPECT_EQ(message.timeStamp, 4711U);
    }
}

}  // namespace
}  // namespace ZR::test
