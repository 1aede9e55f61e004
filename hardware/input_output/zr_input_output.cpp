#include "hardware/input_output/zr_input_output.h"

#include <exception>
#include <string>

#include "common/zrapi_common/zr_debug.h"
#include "common/zrapi_common/zr_result.h"
#include "common/zrapi_utility/zr_file_access.h"
#include "common/zrapi_utility/zr_files_and_folders.h"
#include "common/zrapi_utility/zr_to_string.h"
#include "hardware/guarded_services_internal.h"
#include "hardware/input_output/input_output_internal.h"
#include "hardware/print_line_internal.h"
#include "hardware/report_internal.h"

namespace ZR {

std::string ZRInputOutput::ignitionInputPath;
unsigned int ZRInputOutput::debugSection = ZRDebug::insertNewDebugSection("zr_io");

namespace {

constexpr char analogInputFolder[] = "/sys/class/analog/ai.";
constexpr char measureModeFile[] = "/measure_mode";
constexpr char toggleLoadFile[] = "/toggle_load";
constexpr char hysteresisFile[] = "/hysteresis";
constexpr char ignitionOn[] = "enabled";

constexpr bool hasValue(zrIOType type) {
    return type == AnalogInput || type == PowerSensor || type == LightSensor ||
           type == TemperatureSensor || type == FrequencyInput;
}

/// The attributes of the analog input with the given 1-based number, which may be any int. One text
/// serves them all, so that a configuration makes one allocation and not a dozen.
class AnalogInputAttributes {
  public:
    explicit AnalogInputAttributes(int port) {
        path_.reserve(longestPath);
        path_.append(analogInputFolder).append(std::to_string(static_cast<long long>(port) - 1));
        folderLength_ = path_.size();
    }

    const std::string& operator[](const char* attribute) {
        path_.resize(folderLength_);
        return path_.append(attribute);
    }

  private:
    static constexpr std::size_t longestPath = 64;

    std::string path_;
    std::size_t folderLength_ = 0;
};

void writeMeasureMode(AnalogInputAttributes& input, const MeasureModeSetting& setting) {
    (void)writeToFile(input[measureModeFile], setting.measureMode);
    if (setting.toggleLoad)
        (void)writeToFile(input[toggleLoadFile], 1);
}

}  // namespace

unsigned int ZRInputOutput::on(bool value) {
    if (type != DigitalOutput)
        return ResultNotSupported;
    const char* const digit = value ? "1" : "0";
    if (writeInteger(path, value ? 1 : 0) != 0) {
        printLine({"Set ", path, " to ", digit, " FAILED!"});
        report(debugSection, "%s%s", "Writing state to file ", path.c_str());
        return ResultWriteFailed;
    }
    printLine({"Set ", path, " to ", digit, " successful!"});
    lastValue = value ? 1 : 0;
    return ResultSuccess;
}

unsigned int ZRInputOutput::getState(bool* state) {
    switch (type) {
        case DigitalInput:
        case DigitalOutput:
            return getDigitalState(state);
        case IgnitionInput:
            return getIgnitionState(state);
        default:
            report(debugSection, "%s",
                   "Trying to get state from neither digital input or digital output.");
            return ResultNotSupported;
    }
}

unsigned int ZRInputOutput::getDigitalState(bool* state) {
    int value = -1;
    if (readInteger(path, &value) != 0) {
        report(debugSection, "%s", "Reading state");
        return ResultReadFailed;
    }
    *state = value != 0;
    if (value != 0 && value != 1) {
        // The state is true before the failure shows, on purpose.
        report(debugSection, "%s%s", "Received not possible state from digital I/O ", path.c_str());
        return ResultInvalidState;
    }
    lastValue = value;
    return ResultSuccess;
}

unsigned int ZRInputOutput::getIgnitionState(bool* state) {
    std::string text;
    if (readText(path, &text) != 0) {
        report(debugSection, "%s", "Reading ignition state");
        return ResultReadFailed;
    }
    *state = text == ignitionOn;
    lastValue = *state ? 1 : 0;
    return ResultSuccess;
}

unsigned int ZRInputOutput::getValue(int* value) {
    if (!hasValue(type))
        return ResultNotSupported;
    int reading = -1;
    if (readInteger(path, &reading) != 0) {
        report(debugSection, "%s", "Reading int value");
        return ResultReadFailed;
    }
    *value = lowSixteenBits(reading);
    lastValue = reading;
    return ResultSuccess;
}

unsigned int ZRInputOutput::configureInput(int port, int mode, int newHysteresis) {
    hysteresis = newHysteresis;
    try {
        AnalogInputAttributes input(port);
        const MeasureModeSetting setting = measureModeSetting(mode);
        unsigned int result = ResultSuccess;
        if (ZRFilesAndFolders::isFile(input[measureModeFile])) {
            if (setting.valid) {
                measureMode = mode;
                writeMeasureMode(input, setting);
            } else {
                result = ResultNotSupported;
            }
        }
        // The hysteresis does not depend on the mode: it is written also when the mode is refused.
        if (ZRFilesAndFolders::isFile(input[hysteresisFile]))
            (void)writeToFile(input[hysteresisFile], hysteresis);
        return result;
    } catch (const std::exception&) {
        printLine({"Error setting analog options for port ", toString(port),
                   ", value: ", toString(mode)});
        return ResultFailure;
    }
}

int calculateAnalogValue(unsigned short raw) {
    constexpr int numerator = 10000;
    constexpr int denominator = 8525;
    return raw * numerator / denominator;
}

}  // namespace ZR
