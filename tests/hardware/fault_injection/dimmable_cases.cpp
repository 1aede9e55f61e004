#include <string>
#include <utility>

#include "hardware/dimmable/zr_dimmable.h"
#include "tests/hardware/fault_injection/fault_case.h"
#include "tests/support/private_root.h"

namespace ZR::test {
namespace {

constexpr char displayFile[] =
    "/sys/devices/platform/pwm-backlight.0/backlight/pwm-backlight.0/brightness";
constexpr char keyFile[] = "/sys/class/leds/bl:key/brightness";
constexpr char keyMaximum[] = "/sys/class/leds/bl:key/max_brightness";
constexpr char encoderFile[] = "/sys/class/leds/bl:enc/brightness";
constexpr char encoderMaximum[] = "/sys/class/leds/bl:enc/max_brightness";
constexpr char rgbFile[] = "/sys/class/leds/user:rgb/brightness";
constexpr char beeperFile[] = "/sys/bus/platform/devices/pwm-speaker.0/volume";

const std::string readReport =
    " | Reading from display backlight device file (std::ifstream::failure) ";
const std::string writeReport = " | Writing intensity to device file ";
const std::string colorReport = " | Reading from LED device file ";

void makeDevices(const std::string& maximum, const std::string& display) {
    makeFile(displayFile, display);
    for (const char* const path : {keyFile, encoderFile, rgbFile, beeperFile})
        makeFile(path, "128\n");
    makeFile(keyMaximum, maximum);
    makeFile(encoderMaximum, maximum);
}

void makePlain() {
    makeDevices("255\n", "128\n");
}

void makeColored() {
    makeDevices("16777215\n", "128\n");
}

void makeDark() {
    makeDevices("255\n", "3\n");
}

void build() {
    (void)ZRDimmable::getInstance();
}

/// Result and value; an untouched value shows as 4711.
template <typename Read>
std::string reading(Read read) {
    unsigned int value = 4711;
    const unsigned int result = read(&value);
    return std::to_string(result) + ' ' + std::to_string(value);
}

FaultCase setting(const std::string& name, ZRDimmableDevice device) {
    const std::string failure = "6" + writeReport + std::to_string(device);
    return {
        "setIntensity_of_the_" + name,
        makePlain,
        build,
        [device] { return std::to_string(ZRDimmable::getInstance()->setIntensity(50, device)); },
        nullptr,
        "0",
        {fails("lseek", failure), repeats("write", failure)}};
}

FaultCase getting(const std::string& name, ZRDimmableDevice device) {
    const std::string failure = "5 4711" + readReport + std::to_string(device);
    return {"getIntensity_of_the_" + name,
            makePlain,
            build,
            [device] {
                return reading([device](unsigned int* value) {
                    return ZRDimmable::getInstance()->getIntensity(value, device);
                });
            },
            nullptr,
            "0 50",
            {fails("lseek", failure), repeats("read", failure)}};
}

FaultCase gettingColor(const std::string& name, ZRDimmableDevice device) {
    const std::string report = colorReport + std::to_string(device);
    const std::string failure = "5 4711" + report + report;
    return {"getColor_of_the_" + name,
            makeColored,
            build,
            [device] {
                return reading([device](unsigned int* value) {
                    return ZRDimmable::getInstance()->getColor(value, device);
                });
            },
            nullptr,
            "0 128",
            {fails("lseek", failure), repeats("read", failure)}};
}

FaultCase settingColor(const std::string& name, ZRDimmableDevice device,
                       const std::string& report) {
    const std::string failure = "6 | " + report;
    return {"setColor_of_the_" + name,
            makeColored,
            build,
            [device] { return std::to_string(ZRDimmable::getInstance()->setColor(7, device)); },
            nullptr,
            "0",
            {fails("lseek", failure), repeats("write", failure)}};
}

FaultCase raisingByReading() {
    const std::string unread = "5 4711" + readReport + "0";
    // The raise shows in no result: the value is the one that was read.
    const std::string notRaised = "0 1" + writeReport + "0";
    return {"getIntensity_of_a_display_that_is_too_dark",
            makeDark,
            build,
            [] {
                return reading([](unsigned int* value) {
                    return ZRDimmable::getInstance()->getIntensity(value, DisplayBacklight);
                });
            },
            nullptr,
            "0 5",
            {fails("lseek", unread), repeats("read", unread), fails("lseek", notRaised),
             repeats("write", notRaised)}};
}

FaultCase raisingByMinimum() {
    const std::string unread = "1" + readReport + "0";
    // The raise failed once, and the write that follows it succeeded.
    const std::string raisedLater = "0" + writeReport + "0";
    return {
        "setMinDisplayBacklightIntensity_above_the_intensity",
        makePlain,
        build,
        [] {
            return std::to_string(ZRDimmable::getInstance()->setMinDisplayBacklightIntensity(60));
        },
        nullptr,
        "0",
        {fails("lseek", unread), repeats("read", unread), fails("lseek", raisedLater),
         repeats("write", raisedLater)}};
}

FaultCase readingMinimum() {
    const std::string unread = "1 5" + readReport + "0";
    const std::string raisedLater = "0 5" + writeReport + "0";
    return {"getMinDisplayBacklightIntensity_of_a_display_that_is_too_dark",
            makeDark,
            build,
            [] {
                return reading([](unsigned int* value) {
                    return ZRDimmable::getInstance()->getMinDisplayBacklightIntensity(value);
                });
            },
            nullptr,
            "0 5",
            {fails("lseek", unread), repeats("read", unread), fails("lseek", raisedLater),
             repeats("write", raisedLater)}};
}

}  // namespace

std::vector<FaultCase> dimmableCases() {
    return {setting("display", DisplayBacklight),
            setting("key", KeyBacklight),
            setting("encoder", EncoderBacklight),
            setting("beeper", Beeper),
            getting("display", DisplayBacklight),
            getting("key", KeyBacklight),
            getting("encoder", EncoderBacklight),
            getting("beeper", Beeper),
            settingColor("rgb_led", RGBLED, "WRITING LED device file"),
            settingColor("key", KeyBacklight, "Writing intensity to device file 1"),
            settingColor("encoder", EncoderBacklight, "Writing intensity to device file 2"),
            gettingColor("rgb_led", RGBLED),
            gettingColor("key", KeyBacklight),
            gettingColor("encoder", EncoderBacklight),
            raisingByReading(),
            raisingByMinimum(),
            readingMinimum()};
}

}  // namespace ZR::test
