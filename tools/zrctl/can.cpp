#include "hardware/can/zr_can.h"

#include <string>
#include <vector>

#include "common/zrapi_common/zr_result.h"
#include "hardware/can/zr_can_raw.h"
#include "tools/zrctl/can_port.h"
#include "tools/zrctl/command.h"
#include "tools/zrctl/output.h"

namespace zrctl {

const char* const canHelp = R"(Usage: zrctl can ACTION [ARGUMENT...] [--json] [--verbose]

The CAN ports.

Actions:
  list                    show the ports that there are
  state PORT              read the state of a controller on its bus
  bitrate PORT [BIT/S]    read the bit rate, or set it and start the port;
                          1 to 1000000 bit/s
  start PORT              start a port that has a bit rate
  stop PORT               stop a port
  stats PORT              read how many frames were received and sent
  send PORT FRAME... [--retries N] [--retry-delay MICROSECONDS]
                          send frames, one after the other. What the full queue
                          of the port does not take is tried again N times, 100
                          without it, each time after 1000 microseconds or those
                          given
  dump PORT... [--filter ID:MASK] [--count N] [--time-limit SECONDS]
                          show the frames on the bus, those that other programs
                          of this terminal send included, until Ctrl-C, until N
                          frames are written, or until the time is over. Standard
                          error tells when it listens, and at the end how many
                          frames came and were lost; with --json a last document
                          does so too. Frames that were lost make it fail

Ports: 1 to 4, or by their interfaces can0 to can3. Port 1 is can0.

Frames are written as candump and cansend do: 123#1122334455667788 is a standard
frame, 12345678#11.22 with 8 digits of identifier an extended one, 123# one
without data. The library sends classic data frames only; it sends an identifier
below 800 as a standard one, so 00000123# is refused. dump writes
"(SECONDS.MICROSECONDS) INTERFACE FRAME", which canplayer can play back; the
time is when the frame reached the kernel.

--filter takes hexadecimal numbers as candump does: frames with
(identifier & MASK) == (ID & MASK) pass. Of an ID with 8 digits bit 31, which
marks an extended identifier, is set. The kernel keeps one filter.

What the library does, and zrctl shows as it is:
  The bit rate of a stopped port reads as 0, whatever was set before.
  bitrate stops a running port before it sets the rate. When the controller can
  do no rate within 1.5 % of the one asked for, the port stays stopped.
  bitrate and stop also ask the kernel to restart the controller 1000 ms after a
  bus-off.
  A virtual port (vcan) has no state and no bit rate.
)";

namespace {

constexpr std::size_t interfaceWidth = 6;
constexpr std::size_t portWidth = 8;
constexpr std::size_t stateWidth = 15;
constexpr std::size_t rateWidth = 16;
constexpr std::size_t countWidth = 20;

struct Counters {
    int received = 0;
    int sent = 0;
    unsigned int result = 0;
};

Counters readCounters(const CanPort& port) {
    Counters counters;
    counters.result = ZR::ZRCANRaw::getRxPackages(port.number, counters.received);
    if (counters.result == ZR::ResultSuccess)
        counters.result = ZR::ZRCANRaw::getTxPackages(port.number, counters.sent);
    return counters;
}

Report listReport(const CanPort& port, const ZR::ZRCAN& controller) {
    const unsigned int state = ZR::ZRCAN::getState(port.number);
    const unsigned int rate = controller.getBaudrate(port.number);
    const Counters counters = readCounters(port);
    Report report = canPortReport(port);
    report.text = column(report.thing, interfaceWidth) +
                  column("port " + std::to_string(port.number), portWidth) +
                  column(canStateText(state), stateWidth) + column(canRateText(rate), rateWidth) +
                  column("received " + std::to_string(counters.received), countWidth) + "sent " +
                  std::to_string(counters.sent);
    addCanState(report.json, state);
    addCanRate(report.json, rate);
    report.json.addNumber("received", counters.received).addNumber("sent", counters.sent);
    if (counters.result != ZR::ResultSuccess)
        report.outcome = {counters.result, adviseOnMissingPort(port)};
    return report;
}

int runList(const Words& words, const CommonOptions& common) {
    if (!Arguments(words, {}).operands().empty())
        throw UsageError("can list takes no arguments; 'zrctl can state PORT' reads one port");
    const auto controller = ZR::ZRCAN::create(0);
    std::vector<Report> reports;
    for (const CanPort& port : allCanPorts()) {
        if (port.exists())
            reports.push_back(listReport(port, *controller));
    }
    if (reports.empty() && !common.json)
        print("no CAN port: none of can0 to can3 is there\n");
    return show(reports, "ports", common);
}

int runState(const Words& words, const CommonOptions& common) {
    const CanPort port = parseOnePort(words, "state");
    const unsigned int state = ZR::ZRCAN::getState(port.number);
    Report report = canPortReport(port);
    addCanState(report.json, state);
    if (state == canStateUnknown)
        report.outcome = canUnreadable(port);
    else
        report.text = report.thing + " " + canStateText(state);
    return show(report, common);
}

int runStats(const Words& words, const CommonOptions& common) {
    const CanPort port = parseOnePort(words, "stats");
    const Counters counters = readCounters(port);
    Report report = canPortReport(port);
    report.outcome.result = counters.result;
    if (counters.result != ZR::ResultSuccess) {
        report.outcome.advice = adviseOnMissingPort(port);
        report.json.addNull("received").addNull("sent");
    } else {
        report.text = report.thing + " received " + std::to_string(counters.received) + ", sent " +
                      std::to_string(counters.sent);
        report.json.addNumber("received", counters.received).addNumber("sent", counters.sent);
    }
    return show(report, common);
}

}  // namespace

int runCan(const Words& words, const CommonOptions& common) {
    return runAction("can",
                     {{"list", runList},
                      {"state", runState},
                      {"bitrate", runCanBitrate},
                      {"start", runCanStart},
                      {"stop", runCanStop},
                      {"stats", runStats},
                      {"send", runCanSend},
                      {"dump", runCanDump}},
                     words, common);
}

}  // namespace zrctl
