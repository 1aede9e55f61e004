// Reads the digital inputs, the analog inputs and the sensors: read_inputs

#include <iostream>
#include <string>

#include <common/zrapi_common/zr_result.h>
#include <hardware/input_output/zr_input_output.h>

namespace {

constexpr unsigned short numberOfInputs = 4;

/// Writes one line about a reading; returns whether there was one.
bool show(const std::string& name, unsigned int result, const std::string& value) {
    std::cout << name << ": " << (result == ZR::ResultSuccess ? value : ZR::resultText(result))
              << '\n';
    return result == ZR::ResultSuccess;
}

bool showState(const std::string& name, ZR::zrIOType type, unsigned short channel) {
    ZR::ZRInputOutput input(type, channel);
    bool state = false;
    const unsigned int result = input.getState(&state);
    return show(name, result, state ? "on" : "off");
}

bool showValue(const std::string& name, ZR::zrIOType type, unsigned short channel) {
    ZR::ZRInputOutput input(type, channel);
    int value = 0;
    const unsigned int result = input.getValue(&value);
    return show(name, result, std::to_string(value));
}

}  // namespace

int main() {
    bool complete = true;
    // Channels are counted from 1. The sensors have one channel each, whose number is ignored.
    for (unsigned short channel = 1; channel <= numberOfInputs; ++channel) {
        const std::string number = std::to_string(channel);
        complete = showState("digital input " + number, ZR::DigitalInput, channel) && complete;
        complete = showValue("analog input " + number, ZR::AnalogInput, channel) && complete;
    }
    complete = showValue("supply voltage", ZR::PowerSensor, 1) && complete;
    complete = showValue("ambient light", ZR::LightSensor, 1) && complete;
    complete = showValue("temperature", ZR::TemperatureSensor, 1) && complete;
    complete = showValue("frequency", ZR::FrequencyInput, 1) && complete;
    return complete ? 0 : 1;
}
