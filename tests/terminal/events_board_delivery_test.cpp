#include <gtest/gtest.h>
#include <poll.h>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "board.h"
#include "events_application.h"
#include "hardware/input_output/zr_input_output.h"
#include "hardware/netlink/zr_netlink.h"
#include "tests/hardware/netlink/dispatcher.h"
#include "tests/hardware/netlink/message.h"

namespace ZR::test {
namespace {

class EventsBoardDelivery : public EventsBoard {};

bool isReadable(int descriptor, int milliseconds) {
    pollfd question{descriptor, POLLIN, 0};
    return ::poll(&question, 1, milliseconds) == 1 && (question.revents & POLLIN) != 0;
}

}  // namespace

TEST_F(EventsBoardDelivery, a_changed_input_is_one_event_of_kind_6_and_code_900) {
    Application application;
    turn("zr_di.2/state/value", "1");
    EXPECT_EQ((Told{2, 1}), application.next());
    turn("zr_di.2/state/value", "0");
    EXPECT_EQ((Told{2, 0}), application.next());
    EXPECT_EQ(Tale{}, application.heard());
}

TEST_F(EventsBoardDelivery, what_is_posted_is_a_signal_and_still_whole_in_the_queue) {
    EventLog log;
    ZRNetlink& dispatcher = *ZRNetlink::instance();
    dispatcher.addEventQueue(&log);
    ASSERT_EQ(0U, dispatcher.addFamily(outputs));
    turn("zr_do.0/state/value", "1");
    dispatcher.onEndPointReadable(endPointOf(dispatcher, outputs), nullptr);
    dispatcher.addEventQueue(nullptr);
    ASSERT_EQ(1U, log.events.size());
    EXPECT_EQ(1, log.signals);
    EXPECT_EQ((Told{16, 1}), toldBy(log.events[0]));
}

TEST_F(EventsBoardDelivery, an_output_that_the_library_switches_is_16_and_its_channel) {
    Application application;
    for (std::uint16_t number = 1; number <= 3; ++number) {
        ZRInputOutput output(DigitalOutput, number);
        EXPECT_EQ(0U, output.on(true));
        EXPECT_EQ((Told{15U + number, 1}), application.next());
        EXPECT_EQ(0U, output.on(false));
        EXPECT_EQ((Told{15U + number, 0}), application.next());
    }
    EXPECT_EQ(Tale{}, application.heard());
}

TEST_F(EventsBoardDelivery, an_output_that_is_switched_to_what_it_is_tells_nobody) {
    Application application;
    ZRInputOutput output(DigitalOutput, 1);
    EXPECT_EQ(0U, output.on(true));
    EXPECT_EQ((Told{16, 1}), application.next());
    EXPECT_EQ(0U, output.on(true));
    EXPECT_EQ(Tale{}, application.heard());
}

TEST_F(EventsBoardDelivery, an_output_that_refuses_tells_nobody) {
    collectReports();
    Application application;
    turn("zr_do.0/state/fail_write", "EIO");
    ZRInputOutput output(DigitalOutput, 1);
    EXPECT_EQ(6U, output.on(true));
    EXPECT_EQ(Tale{}, application.heard());
}

TEST_F(EventsBoardDelivery, each_analog_channel_has_its_code_and_its_value) {
    const std::vector<std::pair<std::string, std::uint32_t>> channels{
        {"ai.0", 0x10000},  {"ai.1", 0x10001}, {"ai.2", 0x10002},
        {"ai.3", 0x10003},  {"supply_vcc", 4}, {"board_12v_bat", 4},
        {"temperature", 5}, {"light", 6},      {"frequency", 256},
    };
    Application application;
    std::uint32_t value = 600;
    for (const auto& [name, code] : channels) {
        turn(name + "/value/value", std::to_string(++value));
        EXPECT_EQ((Told{code, value}), application.next()) << name;
    }
    EXPECT_EQ(Tale{}, application.heard());
}

TEST_F(EventsBoardDelivery, other_names_of_channels_are_searched_for_the_known_ones) {
    const std::vector<std::pair<std::string, std::uint32_t>> names{
        {"boiler", 0xFFFFFFFF},           {"", 0xFFFFFFFF},
        {"lights", 0xFFFFFFFF},           {"ai.4", 0xFFFFFFFF},
        {"rear ai.3 left", 0x10003},      {"outside temperature", 5},
        {"wheel_frequency", 256},         {"light", 6},
        {std::string("light\0er", 8), 6},
    };
    Application application;
    for (const auto& [name, code] : names) {
        give("notify/ANALOG/send", attribute(1, name) + attribute(2, 1) + attribute(3, 77));
        EXPECT_EQ((Told{code, 77}), application.next()) << name;
    }
}

TEST_F(EventsBoardDelivery, light_is_cut_at_1000_as_a_signed_number) {
    const std::vector<std::pair<std::string, std::uint32_t>> readings{
        {"1500", 1000}, {"1000", 1000},       {"999", 999},       {"1001", 1000},
        {"0", 0},       {"2147483647", 1000}, {"-5", 0xFFFFFFFB}, {"4294967295", 0xFFFFFFFF},
    };
    Application application;
    for (const auto& [text, value] : readings) {
        turn("light/value/value", text);
        EXPECT_EQ((Told{6, value}), application.next()) << text;
    }
}

TEST_F(EventsBoardDelivery, the_largest_and_the_smallest_numbers_arrive_whole) {
    Application application;
    turn("ai.3/value/value", "4294967295");
    EXPECT_EQ((Told{0x10003, 0xFFFFFFFF}), application.next());
    turn("temperature/value/value", "-40");
    EXPECT_EQ((Told{5, 0xFFFFFFD8}), application.next());
    turn("zr_di.0/state/value", "-2147483648");
    EXPECT_EQ((Told{0, 0x80000000}), application.next());
}

TEST_F(EventsBoardDelivery, text_that_is_no_number_is_no_event) {
    Application application;
    for (const char* text : {"abc", "", " 12", "1 2", "0x10", "4294967296", "1.5"}) {
        turn("ai.1/value/value", text);
        turn("light/value/value", text);
        turn("zr_di.0/state/value", text);
        turn("zr_do.0/state/value", text);
    }
    EXPECT_EQ(Tale{}, application.heard());
}

TEST_F(EventsBoardDelivery, a_state_that_cannot_be_arrives_as_it_is) {
    Application application;
    turn("zr_di.1/state/value", "2");
    EXPECT_EQ((Told{1, 2}), application.next());
    turn("zr_do.1/state/value", "77");
    EXPECT_EQ((Told{17, 77}), application.next());
}

TEST_F(EventsBoardDelivery, outputs_above_the_third_keep_their_number) {
    Application application;
    for (const std::uint32_t channel : {3U, 15U, 16U, 0xFFFFFFFFU}) {
        give("notify/ZR_DO/send", attribute(1, channel) + attribute(2, 1) + attribute(3, 1));
        EXPECT_EQ((Told{channel, 1}), application.next());
    }
}

TEST_F(EventsBoardDelivery, changes_of_one_family_arrive_in_the_driver_s_order) {
    Application application;
    turn("notify/logged", "1");
    clearLog();
    for (int round = 1; round <= 30; ++round) {
        turn("zr_di.0/state/value", std::to_string(round));
        turn("zr_di.2/state/value", std::to_string(round % 2));
        turn("zr_di.1/state/value", std::to_string(-round));
    }
    std::vector<std::string> told;
    for (const Told& event : application.heardFrom(inputs))
        told.push_back("notify ZR_DI " + std::to_string(event.value1) + " " +
                       std::to_string(static_cast<std::int32_t>(event.value2)));
    std::vector<std::string> logged = logLines();
    logged.pop_back();  // the sentinel
    EXPECT_EQ(90U, told.size());
    EXPECT_EQ(logged, told);
}

TEST_F(EventsBoardDelivery, three_families_arrive_side_by_side) {
    Application application;
    std::map<std::uint32_t, std::vector<std::uint32_t>> expected;
    for (std::uint32_t round = 2; round <= 21; ++round) {
        turn("zr_di.0/state/value", std::to_string(round));
        turn("zr_do.1/state/value", std::to_string(round));
        turn("ai.2/value/value", std::to_string(round));
        for (const std::uint32_t code : {0U, 17U, 0x10002U})
            expected[code].push_back(round);
    }
    std::map<std::uint32_t, std::vector<std::uint32_t>> told;
    for (const Told& event : application.heard())
        told[event.value1].push_back(event.value2);
    EXPECT_EQ(expected, told);
}

TEST_F(EventsBoardDelivery, an_event_loop_watches_the_queue_s_descriptor) {
    Application application;
    const int descriptor = application.queue.getEventDescriptor();
    EXPECT_FALSE(isReadable(descriptor, 0));
    turn("zr_di.1/state/value", "1");
    ASSERT_TRUE(isReadable(descriptor, longest));
    ZREvent event;
    ASSERT_TRUE(application.queue.waitForEvent(event, 0));
    EXPECT_EQ((Told{1, 1}), toldBy(event));
    EXPECT_FALSE(isReadable(descriptor, 0));
    turn("ai.0/value/value", "2");
    EXPECT_TRUE(isReadable(descriptor, longest));
}

TEST_F(EventsBoardDelivery, a_value_that_stays_and_a_mute_driver_tell_nobody) {
    Application application;
    turn("zr_di.0/state/value", "0");
    turn("ai.0/value/value", "1");
    turn("notify/ZR_DI/muted", "1");
    turn("zr_di.0/state/value", "1");
    turn("notify/ZR_DI/muted", "0");
    EXPECT_EQ(Tale{}, application.heard());
}

TEST_F(EventsBoardDelivery, a_device_that_comes_back_tells_of_its_next_change) {
    Application application;
    turn("zr_di.1/present", "0");
    turn("zr_di.1/state/value", "1");
    turn("zr_di.1/present", "1");
    EXPECT_EQ(Tale{}, application.heard());
    turn("zr_di.1/state/value", "0");
    EXPECT_EQ((Told{1, 0}), application.next());
}

TEST_F(EventsBoardDelivery, without_a_queue_notifications_are_read_and_dropped) {
    ZRNetlink& dispatcher = *ZRNetlink::instance();
    for (const char* family : {inputs, outputs, analog}) {
        ASSERT_EQ(0U, dispatcher.addFamily(family));
        sentinel(family);
        EXPECT_GT(seenByKernel(socketOf(family)).unread, 0) << family;
        dispatcher.onEndPointReadable(endPointOf(dispatcher, family), nullptr);
        EXPECT_EQ(0, seenByKernel(socketOf(family)).unread) << family;
    }
}

TEST_F(EventsBoardDelivery, a_false_wake_up_is_no_event_and_does_not_block) {
    EventLog log;
    ZRNetlink& dispatcher = *ZRNetlink::instance();
    dispatcher.addEventQueue(&log);
    for (const char* family : {inputs, outputs, analog}) {
        ASSERT_EQ(0U, dispatcher.addFamily(family));
        dispatcher.onEndPointReadable(endPointOf(dispatcher, family), nullptr);
    }
    dispatcher.addEventQueue(nullptr);
    EXPECT_TRUE(log.events.empty());
}

TEST_F(EventsBoardDelivery, the_time_from_a_knob_to_the_event_is_told) {
    Application application;
    std::vector<std::chrono::nanoseconds> times;
    for (int round = 0; round < 100; ++round) {
        const auto start = std::chrono::steady_clock::now();
        turn("zr_di.0/state/value", std::to_string(100 + round));
        EXPECT_EQ(100U + static_cast<unsigned int>(round), application.next().value2);
        times.push_back(std::chrono::steady_clock::now() - start);
    }
    std::sort(times.begin(), times.end());
    std::cout << "from opening the knob to the event, median " << times[50].count() / 1000
              << " us, longest " << times.back().count() / 1000 << " us\n";
}

}  // namespace ZR::test
