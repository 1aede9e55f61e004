#pragma once

#include <optional>
#include <string>
#include <vector>

#include "hardware/dimmable/zr_dimmable.h"
#include "tools/zrctl/command.h"

namespace zrctl {

/// A dimmable device, as people name it.
struct DeviceName {
    const char* name;
    ZR::ZRDimmableDevice device;
    /// The attributes that can be behind it, for the texts about failures only: the library says
    /// neither which one it took nor why it could not open it.
    std::vector<std::string> attributes;
};

/// All devices, in the order of the list.
const std::vector<DeviceName>& allDevices();

/// @throws UsageError for a text that names no device
const DeviceName& parseDevice(const std::string& text);

/// Reads "#RRGGBB", "0xRRGGBB" or a name.
/// @throws UsageError for any other text
unsigned int parseColor(const std::string& text);

/// "#RRGGBB" in lower case; more digits when the driver gave a larger number.
std::string colorText(unsigned int color);

/// What to give as the intensity of a device. Which LEDs have a colour is left open: asking the
/// library already detaches the key LED from its trigger, and a wrong command line touches nothing.
std::string adviseOnNumber(const DeviceName& device);

/// What was asked of a device; the advice about a failure depends on it.
enum class Request { Read, Write, ReadColor, WriteColor };

/// What became of an operation, given its result code.
Outcome outcomeOf(const DeviceName& device, unsigned int result, Request request);

/// What a device holds or was given, without a value when that failed.
struct DeviceReading {
    std::optional<unsigned int> value;
    Outcome outcome;
};

/// Reads the intensity of a device, or the colour of one that has nothing but a colour.
DeviceReading readDevice(const DeviceName& device);

/// The report of an operation on a device, without a line for people.
Report deviceReport(const DeviceName& device, const DeviceReading& reading);

/// True when one of the device's attributes is there.
bool isPresent(const DeviceName& device);

/// "50 %" or "#102030", by what the device takes.
std::string valueText(const DeviceName& device, unsigned int value);

}  // namespace zrctl
