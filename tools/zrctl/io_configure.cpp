#include <unistd.h>

#include <limits>
#include <string>

#include "common/zrapi_common/zr_result.h"
#include "common/zrapi_utility/zr_file_access.h"
#include "tools/zrctl/io_channel.h"

namespace zrctl {
namespace {

constexpr char measureModeFile[] = "measure_mode";
constexpr char toggleLoadFile[] = "toggle_load";
constexpr char hysteresisFile[] = "hysteresis";
constexpr int modeWithLoad = 2;

struct Setting {
    int mode;
    int hysteresis;
};

/// Why an attribute does not hold what it was to get; empty when it does.
std::string adviseUnlessHolds(const std::string& path, int wanted) {
    if (!mayUse(path, W_OK))
        return adviseOnAttribute(path, W_OK);
    int held = 0;
    if (ZR::readIntegerFromFile(path, &held) != 0)
        return adviseOnAttribute(path, R_OK);
    if (held == wanted)
        return {};
    return "the driver behind " + path + " holds " + std::to_string(held) + " and not " +
           std::to_string(wanted) + "; give a value that it accepts";
}

/// The library tests none of its writes here, so what it says is checked at the driver.
std::string adviseUnlessDone(const Channel& channel, const Setting& setting) {
    const std::string folder = channel.attribute().substr(0, channel.attribute().rfind('/') + 1);
    const bool load = setting.mode == modeWithLoad;
    std::string advice = adviseUnlessHolds(folder + measureModeFile, load ? 1 : 0);
    if (advice.empty() && load && !mayUse(folder + toggleLoadFile, W_OK))
        advice = adviseOnAttribute(folder + toggleLoadFile, W_OK);
    if (advice.empty())
        advice = adviseUnlessHolds(folder + hysteresisFile, setting.hysteresis);
    return advice;
}

Outcome configure(Channel& channel, const Setting& setting) {
    int ignored = 0;
    // The library configures an input that is not there in silence.
    if (!channel.isPresent())
        return channel.outcome(channel.getValue(&ignored), R_OK);
    Outcome outcome;
    outcome.result =
        channel.configureInput(channel.name().number, setting.mode, setting.hysteresis);
    outcome.advice = adviseUnlessDone(channel, setting);
    if (outcome.result != ZR::ResultSuccess && outcome.advice.empty())
        outcome.advice = adviseOnAttribute(channel.attribute(), R_OK);
    return outcome;
}

std::string requiredValue(const Arguments& arguments, const std::string& option) {
    const auto text = arguments.value(option);
    if (!text)
        throw UsageError("io configure needs " + option + ", as in 'zrctl io configure ai1 " +
                         "--mode 0 --hysteresis 10'");
    return *text;
}

/// The driver knows which numbers it takes; the library hands it any that fits.
int parseHysteresis(const std::string& text) {
    const auto number =
        wholeNumber(text, std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
    if (!number)
        throw UsageError("no hysteresis " + quote(text) +
                         "; give a whole number in the driver's unit, counts, such as 10");
    return static_cast<int>(*number);
}

}  // namespace

int runIoConfigure(const Words& words, const CommonOptions& common) {
    const Arguments arguments(words, {"--mode", "--hysteresis"});
    if (arguments.operands().size() != 1)
        throw UsageError("io configure needs one analog input, ai1 to ai4");
    const ChannelName name = parseChannel(arguments.operands()[0]);
    if (name.kind->type != ZR::AnalogInput)
        throw UsageError(name.text() + " is no analog input; give ai1 to ai4");
    const std::string mode = requiredValue(arguments, "--mode");
    const Setting setting{static_cast<int>(parseNumber(mode, "mode", 0, modeWithLoad)),
                          parseHysteresis(requiredValue(arguments, "--hysteresis"))};
    Channel channel(name);
    Report report;
    report.thing = name.text();
    report.outcome = configure(channel, setting);
    if (report.outcome.succeeded())
        report.text = report.thing + " mode " + std::to_string(setting.mode) + ", hysteresis " +
                      std::to_string(setting.hysteresis) + " " + name.kind->unit + ": " +
                      describeResult(report.outcome.result);
    report.json.addText("channel", report.thing)
        .addBool("present", channel.isPresent())
        .addNumber("mode", setting.mode)
        .addNumber("hysteresis", setting.hysteresis)
        .addText("unit", name.kind->unit);
    return show(report, common);
}

}  // namespace zrctl
