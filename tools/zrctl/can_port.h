#pragma once

#include <string>
#include <vector>

#include "tools/zrctl/command.h"

namespace zrctl {

/// A CAN port as the library counts it, from 1, and the network interface behind it.
struct CanPort {
    unsigned int number;

    /// "can0" for port 1.
    std::string interface() const;

    /// True when there is an interface of that name.
    bool exists() const;

    /// True when the interface is up. Only the kernel tells this also of a virtual interface.
    bool isUp() const;
};

/// The ports that the library has, whether they exist or not.
std::vector<CanPort> allCanPorts();

/// Reads "1" to "4" or "can0" to "can3".
/// @throws UsageError for any other text
CanPort parseCanPort(const std::string& text);

/// Reads the one port that an action takes.
/// @throws UsageError for anything else
CanPort parseOnePort(const Words& words, const std::string& action);

/// "error-active" and so on, for a state code of the library.
const char* canStateText(unsigned int state);

/// @name State codes of the library
/// @{
constexpr unsigned int canStateStopped = 0;
constexpr unsigned int canStateBusOff = 4;
constexpr unsigned int canStateUnknown = 255;
/// @}

/// What the library answers for a rate that it cannot read.
constexpr unsigned int noCanRate = 0xFFFFFFFF;

/// "250000 bit/s", "-" without a rate.
std::string canRateText(unsigned int rate);

/// Says what to do when the kernel refused to set something of a port.
std::string adviseOnRefusal(const CanPort& port, const std::string& otherwise);

/// Says why no socket could be opened on a port.
std::string adviseOnCanSocket(const CanPort& port);

/// Says that a port's interface is not there.
std::string adviseOnMissingPort(const CanPort& port);

/// The members "port" and "interface".
JsonObject canPortJson(const CanPort& port);

/// Adds "bitrate", null without a rate.
void addCanRate(JsonObject& json, unsigned int rate);

/// Adds "state" and "stateCode".
void addCanState(JsonObject& json, unsigned int state);

/// A report that names the port and tells nothing yet.
Report canPortReport(const CanPort& port);

/// What to say where the library answers with a value that stands for a failed reading.
Outcome canUnreadable(const CanPort& port);

int runCanBitrate(const Words& words, const CommonOptions& common);
int runCanStart(const Words& words, const CommonOptions& common);
int runCanStop(const Words& words, const CommonOptions& common);
int runCanSend(const Words& words, const CommonOptions& common);
int runCanDump(const Words& words, const CommonOptions& common);

}  // namespace zrctl
