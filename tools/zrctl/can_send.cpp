#include <memory>
#include <string>
#include <vector>

#include "common/zrapi_common/zr_result.h"
#include "hardware/can/zr_can.h"
#include "hardware/can/zr_can_raw.h"
#include "tools/zrctl/can_frame.h"
#include "tools/zrctl/can_port.h"

namespace zrctl {
namespace {

constexpr long long defaultRetries = 100;
constexpr long long mostRetries = 1000000;
constexpr long long defaultDelay = 1000;
constexpr long long longestDelay = 1000000;

struct Sending {
    CanPort port;
    std::vector<ZR::ZRCANMessage> frames;
    Words texts;
    int retries;
    int delay;
};

Sending parseSending(const Words& words) {
    const Arguments arguments(words, {"--retries", "--retry-delay"});
    const Words& operands = arguments.operands();
    if (operands.size() < 2)
        throw UsageError("can send needs a port and frames, as in 'zrctl can send 1 123#1122'");
    const auto number = [&arguments](const char* option, const char* name, long long preset,
                                     long long highest) {
        const auto text = arguments.value(option);
        return static_cast<int>(text ? parseNumber(*text, name, 0, highest) : preset);
    };
    Sending sending{parseCanPort(operands[0]), {}, {operands.begin() + 1, operands.end()}, 0, 0};
    sending.retries = number("--retries", "number of retries", defaultRetries, mostRetries);
    sending.delay = number("--retry-delay", "retry delay", defaultDelay, longestDelay);
    for (const std::string& text : sending.texts)
        sending.frames.push_back(parseCanFrame(text));
    return sending;
}

/// Why the kernel took no frame.
std::string adviseOnSending(const CanPort& port, unsigned int result) {
    if (result == ZR::ResultSocketFailed)
        return adviseOnCanSocket(port);
    const std::string number = std::to_string(port.number);
    if (!port.isUp())
        return "the port is stopped; 'zrctl can bitrate " + number + " BIT/S' starts it";
    return "the queue of the port stays full; check that somebody on the bus has the same bit "
           "rate, or give more --retries";
}

Report frameReport(const CanPort& port, const ZR::ZRCANMessage& frame, unsigned int result) {
    Report report;
    const std::string text = canFrameText(frame);
    report.thing = port.interface() + " " + text;
    report.json = canPortJson(port);
    report.json.addText("frame", text);
    report.outcome.result = result;
    if (result != ZR::ResultSuccess)
        report.outcome.advice = adviseOnSending(port, result);
    else if (ZR::ZRCAN::getState(port.number) == canStateBusOff)
        report.outcome.advice =
            "the controller is bus-off, and the kernel drops what it is given; "
            "check the bus, then stop the port and start it again";
    else
        report.text = report.thing + " sent: " + describeResult(result);
    return report;
}

/// The frame with the flag that the library will set, to be shown.
ZR::ZRCANMessage asSent(ZR::ZRCANMessage frame) {
    constexpr std::uint32_t extendedFlag = 0x80000000;
    constexpr std::uint32_t firstExtended = 0x800;
    if (frame.id >= firstExtended)
        frame.id |= extendedFlag;
    return frame;
}

}  // namespace

int runCanSend(const Words& words, const CommonOptions& common) {
    Sending sending = parseSending(words);
    const auto socket = ZR::ZRCANRaw::create(sending.retries, sending.delay, 0);
    const unsigned int opened = socket->initialize(sending.port.number);
    std::vector<Report> reports;
    for (ZR::ZRCANMessage& frame : sending.frames) {
        const unsigned int result = opened == ZR::ResultSuccess ? socket->send(&frame) : opened;
        reports.push_back(frameReport(sending.port, asSent(frame), result));
        // The order of frames counts: nothing goes out behind one that did not.
        if (!reports.back().outcome.succeeded())
            break;
    }
    return show(reports, "frames", common);
}

}  // namespace zrctl
