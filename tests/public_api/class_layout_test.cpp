// Sizes, member order and values that programs built against one release rely on in the next.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

#include "common/zrapi_common/zr_eeprom.h"
#include "common/zrapi_common/zr_result.h"
#include "common/zrapi_utility/zr_files_and_folders.h"
#include "hardware/dimmable/zr_dimmable.h"
#include "hardware/input_output/zr_input_output.h"
#include "tests/public_api/member_offset.h"

namespace {

using ZR::AttributeStream;
using ZR::ZRDimmable;
using ZR::ZRInputOutput;

/// What ZRInputOutput is to look like to the compiler.
struct InputOutputReference {
    virtual ~InputOutputReference() = default;
    int lastValue;
    std::uint32_t type;
    std::uint16_t channel;
    std::string path;
    int fileDescriptor;
    int hysteresis;
    int reserved1;
    int reserved2;
    int measureMode;
};

struct InputOutputMembers : ZRInputOutput {
    static constexpr auto lastValueMember = &InputOutputMembers::lastValue;
    static constexpr auto typeMember = &InputOutputMembers::type;
    static constexpr auto channelMember = &InputOutputMembers::channel;
    static constexpr auto pathMember = &InputOutputMembers::path;
    static constexpr auto fileDescriptorMember = &InputOutputMembers::fileDescriptor;
    static constexpr auto hysteresisMember = &InputOutputMembers::hysteresis;
    static constexpr auto reserved1Member = &InputOutputMembers::reserved1;
    static constexpr auto reserved2Member = &InputOutputMembers::reserved2;
    static constexpr auto measureModeMember = &InputOutputMembers::measureMode;
    static constexpr auto ignitionInputPathMember = &InputOutputMembers::ignitionInputPath;
    static constexpr auto debugSectionMember = &InputOutputMembers::debugSection;
};

/// What ZRDimmable is to look like to the compiler.
struct DimmableReference {
    virtual ~DimmableReference() = default;
    std::uint32_t maxDisplayBrightness;
    std::uint32_t maxKeyBrightness;
    std::uint32_t maxEncoderBrightness;
    std::uint32_t minDisplayBacklightIntensity;
    std::string displayBacklightPath;
    std::string keyBacklightPath;
    std::string encoderBacklightPath;
    std::string beeperVolumePath;
    std::string rgbLedPath;
    AttributeStream displayBacklightFile;
    AttributeStream keyBacklightFile;
    AttributeStream encoderBacklightFile;
    AttributeStream rgbLedFile;
    AttributeStream beeperVolumeFile;
    bool keyColorSupported;
    bool encoderColorSupported;
    std::uint32_t keyColor;
    std::uint32_t encoderColor;
};

struct DimmableMembers : ZRDimmable {
    static constexpr auto maxDisplay = &DimmableMembers::maxDisplayBrightness;
    static constexpr auto maxKey = &DimmableMembers::maxKeyBrightness;
    static constexpr auto maxEncoder = &DimmableMembers::maxEncoderBrightness;
    static constexpr auto minimum = &DimmableMembers::minDisplayBacklightIntensity;
    static constexpr auto displayPath = &DimmableMembers::displayBacklightPath;
    static constexpr auto keyPath = &DimmableMembers::keyBacklightPath;
    static constexpr auto encoderPath = &DimmableMembers::encoderBacklightPath;
    static constexpr auto beeperPath = &DimmableMembers::beeperVolumePath;
    static constexpr auto rgbPath = &DimmableMembers::rgbLedPath;
    static constexpr auto displayFile = &DimmableMembers::displayBacklightFile;
    static constexpr auto keyFile = &DimmableMembers::keyBacklightFile;
    static constexpr auto encoderFile = &DimmableMembers::encoderBacklightFile;
    static constexpr auto rgbFile = &DimmableMembers::rgbLedFile;
    static constexpr auto beeperFile = &DimmableMembers::beeperVolumeFile;
    static constexpr auto keyHasColor = &DimmableMembers::keyColorSupported;
    static constexpr auto encoderHasColor = &DimmableMembers::encoderColorSupported;
    static constexpr auto keyColorMember = &DimmableMembers::keyColor;
    static constexpr auto encoderColorMember = &DimmableMembers::encoderColor;
};

using InputOutput = InputOutputReference;
using Dimmable = DimmableReference;

}  // namespace

TEST(ClassLayout_pure, members_of_input_output_stand_in_their_order) {
    using Members = InputOutputMembers;
    EXPECT_EQ(offset(Members::lastValueMember), offset(&InputOutput::lastValue));
    EXPECT_EQ(offset(Members::typeMember), offset(&InputOutput::type));
    EXPECT_EQ(offset(Members::channelMember), offset(&InputOutput::channel));
    EXPECT_EQ(offset(Members::pathMember), offset(&InputOutput::path));
    EXPECT_EQ(offset(Members::fileDescriptorMember), offset(&InputOutput::fileDescriptor));
    EXPECT_EQ(offset(Members::hysteresisMember), offset(&InputOutput::hysteresis));
    EXPECT_EQ(offset(Members::reserved1Member), offset(&InputOutput::reserved1));
    EXPECT_EQ(offset(Members::reserved2Member), offset(&InputOutput::reserved2));
    EXPECT_EQ(offset(Members::measureModeMember), offset(&InputOutput::measureMode));
}

TEST(ClassLayout_pure, input_output_holds_nothing_besides_its_members) {
    EXPECT_EQ(sizeof(ZRInputOutput), sizeof(InputOutput));
    EXPECT_EQ(alignof(ZRInputOutput), alignof(InputOutput));
}

TEST(ClassLayout_pure, members_of_input_output_stand_where_64_bit_programs_expect_them) {
    if (sizeof(void*) != 8)
        GTEST_SKIP() << "not a 64 bit machine";
    using Members = InputOutputMembers;
    EXPECT_EQ(offset(Members::lastValueMember), 8);
    EXPECT_EQ(offset(Members::typeMember), 12);
    EXPECT_EQ(offset(Members::channelMember), 16);
    EXPECT_EQ(offset(Members::pathMember), 24);
    EXPECT_EQ(offset(Members::fileDescriptorMember), 56);
    EXPECT_EQ(offset(Members::hysteresisMember), 60);
    EXPECT_EQ(offset(Members::reserved1Member), 64);
    EXPECT_EQ(offset(Members::reserved2Member), 68);
    EXPECT_EQ(offset(Members::measureModeMember), 72);
    EXPECT_EQ(sizeof(ZRInputOutput), 80U);
}

TEST(ClassLayout_pure, members_of_input_output_have_their_types) {
    using Members = InputOutputMembers;
    EXPECT_TRUE((std::is_same_v<decltype(Members::lastValueMember), int ZRInputOutput::*const>));
    EXPECT_TRUE(
        (std::is_same_v<decltype(Members::typeMember), ZR::zrIOType ZRInputOutput::*const>));
    EXPECT_TRUE(
        (std::is_same_v<decltype(Members::channelMember), std::uint16_t ZRInputOutput::*const>));
    EXPECT_TRUE((std::is_same_v<decltype(Members::pathMember), std::string ZRInputOutput::*const>));
    EXPECT_TRUE((std::is_same_v<decltype(Members::ignitionInputPathMember), std::string* const>));
    EXPECT_TRUE((std::is_same_v<decltype(Members::debugSectionMember), unsigned int* const>));
}

TEST(ClassLayout_pure, members_of_dimmable_stand_in_their_order) {
    using Members = DimmableMembers;
    EXPECT_EQ(offset(Members::maxDisplay), offset(&Dimmable::maxDisplayBrightness));
    EXPECT_EQ(offset(Members::maxKey), offset(&Dimmable::maxKeyBrightness));
    EXPECT_EQ(offset(Members::maxEncoder), offset(&Dimmable::maxEncoderBrightness));
    EXPECT_EQ(offset(Members::minimum), offset(&Dimmable::minDisplayBacklightIntensity));
    EXPECT_EQ(offset(Members::displayPath), offset(&Dimmable::displayBacklightPath));
    EXPECT_EQ(offset(Members::keyPath), offset(&Dimmable::keyBacklightPath));
    EXPECT_EQ(offset(Members::encoderPath), offset(&Dimmable::encoderBacklightPath));
    EXPECT_EQ(offset(Members::beeperPath), offset(&Dimmable::beeperVolumePath));
    EXPECT_EQ(offset(Members::rgbPath), offset(&Dimmable::rgbLedPath));
    EXPECT_EQ(offset(Members::displayFile), offset(&Dimmable::displayBacklightFile));
    EXPECT_EQ(offset(Members::keyFile), offset(&Dimmable::keyBacklightFile));
    EXPECT_EQ(offset(Members::encoderFile), offset(&Dimmable::encoderBacklightFile));
    EXPECT_EQ(offset(Members::rgbFile), offset(&Dimmable::rgbLedFile));
    EXPECT_EQ(offset(Members::beeperFile), offset(&Dimmable::beeperVolumeFile));
    EXPECT_EQ(offset(Members::keyHasColor), offset(&Dimmable::keyColorSupported));
    EXPECT_EQ(offset(Members::encoderHasColor), offset(&Dimmable::encoderColorSupported));
    EXPECT_EQ(offset(Members::keyColorMember), offset(&Dimmable::keyColor));
    EXPECT_EQ(offset(Members::encoderColorMember), offset(&Dimmable::encoderColor));
}

TEST(ClassLayout_pure, dimmable_holds_nothing_besides_its_members) {
    EXPECT_EQ(sizeof(ZRDimmable), sizeof(Dimmable));
    EXPECT_EQ(alignof(ZRDimmable), alignof(Dimmable));
}

TEST(ClassLayout_pure, dimmable_cannot_be_made_or_copied_by_an_application) {
    EXPECT_FALSE(std::is_default_constructible_v<ZRDimmable>);
    EXPECT_FALSE(std::is_copy_constructible_v<ZRDimmable>);
    EXPECT_FALSE(std::is_copy_assignable_v<ZRDimmable>);
    EXPECT_TRUE(std::has_virtual_destructor_v<ZRDimmable>);
}

TEST(ClassLayout_pure, an_input_output_has_one_owner_of_its_descriptor) {
    EXPECT_FALSE(std::is_copy_constructible_v<ZRInputOutput>);
    EXPECT_FALSE(std::is_copy_assignable_v<ZRInputOutput>);
    EXPECT_TRUE(std::has_virtual_destructor_v<ZRInputOutput>);
}

TEST(ClassLayout_pure, channel_types_have_their_values) {
    EXPECT_EQ(ZR::DigitalInput, 0U);
    EXPECT_EQ(ZR::DigitalOutput, 1U);
    EXPECT_EQ(ZR::AnalogInput, 2U);
    EXPECT_EQ(ZR::AnalogOutput, 3U);
    EXPECT_EQ(ZR::PowerSensor, 4U);
    EXPECT_EQ(ZR::LightSensor, 5U);
    EXPECT_EQ(ZR::TemperatureSensor, 6U);
    EXPECT_EQ(ZR::RadarSensor, 7U);
    EXPECT_EQ(ZR::FrequencyInput, 8U);
    EXPECT_EQ(ZR::IgnitionInput, 9U);
    EXPECT_EQ(ZR::InvalidType, 10U);
    EXPECT_EQ(sizeof(ZR::zrIOType), 4U);
}

TEST(ClassLayout_pure, dimmable_devices_have_their_values) {
    EXPECT_EQ(ZR::DisplayBacklight, 0U);
    EXPECT_EQ(ZR::KeyBacklight, 1U);
    EXPECT_EQ(ZR::EncoderBacklight, 2U);
    EXPECT_EQ(ZR::RGBLED, 3U);
    EXPECT_EQ(ZR::Beeper, 4U);
    EXPECT_EQ(sizeof(ZR::ZRDimmableDevice), 4U);
}

TEST(ClassLayout_pure, the_eeprom_record_has_36_bytes_and_its_command_is_2) {
    EXPECT_EQ(sizeof(ZR::ZREEPROMMessageData), 36U);
    EXPECT_EQ(ZR::EepromReadDisplayData, 2U);
}

TEST(ClassLayout_pure, the_filter_for_folders_is_2) {
    EXPECT_EQ(static_cast<int>(ZR::FilterFolders), 2);
}

TEST(ClassLayout_pure, result_codes_have_their_values) {
    EXPECT_EQ(ZR::ResultSuccess, 0U);
    EXPECT_EQ(ZR::ResultFailure, 1U);
    EXPECT_EQ(ZR::ResultOpenFailed, 2U);
    EXPECT_EQ(ZR::ResultWrongType, 3U);
    EXPECT_EQ(ZR::ResultSocketFailed, 4U);
    EXPECT_EQ(ZR::ResultReadFailed, 5U);
    EXPECT_EQ(ZR::ResultWriteFailed, 6U);
    EXPECT_EQ(ZR::ResultSendFailed, 7U);
    EXPECT_EQ(ZR::ResultInvalidState, 10U);
    EXPECT_EQ(ZR::ResultNotSupported, 11U);
    EXPECT_EQ(ZR::ResultPortOutOfRange, 20U);
    EXPECT_EQ(ZR::ResultValueOutOfRange, 24U);
    EXPECT_EQ(ZR::ResultAlreadyPresent, 25U);
}
