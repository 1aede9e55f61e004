// A rotation in Boost's binary archives.

#include <gtest/gtest.h>

#include <boost/archive/archive_exception.hpp>
#include <boost/archive/binary_iarchive.hpp>
#include <boost/archive/binary_oarchive.hpp>
#include <cstring>
#include <limits>
#include <sstream>
#include <streambuf>
#include <string>

#include "hardware/video_input/zr_video_setting.h"

namespace {

using boost::archive::archive_exception;
using boost::archive::binary_iarchive;
using boost::archive::binary_oarchive;
using ZR::ZRRotation;

constexpr int angles[] = {
    0, 90, 270, -90, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()};

/// What an archive without a header holds of a rotation.
std::string serialized(ZRRotation rotation, unsigned int version = 0) {
    std::ostringstream stream;
    {
        binary_oarchive archive(stream, boost::archive::no_header);
        rotation.serialize(archive, version);
    }
    return stream.str();
}

/// Takes so many bytes and no more.
class ShortBuffer : public std::streambuf {
  public:
    explicit ShortBuffer(std::size_t size) : left_(size) {}

  protected:
    std::streamsize xsputn(const char* /*text*/, std::streamsize count) override {
        const std::streamsize taken = std::min(count, static_cast<std::streamsize>(left_));
        left_ -= static_cast<std::size_t>(taken);
        return taken;
    }
    int_type overflow(int_type character) override {
        return left_-- > 0 ? character : traits_type::eof();
    }

  private:
    std::size_t left_;
};

template <typename Operation>
int exceptionCode(Operation operation) {
    try {
        operation();
    } catch (const archive_exception& exception) {
        return exception.code;
    }
    return -1;
}

}  // namespace

TEST(RotationArchive_pure, transfers_the_four_bytes_of_the_angle_in_native_order) {
    for (const int angle : angles) {
        std::string bytes(sizeof angle, '\0');
        std::memcpy(&bytes[0], &angle, sizeof angle);
        EXPECT_EQ(serialized(angle), bytes) << angle;
    }
}

TEST(RotationArchive_pure, ignores_the_version) {
    EXPECT_EQ(serialized(90, 7), serialized(90, 0));
}

TEST(RotationArchive_pure, reads_the_four_bytes_and_no_more) {
    for (const int angle : angles) {
        std::istringstream stream(serialized(angle) + "rest");
        binary_iarchive archive(stream, boost::archive::no_header);
        ZRRotation rotation(1);
        rotation.serialize(archive, 7);
        EXPECT_EQ(rotation.degrees, angle);
        std::string rest(4, '\0');
        archive.load_binary(&rest[0], rest.size());
        EXPECT_EQ(rest, "rest");
    }
}

TEST(RotationArchive_pure, makes_the_round_trip_through_the_archives_operators) {
    for (const int angle : angles) {
        std::stringstream stream;
        {
            binary_oarchive archive(stream);
            const ZRRotation rotation(angle);
            archive << rotation;
        }
        binary_iarchive archive(stream);
        ZRRotation rotation;
        archive >> rotation;
        EXPECT_EQ(rotation.degrees, angle);
    }
}

TEST(RotationArchive_pure, ends_a_short_read_with_input_stream_error) {
    for (const std::size_t bytes : {0U, 1U, 3U}) {
        std::istringstream stream(serialized(90).substr(0, bytes));
        binary_iarchive archive(stream, boost::archive::no_header);
        ZRRotation rotation;
        EXPECT_EQ(exceptionCode([&] { rotation.serialize(archive, 0); }), 8) << bytes;
    }
}

TEST(RotationArchive_pure, ends_a_short_write_with_output_stream_error) {
    for (const std::size_t bytes : {0U, 1U, 3U}) {
        ShortBuffer buffer(bytes);
        binary_oarchive archive(buffer, boost::archive::no_header | boost::archive::no_codecvt);
        ZRRotation rotation(90);
        EXPECT_EQ(exceptionCode([&] { rotation.serialize(archive, 0); }), 13) << bytes;
    }
}

TEST(RotationArchive_pure, has_the_codes_of_the_archives_library) {
    EXPECT_EQ(static_cast<int>(archive_exception::input_stream_error), 8);
    EXPECT_EQ(static_cast<int>(archive_exception::output_stream_error), 13);
}
