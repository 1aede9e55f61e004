#include <fcntl.h>
#include <unistd.h>

#include <climits>
#include <string>
#include <utility>

#include "tests/hardware/dimmable/dimmable_board.h"
#include "tests/support/private_root.h"

namespace ZR::test {
namespace {

using DimmableSetColor = DimmableTest;
using DimmableGetColor = DimmableTest;

TEST_F(DimmableSetColor, writes_12345678_hexadecimal_as_3430008_on_the_rgb_led) {
    makeBoard();
    EXPECT_EQ(device().setColor(0x12345678, RGBLED), 0U);
    EXPECT_EQ(readFile(rgbFile), "3430008\n");
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableSetColor, masks_the_upper_byte_of_the_rgb_led_only) {
    makeColorBoard();
    EXPECT_EQ(device().setColor(0xFF000001, RGBLED), 0U);
    EXPECT_EQ(firstLine(rgbFile), "1\n");
    EXPECT_EQ(device().setColor(0xFF000001, KeyBacklight), 24U);
    EXPECT_EQ(device().setColor(0xFF000001, EncoderBacklight), 24U);
    EXPECT_EQ(reports(),
              (Reports{report("Intensity out of range for device 1, requested: -16777215"),
                       report("Intensity out of range for device 2, requested: -16777215")}));
}

TEST_F(DimmableSetColor, writes_raw_on_a_colour_illumination) {
    makeColorBoard();
    EXPECT_EQ(device().setColor(0x345678, KeyBacklight), 0U);
    EXPECT_EQ(device().setColor(0xFFFFFF, EncoderBacklight), 0U);
    EXPECT_EQ(firstLine(keyFile), "3430008\n");
    EXPECT_EQ(firstLine(encoderFile), "16777215\n");
}

TEST_F(DimmableSetColor, is_a_percentage_on_a_plain_illumination) {
    makeBoard();
    EXPECT_EQ(device().setColor(50, KeyBacklight), 0U);
    EXPECT_EQ(device().setColor(100, EncoderBacklight), 0U);
    EXPECT_EQ(firstLine(keyFile), "128\n");
    EXPECT_EQ(firstLine(encoderFile), "255\n");
}

TEST_F(DimmableSetColor, returns_24_above_100_on_a_plain_illumination) {
    makeBoard();
    EXPECT_EQ(device().setColor(101, KeyBacklight), 24U);
    EXPECT_EQ(device().setColor(0xFFFFFF, EncoderBacklight), 24U);
    EXPECT_EQ(reports(),
              (Reports{report("Intensity out of range for device 1, requested: 101"),
                       report("Intensity out of range for device 2, requested: 16777215")}));
}

TEST_F(DimmableSetColor, records_the_colour_of_the_illuminations_even_when_it_is_refused) {
    makeBoard();
    EXPECT_EQ(device().setColor(UINT_MAX, KeyBacklight), 24U);
    EXPECT_EQ(device().setColor(77, EncoderBacklight), 0U);
    EXPECT_EQ(device().setColor(1, RGBLED), 0U);
    EXPECT_EQ(Inside::lastKeyColor(), UINT_MAX);
    EXPECT_EQ(Inside::lastEncoderColor(), 77U);
}

TEST_F(DimmableSetColor, returns_1_for_display_beeper_and_unknown_devices) {
    makeBoard();
    for (const ZRDimmableDevice invalid :
         {DisplayBacklight, Beeper, firstUnknownDevice, unknownDevice})
        EXPECT_EQ(device().setColor(50, invalid), 1U);
    EXPECT_EQ(readFile(platformDisplay), "128\n");
    EXPECT_EQ(readFile(beeperFile), "128\n");
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableSetColor, returns_1_without_a_report_when_the_device_is_not_open) {
    (void)outputOfBuilding();
    for (const ZRDimmableDevice missing : {KeyBacklight, EncoderBacklight, RGBLED})
        EXPECT_EQ(device().setColor(1, missing), 1U);
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableSetColor, returns_1_without_a_report_when_the_rgb_stream_is_not_good) {
    makeBoard();
    AttributeStream& stream = Inside::stream(RGBLED);
    stream.exceptions(std::ios::goodbit);
    makeFile(rgbFile, "");
    AttributeStream::Line line{};
    stream.readLine(line);
    EXPECT_EQ(device().setColor(1, RGBLED), 1U);
    EXPECT_EQ(readFile(rgbFile), "");
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableSetColor, returns_6_and_reports_when_the_kernel_refuses_the_colour) {
    makeColorBoard();
    (void)device();
    const RefusedWrites refused;
    EXPECT_EQ(device().setColor(1, RGBLED), 6U);
    EXPECT_EQ(device().setColor(1, KeyBacklight), 6U);
    EXPECT_EQ(device().setColor(1, EncoderBacklight), 6U);
    EXPECT_EQ(reports(), (Reports{report("WRITING LED device file"),
                                  report("Writing intensity to device file 1"),
                                  report("Writing intensity to device file 2")}));
}

TEST_F(DimmableSetColor, returns_6_when_the_rgb_led_cannot_be_rewound) {
    makeBoard();
    // The probe of a fifo finds nothing to read, but this one has a number waiting.
    removeFile(rgbFile);
    makeFifo(rgbFile);
    const int fifo = ::open(rgbFile, O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::write(fifo, "1\n", 2), 2);
    EXPECT_EQ(device().setColor(1, RGBLED), 6U);
    EXPECT_EQ(reports(), Reports{report("WRITING LED device file")});
    ::close(fifo);
}

TEST_F(DimmableSetColor, a_stream_that_does_not_raise_is_reported_after_the_flush) {
    makeBoard();
    Inside::stream(RGBLED).exceptions(std::ios::goodbit);
    const RefusedWrites refused;
    EXPECT_EQ(device().setColor(1, RGBLED), 6U);
    EXPECT_EQ(reports(), Reports{report("Writing to LED device file")});
    EXPECT_TRUE(Inside::stream(RGBLED).good());
}

TEST_F(DimmableGetColor, reads_the_rgb_led_unscaled_and_unmasked) {
    makeBoard();
    makeFile(rgbFile, "305419896\n");
    EXPECT_EQ(getColor(RGBLED), (Reading{0, 0x12345678}));
    makeFile(rgbFile, "0xabcdef\n");
    EXPECT_EQ(getColor(RGBLED), (Reading{0, 0xABCDEF}));
    makeFile(rgbFile, "-1\n");
    EXPECT_EQ(getColor(RGBLED), (Reading{0, UINT_MAX}));
}

TEST_F(DimmableGetColor, a_number_too_large_saturates_at_32_bits) {
    makeBoard();
    (void)device();
    makeFile(rgbFile, "4294967295\n");
    EXPECT_EQ(getColor(RGBLED), (Reading{0, INT_MAX}));
}

TEST_F(DimmableGetColor, reads_colour_illuminations_unscaled) {
    makeColorBoard();
    makeFile(keyFile, "3430008\n");
    makeFile(encoderFile, "255\n");
    EXPECT_EQ(getColor(KeyBacklight), (Reading{0, 0x345678}));
    EXPECT_EQ(getColor(EncoderBacklight), (Reading{0, 255}));
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableGetColor, gives_what_setColor_wrote) {
    makeColorBoard();
    for (const ZRDimmableDevice each : {KeyBacklight, EncoderBacklight, RGBLED}) {
        EXPECT_EQ(device().setColor(0x00C0FFEE & 0xFFFFFF, each), 0U);
        EXPECT_EQ(getColor(each), (Reading{0, 0xC0FFEE}));
    }
}

TEST_F(DimmableGetColor, returns_11_for_a_plain_illumination_without_a_report) {
    makeBoard();
    EXPECT_EQ(getColor(KeyBacklight), (Reading{11, untouched}));
    EXPECT_EQ(getColor(EncoderBacklight), (Reading{11, untouched}));
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableGetColor, returns_11_for_an_illumination_that_is_not_open) {
    makeFile(keyMaximum, "16777215\n");
    (void)outputOfBuilding();
    EXPECT_EQ(getColor(KeyBacklight), (Reading{11, untouched}));
}

TEST_F(DimmableGetColor, returns_1_for_display_beeper_and_unknown_devices_without_a_report) {
    makeBoard();
    for (const ZRDimmableDevice invalid :
         {DisplayBacklight, Beeper, firstUnknownDevice, unknownDevice})
        EXPECT_EQ(getColor(invalid), (Reading{1, untouched}));
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableGetColor, returns_1_without_a_report_when_the_rgb_led_is_not_open) {
    (void)outputOfBuilding();
    EXPECT_EQ(getColor(RGBLED), (Reading{1, untouched}));
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableGetColor, returns_5_and_reports_twice_when_the_read_raises) {
    makeColorBoard();
    (void)device();
    for (const auto& [number, file] :
         {std::pair(KeyBacklight, keyFile), std::pair(EncoderBacklight, encoderFile),
          std::pair(RGBLED, rgbFile)}) {
        forgetReports();
        makeFile(file, "");
        const Report expected = report("Reading from LED device file " + std::to_string(number));
        EXPECT_EQ(getColor(number), (Reading{5, untouched}));
        EXPECT_EQ(reports(), (Reports{expected, expected}));
    }
}

TEST_F(DimmableGetColor, works_again_after_a_read_that_raised) {
    makeColorBoard();
    (void)device();
    for (const auto& [number, file] :
         {std::pair(KeyBacklight, keyFile), std::pair(EncoderBacklight, encoderFile),
          std::pair(RGBLED, rgbFile)}) {
        makeFile(file, "");
        EXPECT_EQ(getColor(number), (Reading{5, untouched}));
        makeFile(file, "9\n");
        EXPECT_EQ(getColor(number), (Reading{0, 9}));
    }
}

TEST_F(DimmableGetColor, answers_5_and_reports_once_for_a_value_without_a_newline) {
    makeBoard();
    makeFile(rgbFile, "255");
    EXPECT_EQ(getColor(RGBLED), (Reading{5, untouched}));
    EXPECT_EQ(reports(), Reports{report("Reading from LED device file 3")});
}

TEST_F(DimmableGetColor, works_again_after_a_value_without_a_newline) {
    makeBoard();
    makeFile(rgbFile, "255");
    EXPECT_EQ(getColor(RGBLED), (Reading{5, untouched}));
    EXPECT_EQ(getColor(RGBLED), (Reading{5, untouched}));
    makeFile(rgbFile, "255\n");
    EXPECT_EQ(getColor(RGBLED), (Reading{0, 255}));
}

TEST_F(DimmableGetColor, a_colour_illumination_without_a_newline_answers_5_and_works_again) {
    makeColorBoard();
    makeFile(keyFile, "255");
    EXPECT_EQ(getColor(KeyBacklight), (Reading{5, untouched}));
    EXPECT_EQ(reports(), Reports{report("Reading from LED device file 1")});
    makeFile(keyFile, "255\n");
    EXPECT_EQ(getColor(KeyBacklight), (Reading{0, 255}));
}

}  // namespace
}  // namespace ZR::test
