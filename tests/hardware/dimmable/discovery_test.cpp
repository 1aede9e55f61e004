#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "tests/hardware/dimmable/dimmable_board.h"
#include "tests/support/private_root.h"

namespace ZR::test {
namespace {

using DimmableDiscovery = DimmableTest;

TEST_F(DimmableDiscovery, the_platform_backlight_is_taken_first) {
    makeBoard();
    makeFile(classDisplay, "1\n");
    makeFile(otherDisplay, "2\n");
    EXPECT_EQ(Inside::displayPath(), platformDisplay);
    EXPECT_EQ(getIntensity(DisplayBacklight), (Reading{0, 50}));
}

TEST_F(DimmableDiscovery, the_backlight_class_is_taken_second) {
    makeBoard();
    removeFile(platformDisplay);
    makeFile(classDisplay, "255\n");
    makeFile(otherDisplay, "128\n");
    EXPECT_EQ(Inside::displayPath(), classDisplay);
    EXPECT_EQ(getIntensity(DisplayBacklight), (Reading{0, 100}));
}

TEST_F(DimmableDiscovery, a_candidate_that_holds_no_number_is_passed_over) {
    makeBoard();
    makeFile(platformDisplay, "none\n");
    makeFile(classDisplay, "255\n");
    EXPECT_EQ(Inside::displayPath(), classDisplay);
}

TEST_F(DimmableDiscovery, the_value_of_a_candidate_does_not_matter) {
    makeBoard();
    makeFile(platformDisplay, "-1\n");
    makeFile(classDisplay, "255\n");
    EXPECT_EQ(Inside::displayPath(), platformDisplay);
}

TEST_F(DimmableDiscovery, the_third_backlight_is_taken_without_a_test) {
    makeBoard();
    removeFile(platformDisplay);
    makeFile(otherDisplay, "no number\n");
    EXPECT_EQ(outputOfBuilding(), "");
    EXPECT_EQ(Inside::displayPath(), otherDisplay);
    EXPECT_EQ(device().setIntensity(50, DisplayBacklight), 0U);
    EXPECT_EQ(firstLine(otherDisplay), "128\n");
}

TEST_F(DimmableDiscovery, the_display_led_is_never_used) {
    makeBoard();
    removeFile(platformDisplay);
    makeFile(neverDisplay, "128\n");
    EXPECT_EQ(outputOfBuilding(), displayErrorLine);
    EXPECT_EQ(Inside::displayPath(), otherDisplay);
    EXPECT_EQ(readFile(neverDisplay), "128\n");
}

TEST_F(DimmableDiscovery, a_missing_display_gives_one_line_on_standard_output_and_no_report) {
    makeBoard();
    removeFile(platformDisplay);
    EXPECT_EQ(outputOfBuilding(), displayErrorLine);
    EXPECT_EQ(Inside::displayPath(), otherDisplay);
    EXPECT_FALSE(exists(otherDisplay));
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableDiscovery, a_complete_board_prints_and_reports_nothing) {
    makeBoard();
    EXPECT_EQ(outputOfBuilding(), "");
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableDiscovery, the_user_rgb_led_is_kept_when_it_reads) {
    makeBoard();
    makeFile(otherRgbFile, "1\n");
    EXPECT_EQ(outputOfBuilding(), "");
    EXPECT_EQ(Inside::rgbPath(), rgbFile);
    EXPECT_EQ(getColor(RGBLED), (Reading{0, 128}));
}

TEST_F(DimmableDiscovery, the_status_rgb_led_is_taken_and_named_when_the_user_one_is_missing) {
    makeBoard();
    removeFile(rgbFile);
    makeFile(otherRgbFile, "7\n");
    EXPECT_EQ(outputOfBuilding(), okLine);
    EXPECT_EQ(Inside::rgbPath(), otherRgbFile);
    EXPECT_EQ(getColor(RGBLED), (Reading{0, 7}));
}

TEST_F(DimmableDiscovery, without_any_rgb_led_the_status_path_is_kept_silently) {
    makeBoard();
    removeFile(rgbFile);
    EXPECT_EQ(outputOfBuilding(), "");
    EXPECT_EQ(Inside::rgbPath(), otherRgbFile);
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableDiscovery, a_status_rgb_led_that_does_not_read_is_opened_silently) {
    makeBoard();
    removeFile(rgbFile);
    makeFile(otherRgbFile, "none\n");
    EXPECT_EQ(outputOfBuilding(), "");
    EXPECT_EQ(device().setColor(1, RGBLED), 0U);
    EXPECT_EQ(firstLine(otherRgbFile), "1\n");
}

TEST_F(DimmableDiscovery, the_rgb_line_comes_before_the_display_line) {
    makeFile(otherRgbFile, "7\n");
    EXPECT_EQ(outputOfBuilding(), std::string(okLine) + displayErrorLine);
}

TEST_F(DimmableDiscovery, the_key_trigger_receives_exactly_the_four_bytes_none) {
    makeBoard();
    (void)device();
    EXPECT_EQ(readFile(keyTrigger), "none");
}

TEST_F(DimmableDiscovery, the_key_trigger_is_not_truncated) {
    makeBoard();
    makeFile(keyTrigger, "[timer] none\n");
    (void)device();
    EXPECT_EQ(readFile(keyTrigger), "noneer] none\n");
}

TEST_F(DimmableDiscovery, a_missing_key_trigger_is_not_made_and_does_no_harm) {
    makeBoard();
    removeFile(keyTrigger);
    EXPECT_EQ(outputOfBuilding(), "");
    EXPECT_FALSE(exists(keyTrigger));
    EXPECT_EQ(getIntensity(KeyBacklight), (Reading{0, 50}));
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableDiscovery, a_key_trigger_that_refuses_does_no_harm) {
    makeBoard();
    removeFile(keyTrigger);
    makeDeviceNode(keyTrigger, "full");
    EXPECT_EQ(outputOfBuilding(), "");
    EXPECT_EQ(getIntensity(KeyBacklight), (Reading{0, 50}));
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableDiscovery, a_maximum_of_255_is_no_colour) {
    makeBoard();
    EXPECT_FALSE(device().isColorSupported(KeyBacklight));
    EXPECT_FALSE(device().isColorSupported(EncoderBacklight));
}

TEST_F(DimmableDiscovery, a_maximum_of_256_is_colour) {
    makeBoard();
    makeFile(keyMaximum, "256\n");
    makeFile(encoderMaximum, "256\n");
    EXPECT_TRUE(device().isColorSupported(KeyBacklight));
    EXPECT_TRUE(device().isColorSupported(EncoderBacklight));
}

TEST_F(DimmableDiscovery, each_illumination_has_its_own_maximum) {
    makeBoard();
    makeFile(encoderMaximum, "16777215\n");
    EXPECT_FALSE(device().isColorSupported(KeyBacklight));
    EXPECT_TRUE(device().isColorSupported(EncoderBacklight));
}

TEST_F(DimmableDiscovery, a_negative_maximum_is_no_colour) {
    makeBoard();
    makeFile(keyMaximum, "-1\n");
    EXPECT_FALSE(device().isColorSupported(KeyBacklight));
}

TEST_F(DimmableDiscovery, a_maximum_that_cannot_be_read_is_no_colour) {
    makeBoard();
    removeFile(keyMaximum);
    makeFile(encoderMaximum, "much\n");
    EXPECT_FALSE(device().isColorSupported(KeyBacklight));
    EXPECT_FALSE(device().isColorSupported(EncoderBacklight));
}

TEST_F(DimmableDiscovery, a_missing_key_file_is_no_colour_even_with_a_maximum) {
    makeColorBoard();
    removeFile(keyFile);
    EXPECT_FALSE(device().isColorSupported(KeyBacklight));
    EXPECT_TRUE(device().isColorSupported(EncoderBacklight));
}

TEST_F(DimmableDiscovery, a_missing_encoder_file_is_no_colour_even_with_a_maximum) {
    makeColorBoard();
    removeFile(encoderFile);
    EXPECT_TRUE(device().isColorSupported(KeyBacklight));
    EXPECT_FALSE(device().isColorSupported(EncoderBacklight));
}

TEST_F(DimmableDiscovery, the_rgb_led_has_colour_even_when_it_is_missing) {
    EXPECT_EQ(outputOfBuilding(), displayErrorLine);
    EXPECT_TRUE(device().isColorSupported(RGBLED));
}

TEST_F(DimmableDiscovery, display_beeper_and_unknown_devices_have_no_colour) {
    makeColorBoard();
    for (const ZRDimmableDevice plain :
         {DisplayBacklight, Beeper, firstUnknownDevice, unknownDevice})
        EXPECT_FALSE(device().isColorSupported(plain));
}

TEST_F(DimmableDiscovery, one_missing_device_leaves_the_others_usable) {
    makeBoard();
    removeFile(platformDisplay);
    EXPECT_EQ(outputOfBuilding(), displayErrorLine);
    EXPECT_EQ(getIntensity(KeyBacklight), (Reading{0, 50}));
    EXPECT_EQ(getIntensity(EncoderBacklight), (Reading{0, 50}));
    EXPECT_EQ(getIntensity(Beeper), (Reading{0, 50}));
    EXPECT_EQ(getColor(RGBLED), (Reading{0, 128}));
}

TEST_F(DimmableDiscovery, only_the_display_prints_a_line_when_it_is_missing) {
    makeFile(platformDisplay, "128\n");
    EXPECT_EQ(outputOfBuilding(), "");
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableDiscovery, the_devices_are_never_looked_up_again) {
    EXPECT_EQ(outputOfBuilding(), displayErrorLine);
    makeColorBoard();
    EXPECT_EQ(outputOfBuilding(), "");
    EXPECT_EQ(getIntensity(DisplayBacklight).result, 1U);
    EXPECT_FALSE(device().isColorSupported(KeyBacklight));
}

TEST_F(DimmableDiscovery, opening_does_not_truncate) {
    makeBoard();
    (void)device();
    for (const char* const path : {platformDisplay, keyFile, encoderFile, rgbFile, beeperFile})
        EXPECT_EQ(readFile(path), "128\n");
}

TEST_F(DimmableDiscovery, the_streams_raise_on_fail_and_bad_only) {
    makeBoard();
    removeFile(beeperFile);
    for (const ZRDimmableDevice each :
         {DisplayBacklight, KeyBacklight, EncoderBacklight, RGBLED, Beeper})
        EXPECT_EQ(Inside::stream(each).exceptions(), std::ios::badbit | std::ios::failbit);
}

TEST_F(DimmableDiscovery, members_start_as_documented) {
    makeBoard();
    EXPECT_EQ(Inside::fullScales(), (std::vector<unsigned int>{255, 255, 255}));
    EXPECT_EQ(Inside::minimum(), 5U);
    EXPECT_EQ(Inside::lastKeyColor(), 0U);
    EXPECT_EQ(Inside::lastEncoderColor(), 0U);
}

TEST_F(DimmableDiscovery, the_own_eeprom_reader_knows_no_board_so_the_minimum_is_5) {
    makeBoard();
    EXPECT_EQ(getMinimum(), (Reading{0, 5}));
}

TEST_F(DimmableDiscovery, several_threads_get_the_same_object_built_once) {
    makeFile(otherRgbFile, "7\n");
    OutputCapture capture;
    std::vector<ZRDimmable*> objects(8, nullptr);
    std::vector<std::thread> threads;
    for (ZRDimmable*& object : objects)
        threads.emplace_back([&object] { object = ZRDimmable::getInstance(); });
    for (std::thread& thread : threads)
        thread.join();
    capture.release();
    EXPECT_EQ(capture.output(), std::string(okLine) + displayErrorLine);
    EXPECT_EQ(objects, std::vector<ZRDimmable*>(8, ZRDimmable::getInstance()));
}

/// The open descriptors of this process that are attributes.
std::vector<int> attributeDescriptors() {
    std::vector<int> descriptors;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        const std::string target = std::filesystem::read_symlink(entry.path(), gone).string();
        if (target.rfind("/sys/", 0) == 0)
            descriptors.push_back(std::stoi(entry.path().filename().string()));
    }
    return descriptors;
}

TEST_F(DimmableDiscovery, all_five_descriptors_close_on_exec) {
    makeBoard();
    (void)device();
    const std::vector<int> descriptors = attributeDescriptors();
    EXPECT_EQ(descriptors.size(), 5U);
    for (const int descriptor : descriptors)
        EXPECT_EQ(::fcntl(descriptor, F_GETFD), FD_CLOEXEC) << descriptor;
}

}  // namespace
}  // namespace ZR::test
