#include <gtest/gtest.h>

#include <list>

#include "hardware/video_input/command_queue_internal.h"

namespace ZR {
namespace {

using Queue = std::list<int>;

Queue queueAfter(std::initializer_list<int> commands) {
    Queue queue;
    for (const int command : commands)
        appendCommand(queue, command);
    return queue;
}

TEST(CommandQueue_pure, commands_have_their_codes) {
    EXPECT_EQ(static_cast<int>(CommandStart), 0);
    EXPECT_EQ(static_cast<int>(CommandStop), 1);
    EXPECT_EQ(static_cast<int>(CommandChangeInterface), 2);
}

TEST(CommandQueue_pure, a_repeated_command_is_collapsed) {
    EXPECT_EQ(queueAfter({0, 0}), Queue{0});
    EXPECT_EQ(queueAfter({1, 1}), Queue{1});
    EXPECT_EQ(queueAfter({2, 2, 2}), Queue{2});
    EXPECT_EQ(queueAfter({7, 7}), Queue{7});
}

TEST(CommandQueue_pure, only_the_last_element_is_compared) {
    EXPECT_EQ(queueAfter({0, 2, 0}), (Queue{0, 2, 0}));
    EXPECT_EQ(queueAfter({2, 0, 2, 0}), (Queue{2, 0, 2, 0}));
}

TEST(CommandQueue_pure, a_stop_empties_the_queue_first) {
    EXPECT_EQ(queueAfter({0, 2, 0, 1}), Queue{1});
    EXPECT_EQ(queueAfter({-1, 2147483647, 1}), Queue{1});
}

TEST(CommandQueue_pure, start_stop_start_keeps_what_follows_the_stop) {
    EXPECT_EQ(queueAfter({0, 1, 0}), (Queue{1, 0}));
}

TEST(CommandQueue_pure, a_second_stop_takes_what_came_between_with_it) {
    EXPECT_EQ(queueAfter({1, 0, 2, 1}), Queue{1});
}

TEST(CommandQueue_pure, other_codes_are_accepted) {
    EXPECT_EQ(queueAfter({3, -1, 100}), (Queue{3, -1, 100}));
}

TEST(CommandQueue_pure, a_stop_is_found_wherever_it_waits) {
    EXPECT_FALSE(holdsStop({}));
    EXPECT_FALSE(holdsStop({0, 2, 3}));
    EXPECT_TRUE(holdsStop({1}));
    EXPECT_TRUE(holdsStop({1, 0, 2}));
    EXPECT_TRUE(holdsStop({0, 1, 2}));
    EXPECT_TRUE(holdsStop({0, 2, 1}));
}

}  // namespace
}  // namespace ZR
