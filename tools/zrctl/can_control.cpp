#include <string>

#include "common/zrapi_common/zr_result.h"
#include "hardware/can/zr_can.h"
#include "tools/zrctl/can_port.h"

namespace zrctl {
namespace {

// No classic controller does more, and a rate that is refused leaves a running port stopped.
constexpr long long highestRate = 1000000;

int showRate(const CanPort& port, const CommonOptions& common) {
    const unsigned int rate = ZR::ZRCAN::create(0)->getBaudrate(port.number);
    Report report = canPortReport(port);
    addCanRate(report.json, rate);
    if (rate == noCanRate)
        report.outcome = canUnreadable(port);
    else
        report.text = report.thing + " " + canRateText(rate);
    return show(report, common);
}

/// What became of setting a rate. Also a success is looked at: the port may be left stopped.
Outcome rateOutcome(const CanPort& port, unsigned int result, unsigned int rateSet) {
    switch (result) {
        case ZR::ResultSuccess:
            if (ZR::ZRCAN::getState(port.number) != canStateStopped)
                return {};
            return {result, port.interface() +
                                " stays stopped: the nearest rate of its controller"
                                " is " +
                                canRateText(rateSet) + "; give a rate that it can do"};
        case ZR::ResultOpenFailed:
            return {result, canUnreadable(port).advice};
        case ZR::ResultReadFailed:
            return {result, "the rate was set but cannot be read back; see the kernel log"};
        case ZR::ResultWriteFailed:
            return {result, adviseOnRefusal(port,
                                            "the controller refused the rate; 'ip -details "
                                            "link show " +
                                                port.interface() + "' tells what it can do")};
        default:
            return {result, adviseOnRefusal(port,
                                            "the rate was set but the port did not start; "
                                            "see the kernel log")};
    }
}

int setRate(const CanPort& port, unsigned int rate, const CommonOptions& common) {
    const auto controller = ZR::ZRCAN::create(0);
    const unsigned int result = controller->setBaudrate(port.number, rate);
    const unsigned int rateSet = controller->getBaudrate(port.number);
    Report report = canPortReport(port);
    addCanRate(report.json, rateSet);
    report.outcome = rateOutcome(port, result, rateSet);
    if (report.outcome.succeeded())
        report.text = report.thing + " set to " + canRateText(rateSet) +
                      " and started: " + describeResult(result);
    return show(report, common);
}

int switchPort(const CanPort& port, bool on, const CommonOptions& common) {
    const unsigned int result = ZR::ZRCAN::setState(port.number, on ? 1 : 0);
    const unsigned int state = ZR::ZRCAN::getState(port.number);
    Report report = canPortReport(port);
    addCanState(report.json, state);
    report.outcome.result = result;
    if (result != ZR::ResultSuccess)
        report.outcome.advice = adviseOnRefusal(
            port, on ? "a port that never had a bit rate gets one by 'zrctl can bitrate " +
                           std::to_string(port.number) + " 250000'; else see the kernel log"
                     : "the kernel refused it; see the kernel log");
    else if (on && state == canStateBusOff)
        report.outcome.advice = "the controller is bus-off; stop the port and start it again";
    if (report.outcome.succeeded())
        report.text = report.thing + (on ? " started: " : " stopped: ") + describeResult(result);
    return show(report, common);
}

}  // namespace

int runCanBitrate(const Words& words, const CommonOptions& common) {
    const Arguments arguments(words, {});
    const Words& operands = arguments.operands();
    if (operands.empty() || operands.size() > 2)
        throw UsageError("can bitrate needs a port and perhaps a rate, as in 'bitrate 1 250000'");
    const CanPort port = parseCanPort(operands[0]);
    if (operands.size() == 1)
        return showRate(port, common);
    const long long rate = parseNumber(operands[1], "bit rate", 1, highestRate);
    return setRate(port, static_cast<unsigned int>(rate), common);
}

int runCanStart(const Words& words, const CommonOptions& common) {
    return switchPort(parseOnePort(words, "start"), true, common);
}

int runCanStop(const Words& words, const CommonOptions& common) {
    return switchPort(parseOnePort(words, "stop"), false, common);
}

}  // namespace zrctl
