#include "tools/zrctl/can_port.h"

#include <linux/capability.h>
#include <net/if.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

#include "common/zrapi_common/zr_result.h"
#include "common/zrapi_utility/zr_file_access.h"

namespace zrctl {
namespace {

constexpr unsigned int portCount = 4;
constexpr char interfaceFolder[] = "/sys/class/net/";

std::string folderOf(const CanPort& port) {
    return interfaceFolder + port.interface();
}

/// True when this process may set up network interfaces.
bool mayAdministrateNetwork() {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> sets{};
    if (::syscall(SYS_capget, &header, sets.data()) != 0)
        return true;  // the kernel's refusal then speaks for itself
    return (sets[CAP_TO_INDEX(CAP_NET_ADMIN)].effective & CAP_TO_MASK(CAP_NET_ADMIN)) != 0;
}

}  // namespace

std::string CanPort::interface() const {
    return "can" + std::to_string(number - 1);
}

bool CanPort::exists() const {
    return attributeExists(folderOf(*this));
}

bool CanPort::isUp() const {
    constexpr int hexadecimal = 16;
    std::string flags;
    return ZR::readStringFromFile(folderOf(*this) + "/flags", &flags) == 0 &&
           (std::strtoul(flags.c_str(), nullptr, hexadecimal) & IFF_UP) != 0;
}

std::vector<CanPort> allCanPorts() {
    std::vector<CanPort> ports;
    for (unsigned int number = 1; number <= portCount; ++number)
        ports.push_back({number});
    return ports;
}

CanPort parseCanPort(const std::string& text) {
    for (const CanPort& port : allCanPorts()) {
        if (text == std::to_string(port.number) || text == port.interface())
            return port;
    }
    throw UsageError("no CAN port " + quote(text) + "; give 1 to 4, or can0 to can3");
}

const char* canStateText(unsigned int state) {
    constexpr std::array names{"stopped", "error-active", "error-warning", "error-passive",
                               "bus-off"};
    return state < names.size() ? names[state] : "unknown";
}

std::string adviseOnMissingPort(const CanPort& port) {
    return adviseOnMissing({folderOf(port)});
}

std::string adviseOnCanSocket(const CanPort& port) {
    if (!port.exists())
        return adviseOnMissingPort(port);
    return "no CAN socket on " + port.interface() +
           "; check that it is a CAN interface and that "
           "the kernel has raw CAN sockets";
}

std::string adviseOnRefusal(const CanPort& port, const std::string& otherwise) {
    if (!port.exists())
        return adviseOnMissingPort(port);
    if (!mayAdministrateNetwork())
        return "no permission to set up network interfaces; run zrctl as root";
    return otherwise;
}

JsonObject canPortJson(const CanPort& port) {
    JsonObject json;
    return json.addNumber("port", port.number).addText("interface", port.interface());
}

CanPort parseOnePort(const Words& words, const std::string& action) {
    const Arguments arguments(words, {});
    if (arguments.operands().size() != 1)
        throw UsageError("can " + action + " needs one port, as in 'zrctl can " + action + " 1'");
    return parseCanPort(arguments.operands()[0]);
}

void addCanRate(JsonObject& json, unsigned int rate) {
    if (rate == noCanRate)
        json.addNull("bitrate");
    else
        json.addNumber("bitrate", rate);
}

std::string canRateText(unsigned int rate) {
    return rate == noCanRate ? "-" : std::to_string(rate) + " bit/s";
}

void addCanState(JsonObject& json, unsigned int state) {
    json.addText("state", canStateText(state)).addNumber("stateCode", state);
}

Report canPortReport(const CanPort& port) {
    Report report;
    report.thing = port.interface();
    report.json = canPortJson(port);
    return report;
}

Outcome canUnreadable(const CanPort& port) {
    if (!port.exists())
        return {ZR::ResultOpenFailed, adviseOnMissingPort(port)};
    return {ZR::ResultReadFailed,
            port.interface() + " has no CAN controller that tells; a virtual port never does"};
}

}  // namespace zrctl
