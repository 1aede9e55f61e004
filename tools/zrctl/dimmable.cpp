#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "common/zrapi_common/zr_result.h"
#include "tools/zrctl/command.h"
#include "tools/zrctl/dimmable_device.h"
#include "tools/zrctl/output.h"

namespace zrctl {

const char* const dimmableHelp = R"(Usage: zrctl dimmable ACTION [ARGUMENT...] [--json] [--verbose]

The display backlight, the illumination of keys and encoder, the RGB status LED
and the beeper.

Actions:
  list                    show all devices
  get DEVICE...           read intensities, or the colour of LEDs that have one
  set DEVICE PERCENT      set an intensity, 0 to 100; on a key or encoder LED with
                          colour the number is its colour, 0 to 16777215
  color DEVICE [COLOR]    read or set a colour: #RRGGBB, 0xRRGGBB, off, black,
                          red, green, blue, yellow, cyan, magenta or white
  min [PERCENT]           read or set the least intensity of the display

Devices: display, key, encoder, rgb, beeper

What the library does, and zrctl shows as it is:
  Every action but a wrong command line, reading too, first detaches the key LED
  from its kernel trigger. A key LED that was lit by its trigger goes dark.
  Reading the display, also by list and min, raises it to its minimum when it is
  darker, and shows the minimum.
  The beeper takes 0 to 100 as it is, but reads scaled from 0 to 255: a volume of
  50 reads as 20 %.
  On a key or encoder LED without colour, color takes the number of the colour as
  a percentage: '#000032' is 50 %.
  min holds in the process that sets it, so in zrctl only as long as zrctl runs:
  what remains is that the display was raised. It is 5 % at the start, on some
  boards 10 %. It is stored unchecked; above 100 the display takes no intensity
  at all, and setting it fails with result 24.
)";

namespace {

constexpr std::size_t deviceWidth = 9;
constexpr std::size_t stateWidth = 9;
// What is too much for a device is the library's to say.
constexpr long long highestNumber = std::numeric_limits<unsigned int>::max();

int runList(const Words& words, const CommonOptions& common) {
    if (!Arguments(words, {}).operands().empty())
        throw UsageError("dimmable list takes no arguments; 'get DEVICE' reads one device");
    std::vector<Report> reports;
    for (const DeviceName& device : allDevices()) {
        const DeviceReading reading = readDevice(device);
        const bool present = isPresent(device);
        Report report = deviceReport(device, reading);
        report.text = column(device.name, deviceWidth) +
                      column(present ? "present" : "missing", stateWidth) +
                      (reading.value ? valueText(device, *reading.value) : "-");
        report.tolerated = !present;
        reports.push_back(report);
    }
    return show(reports, "devices", common);
}

/// The report of a value that was read: "display 50 %".
Report readReport(const DeviceName& device, const DeviceReading& reading) {
    Report report = deviceReport(device, reading);
    if (reading.value)
        report.text = report.thing + " " + valueText(device, *reading.value);
    return report;
}

/// The report of a value that was set: "display set to 50 %: success (result 0)".
Report setReport(const DeviceName& device, unsigned int value, const Outcome& outcome) {
    if (!outcome.succeeded())
        return deviceReport(device, {std::nullopt, outcome});
    Report report = deviceReport(device, {value, outcome});
    report.text = report.thing + " set to " + valueText(device, value) + ": " +
                  describeResult(outcome.result);
    return report;
}

unsigned int parseIntensity(const std::string& text, const std::string& name,
                            const std::string& advice) {
    const auto number = wholeNumber(text, 0, highestNumber);
    if (!number)
        throw UsageError("no " + name + " " + quote(text) + "; " + advice);
    return static_cast<unsigned int>(*number);
}

int runGet(const Words& words, const CommonOptions& common) {
    const Arguments arguments(words, {});
    if (arguments.operands().empty())
        throw UsageError("dimmable get needs a device: display, key, encoder, rgb or beeper");
    std::vector<const DeviceName*> devices;
    for (const std::string& word : arguments.operands())
        devices.push_back(&parseDevice(word));
    std::vector<Report> reports;
    reports.reserve(devices.size());
    for (const DeviceName* const device : devices)
        reports.push_back(readReport(*device, readDevice(*device)));
    return show(reports, "devices", common);
}

int runSet(const Words& words, const CommonOptions& common) {
    const Arguments arguments(words, {});
    if (arguments.operands().size() != 2)
        throw UsageError("dimmable set needs a device and a number, as in 'set display 50'");
    const DeviceName& device = parseDevice(arguments.operands()[0]);
    const unsigned int intensity =
        parseIntensity(arguments.operands()[1], "intensity", adviseOnNumber(device));
    const unsigned int result =
        ZR::ZRDimmable::getInstance()->setIntensity(intensity, device.device);
    return show(setReport(device, intensity, outcomeOf(device, result, Request::Write)), common);
}

int readColor(const DeviceName& device, const CommonOptions& common) {
    unsigned int color = 0;
    const unsigned int result = ZR::ZRDimmable::getInstance()->getColor(&color, device.device);
    const Outcome outcome = outcomeOf(device, result, Request::ReadColor);
    return show(
        readReport(device, {outcome.succeeded() ? std::optional<unsigned int>(color) : std::nullopt,
                            outcome}),
        common);
}

int runColor(const Words& words, const CommonOptions& common) {
    const Arguments arguments(words, {});
    const Words& operands = arguments.operands();
    if (operands.empty() || operands.size() > 2)
        throw UsageError(
            "dimmable color needs a device and perhaps a colour, as in 'color rgb red'");
    const DeviceName& device = parseDevice(operands[0]);
    if (operands.size() == 1)
        return readColor(device, common);
    const unsigned int color = parseColor(operands[1]);
    const unsigned int result = ZR::ZRDimmable::getInstance()->setColor(color, device.device);
    return show(setReport(device, color, outcomeOf(device, result, Request::WriteColor)), common);
}

Outcome minimumOutcome(unsigned int result) {
    if (result == ZR::ResultValueOutOfRange)
        return {result,
                "the minimum was stored, but no display can be raised to it; give 0 to 100"};
    return outcomeOf(parseDevice("display"), result, Request::Read);
}

int runMin(const Words& words, const CommonOptions& common) {
    const Arguments arguments(words, {});
    const Words& operands = arguments.operands();
    if (operands.size() > 1)
        throw UsageError("dimmable min takes one number at most, as in 'min 10'");
    const bool set = !operands.empty();
    unsigned int minimum =
        set ? parseIntensity(operands[0], "minimum", "give a whole number of percent, 0 to 100")
            : 0;
    ZR::ZRDimmable& dimmable = *ZR::ZRDimmable::getInstance();
    Report report;
    report.thing = "display";
    report.outcome = minimumOutcome(set ? dimmable.setMinDisplayBacklightIntensity(minimum)
                                        : dimmable.getMinDisplayBacklightIntensity(&minimum));
    // The library gives the minimum also when the display cannot follow.
    if (!set)
        report.text = "display minimum " + std::to_string(minimum) + " %";
    else if (report.outcome.succeeded())
        report.text = "display minimum set to " + std::to_string(minimum) +
                      " %: " + describeResult(report.outcome.result);
    report.json.addText("device", "display").addBool("present", isPresent(parseDevice("display")));
    report.json.addNumber("minimum", minimum).addText("unit", "%");
    return show(report, common);
}

}  // namespace

int runDimmable(const Words& words, const CommonOptions& common) {
    return runAction(
        "dimmable",
        {{"list", runList}, {"get", runGet}, {"set", runSet}, {"color", runColor}, {"min", runMin}},
        words, common);
}

}  // namespace zrctl
