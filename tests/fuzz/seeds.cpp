#include "tests/fuzz/seeds.h"

#include <string_view>

#include "tests/fuzz/fuzz_check.h"
#include "tests/fuzz/media_text_check.h"
#include "tests/hardware/netlink/message.h"
#include "tests/platform/media_controller/media_texts.h"

namespace ZR::test {
namespace {

using namespace std::string_view_literals;

constexpr int controller = 16;
constexpr int driver = 30;

/// An input of the targets that take received bytes.
std::string asReceived(const std::string& message) {
    return static_cast<char>(lengthIsSet) + message;
}

std::string asReceivedWithLength(const std::string& message, std::uint32_t length) {
    return '\0' + withLength(message, length);
}

const std::string nested = attribute(1, attribute(2, 9U) + attribute(1, "events\0"sv));

std::vector<Seed> walkSeeds() {
    return {
        {"empty", ""},
        {"three", attribute(1, "ai.0\0"sv) + attribute(2, 1U) + attribute(3, 8525U)},
        {"nested", attribute(7, nested)},
        {"zero_length", attribute(1, 1U) + attributeHeader(0, 2) + attribute(3, 3U)},
        {"short_lengths", attributeHeader(1, 1) + attributeHeader(2, 2) + attributeHeader(3, 3)},
        {"past_the_end", attribute(1, 1U) + attributeHeader(0xFFFF, 2) + "1234"},
        {"left_over", attribute(1, 1U) + "abc"}};
}

std::vector<Seed> replySeeds() {
    const std::string head = attribute(2, "ZR_DI\0"sv) + attribute(1, "\x1E\0"sv) +
                             attribute(3, 1U) + attribute(4, 0U) + attribute(5, 3U);
    const std::string operations = attribute(6, attribute(1, attribute(1, 3U)));
    const std::string groups = attribute(7, nested);
    const std::string good = message(controller, head + groups);
    return {
        {"groups_at_5", asReceived(good)},
        {"groups_at_6", asReceived(message(controller, head + operations + groups))},
        {"two_groups", asReceived(message(controller, head + attribute(7, nested + nested)))},
        {"no_groups", asReceived(message(controller, head))},
        {"empty_groups", asReceived(message(controller, head + attribute(7, "")))},
        {"name_first",
         asReceived(message(
             controller, head + attribute(7, attribute(1, attribute(1, "e") + attribute(2, 9U)))))},
        {"no_nul",
         asReceived(message(
             controller, head + attribute(7, attribute(1, attribute(2, 9U) + attribute(1, "e")))))},
        {"error", asReceived(message(NLMSG_ERROR, "1234"))},
        {"longer_than_it_came", asReceivedWithLength(good, 300)},
        {"header_only", asReceivedWithLength(good, 16)}};
}

Seed analogSeed(const std::string& name) {
    return {name, asReceived(message(
                      driver, attribute(1, name + '\0') + attribute(2, 1U) + attribute(3, 1500U)))};
}

std::vector<Seed> notificationSeeds() {
    const std::string two = attribute(1, 1U) + attribute(3, 1U);
    std::vector<Seed> seeds{
        {"digital", asReceived(message(driver, two + attribute(2, 0U)))},
        {"same_types", asReceived(message(driver, two + attribute(1, 2U)))},
        {"other_types", asReceived(message(driver, attribute(4, 1U) + attribute(5, "") + two))},
        {"two", asReceived(message(driver, two))},
        {"four", asReceived(message(driver, two + two))},
        {"short",
         asReceived(message(driver, attribute(1, "a") + attribute(2, "") + attribute(3, "b")))},
        {"long", asReceived(message(driver, two + attribute(2, std::string(200, 'x'))))},
        {"cut_off", asReceivedWithLength(message(driver, two + attribute(2, 0U)), 300)},
        {"header_of_8", asReceivedWithLength(message(driver, two + attribute(2, 0U)), 8)}};
    for (const char* const name : {"ai.0", "ai.3", "supply_vcc", "board_12v_bat", "temperature",
                                   "light", "frequency", "ambient_light"})
        seeds.push_back(analogSeed(name));
    return seeds;
}

/// Texts for the terminals' graphs, which the bytes 1 and 2 pick, and for an odd one, which 0 picks.
std::vector<Seed> textSeeds(std::vector<std::string> (*ofTerminal)(bool, const std::string&,
                                                                   const std::string&),
                            const std::vector<std::string>& odd) {
    std::vector<Seed> seeds;
    const auto add = [&seeds](char graph, const std::string& text) {
        seeds.push_back({std::to_string(seeds.size()), graph + text});
    };
    for (const bool isQuad : {true, false})
        for (const std::string& text : ofTerminal(isQuad, "tw9912 1-0044", "adv7180 2-0020"))
            add(isQuad ? '\1' : '\2', text);
    for (const std::string& text : odd)
        add('\0', text);
    return seeds;
}

std::vector<Seed> linkTextSeeds() {
    return textSeeds(terminalLinkTexts,
                     {"'sensor':0->\"scaler\":0 [1]", " 1 : 1 -> 3 : 1 [ 0 ] ,", "3:2->'12':0[3]",
                      "2147483648:0->10:0[4294967297]", "16:1->'':0[]"});
}

std::vector<Seed> formatTextSeeds() {
    return textSeeds(
        terminalFormatTexts,
        {"1:1 [fmt:Y8/1x2 field:interlaced-tb@1/25 crop:(1,2)/3x4 compose:(-2,0)/7x8]",
         "'scaler':0 [AYUV32 1x2 (3,4)/5x6],16:0[]",
         "10:0 [fmt:Y8/1x2 colorspace:srgb xfer:709 ycbcr:601 quantization:lim-range]"});
}

}  // namespace

std::vector<FuzzTarget> fuzzTargets() {
    return {{"attribute_walk", checkAttributeWalk, walkSeeds()},
            {"family_reply", checkFamilyReply, replySeeds()},
            {"notification", checkNotification, notificationSeeds()},
            {"link_text", checkLinkText, linkTextSeeds()},
            {"format_text", checkFormatText, formatTextSeeds()}};
}

}  // namespace ZR::test
