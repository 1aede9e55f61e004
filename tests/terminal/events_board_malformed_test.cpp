#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "board.h"
#include "events_application.h"
#include "tests/hardware/netlink/dispatcher.h"
#include "tests/hardware/netlink/message.h"

namespace ZR::test {
namespace {

constexpr std::uint32_t absent = 0xFFFFFFFF;
constexpr std::uint32_t unknownChannel = 0xFFFFFFFF;
constexpr std::uint32_t firstAnalog = 0x10000;

/// What becomes of a notification that a driver should never send; nothing: it is dropped.
struct Ending {
    const char* word;
    std::optional<Told> input;
    std::optional<Told> output;
    std::optional<Told> reading;
};

// Each starts from a good one of channel 0 or "ai.0", flags 1, value 1.
const std::vector<Ending> endings{
    {"none", {}, {}, {}},
    {"two", {}, {}, {}},
    {"four", {}, {}, {}},
    {"unknown_types", Told{absent, absent}, Told{absent, absent}, {}},
    {"no_channel", Told{absent, 1}, Told{absent, 1}, Told{unknownChannel, 1}},
    {"no_flags", Told{0, 1}, Told{16, 1}, {}},
    {"no_value", Told{0, absent}, Told{16, absent}, {}},
    {"zero_length", {}, {}, {}},
    {"zero_length_last", {}, {}, {}},
    {"short_length", {}, {}, {}},
    {"past_end", {}, {}, {}},
    {"past_end_first", {}, {}, {}},
    {"cut_header", {}, {}, {}},
    {"no_payload", Told{absent, absent}, Told{absent, absent}, {}},
    {"short_payload", Told{absent, absent}, Told{absent, absent}, {}},
    {"short_value", Told{0, absent}, Told{16, absent}, Told{firstAnalog, 0x0101}},
    {"wide_value", Told{0, 0x01010101}, Told{16, 0x01010101}, Told{firstAnalog, 0x01010101}},
    {"long", {}, {}, {}},
    {"invalid", Told{0, 1}, Told{16, 1}, {}},
    {"wrong_family", {}, {}, {}},
    {"wrong_command", Told{0, 1}, Told{16, 1}, Told{firstAnalog, 1}},
    {"length_below", {}, {}, {}},
    {"length_headers", {}, {}, {}},
    {"length_above", {}, {}, {}},
    {"truncated", {}, {}, {}},
    {"empty", {}, {}, {}},
};

Tale taleOf(const std::optional<Told>& told) {
    return told ? Tale{*told} : Tale{};
}

class EventsBoardMalformed : public EventsBoard {};

/// One word, sent by each driver twice, each time with a good notification behind it.
class OneWord : public EventsBoardMalformed {
  public:
    explicit OneWord(const Ending& ending) : ending_(ending) {}

    void TestBody() override {
        Application application;
        for (int round = 0; round < 2; ++round) {
            expect(application, inputs, ending_.input);
            expect(application, outputs, ending_.output);
            expect(application, analog, ending_.reading);
        }
    }

  private:
    void expect(Application& application, const std::string& family,
                const std::optional<Told>& told) const {
        turn("notify/" + family + "/malformed", ending_.word);
        EXPECT_EQ(taleOf(told), application.heardFrom(family)) << family;
    }

    const Ending& ending_;
};

std::string sentenceOf(const Ending& ending) {
    const std::string word(ending.word);
    if (!ending.input && !ending.output && !ending.reading)
        return word + "_is_dropped_and_the_next_one_arrives";
    return word + (ending.reading ? "_is_an_event" : "_is_an_event_of_digital_channels_alone");
}

[[maybe_unused]] const bool registered = [] {
    for (const Ending& ending : endings)
        testing::RegisterTest("EventsBoardMalformed", sentenceOf(ending).c_str(), nullptr, nullptr,
                              __FILE__, __LINE__,
                              [&]() -> EventsBoardMalformed* { return new OneWord(ending); });
    return true;
}();

std::string sampleOf(std::uint32_t value) {
    return attribute(1, 0) + attribute(2, 1) + attribute(3, value);
}

int numberOf(const std::string& family) {
    return familyIdOf(*endPointOf(*ZRNetlink::instance(), family));
}

std::string word(std::size_t size) {
    return std::string("temperature").append(size, '.').substr(0, size);
}

}  // namespace

TEST_F(EventsBoardMalformed, each_word_of_the_knob_is_known_here) {
    std::istringstream knob(seenByCat("/sys/kernel/debug/zr_terminal/notify/ZR_DI/malformed"));
    std::vector<std::string> words;
    for (std::string word; knob >> word;)
        words.push_back(word);
    std::vector<std::string> known;
    for (const Ending& ending : endings)
        known.emplace_back(ending.word);
    std::sort(words.begin(), words.end());
    std::sort(known.begin(), known.end());
    EXPECT_EQ(words, known);
}

TEST_F(EventsBoardMalformed, all_words_in_a_row_leave_what_can_be_read) {
    Application application;
    Tale expected;
    for (const Ending& ending : endings) {
        turn("notify/ANALOG/malformed", ending.word);
        const Tale told = taleOf(ending.reading);
        expected.insert(expected.end(), told.begin(), told.end());
    }
    EXPECT_EQ(expected, application.heardFrom(analog));
}

TEST_F(EventsBoardMalformed, a_message_of_276_bytes_is_read_and_a_longer_one_dropped) {
    constexpr std::size_t others = 20 + 4 + 8 + 8;
    Application application;
    for (const auto& [size, told] : {std::pair{276U, Tale{{5, 9}}}, std::pair{280U, Tale{}},
                                     std::pair{4096U, Tale{}}, std::pair{32768U, Tale{}}}) {
        give("notify/ANALOG/send",
             attribute(1, word(size - others)) + attribute(2, 1) + attribute(3, 9));
        EXPECT_EQ(told, application.heardFrom(analog)) << size;
    }
}

TEST_F(EventsBoardMalformed, of_two_messages_in_one_datagram_the_first_is_read) {
    Application application;
    const int id = numberOf(inputs);
    give("notify/ZR_DI/raw", message(id, sampleOf(5)) + message(id, sampleOf(6)));
    EXPECT_EQ((Tale{{0, 5}}), application.heardFrom(inputs));
}

TEST_F(EventsBoardMalformed, what_follows_a_message_in_its_datagram_is_left_alone) {
    Application application;
    const std::string good = message(numberOf(inputs), sampleOf(5));
    for (const std::size_t more : {1U, 3U, 200U})
        give("notify/ZR_DI/raw", good + std::string(more, '\xFF'));
    EXPECT_EQ((Tale{{0, 5}, {0, 5}, {0, 5}}), application.heardFrom(inputs));
}

TEST_F(EventsBoardMalformed, a_datagram_cut_anywhere_is_dropped) {
    Application application;
    const std::string good = message(numberOf(outputs), sampleOf(5));
    for (std::size_t size = 0; size < good.size(); ++size)
        give("notify/ZR_DO/raw", good.substr(0, size));
    EXPECT_EQ(Tale{}, application.heardFrom(outputs));
}

TEST_F(EventsBoardMalformed, a_message_that_says_it_is_shorter_is_dropped) {
    Application application;
    const std::string good = message(numberOf(inputs), sampleOf(5));
    for (std::uint32_t size = 0; size < good.size(); ++size)
        give("notify/ZR_DI/raw", withLength(good, size));
    for (const std::uint32_t size : {45U, 276U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU})
        give("notify/ZR_DI/raw", withLength(good, size));
    EXPECT_EQ(Tale{}, application.heardFrom(inputs));
}

TEST_F(EventsBoardMalformed, another_family_s_message_is_dropped) {
    Application application;
    give("notify/ZR_DI/raw", message(numberOf(outputs), sampleOf(5)));
    give("notify/ZR_DI/raw", message(numberOf(inputs) + 0x100, sampleOf(5)));
    EXPECT_EQ(Tale{}, application.heard());
}

TEST_F(EventsBoardMalformed, the_last_of_two_attributes_of_one_type_counts) {
    Application application;
    give("notify/ZR_DI/send", attribute(3, 1) + attribute(1, 2) + attribute(3, 3));
    EXPECT_EQ((Tale{{2, 3}}), application.heardFrom(inputs));
    give("notify/ANALOG/send", attribute(3, 1) + attribute(2, 1) + attribute(3, 3));
    EXPECT_EQ((Tale{{unknownChannel, 3}}), application.heardFrom(analog));
}

TEST_F(EventsBoardMalformed, a_reading_is_put_together_from_1_to_4_bytes) {
    Application application;
    Tale expected;
    const std::vector<std::pair<std::string, std::uint32_t>> readings{
        {"\x81", 0x81},
        {"\x81\x82", 0x8281},
        {"\x81\x82\x83", 0x838281},
        {"\x81\x82\x83\x84", 0x84838281},
        {"\x81\x82\x83\x84\x85", 0x84838281},
    };
    for (const auto& [bytes, value] : readings) {
        give("notify/ANALOG/send", attribute(1, "ai.2") + attribute(2, 1) + attribute(3, bytes));
        expected.push_back({0x10002, value});
    }
    give("notify/ANALOG/send", attribute(1, "ai.2") + attribute(2, 1) + attribute(3, ""));
    EXPECT_EQ(expected, application.heardFrom(analog));
}

TEST_F(EventsBoardMalformed, attributes_with_flag_bits_in_their_type_are_other_types) {
    constexpr int nested = 0x8000;
    Application application;
    give("notify/ZR_DI/send", attribute(1, 2) + attribute(2, 1) + attribute(3 | nested, 1));
    EXPECT_EQ((Tale{{2, absent}}), application.heardFrom(inputs));
}

}  // namespace ZR::test
