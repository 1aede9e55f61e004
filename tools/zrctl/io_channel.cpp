#include "tools/zrctl/io_channel.h"

#include <unistd.h>

#include <algorithm>

#include "common/zrapi_common/zr_result.h"

namespace zrctl {
namespace {

constexpr ChannelKind kinds[] = {
    {"di", ZR::DigitalInput, 4, nullptr},       {"do", ZR::DigitalOutput, 3, nullptr},
    {"ai", ZR::AnalogInput, 4, "counts"},       {"power", ZR::PowerSensor, 0, "mV"},
    {"light", ZR::LightSensor, 0, "lux"},       {"temperature", ZR::TemperatureSensor, 0, "degC"},
    {"frequency", ZR::FrequencyInput, 0, "Hz"}, {"ignition", ZR::IgnitionInput, 0, nullptr},
};

/// The library takes the second when it cannot open the first, for whatever reason.
constexpr char supplyValue[] = "/sys/class/analog/supply_vcc/value";
constexpr char batteryValue[] = "/sys/class/analog/board_12v_bat/value";

/// True for the name of a numbered kind with digits behind it.
bool isNumberedName(const ChannelKind& kind, const std::string& text) {
    const std::string name = kind.name;
    return kind.channels > 0 && text.size() > name.size() &&
           text.compare(0, name.size(), name) == 0 &&
           text.find_first_not_of("0123456789", name.size()) == std::string::npos;
}

}  // namespace

std::string ChannelName::text() const {
    return number == 0 ? kind->name : kind->name + std::to_string(number);
}

std::vector<ChannelName> allChannels() {
    std::vector<ChannelName> channels;
    for (const ChannelKind& kind : kinds) {
        if (kind.channels == 0)
            channels.push_back({&kind, 0});
        for (unsigned short number = 1; number <= kind.channels; ++number)
            channels.push_back({&kind, number});
    }
    return channels;
}

ChannelName parseChannel(const std::string& text) {
    for (const ChannelName& channel : allChannels()) {
        if (channel.text() == text)
            return channel;
    }
    for (const ChannelKind& kind : kinds) {
        if (isNumberedName(kind, text))
            throw UsageError("no channel " + quote(text) + "; give " + kind.name + "1 to " +
                             kind.name + std::to_string(kind.channels));
    }
    throw UsageError("no channel " + quote(text) + "; 'zrctl io list' shows them all");
}

std::vector<std::string> Channel::candidates() const {
    if (fileDescriptor < 0 && name_.kind->type == ZR::PowerSensor)
        return {supplyValue, batteryValue};
    return {path};
}

bool Channel::isPresent() const {
    const auto attributes = candidates();
    return !path.empty() && std::any_of(attributes.begin(), attributes.end(), attributeExists);
}

Outcome Channel::outcome(unsigned int result, int access) const {
    const bool refusedAccess = result == ZR::ResultReadFailed || result == ZR::ResultWriteFailed;
    // The object could not even be bound: that is the library's first answer about it.
    if (refusedAccess && fileDescriptor < 0)
        result = ZR::ResultOpenFailed;
    return {result, result == ZR::ResultSuccess ? "" : advise(result, access)};
}

std::string Channel::advise(unsigned int result, int access) const {
    if (result == ZR::ResultNotSupported)
        return "only do1 to do3 can be set";
    if (result == ZR::ResultInvalidState)
        return "the driver gave neither 0 nor 1, which reads as on; check its wiring and driver";
    if (path.empty())
        return "no regulator is named ignition-irq; check the device tree of the board";
    return adviseOnFiles(access);
}

std::string Channel::adviseOnFiles(int access) const {
    const auto attributes = candidates();
    const auto existing = std::find_if(attributes.begin(), attributes.end(), attributeExists);
    if (existing == attributes.end())
        return adviseOnMissing(attributes);
    return adviseOnAttribute(*existing, access);
}

Reading read(Channel& channel) {
    Reading reading;
    unsigned int result = ZR::ResultSuccess;
    int value = 0;
    if (channel.name().kind->unit == nullptr) {
        bool state = false;
        result = channel.getState(&state);
        value = state ? 1 : 0;
    } else {
        result = channel.getValue(&value);
    }
    // An impossible state is a failure that comes with a state.
    if (result == ZR::ResultSuccess || result == ZR::ResultInvalidState)
        reading.value = value;
    reading.outcome = channel.outcome(result, R_OK);
    return reading;
}

std::string valueText(const ChannelKind& kind, int value) {
    if (kind.unit == nullptr)
        return value != 0 ? "on" : "off";
    return std::to_string(value) + " " + kind.unit;
}

JsonObject channelJson(const Channel& channel, const std::optional<int>& value) {
    const ChannelKind& kind = *channel.name().kind;
    JsonObject json;
    json.addText("channel", channel.name().text()).addBool("present", channel.isPresent());
    if (!value)
        json.addNull("value");
    else if (kind.unit == nullptr)
        json.addBool("value", *value != 0);
    else
        json.addNumber("value", *value);
    return kind.unit == nullptr ? json.addNull("unit") : json.addText("unit", kind.unit);
}

Report readingReport(const Channel& channel, const Reading& reading) {
    Report report;
    report.thing = channel.name().text();
    if (reading.value)
        report.text = report.thing + " " + valueText(*channel.name().kind, *reading.value);
    report.json = channelJson(channel, reading.value);
    report.outcome = reading.outcome;
    return report;
}

}  // namespace zrctl
