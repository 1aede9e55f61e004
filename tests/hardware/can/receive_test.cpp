#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "common/zrapi_os_abs/zr_tick.h"
#include "tests/hardware/can/can_calls.h"
#include "tests/support/output_capture.h"

namespace ZR::test {
namespace {

ZRCANMessage untouched() {
    return {11, 12, 13, {'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x'}, 14};
}

bool isUntouched(const ZRCANMessage& message) {
    const ZRCANMessage before = untouched();
    return std::memcmp(&message, &before, sizeof message) == 0;
}

class CanReceive : public ConnectedSocketTest {
  protected:
    CanReceive() { socket_.port = 1; }

    void arrive(unsigned int id, unsigned int length) const {
        can_frame frame{};
        frame.can_id = id;
        frame.can_dlc = static_cast<std::uint8_t>(length);
        std::memcpy(frame.data, "abcdefgh", 8);
        ASSERT_EQ(::write(peer_, &frame, sizeof frame), 16);
    }

    void arriveShort(std::size_t length) const {
        const std::array<char, 16> bytes{};
        ASSERT_EQ(::write(peer_, bytes.data(), length), static_cast<ssize_t>(length));
    }

    /// Receives what must not come, and gives what was printed.
    std::string failing(unsigned int status) {
        const OutputCapture capture;
        ZRCANMessage message = untouched();
        EXPECT_EQ(socket_.receive(&message), status);
        EXPECT_TRUE(isUntouched(message));
        EXPECT_EQ(capture.errors(), "");
        EXPECT_EQ(log_.reports(), Reports{});
        return capture.output();
    }
};

TEST_F(CanReceive, stores_a_frame_and_reads_once) {
    arrive(0x123, 8);
    const OutputCapture capture;
    ZRCANMessage message = untouched();
    EXPECT_EQ(socket_.receive(&message), 0U);
    EXPECT_EQ(message.id, 0x123U);
    EXPECT_EQ(message.length, 8U);
    EXPECT_EQ(std::memcmp(message.data, "abcdefgh", 8), 0);
    EXPECT_EQ(message.reserved, 11U);
    EXPECT_EQ(calls(), Calls{"read s1 16"});
    EXPECT_EQ(capture.output() + capture.errors(), "");
}

TEST_F(CanReceive, the_time_stamp_is_the_tick_count_of_the_moment) {
    arrive(1, 0);
    ZRCANMessage message = untouched();
    const auto before = static_cast<std::uint32_t>(ZRTick::getTickCount());
    EXPECT_EQ(socket_.receive(&message), 0U);
    const auto after = static_cast<std::uint32_t>(ZRTick::getTickCount());
    // Differences, as the 32 bits may wrap in between.
    EXPECT_LE(message.timeStamp - before, after - before);
}

TEST_F(CanReceive, an_extended_frame_yields_an_identifier_with_bit_31_set) {
    arrive(0x80000800, 1);
    ZRCANMessage message = untouched();
    EXPECT_EQ(socket_.receive(&message), 0U);
    EXPECT_EQ(message.id, 0x80000800U);
}

TEST_F(CanReceive, flag_bits_of_the_identifier_stay) {
    for (const unsigned int id : {0x40000123U, 0x20000004U, 0xFFFFFFFFU, 2047U}) {
        arrive(id, 0);
        ZRCANMessage message = untouched();
        EXPECT_EQ(socket_.receive(&message), 0U);
        EXPECT_EQ(message.id, id);
    }
}

TEST_F(CanReceive, bytes_beyond_the_length_stay_as_they_were) {
    for (unsigned int length = 0; length <= 8; ++length) {
        arrive(1, length);
        ZRCANMessage message = untouched();
        EXPECT_EQ(socket_.receive(&message), 0U);
        EXPECT_EQ(message.length, length);
        const std::string expected =
            std::string("abcdefgh").substr(0, length) + std::string(8 - length, 'x');
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(message.data), 8), expected);
    }
}

TEST_F(CanReceive, a_length_above_8_is_stored_and_writes_nothing_beyond_the_data) {
    struct {
        ZRCANMessage message = untouched();
        std::array<unsigned char, 256> behind{};
    } room;
    arrive(1, 255);
    EXPECT_EQ(socket_.receive(&room.message), 0U);
    EXPECT_EQ(room.message.length, 255U);
    EXPECT_EQ(std::memcmp(room.message.data, "abcdefgh", 8), 0);
    for (const unsigned char byte : room.behind)
        EXPECT_EQ(byte, 0);
}

TEST_F(CanReceive, frames_come_in_their_order) {
    for (unsigned int id = 0; id < 5; ++id)
        arrive(id, 1);
    for (unsigned int id = 0; id < 5; ++id) {
        ZRCANMessage message = untouched();
        EXPECT_EQ(socket_.receive(&message), 0U);
        EXPECT_EQ(message.id, id);
    }
    EXPECT_EQ(failing(5), "");
}

TEST_F(CanReceive, no_frame_waiting_returns_5_silently) {
    EXPECT_EQ(failing(5), "");
    EXPECT_EQ(calls(), Calls{"read s1 16"});
}

TEST_F(CanReceive, a_failed_read_returns_5_and_prints_a_line_each_time) {
    for (int i = 0; i < 2; ++i) {
        CanSocketSubstitute::answer("read", {{-1, ENETDOWN}});
        EXPECT_EQ(failing(5),
                  "CANSocket::receive() on port 1: ERROR: read failed: -1, errno: 100 (Network is "
                  "down).\n");
    }
}

TEST_F(CanReceive, every_errno_but_EAGAIN_is_printed_an_interruption_too) {
    for (const int error : {EINTR, ENODEV, EBADF, ENXIO, EIO}) {
        CanSocketSubstitute::answer("read", {{-1, error}});
        EXPECT_EQ(failing(5), "CANSocket::receive() on port 1: ERROR: read failed: -1, errno: " +
                                  std::to_string(error) + " (" + std::strerror(error) + ").\n");
    }
    EXPECT_EQ(calls().size(), 5U);
}

TEST_F(CanReceive, before_initialize_it_returns_5_and_prints_the_unset_port) {
    OpenSocket closed;
    const OutputCapture capture;
    ZRCANMessage message = untouched();
    EXPECT_EQ(closed.receive(&message), 5U);
    EXPECT_EQ(capture.output(),
              "CANSocket::receive() on port 4294967295: ERROR: read failed: -1, errno: 9 (Bad file "
              "descriptor).\n");
}

TEST_F(CanReceive, a_short_read_returns_1_and_prints_how_many_bytes_came) {
    arriveShort(5);
    EXPECT_EQ(failing(1),
              "CANSocket::receive() on port 1: ERROR: read only 5 bytes instead of 16.\n");
    arriveShort(15);
    EXPECT_EQ(failing(1),
              "CANSocket::receive() on port 1: ERROR: read only 15 bytes instead of 16.\n");
}

TEST_F(CanReceive, a_read_of_nothing_is_a_short_one) {
    arriveShort(0);
    EXPECT_EQ(failing(1),
              "CANSocket::receive() on port 1: ERROR: read only 0 bytes instead of 16.\n");
}

TEST_F(CanReceive, a_count_of_nothing_is_short_also_after_an_EAGAIN) {
    EXPECT_EQ(failing(5), "");
    errno = EAGAIN;
    CanSocketSubstitute::answer("read", {{0, 0}});
    EXPECT_EQ(failing(1),
              "CANSocket::receive() on port 1: ERROR: read only 0 bytes instead of 16.\n");
}

TEST_F(CanReceive, more_than_a_frame_is_no_frame_either) {
    socket_.port = 0xFFFFFFFF;
    CanSocketSubstitute::answer("read", {{17, 0}});
    EXPECT_EQ(
        failing(1),
        "CANSocket::receive() on port 4294967295: ERROR: read only 17 bytes instead of 16.\n");
}

}  // namespace
}  // namespace ZR::test
