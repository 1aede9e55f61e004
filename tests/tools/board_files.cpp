#include "tests/tools/board_files.h"

#include <string>

#include "tests/support/private_root.h"

namespace ZR::test {

void makeInputsAndOutputs() {
    for (int i = 0; i < 4; ++i) {
        const std::string number = std::to_string(i);
        makeFile("/sys/bus/platform/devices/zr_di." + number + "/state", "0\n");
        if (i < 3)
            makeFile("/sys/bus/platform/devices/zr_do." + number + "/state", "0\n");
        const std::string input = "/sys/class/analog/ai." + number;
        makeFile(input + "/value", std::to_string(1000 * (i + 1)) + "\n");
        makeFile(input + "/measure_mode", "0\n");
        makeFile(input + "/toggle_load", "0\n");
        makeFile(input + "/hysteresis", "0\n");
    }
    makeFile("/sys/class/analog/supply_vcc/value", "12100\n");
    makeFile("/sys/class/analog/light/value", "300\n");
    makeFile("/sys/class/analog/light/hysteresis", "0\n");
    makeFile("/sys/class/analog/light/scan_interval", "1000\n");
    makeFile("/sys/class/analog/temperature/value", "25\n");
    makeFile("/sys/class/analog/frequency/value", "50\n");
    makeFile("/sys/class/regulator/regulator.1/name", "ignition-irq\n");
}

void makeDimmableDevices() {
    makeFile(display, "128\n");
    for (const char* const path : {key, encoder, rgb, beeper})
        makeFile(path, "0\n");
    for (const char* const path : {keyMaximum, encoderMaximum})
        makeFile(path, "255\n");
    makeFile(keyTrigger, "[heartbeat] none\n");
}

}  // namespace ZR::test
