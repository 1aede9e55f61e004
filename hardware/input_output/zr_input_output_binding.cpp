#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "common/zrapi_common/zr_result.h"
#include "common/zrapi_utility/zr_files_and_folders.h"
#include "hardware/guarded_services_internal.h"
#include "hardware/input_output/input_output_internal.h"
#include "hardware/input_output/zr_input_output.h"
#include "hardware/report_internal.h"

namespace ZR {
namespace {

constexpr char nullDevice[] = "/dev/null";
constexpr char supplyValue[] = "/sys/class/analog/supply_vcc/value";
constexpr char batteryValue[] = "/sys/class/analog/board_12v_bat/value";
constexpr char lightValue[] = "/sys/class/analog/light/value";
constexpr char lightHysteresis[] = "/sys/class/analog/light/hysteresis";
constexpr char lightScanInterval[] = "/sys/class/analog/light/scan_interval";
constexpr char temperatureValue[] = "/sys/class/analog/temperature/value";
constexpr char frequencyValue[] = "/sys/class/analog/frequency/value";
constexpr char regulatorFolder[] = "/sys/class/regulator/";
constexpr char regulatorName[] = "name";
constexpr char ignitionRegulator[] = "ignition-irq";

constexpr int lightHysteresisDefault = 10;
constexpr int lightScanIntervalDefault = 100;

bool isIgnition(const std::string& nameFile) {
    std::string name;
    (void)readText(nameFile, &name);  // what cannot be read is not the ignition
    // The second test compares the path and so never matches; kept: only a regulator named
    // "ignition-irq" is the ignition, one named "ignition" is not.
    return name == ignitionRegulator || nameFile == "ignition";
}

/// The path of the ignition regulator's name attribute, or an empty text.
std::string findIgnition() {
    std::vector<std::string> regulators;
    (void)statusOf([&regulators] {
        return ZRFilesAndFolders::getAllFilesOrFoldersInFolder(regulatorFolder, regulators, 0,
                                                               FilterFolders);
    });
    for (const std::string& regulator : regulators) {
        std::string nameFile =
            ZRFilesAndFolders::addSlash(regulatorFolder + regulator) + regulatorName;
        if (isIgnition(nameFile))
            return nameFile;
    }
    return {};
}

}  // namespace

ZRInputOutput::ZRInputOutput(zrIOType type_, unsigned short channel_)
    : lastValue(-1),
      type(type_),
      channel(channel_),
      path(nullDevice),
      fileDescriptor(-1),
      hysteresis(-1),
      reserved1(-1),
      reserved2(-1),
      measureMode(0) {
    if (initialize(type_, channel_) != ResultSuccess)
        report(debugSection, "%s", "Initializing I/O interface");
}

ZRInputOutput::~ZRInputOutput() {
    (void)::close(fileDescriptor);
}

unsigned int ZRInputOutput::initialize(zrIOType newType, unsigned short newChannel) {
    switch (newType) {
        case DigitalInput:
        case DigitalOutput:
        case AnalogInput:
            return bindChannel(newType, newChannel);
        case AnalogOutput:
            path = nullDevice;
            return refuse(ResultNotSupported, "Analog output not supported");
        case PowerSensor:
            return bindPowerSensor();
        case LightSensor:
            return bindLightSensor();
        case TemperatureSensor:
            type = TemperatureSensor;
            return bind(temperatureValue, O_RDONLY, "Opening temperature sensor file");
        case RadarSensor:
            path = nullDevice;
            return refuse(ResultNotSupported, "Radar sensor not supported on K4");
        case FrequencyInput:
            type = FrequencyInput;
            return bind(frequencyValue, O_RDONLY, "Opening frequency input sysfs file");
        case IgnitionInput:
            return bindIgnition();
        default:
            return refuse(ResultWrongType, "Wrong type ID");
    }
}

unsigned int ZRInputOutput::bindChannel(zrIOType channelType, unsigned short number) {
    type = channelType;
    const ChannelGroup& group = channelGroup(channelType);
    // A channel out of range is a quiet success on purpose.
    if (!contains(group, number))
        return ResultSuccess;
    return bind(channelPath(group, number), group.openFlags, group.openReport);
}

unsigned int ZRInputOutput::bindPowerSensor() {
    type = PowerSensor;
    if (open(supplyValue, O_RDONLY))
        return ResultSuccess;
    return bind(batteryValue, O_RDONLY, "Opening power sensor file");
}

unsigned int ZRInputOutput::bindLightSensor() {
    type = LightSensor;
    // A sensor without these attributes still measures.
    (void)writeInteger(lightHysteresis, lightHysteresisDefault);
    (void)writeInteger(lightScanInterval, lightScanIntervalDefault);
    return bind(lightValue, O_RDONLY, "Opening light sensor file");
}

unsigned int ZRInputOutput::bindIgnition() {
    if (ignitionInputPath.empty())
        ignitionInputPath = findIgnition();
    type = IgnitionInput;
    return bind(ignitionInputPath, O_RDONLY, "Opening ignition input file");
}

unsigned int ZRInputOutput::bind(const std::string& attribute, int flags, const char* text) {
    if (open(attribute, flags))
        return ResultSuccess;
    report(debugSection, "%s", text);
    return ResultOpenFailed;
}

bool ZRInputOutput::open(const std::string& attribute, int flags) {
    path = attribute;
    do {
        fileDescriptor = ::open(path.c_str(), flags | O_CLOEXEC);
    } while (fileDescriptor < 0 && errno == EINTR);
    return fileDescriptor >= 0;
}

unsigned int ZRInputOutput::refuse(unsigned int result, const char* text) {
    type = InvalidType;
    fileDescriptor = -1;
    report(debugSection, "%s", text);
    return result;
}

}  // namespace ZR
