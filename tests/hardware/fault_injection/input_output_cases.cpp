#include <string>

#include "hardware/input_output/zr_input_output.h"
#include "tests/hardware/fault_injection/fault_case.h"
#include "tests/support/private_root.h"

namespace ZR::test {
namespace {

constexpr char inputState[] = "/sys/bus/platform/devices/zr_di.0/state";
constexpr char outputState[] = "/sys/bus/platform/devices/zr_do.0/state";
constexpr char analogValue[] = "/sys/class/analog/ai.0/value";
constexpr char measureMode[] = "/sys/class/analog/ai.0/measure_mode";
constexpr char toggleLoad[] = "/sys/class/analog/ai.0/toggle_load";
constexpr char hysteresis[] = "/sys/class/analog/ai.0/hysteresis";
constexpr char supply[] = "/sys/class/analog/supply_vcc/value";
constexpr char battery[] = "/sys/class/analog/board_12v_bat/value";
constexpr char lightHysteresis[] = "/sys/class/analog/light/hysteresis";
constexpr char lightInterval[] = "/sys/class/analog/light/scan_interval";
constexpr char lightValue[] = "/sys/class/analog/light/value";
constexpr char temperature[] = "/sys/class/analog/temperature/value";
constexpr char frequency[] = "/sys/class/analog/frequency/value";
constexpr char ignitionName[] = "/sys/class/regulator/regulator.0/name";

void makeChannels() {
    for (const char* const path : {inputState, outputState})
        makeFile(path, "1\n");
    for (const char* const path : {analogValue, supply, lightValue, temperature, frequency})
        makeFile(path, "500\n");
    for (const char* const path :
         {measureMode, toggleLoad, hysteresis, lightHysteresis, lightInterval})
        makeFile(path, "old");
    removeFile(battery);
    makeFile(ignitionName, "ignition-irq\n");
}

void makeBothSupplies() {
    makeChannels();
    makeFile(battery, "600\n");
}

/// Opens what the class protects. Never built.
struct Inside : ZRInputOutput {
    Inside() = delete;
    static std::string pathOf(const ZRInputOutput& channel) { return channel.*(&Inside::path); }
    static bool isOpen(const ZRInputOutput& channel) {
        return channel.*(&Inside::fileDescriptor) >= 0;
    }
};

/// The channel that the operation works on, built before it.
ZRInputOutput* channel = nullptr;

std::function<void()> building(zrIOType type) {
    return [type] { channel = new ZRInputOutput(type, 1); };
}

std::string state() {
    bool value = false;
    const unsigned int result = channel->getState(&value);
    return std::to_string(result) + (value ? " true" : " false");
}

std::string value() {
    int number = 4711;
    const unsigned int result = channel->getValue(&number);
    return std::to_string(result) + ' ' + std::to_string(number);
}

FaultCase binding(const std::string& name, zrIOType type, const std::string& path,
                  const std::string& report) {
    const std::string unbound = "closed " + path + " | " + report + " | Initializing I/O interface";
    return {"binding_the_" + name,
            makeChannels,
            nullptr,
            [type] {
                // Kept: a close is no call of binding.
                const auto* const object = new ZRInputOutput(type, 1);
                return (Inside::isOpen(*object) ? "open " : "closed ") + Inside::pathOf(*object);
            },
            nullptr,
            "open " + path,
            {repeats("openat", unbound)}};
}

CallRule ignored(const std::string& call) {
    return hides(call, "a light sensor without this attribute still measures");
}

FaultCase bindingLightSensor() {
    FaultCase each = binding("light_sensor", LightSensor, lightValue, "Opening light sensor file");
    each.calls.insert(each.calls.begin(), {ignored("openat"), ignored("write"), ignored("close"),
                                           ignored("openat"), ignored("write"), ignored("close")});
    return each;
}

FaultCase bindingSecondSupply() {
    FaultCase each = binding("power_sensor_with_both_supplies", PowerSensor, supply, "");
    each.layOut = makeBothSupplies;
    each.calls = {repeats("openat", std::string("open ") + battery)};
    return each;
}

FaultCase bindingPowerSensor() {
    FaultCase each = binding("power_sensor", PowerSensor, supply, "");
    each.calls = {repeats("openat", std::string("closed ") + battery +
                                        " | Opening power sensor file"
                                        " | Initializing I/O interface")};
    return each;
}

FaultCase bindingIgnition() {
    const std::string reports = " | Opening ignition input file | Initializing I/O interface";
    const std::string unknown = "closed " + reports;
    FaultCase each = binding("ignition", IgnitionInput, ignitionName, "");
    each.calls = {repeats("openat", unknown),
                  repeats("fstat", unknown),
                  lists(unknown, unknown),
                  lists(unknown, good),
                  hides("close", "the list is complete before the folder is closed"),
                  repeats("openat", unknown),
                  repeats("read", unknown),
                  hides("close", "the name is complete before the file is closed"),
                  repeats("openat", std::string("closed ") + ignitionName + reports)};
    return each;
}

FaultCase reading(const std::string& name, zrIOType type, std::string (*operate)(),
                  const std::string& goodOutcome, const std::string& failure) {
    return {name,
            makeChannels,
            building(type),
            operate,
            nullptr,
            goodOutcome,
            {repeats("openat", failure), repeats("read", failure),
             hides("close", "the value is complete before the file is closed")}};
}

FaultCase switching() {
    const std::string line = std::string("Set ") + outputState + " to 1 ";
    const std::string failure =
        std::string("6 | Writing state to file ") + outputState + " | " + line + "FAILED!\n";
    CallRule close = repeats("close", failure);
    CallRule print = hides("write", "a line that is lost changes no result");
    print.failed = print.missing = print.interrupted = "0";
    return {"on",
            makeChannels,
            building(DigitalOutput),
            [] { return std::to_string(channel->on(true)); },
            nullptr,
            "0 | " + line + "successful!\n",
            {repeats("openat", failure), repeats("write", failure), close, print}};
}

/// The three attributes; a file in memory is empty once it was opened for writing.
std::string settings() {
    std::string text;
    for (const char* const path : {measureMode, toggleLoad, hysteresis}) {
        text += readFile(path) + ';';
        makeFile(path, "old");
    }
    return text;
}

/// The write of one attribute; its result is ignored, so only the attribute itself shows it.
void addWrite(std::vector<CallRule>& calls, const std::string& unopened,
              const std::string& unwritten) {
    calls.push_back(repeats("openat", "0 | " + unopened));
    calls.push_back(repeats("write", "0 | " + unwritten));
    calls.push_back(hides("close", "results of these writes are ignored"));
}

FaultCase configuring() {
    std::vector<CallRule> calls{fails("stat", "0 | old;old;7;")};
    addWrite(calls, "old;1;7;", ";1;7;");
    addWrite(calls, "1;old;7;", "1;;7;");
    calls.push_back(fails("stat", "0 | 1;1;old;"));
    addWrite(calls, "1;1;old;", "1;1;;");
    return {"configureInput",
            makeChannels,
            building(AnalogInput),
            [] { return std::to_string(channel->configureInput(1, 2, 7)); },
            settings,
            "0 | 1;1;7;",
            calls};
}

}  // namespace

std::vector<FaultCase> inputOutputCases() {
    return {
        binding("digital_input", DigitalInput, inputState, "Opening digital input file"),
        binding("digital_output", DigitalOutput, outputState, "Opening digital output file"),
        binding("analog_input", AnalogInput, analogValue, "Opening analog input file"),
        binding("temperature_sensor", TemperatureSensor, temperature,
                "Opening temperature sensor file"),
        binding("frequency_input", FrequencyInput, frequency, "Opening frequency input sysfs file"),
        bindingLightSensor(),
        bindingPowerSensor(),
        bindingSecondSupply(),
        bindingIgnition(),
        reading("getState_of_a_digital_input", DigitalInput, state, "0 true",
                "5 false | Reading state"),
        reading("getState_of_a_digital_output", DigitalOutput, state, "0 true",
                "5 false | Reading state"),
        reading("getState_of_the_ignition", IgnitionInput, state, "0 false",
                "5 false | Reading ignition state"),
        reading("getValue_of_an_analog_input", AnalogInput, value, "0 500",
                "5 4711 | Reading int value"),
        switching(),
        configuring()};
}

}  // namespace ZR::test
