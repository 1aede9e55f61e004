#include "tools/zrctl/dimmable_device.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>

#include "common/zrapi_common/zr_result.h"

namespace zrctl {
namespace {

constexpr std::size_t colorDigits = 6;

struct NamedColor {
    const char* name;
    unsigned int color;
};

constexpr NamedColor namedColors[] = {
    {"off", 0x000000},   {"black", 0x000000},   {"red", 0xFF0000},
    {"green", 0x00FF00}, {"blue", 0x0000FF},    {"yellow", 0xFFFF00},
    {"cyan", 0x00FFFF},  {"magenta", 0xFF00FF}, {"white", 0xFFFFFF},
};

bool hasColor(const DeviceName& device) {
    return ZR::ZRDimmable::getInstance()->isColorSupported(device.device);
}

/// Why the device's file is of no use; the first that exists is the one to talk about.
std::string adviseOnFile(const DeviceName& device) {
    const auto existing =
        std::find_if(device.attributes.begin(), device.attributes.end(), attributeExists);
    return adviseOnAttribute(
        existing == device.attributes.end() ? device.attributes.front() : *existing, R_OK | W_OK);
}

std::string adviseOnRange(const DeviceName& device, Request request) {
    if (hasColor(device))
        return "this LED takes a colour; give 0 to 16777215, or a colour by 'zrctl dimmable color'";
    if (device.device == ZR::DisplayBacklight)
        return "give percent from the minimum, which 'zrctl dimmable min' shows, to 100";
    if (request == Request::WriteColor)
        return std::string("this LED has no colour; use 'zrctl dimmable set ") + device.name +
               " PERCENT'";
    return "give 0 to 100 percent";
}

std::string advise(const DeviceName& device, unsigned int result, Request request) {
    const bool colorRequest = request == Request::ReadColor || request == Request::WriteColor;
    const std::string name = device.name;
    if (result == ZR::ResultValueOutOfRange)
        return adviseOnRange(device, request);
    if (device.device == ZR::RGBLED && !colorRequest)
        return "this LED has no intensity; use 'zrctl dimmable color rgb COLOR'";
    const bool neverColored = device.device == ZR::DisplayBacklight || device.device == ZR::Beeper;
    if (result == ZR::ResultNotSupported || (neverColored && colorRequest))
        return "it has no colour; use 'zrctl dimmable get " + name + "' or 'set " + name +
               " PERCENT'";
    return adviseOnFile(device);
}

}  // namespace

const std::vector<DeviceName>& allDevices() {
    static const std::vector<DeviceName> devices{
        {"display",
         ZR::DisplayBacklight,
         {"/sys/devices/platform/pwm-backlight.0/backlight/pwm-backlight.0/brightness",
          "/sys/class/backlight/backlight/brightness",
          "/sys/class/backlight/pwm-backlight.0/brightness"}},
        {"key", ZR::KeyBacklight, {"/sys/class/leds/bl:key/brightness"}},
        {"encoder", ZR::EncoderBacklight, {"/sys/class/leds/bl:enc/brightness"}},
        {"rgb",
         ZR::RGBLED,
         {"/sys/class/leds/user:rgb/brightness", "/sys/class/leds/sys:status:rgb/brightness"}},
        {"beeper", ZR::Beeper, {"/sys/bus/platform/devices/pwm-speaker.0/volume"}},
    };
    return devices;
}

const DeviceName& parseDevice(const std::string& text) {
    for (const DeviceName& device : allDevices()) {
        if (text == device.name)
            return device;
    }
    throw UsageError("no device " + quote(text) + "; give display, key, encoder, rgb or beeper");
}

std::string adviseOnNumber(const DeviceName& device) {
    switch (device.device) {
        case ZR::DisplayBacklight:
            return "give a whole number of percent, from the minimum, which 'zrctl dimmable min' "
                   "shows, to 100";
        case ZR::KeyBacklight:
        case ZR::EncoderBacklight:
            return "give a whole number of percent, 0 to 100, or of an LED with colour its colour, "
                   "0 to 16777215";
        case ZR::RGBLED:
            return "this LED has none, use 'zrctl dimmable color rgb COLOR'";
        default:
            return "give a whole number of percent, 0 to 100";
    }
}

unsigned int parseColor(const std::string& text) {
    for (const NamedColor& named : namedColors) {
        if (text == named.name)
            return named.color;
    }
    const std::size_t start = text.compare(0, 1, "#") == 0    ? 1
                              : text.compare(0, 2, "0x") == 0 ? 2
                                                              : 0;
    unsigned int color = 0;
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data() + start, end, color, 16);
    if (start == 0 || text.size() != start + colorDigits || parsed.ec != std::errc() ||
        parsed.ptr != end)
        throw UsageError("no colour " + quote(text) +
                         "; give #RRGGBB, 0xRRGGBB or a name that 'zrctl dimmable --help' lists");
    return color;
}

std::string colorText(unsigned int color) {
    char text[sizeof "#ffffffff"];
    (void)std::snprintf(text, sizeof text, "#%06x", color);
    return text;
}

bool isPresent(const DeviceName& device) {
    return std::any_of(device.attributes.begin(), device.attributes.end(), attributeExists);
}

std::string valueText(const DeviceName& device, unsigned int value) {
    // A driver below 0 shows in the percent that the library computes from it.
    return hasColor(device) ? colorText(value) : std::to_string(static_cast<int>(value)) + " %";
}

Outcome outcomeOf(const DeviceName& device, unsigned int result, Request request) {
    return {result, result == ZR::ResultSuccess ? "" : advise(device, result, request)};
}

Report deviceReport(const DeviceName& device, const DeviceReading& reading) {
    const bool color = hasColor(device);
    Report report;
    report.thing = device.name;
    report.outcome = reading.outcome;
    report.json.addText("device", device.name).addBool("present", isPresent(device));
    if (!reading.value)
        report.json.addNull("value");
    else if (color)
        report.json.addNumber("value", *reading.value);
    else
        report.json.addNumber("value", static_cast<int>(*reading.value));
    report.json.addText("unit", color ? "rgb" : "%");
    if (reading.value && color)
        report.json.addText("color", colorText(*reading.value));
    else
        report.json.addNull("color");
    return report;
}

DeviceReading readDevice(const DeviceName& device) {
    ZR::ZRDimmable& dimmable = *ZR::ZRDimmable::getInstance();
    unsigned int value = 0;
    const bool rgb = device.device == ZR::RGBLED;
    const unsigned int result = rgb ? dimmable.getColor(&value, device.device)
                                    : dimmable.getIntensity(&value, device.device);
    return {result == ZR::ResultSuccess ? std::optional<unsigned int>(value) : std::nullopt,
            outcomeOf(device, result, rgb ? Request::ReadColor : Request::Read)};
}

}  // namespace zrctl
