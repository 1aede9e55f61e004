#include <fcntl.h>

#include <cerrno>

#include "tests/hardware/can/can_calls.h"

namespace ZR::test {
namespace {

using CanPolling = ConnectedSocketTest;
using CanFilter = ConnectedSocketTest;

bool blocks(int descriptor) {
    return (::fcntl(descriptor, F_GETFL) & O_NONBLOCK) == 0;
}

TEST_F(CanPolling, setPolling_true_remembers_the_time_in_microseconds_and_sets_non_blocking) {
    (void)::fcntl(socket_.socketDescriptor, F_SETFL, 0);
    CanSocketSubstitute::calls.clear();
    EXPECT_EQ(socket_.setPolling(true, 20), 0);
    EXPECT_TRUE(socket_.polling);
    EXPECT_EQ(socket_.pollTimeout, 20000U);
    EXPECT_EQ(calls(), Calls{settingFlags("s1", O_NONBLOCK)});
    EXPECT_FALSE(blocks(socket_.socketDescriptor));
}

TEST_F(CanPolling, the_time_is_kept_in_32_bits) {
    EXPECT_EQ(socket_.setPolling(true, 4294968), 0);
    EXPECT_EQ(socket_.pollTimeout, 704U);
}

TEST_F(CanPolling, setPolling_false_passes_the_number_through_as_flags) {
    for (const int flags : {0, O_NONBLOCK, O_APPEND, 20}) {
        CanSocketSubstitute::calls.clear();
        EXPECT_EQ(socket_.setPolling(false, static_cast<unsigned int>(flags)), 0);
        EXPECT_EQ(calls(), Calls{settingFlags("s1", flags)});
    }
}

TEST_F(CanPolling, setPolling_false_0_makes_the_socket_block) {
    EXPECT_EQ(socket_.setPolling(false, 0), 0);
    EXPECT_TRUE(blocks(socket_.socketDescriptor));
}

TEST_F(CanPolling, setPolling_false_touches_neither_flag_nor_time) {
    EXPECT_EQ(socket_.setPolling(false, 5), 0);
    EXPECT_FALSE(socket_.polling);
    EXPECT_EQ(socket_.pollTimeout, 0U);
    EXPECT_EQ(socket_.setPolling(true, 7), 0);
    EXPECT_EQ(socket_.setPolling(false, 5), 0);
    EXPECT_TRUE(socket_.polling);
    EXPECT_EQ(socket_.pollTimeout, 7000U);
}

TEST_F(CanPolling, the_number_reaches_the_kernel_with_all_its_bits) {
    (void)socket_.setPolling(false, 0xFFFFFFFF);
    EXPECT_EQ(calls(), Calls{settingFlags("s1", -1)});
}

TEST_F(CanPolling, before_initialize_both_return_minus_1_and_true_is_remembered) {
    OpenSocket closed;
    EXPECT_EQ(closed.setPolling(false, 0), -1);
    EXPECT_EQ(closed.setPolling(true, 3), -1);
    EXPECT_TRUE(closed.polling);
    EXPECT_EQ(closed.pollTimeout, 3000U);
    EXPECT_EQ(calls(), (Calls{settingFlags("-1", 0), settingFlags("-1", O_NONBLOCK)}));
}

TEST_F(CanPolling, whatever_fcntl_gives_is_the_result) {
    CanSocketSubstitute::answer("fcntl", {{42, 0}, {43, 0}, {-1, EINVAL}});
    EXPECT_EQ(socket_.setPolling(true, 0), 42);
    EXPECT_EQ(socket_.setPolling(false, 0), 43);
    EXPECT_EQ(socket_.setPolling(true, 0), -1);
    EXPECT_EQ(log_.reports(), Reports{});
}

TEST_F(CanFilter, three_filters_stay_in_the_vector_and_the_last_one_is_in_the_kernel) {
    EXPECT_EQ(socket_.addIDFilter(0x100, 0x7FF), 0U);
    EXPECT_EQ(socket_.addIDFilter(0x200, 0x700), 0U);
    EXPECT_EQ(socket_.addIDFilter(0x80000300, 0x9FFFFFFF), 0U);
    EXPECT_EQ(calls(),
              (Calls{settingFilter("s1", {0x100, 0x7FF}), settingFilter("s1", {0x200, 0x700}),
                     settingFilter("s1", {0x80000300, 0x9FFFFFFF})}));
    ASSERT_EQ(socket_.filters.size(), 3U);
    EXPECT_EQ(socket_.filters[0].can_id, 0x100U);
    EXPECT_EQ(socket_.filters[0].can_mask, 0x7FFU);
    EXPECT_EQ(socket_.filters[1].can_id, 0x200U);
    EXPECT_EQ(socket_.filters[1].can_mask, 0x700U);
    EXPECT_EQ(socket_.filters[2].can_id, 0x80000300U);
    EXPECT_EQ(socket_.filters[2].can_mask, 0x9FFFFFFFU);
}

TEST_F(CanFilter, a_filter_given_twice_is_kept_twice) {
    EXPECT_EQ(socket_.addIDFilter(1, 2), 0U);
    EXPECT_EQ(socket_.addIDFilter(1, 2), 0U);
    EXPECT_EQ(socket_.filters.size(), 2U);
    EXPECT_EQ(calls().size(), 2U);
}

TEST_F(CanFilter, a_refused_filter_is_ignored_and_kept) {
    for (const int error : {ENOMEM, EINVAL, EINTR}) {
        CanSocketSubstitute::answer("setsockopt", {{-1, error}});
        EXPECT_EQ(socket_.addIDFilter(1, 2), 0U);
    }
    EXPECT_EQ(socket_.filters.size(), 3U);
    EXPECT_EQ(log_.reports(), Reports{});
}

TEST_F(CanFilter, before_initialize_a_filter_is_kept_and_has_no_effect) {
    OpenSocket closed;
    EXPECT_EQ(closed.addIDFilter(1, 2), 0U);
    EXPECT_EQ(closed.filters.size(), 1U);
    EXPECT_EQ(calls(), Calls{settingFilter("-1", {1, 2})});
    CanSocketSubstitute::calls.clear();
    EXPECT_EQ(closed.interfaceInit("can0"), 0U);
    EXPECT_EQ(calls(), openingSocket("s2", "can0", 7));
}

}  // namespace
}  // namespace ZR::test
