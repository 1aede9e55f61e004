// Switches a digital output: switch_output 1|2|3 on|off

#include <iostream>
#include <string>

#include <common/zrapi_common/zr_result.h>
#include <hardware/input_output/zr_input_output.h>

int main(int argc, char** argv) {
    const std::string number = argc == 3 ? argv[1] : "";
    const std::string state = argc == 3 ? argv[2] : "";
    const bool validNumber = number == "1" || number == "2" || number == "3";
    const bool validState = state == "on" || state == "off";
    if (!validNumber || !validState) {
        // The library takes a channel out of range for one without a file and says nothing.
        std::cerr << "usage: switch_output 1|2|3 on|off\n";
        return 2;
    }

    const auto channel = static_cast<unsigned short>(number[0] - '0');
    ZR::ZRInputOutput output(ZR::DigitalOutput, channel);

    // Prints one line about the switching to standard output by itself.
    unsigned int result = output.on(state == "on");
    if (result != ZR::ResultSuccess) {
        std::cerr << "on: " << ZR::resultText(result) << " (" << result << ")\n";
        return 1;
    }

    bool isOn = false;
    result = output.getState(&isOn);
    if (result != ZR::ResultSuccess) {
        std::cerr << "getState: " << ZR::resultText(result) << " (" << result << ")\n";
        return 1;
    }
    std::cout << "Output " << channel << " is " << (isOn ? "on" : "off") << '\n';
    return 0;
}
