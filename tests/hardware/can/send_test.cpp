#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "tests/hardware/can/can_calls.h"
#include "tests/support/output_capture.h"

namespace ZR::test {
namespace {

/// A frame that fits every test.
ZRCANMessage message() {
    return {1, 0x123, 4, {1, 2, 3, 4, 5, 6, 7, 8}, 2};
}

can_frame frame() {
    can_frame expected{};
    expected.can_id = 0x123;
    expected.can_dlc = 4;
    for (std::uint8_t i = 0; i < 8; ++i)
        expected.data[i] = static_cast<std::uint8_t>(i + 1);
    return expected;
}

std::string line(const std::string& port, int retries, int error) {
    return "CANSocket::send failed on port " + port + " even after " + std::to_string(retries) +
           " retries. Errno: " + std::to_string(error) + " == " + std::strerror(error) + '\n';
}

class CanSend : public ConnectedSocketTest {
  protected:
    CanSend() { socket_.port = 2; }

    unsigned int send() {
        ZRCANMessage sent = message();
        return socket_.send(&sent);
    }

    /// Makes as many writes fail.
    static void failWrites(std::size_t count, int error) {
        CanSocketSubstitute::answer("write", std::vector<Answer>(count, {-1, error}));
    }

    /// What a send prints whose attempts all fail.
    std::string failing(std::size_t writes, int error) {
        const OutputCapture capture;
        failWrites(writes, error);
        EXPECT_EQ(send(), 7U);
        EXPECT_EQ(capture.errors(), "");
        EXPECT_EQ(log_.reports(), Reports{});
        return capture.output();
    }
};

TEST_F(CanSend, writes_the_frame_once_as_16_bytes) {
    EXPECT_EQ(send(), 0U);
    EXPECT_EQ(calls(), Calls{writing("s1", frame())});
    can_frame arrived{};
    ASSERT_EQ(::read(peer_, &arrived, sizeof arrived), 16);
    const can_frame expected = frame();
    EXPECT_EQ(std::memcmp(&arrived, &expected, sizeof expected), 0);
}

TEST_F(CanSend, identifier_2047_goes_out_as_standard_and_2048_as_extended) {
    const std::array<std::pair<unsigned int, unsigned int>, 4> words{
        {{2047, 2047}, {2048, 0x80000800}, {0, 0}, {0x1FFFFFFF, 0x9FFFFFFF}}};
    for (const auto& [id, word] : words) {
        ZRCANMessage sent{};
        sent.id = id;
        EXPECT_EQ(socket_.send(&sent), 0U);
        can_frame arrived{};
        ASSERT_EQ(::read(peer_, &arrived, sizeof arrived), 16);
        EXPECT_EQ(arrived.can_id, word);
    }
}

TEST_F(CanSend, changes_nothing_of_the_message) {
    ZRCANMessage sent = message();
    const ZRCANMessage before = message();
    EXPECT_EQ(socket_.send(&sent), 0U);
    EXPECT_EQ(std::memcmp(&sent, &before, sizeof sent), 0);
}

TEST_F(CanSend, any_count_from_0_on_is_a_success_of_the_first_attempt) {
    socket_.setRetry(3, 5);
    for (const long count : {0, 1, 15, 17}) {
        CanSocketSubstitute::answer("write", {{count, 0}});
        CanSocketSubstitute::calls.clear();
        EXPECT_EQ(send(), 0U) << count;
        EXPECT_EQ(calls(), Calls{writing("s1", frame())});
    }
}

TEST_F(CanSend, a_send_failing_with_retry_count_0_returns_7_without_any_output) {
    EXPECT_EQ(failing(1, ENOBUFS), "");
    EXPECT_EQ(calls(), Calls{writing("s1", frame())});
    EXPECT_EQ(socket_.lastError, 0);
    EXPECT_EQ(socket_.lastErrno, 0);
}

TEST_F(CanSend, a_negative_retry_count_counts_as_none) {
    socket_.setRetry(-1, 100);
    EXPECT_EQ(failing(1, ENOBUFS), "");
    EXPECT_EQ(calls(), Calls{writing("s1", frame())});
}

TEST_F(CanSend, before_initialize_it_fails_silently) {
    OpenSocket closed;
    ZRCANMessage sent = message();
    const OutputCapture capture;
    EXPECT_EQ(closed.send(&sent), 7U);
    EXPECT_EQ(capture.output(), "");
    EXPECT_EQ(calls(), Calls{writing("-1", frame())});
}

TEST_F(CanSend, sleeps_before_each_further_attempt_and_stops_at_the_first_success) {
    socket_.setRetry(5, 250);
    failWrites(3, ENOBUFS);
    const OutputCapture capture;
    EXPECT_EQ(send(), 0U);
    const std::string write = writing("s1", frame());
    EXPECT_EQ(calls(),
              (Calls{write, "usleep 250", write, "usleep 250", write, "usleep 250", write}));
    EXPECT_EQ(capture.output(), "");
    EXPECT_EQ(socket_.lastError, 0);
}

TEST_F(CanSend, makes_exactly_as_many_further_attempts_as_the_retry_count_says) {
    socket_.setRetry(2, 7);
    EXPECT_EQ(failing(3, ENOBUFS), line("2", 2, ENOBUFS));
    const std::string write = writing("s1", frame());
    EXPECT_EQ(calls(), (Calls{write, "usleep 7", write, "usleep 7", write}));
    EXPECT_EQ(socket_.lastError, 7);
    EXPECT_EQ(socket_.lastErrno, ENOBUFS);
}

TEST_F(CanSend, a_retry_takes_0_for_a_failure_unlike_the_first_attempt) {
    socket_.setRetry(2, 0);
    CanSocketSubstitute::answer("write", {{-1, ENOBUFS}, {0, 0}, {1, 0}});
    EXPECT_EQ(send(), 0U);
    EXPECT_EQ(calls().size(), 5U);
    CanSocketSubstitute::answer("write", {{-1, ENOBUFS}, {0, 0}, {0, 0}});
    const OutputCapture capture;
    EXPECT_EQ(send(), 7U);
    EXPECT_EQ(capture.output(), line("2", 2, ENOBUFS));
}

TEST_F(CanSend, sleeps_also_with_delay_0_and_takes_a_negative_delay_for_0) {
    for (const int delay : {0, -1, -2147483647 - 1}) {
        socket_.setRetry(1, delay);
        CanSocketSubstitute::calls.clear();
        failWrites(1, ENOBUFS);
        EXPECT_EQ(send(), 0U);
        EXPECT_EQ(calls().at(1), "usleep 0") << delay;
    }
}

TEST_F(CanSend, sleeps_as_long_as_the_delay_says) {
    socket_.setRetry(1, 2147483647);
    failWrites(1, ENOBUFS);
    EXPECT_EQ(send(), 0U);
    EXPECT_EQ(calls().at(1), "usleep 2147483647");
}

TEST_F(CanSend, a_failure_is_printed_byte_for_byte) {
    socket_.setRetry(1, 0);
    EXPECT_EQ(failing(2, ENOBUFS),
              "CANSocket::send failed on port 2 even after 1 retries. Errno: 105 == No buffer "
              "space available\n");
}

TEST_F(CanSend, the_port_is_printed_as_an_unsigned_number) {
    socket_.setRetry(1, 0);
    socket_.port = 0xFFFFFFFF;
    EXPECT_EQ(failing(2, ENETDOWN), line("4294967295", 1, ENETDOWN));
}

TEST_F(CanSend, two_failures_with_one_errno_print_one_line) {
    socket_.setRetry(1, 0);
    EXPECT_EQ(failing(2, ENOBUFS), line("2", 1, ENOBUFS));
    EXPECT_EQ(failing(2, ENOBUFS), "");
    EXPECT_EQ(failing(2, ENOBUFS), "");
}

TEST_F(CanSend, a_different_errno_prints_again) {
    socket_.setRetry(1, 0);
    EXPECT_EQ(failing(2, ENOBUFS), line("2", 1, ENOBUFS));
    EXPECT_EQ(failing(2, ENETDOWN), line("2", 1, ENETDOWN));
    EXPECT_EQ(failing(2, ENOBUFS), line("2", 1, ENOBUFS));
    EXPECT_EQ(socket_.lastErrno, ENOBUFS);
}

TEST_F(CanSend, a_first_failure_is_printed_also_without_an_errno) {
    socket_.setRetry(1, 0);
    EXPECT_EQ(failing(2, 0), line("2", 1, 0));
    EXPECT_EQ(failing(2, 0), "");
}

TEST_F(CanSend, a_success_in_between_does_not_make_the_same_failure_new) {
    socket_.setRetry(1, 0);
    EXPECT_EQ(failing(2, ENOBUFS), line("2", 1, ENOBUFS));
    EXPECT_EQ(send(), 0U);
    EXPECT_EQ(failing(2, ENOBUFS), "");
}

TEST_F(CanSend, a_failure_without_retries_leaves_what_was_printed_last) {
    socket_.setRetry(1, 0);
    EXPECT_EQ(failing(2, ENOBUFS), line("2", 1, ENOBUFS));
    socket_.setRetry(0, 0);
    EXPECT_EQ(failing(1, ENETDOWN), "");
    EXPECT_EQ(socket_.lastErrno, ENOBUFS);
}

TEST_F(CanSend, each_socket_prints_its_own_failures) {
    OpenSocket other;
    other.setRetry(1, 0);
    socket_.setRetry(1, 0);
    EXPECT_EQ(failing(2, EBADF), line("2", 1, EBADF));
    const OutputCapture capture;
    ZRCANMessage sent = message();
    EXPECT_EQ(other.send(&sent), 7U);
    EXPECT_EQ(capture.output(), line("4294967295", 1, EBADF));
}

TEST_F(CanSend, the_errno_that_counts_is_that_of_the_last_attempt) {
    socket_.setRetry(2, 0);
    CanSocketSubstitute::answer("write", {{-1, EINTR}, {-1, EAGAIN}, {-1, ENXIO}});
    const OutputCapture capture;
    EXPECT_EQ(send(), 7U);
    EXPECT_EQ(capture.output(), line("2", 2, ENXIO));
}

TEST_F(CanSend, an_interrupted_write_is_a_failure_like_any_other) {
    failWrites(1, EINTR);
    EXPECT_EQ(send(), 7U);
    EXPECT_EQ(calls().size(), 1U);
}

TEST_F(CanSend, setRetry_stores_both_numbers_as_they_are) {
    socket_.setRetry(-3, -4);
    EXPECT_EQ(socket_.retryCount, -3);
    EXPECT_EQ(socket_.retryDelay, -4);
    socket_.setRetry(5, 6);
    EXPECT_EQ(socket_.retryCount, 5);
    EXPECT_EQ(socket_.retryDelay, 6);
}

}  // namespace
}  // namespace ZR::test
