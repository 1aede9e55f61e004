#include <string>
#include <vector>

#include "hardware/dimmable/zr_dimmable.h"
#include "tests/hardware/fault_injection/fault_case.h"
#include "tests/support/private_root.h"

// Building the object that dims. Every candidate holds a value of its own, so that what the built
// object reads tells which one it has taken.

namespace ZR::test {
namespace {

constexpr char platformDisplay[] =
    "/sys/devices/platform/pwm-backlight.0/backlight/pwm-backlight.0/brightness";
constexpr char classDisplay[] = "/sys/class/backlight/backlight/brightness";
constexpr char otherDisplay[] = "/sys/class/backlight/pwm-backlight.0/brightness";
constexpr char userRgb[] = "/sys/class/leds/user:rgb/brightness";
constexpr char statusRgb[] = "/sys/class/leds/sys:status:rgb/brightness";
constexpr char keyTrigger[] = "/sys/class/leds/bl:key/trigger";

const std::string displayLine = "Error opening display backlight device file!\n";
const std::string statusLine = "OK: /sys/class/leds/sys:status:rgb/brightness\n";

void makeEveryCandidate() {
    makeFile(platformDisplay, "255\n");
    makeFile(classDisplay, "204\n");
    makeFile(otherDisplay, "153\n");
    makeFile(userRgb, "1\n");
    makeFile(statusRgb, "2\n");
    makeFile(keyTrigger, "[timer]");
    for (const char* const path : {"/sys/class/leds/bl:key/", "/sys/class/leds/bl:enc/"}) {
        makeFile(std::string(path) + "brightness", "128\n");
        makeFile(std::string(path) + "max_brightness", "16777215\n");
    }
    makeFile("/sys/bus/platform/devices/pwm-speaker.0/volume", "128\n");
}

void makeLastCandidates() {
    makeEveryCandidate();
    for (const char* const path : {platformDisplay, classDisplay, userRgb})
        removeFile(path);
}

/// What the built object gives of each device, and what the key's trigger holds.
struct Built {
    std::string display = "0 100";
    std::string minimum = "0 5";
    std::string key = "0 128";  // raw, as of an illumination with colour
    std::string encoder = "0 128";
    std::string rgb = "0 1";
    std::string beeper = "0 50";
    std::string trigger = "noneer]";
};

const std::string notOpen = "1 4711";
const std::string percent = "0 50";  // 128 read as an illumination without colour

std::string text(const Built& built) {
    return "display " + built.display + ", minimum " + built.minimum + ", key " + built.key +
           ", encoder " + built.encoder + ", rgb " + built.rgb + ", beeper " + built.beeper +
           ", trigger " + built.trigger;
}

/// Result and value; an untouched value shows as 4711.
template <typename... Device>
std::string reading(unsigned int (ZRDimmable::*read)(unsigned int*, Device...), Device... device) {
    unsigned int value = 4711;
    const unsigned int result = (ZRDimmable::getInstance()->*read)(&value, device...);
    return std::to_string(result) + ' ' + std::to_string(value);
}

std::string observe() {
    Built built;
    built.display = reading(&ZRDimmable::getIntensity, DisplayBacklight);
    built.minimum = reading(&ZRDimmable::getMinDisplayBacklightIntensity);
    built.key = reading(&ZRDimmable::getIntensity, KeyBacklight);
    built.encoder = reading(&ZRDimmable::getIntensity, EncoderBacklight);
    built.rgb = reading(&ZRDimmable::getColor, RGBLED);
    built.beeper = reading(&ZRDimmable::getIntensity, Beeper);
    built.trigger = readFile(keyTrigger);
    return text(built);
}

std::string build() {
    return ZRDimmable::getInstance() == nullptr ? "nothing" : "built";
}

/// What @p call leads to when it fails: for good, since the devices are never looked up again.
CallRule leads(const std::string& call, const Built& built, const std::string& printed = {}) {
    CallRule rule =
        repeats(call, "built" + (printed.empty() ? "" : " | " + printed) + " | " + text(built));
    rule.afterwards = "built | " + text(built);
    return rule;
}

/// The same for each call that reading a number from a file takes.
void addNumber(std::vector<CallRule>& calls, const Built& built, const std::string& printed = {}) {
    calls.push_back(leads("openat", built, printed));
    calls.push_back(leads("read", built, printed));
    calls.push_back(hides("close", "the number is complete before the file is closed"));
}

/// The calls from the trigger on, on a board that otherwise leads to @p good.
void addOpening(std::vector<CallRule>& calls, const Built& good, const std::string& printed) {
    const auto changed = [&good](std::string Built::*member, const std::string& value) {
        Built built = good;
        built.*member = value;
        return built;
    };
    const Built attached = changed(&Built::trigger, "[timer]");
    calls.push_back(leads("openat", attached, printed));
    calls.push_back(leads("write", attached, printed));
    const Built torn = changed(&Built::trigger, "ntimer]");
    // Kept: no driver takes a part of a word, and failures of the trigger are ignored.
    calls.back().shortened =
        "built" + (printed.empty() ? "" : " | " + printed) + " | " + text(torn);
    calls.back().afterwardsShortened = "built | " + text(torn);
    calls.push_back(hides("close", "the trigger has its word before the file is closed"));
    // A display that is not open answers 1 also for its minimum, which stays what it was.
    Built dark = changed(&Built::display, notOpen);
    dark.minimum = "1 5";
    calls.push_back(leads("openat", dark, printed + displayLine));
    calls.push_back(leads("openat", changed(&Built::key, notOpen), printed));
    addNumber(calls, changed(&Built::key, percent), printed);
    calls.push_back(leads("openat", changed(&Built::rgb, notOpen), printed));
    calls.push_back(leads("openat", changed(&Built::beeper, notOpen), printed));
    calls.push_back(leads("openat", changed(&Built::encoder, notOpen), printed));
    addNumber(calls, changed(&Built::encoder, percent), printed);
}

FaultCase buildingWithEveryCandidate() {
    Built second;
    second.display = "0 80";
    Built other;
    other.rgb = "0 2";
    std::vector<CallRule> calls;
    addNumber(calls, second);
    addNumber(calls, other, statusLine);
    addOpening(calls, {}, {});
    return {"building_with_every_candidate",
            makeEveryCandidate,
            nullptr,
            build,
            observe,
            "built | " + text({}),
            calls};
}

FaultCase buildingWithTheLastCandidates() {
    Built good;
    good.display = "0 60";
    good.rgb = "0 2";
    const std::string missing = "what is missing cannot be read in any case";
    std::vector<CallRule> calls;
    for (int i = 0; i < 3; ++i)
        calls.push_back(hides("openat", missing));
    // The last LED is taken without its line, and opened all the same.
    addNumber(calls, good);
    CallRule print = leads("write", good);
    print.interrupted = print.failed;
    print.reason = "a line that is lost changes nothing else";
    calls.push_back(print);
    addOpening(calls, good, statusLine);
    FaultCase each{"building_with_the_last_candidates",
                   makeLastCandidates,
                   nullptr,
                   build,
                   observe,
                   "built | " + statusLine + " | " + text(good),
                   calls};
    each.nextOutcome = "built | " + text(good);
    return each;
}

}  // namespace

std::vector<FaultCase> dimmableBuildingCases() {
    return {buildingWithEveryCandidate(), buildingWithTheLastCandidates()};
}

}  // namespace ZR::test
