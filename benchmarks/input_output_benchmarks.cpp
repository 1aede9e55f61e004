#include <memory>
#include <string_view>

#include "benchmarks/comparison.h"
#include "benchmarks/kernel_floor.h"
#include "benchmarks/operations.h"
#include "benchmarks/standard_output.h"
#include "hardware/input_output/zr_input_output.h"

namespace ZR::benchmarks {
namespace {

constexpr char digitalInput[] = "/sys/bus/platform/devices/zr_di.0/state";
constexpr char digitalOutput[] = "/sys/bus/platform/devices/zr_do.0/state";
constexpr char analogInput[] = "/sys/class/analog/ai.0/value";
constexpr char measureMode[] = "/sys/class/analog/ai.0/measure_mode";
constexpr char toggleLoad[] = "/sys/class/analog/ai.0/toggle_load";
constexpr char hysteresis[] = "/sys/class/analog/ai.0/hysteresis";

constexpr std::string_view printedLine =
    "Set /sys/bus/platform/devices/zr_do.0/state to 1 successful!\n";

/// Tells where the channel is bound: the path of the ignition is found by the library.
class BoundChannel : public ZRInputOutput {
  public:
    using ZRInputOutput::ZRInputOutput;
    const char* attribute() const { return path.c_str(); }
};

void compareStates() {
    const auto input = std::make_shared<ZRInputOutput>(DigitalInput, 1);
    compare(
        "getState/digital", [] { return openReadClose(digitalInput); },
        [input] {
            bool state = false;
            return input->getState(&state) == 0;
        });
    const auto ignition = std::make_shared<BoundChannel>(IgnitionInput, 0);
    compare(
        "getState/ignition", [ignition] { return openReadClose(ignition->attribute()); },
        [ignition] {
            bool state = false;
            return ignition->getState(&state) == 0;
        });
}

void compareValues() {
    const auto input = std::make_shared<ZRInputOutput>(AnalogInput, 1);
    compare(
        "getValue", [] { return openReadClose(analogInput); },
        [input] {
            int value = 0;
            return input->getValue(&value) == 0;
        });
}

void compareSwitching() {
    const auto output = std::make_shared<ZRInputOutput>(DigitalOutput, 1);
    Comparison on;
    on.operation = "on";
    on.floorOnce = [] {
        return openWriteClose(digitalOutput, "1") &&
               ::write(STDOUT_FILENO, printedLine.data(), printedLine.size()) > 0;
    };
    on.libraryOnce = [output] { return output->on(true) == 0; };
    on.floor = silenced(batchOf(on.floorOnce));
    on.library = silenced(batchOf(on.libraryOnce));
    registerComparison(std::move(on));
}

void compareConfiguring() {
    const auto input = std::make_shared<ZRInputOutput>(AnalogInput, 1);
    constexpr int port = 1;
    constexpr int modeWithLoad = 2;
    constexpr int smallestChange = 10;
    // The one allocation holds the paths, which each call puts together.
    compare(
        "configureInput",
        [] {
            return isThere(measureMode) && openWriteClose(measureMode, "1") &&
                   openWriteClose(toggleLoad, "1") && isThere(hysteresis) &&
                   openWriteClose(hysteresis, "10");
        },
        [input] { return input->configureInput(port, modeWithLoad, smallestChange) == 0; }, 1);
}

}  // namespace

void compareInputsAndOutputs() {
    compareStates();
    compareValues();
    compareSwitching();
    compareConfiguring();
}

}  // namespace ZR::benchmarks
