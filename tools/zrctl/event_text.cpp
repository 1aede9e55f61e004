#include "tools/zrctl/event_text.h"

#include <cstdint>
#include <cstdio>

#include "tools/zrctl/json.h"

namespace zrctl {
namespace {

constexpr std::uint32_t firstOutput = 16;
constexpr std::uint32_t lastOutput = 18;
constexpr std::uint32_t absent = 0xFFFFFFFF;

/// A channel whose events hold a reading.
struct MeasuredChannel {
    std::uint32_t code;
    const char* name;
    const char* unit;
};

constexpr MeasuredChannel measuredChannels[] = {
    {4, "power", "mV"},         {5, "temperature", "degC"}, {6, "light", "lux"},
    {256, "frequency", "Hz"},   {0x10000, "ai1", "counts"}, {0x10001, "ai2", "counts"},
    {0x10002, "ai3", "counts"}, {0x10003, "ai4", "counts"},
};

const MeasuredChannel* findMeasured(std::uint32_t code) {
    for (const MeasuredChannel& channel : measuredChannels) {
        if (channel.code == code)
            return &channel;
    }
    return nullptr;
}

/// The name of a channel that holds a state, or the code of one that nothing is known of.
std::string otherName(std::uint32_t code) {
    if (code < firstOutput)
        return "di" + std::to_string(code + 1);
    if (code <= lastOutput)
        return "do" + std::to_string(code - firstOutput + 1);
    char text[11];
    (void)std::snprintf(text, sizeof text, "0x%08x", static_cast<unsigned int>(code));
    return text;
}

/// Drivers send a negative reading as its two's complement.
long long reading(const ZR::ZREvent& event) {
    return static_cast<std::int32_t>(event.value2);
}

std::string stateText(const ZR::ZREvent& event) {
    if (event.value1 > lastOutput)
        return std::to_string(event.value2);
    if (event.value2 <= 1)
        return event.value2 == 1 ? "on" : "off";
    return event.value2 == absent ? "-" : std::to_string(event.value2);
}

void addState(JsonObject& json, const ZR::ZREvent& event) {
    const bool known = event.value1 <= lastOutput;
    if (known && event.value2 <= 1)
        json.addBool("value", event.value2 == 1);
    else if (known && event.value2 == absent)
        json.addNull("value");
    else
        json.addNumber("value", event.value2);
    json.addNull("unit");
}

}  // namespace

std::string eventLine(const ZR::ZREvent& event) {
    if (const MeasuredChannel* const channel = findMeasured(event.value1))
        return std::string(channel->name) + " " + std::to_string(reading(event)) + " " +
               channel->unit + "\n";
    return otherName(event.value1) + " " + stateText(event) + "\n";
}

std::string eventDocument(const ZR::ZREvent& event) {
    JsonObject json;
    if (const MeasuredChannel* const channel = findMeasured(event.value1)) {
        json.addText("channel", channel->name).addNumber("value", reading(event));
        json.addText("unit", channel->unit);
    } else {
        json.addText("channel", otherName(event.value1));
        addState(json, event);
    }
    json.addNumber("value1", event.value1).addNumber("value2", event.value2);
    return json.text() + '\n';
}

}  // namespace zrctl
