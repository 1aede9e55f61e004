#include <climits>
#include <string>

#include "tests/hardware/dimmable/dimmable_board.h"
#include "tests/support/private_root.h"

namespace ZR::test {
namespace {

using DimmableSetIntensity = DimmableTest;
using DimmableGetIntensity = DimmableTest;

struct Device {
    ZRDimmableDevice number;
    const char* file;
};

constexpr Device intensityDevices[] = {{DisplayBacklight, platformDisplay},
                                       {KeyBacklight, keyFile},
                                       {EncoderBacklight, encoderFile},
                                       {Beeper, beeperFile}};

std::string number(ZRDimmableDevice device) {
    return std::to_string(static_cast<unsigned int>(device));
}

Report outOfRange(ZRDimmableDevice device, const std::string& value) {
    return report("Intensity out of range for device " + number(device) + ", requested: " + value);
}

TEST_F(DimmableSetIntensity, writes_a_percentage_scaled_with_a_newline) {
    makeBoard();
    for (const Device& each : {intensityDevices[0], intensityDevices[1], intensityDevices[2]}) {
        EXPECT_EQ(device().setIntensity(50, each.number), 0U);
        EXPECT_EQ(readFile(each.file), "128\n");
        EXPECT_EQ(device().setIntensity(100, each.number), 0U);
        EXPECT_EQ(readFile(each.file), "255\n");
    }
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableSetIntensity, starts_each_value_at_the_start_of_the_file) {
    makeBoard();
    EXPECT_EQ(device().setIntensity(100, KeyBacklight), 0U);
    EXPECT_EQ(device().setIntensity(1, KeyBacklight), 0U);
    EXPECT_EQ(readFile(keyFile), "3\n5\n");
}

TEST_F(DimmableSetIntensity, takes_0_for_the_plain_illuminations_and_the_beeper) {
    makeBoard();
    for (const Device& each : {intensityDevices[1], intensityDevices[2], intensityDevices[3]}) {
        EXPECT_EQ(device().setIntensity(0, each.number), 0U);
        EXPECT_EQ(firstLine(each.file), "0\n");
    }
}

TEST_F(DimmableSetIntensity, writes_the_beeper_unscaled) {
    makeBoard();
    EXPECT_EQ(device().setIntensity(50, Beeper), 0U);
    EXPECT_EQ(firstLine(beeperFile), "50\n");
    EXPECT_EQ(device().setIntensity(100, Beeper), 0U);
    EXPECT_EQ(firstLine(beeperFile), "100\n");
}

TEST_F(DimmableSetIntensity, a_beeper_volume_of_50_reads_back_as_20) {
    makeBoard();
    EXPECT_EQ(device().setIntensity(50, Beeper), 0U);
    EXPECT_EQ(getIntensity(Beeper), (Reading{0, 20}));
}

TEST_F(DimmableSetIntensity, returns_24_for_0_on_the_display) {
    makeBoard();
    EXPECT_EQ(device().setIntensity(0, DisplayBacklight), 24U);
    EXPECT_EQ(reports(), Reports{report("Intensity out of range for device 0, requested: 0")});
    EXPECT_EQ(readFile(platformDisplay), "128\n");
}

TEST_F(DimmableSetIntensity, takes_the_display_from_its_minimum_to_100) {
    makeBoard();
    EXPECT_EQ(device().setIntensity(4, DisplayBacklight), 24U);
    EXPECT_EQ(device().setIntensity(5, DisplayBacklight), 0U);
    EXPECT_EQ(firstLine(platformDisplay), "13\n");
    EXPECT_EQ(device().setIntensity(100, DisplayBacklight), 0U);
    EXPECT_EQ(device().setIntensity(101, DisplayBacklight), 24U);
    EXPECT_EQ(reports(),
              (Reports{outOfRange(DisplayBacklight, "4"), outOfRange(DisplayBacklight, "101")}));
}

TEST_F(DimmableSetIntensity, returns_24_for_101_on_a_plain_device) {
    makeBoard();
    for (const Device& each : intensityDevices) {
        forgetReports();
        EXPECT_EQ(device().setIntensity(101, each.number), 24U);
        EXPECT_EQ(reports(), Reports{outOfRange(each.number, "101")});
        EXPECT_EQ(readFile(each.file), "128\n");
    }
}

TEST_F(DimmableSetIntensity, the_range_report_shows_the_value_as_a_signed_number) {
    makeBoard();
    EXPECT_EQ(device().setIntensity(UINT_MAX, KeyBacklight), 24U);
    EXPECT_EQ(reports(), Reports{outOfRange(KeyBacklight, "-1")});
}

TEST_F(DimmableSetIntensity, writes_101_raw_on_a_colour_illumination) {
    makeColorBoard();
    EXPECT_EQ(device().setIntensity(101, KeyBacklight), 0U);
    EXPECT_EQ(firstLine(keyFile), "101\n");
    EXPECT_EQ(device().setIntensity(101, EncoderBacklight), 0U);
    EXPECT_EQ(firstLine(encoderFile), "101\n");
}

TEST_F(DimmableSetIntensity, takes_0_to_FFFFFF_on_a_colour_illumination) {
    makeColorBoard();
    for (const Device& each : {intensityDevices[1], intensityDevices[2]}) {
        EXPECT_EQ(device().setIntensity(0, each.number), 0U);
        EXPECT_EQ(firstLine(each.file), "0\n");
        EXPECT_EQ(device().setIntensity(0xFFFFFF, each.number), 0U);
        EXPECT_EQ(firstLine(each.file), "16777215\n");
    }
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableSetIntensity, returns_24_above_FFFFFF_on_a_colour_illumination) {
    makeColorBoard();
    EXPECT_EQ(device().setIntensity(0x1000000, KeyBacklight), 24U);
    EXPECT_EQ(device().setIntensity(0x1000000, EncoderBacklight), 24U);
    EXPECT_EQ(reports(), (Reports{outOfRange(KeyBacklight, "16777216"),
                                  outOfRange(EncoderBacklight, "16777216")}));
}

TEST_F(DimmableSetIntensity, returns_10_for_the_rgb_led_and_unknown_devices_without_a_report) {
    makeBoard();
    for (const ZRDimmableDevice invalid : {RGBLED, firstUnknownDevice, unknownDevice})
        EXPECT_EQ(device().setIntensity(50, invalid), 10U);
    EXPECT_EQ(readFile(rgbFile), "128\n");
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableSetIntensity, returns_1_without_a_report_when_the_device_is_not_open) {
    (void)outputOfBuilding();
    for (const Device& each : intensityDevices)
        EXPECT_EQ(device().setIntensity(50, each.number), 1U);
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableSetIntensity, looks_at_the_range_after_the_device) {
    (void)outputOfBuilding();
    for (const Device& each : intensityDevices)
        EXPECT_EQ(device().setIntensity(UINT_MAX, each.number), 1U);
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableSetIntensity, returns_6_and_reports_when_the_kernel_refuses_the_value) {
    makeBoard();
    (void)device();
    const RefusedWrites refused;
    for (const Device& each : intensityDevices) {
        forgetReports();
        EXPECT_EQ(device().setIntensity(50, each.number), 6U);
        EXPECT_EQ(reports(),
                  Reports{report("Writing intensity to device file " + number(each.number))});
    }
}

TEST_F(DimmableSetIntensity, returns_6_when_the_device_cannot_be_rewound) {
    makeBoard();
    removeFile(keyFile);
    makeFifo(keyFile);
    EXPECT_EQ(device().setIntensity(50, KeyBacklight), 6U);
    EXPECT_EQ(reports(), Reports{report("Writing intensity to device file 1")});
}

TEST_F(DimmableSetIntensity, returns_6_for_a_full_device) {
    makeBoard();
    removeFile(beeperFile);
    makeDeviceNode(beeperFile, "full");
    EXPECT_EQ(device().setIntensity(50, Beeper), 6U);
    EXPECT_EQ(reports(), Reports{report("Writing intensity to device file 4")});
}

TEST_F(DimmableSetIntensity, a_stream_that_does_not_raise_is_reported_after_the_flush) {
    makeBoard();
    Inside::stream(KeyBacklight).exceptions(std::ios::goodbit);
    const RefusedWrites refused;
    EXPECT_EQ(device().setIntensity(50, KeyBacklight), 6U);
    EXPECT_EQ(reports(), Reports{report("Writing intensity to dimmable device  1")});
    EXPECT_TRUE(Inside::stream(KeyBacklight).good());
}

TEST_F(DimmableGetIntensity, scales_to_percent) {
    makeBoard();
    for (const Device& each : intensityDevices) {
        makeFile(each.file, "255\n");
        EXPECT_EQ(getIntensity(each.number), (Reading{0, 100}));
        makeFile(each.file, "128\n");
        EXPECT_EQ(getIntensity(each.number), (Reading{0, 50}));
    }
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableGetIntensity, reads_small_values_of_devices_without_a_minimum) {
    makeBoard();
    for (const Device& each : {intensityDevices[1], intensityDevices[2], intensityDevices[3]}) {
        makeFile(each.file, "3\n");
        EXPECT_EQ(getIntensity(each.number), (Reading{0, 1}));
        makeFile(each.file, "1\n");
        EXPECT_EQ(getIntensity(each.number), (Reading{0, 0}));
        EXPECT_EQ(readFile(each.file), "1\n");
    }
}

TEST_F(DimmableGetIntensity, reads_hexadecimal_and_octal) {
    makeBoard();
    makeFile(keyFile, "0xff\n");
    EXPECT_EQ(getIntensity(KeyBacklight), (Reading{0, 100}));
    makeFile(keyFile, "0200\n");
    EXPECT_EQ(getIntensity(KeyBacklight), (Reading{0, 50}));
}

TEST_F(DimmableGetIntensity, a_text_without_a_number_reads_as_0) {
    makeBoard();
    makeFile(keyFile, "none\n");
    EXPECT_EQ(getIntensity(KeyBacklight), (Reading{0, 0}));
}

TEST_F(DimmableGetIntensity, a_negative_value_wraps) {
    makeBoard();
    makeFile(keyFile, "-255\n");
    EXPECT_EQ(getIntensity(KeyBacklight), (Reading{0, static_cast<unsigned int>(-99)}));
}

TEST_F(DimmableGetIntensity, reads_the_first_line_only) {
    makeBoard();
    makeFile(keyFile, "255\n0\n");
    EXPECT_EQ(getIntensity(KeyBacklight), (Reading{0, 100}));
}

TEST_F(DimmableGetIntensity, a_value_without_a_newline_reads_again_and_again) {
    makeBoard();
    makeFile(keyFile, "255");
    EXPECT_EQ(getIntensity(KeyBacklight), (Reading{0, 100}));
    EXPECT_EQ(getIntensity(KeyBacklight), (Reading{0, 100}));
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableGetIntensity, sees_a_value_that_changed_outside) {
    makeBoard();
    EXPECT_EQ(getIntensity(EncoderBacklight), (Reading{0, 50}));
    makeFile(encoderFile, "255\n");
    EXPECT_EQ(getIntensity(EncoderBacklight), (Reading{0, 100}));
}

TEST_F(DimmableGetIntensity, a_colour_illumination_reads_unscaled) {
    makeColorBoard();
    makeFile(keyFile, "3430008\n");
    makeFile(encoderFile, "101\n");
    EXPECT_EQ(getIntensity(KeyBacklight), (Reading{0, 3430008}));
    EXPECT_EQ(getIntensity(EncoderBacklight), (Reading{0, 101}));
}

TEST_F(DimmableGetIntensity, returns_1_for_the_rgb_led_and_unknown_devices_without_a_report) {
    makeBoard();
    for (const ZRDimmableDevice invalid : {RGBLED, firstUnknownDevice, unknownDevice})
        EXPECT_EQ(getIntensity(invalid), (Reading{1, untouched}));
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableGetIntensity, returns_1_and_names_the_display_for_each_device_that_is_not_open) {
    (void)outputOfBuilding();
    for (const Device& each : intensityDevices) {
        forgetReports();
        EXPECT_EQ(getIntensity(each.number), (Reading{1, untouched}));
        EXPECT_EQ(reports(), Reports{report("Reading from display backlight device file "
                                            "(file != good()) " +
                                            number(each.number))});
    }
}

TEST_F(DimmableGetIntensity, returns_5_and_names_the_display_for_each_device_that_does_not_read) {
    makeBoard();
    (void)device();
    for (const Device& each : intensityDevices) {
        forgetReports();
        makeFile(each.file, "");
        EXPECT_EQ(getIntensity(each.number), (Reading{5, untouched}));
        EXPECT_EQ(reports(), Reports{report("Reading from display backlight device file "
                                            "(std::ifstream::failure) " +
                                            number(each.number))});
    }
}

TEST_F(DimmableGetIntensity, returns_5_when_the_device_cannot_be_rewound) {
    makeBoard();
    removeFile(beeperFile);
    makeFifo(beeperFile);
    EXPECT_EQ(getIntensity(Beeper), (Reading{5, untouched}));
    EXPECT_EQ(reports(), Reports{report("Reading from display backlight device file "
                                        "(std::ifstream::failure) 4")});
}

}  // namespace
}  // namespace ZR::test
