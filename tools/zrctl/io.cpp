#include <unistd.h>

#include <string>

#include "common/zrapi_common/zr_result.h"
#include "tools/zrctl/command.h"
#include "tools/zrctl/io_channel.h"
#include "tools/zrctl/output.h"

namespace zrctl {

const char* const ioHelp = R"(Usage: zrctl io ACTION [ARGUMENT...] [--json] [--verbose]

Digital and analog inputs, digital outputs, sensors and the ignition.

Actions:
  list                      show all channels that the board can have
  get CHANNEL...            read channels
  set CHANNEL on|off|1|0    switch a digital output
  watch CHANNEL... [--interval MS] [--count N]
                            read again and again and show each change, the first
                            reading included, until Ctrl-C or until N lines are
                            written. MS is 1 to 60000 milliseconds, 200 without it.
                            A reading that fails ends it with status 1.
  configure aiN --mode 0|1|2 --hysteresis N
                            set up an analog input: 0 or 1 measure without load,
                            2 with the load switched on. N is the change, in
                            counts, that the driver is to notify. The library
                            always sets both, so both are needed. What the driver
                            then holds is read back and compared.

Channels and units:
  di1 to di4, ignition      on, off
  do1 to do3                on, off; the only ones that can be set
  ai1 to ai4                counts of the converter, unscaled
  power                     mV, supply voltage, else battery voltage
  light                     lux
  temperature               degC
  frequency                 Hz

What the library does, and zrctl shows as it is:
  Values are the low 16 bits of the driver's number: 70000 reads as 4464, -1 as
  65535. A digital state other than 0 and 1 reads as on and is a failure too.
  Reading light, also by list, sets its hysteresis to 10 and its scan interval
  to 100 ms. The ignition is the regulator named "ignition-irq" and is on when
  that regulator's attribute "name" reads "enabled"; on a kernel whose "name"
  holds nothing but the name it always reads off.

list marks a channel without its file as missing, which is no failure of list.
)";

namespace {

constexpr std::size_t channelWidth = 13;
constexpr std::size_t stateWidth = 9;

Report listReport(const ChannelName& name) {
    Channel channel(name);
    const Reading reading = read(channel);
    const bool present = channel.isPresent();
    Report report;
    report.thing = name.text();
    report.text = column(report.thing, channelWidth) +
                  column(present ? "present" : "missing", stateWidth) +
                  (reading.value ? valueText(*name.kind, *reading.value) : "-");
    report.json = channelJson(channel, reading.value);
    report.outcome = reading.outcome;
    report.tolerated = !present;
    return report;
}

int runList(const Words& words, const CommonOptions& common) {
    if (!Arguments(words, {}).operands().empty())
        throw UsageError("io list takes no arguments; 'zrctl io get CHANNEL' reads one channel");
    std::vector<Report> reports;
    for (const ChannelName& name : allChannels())
        reports.push_back(listReport(name));
    return show(reports, "channels", common);
}

int runGet(const Words& words, const CommonOptions& common) {
    const Arguments arguments(words, {});
    if (arguments.operands().empty())
        throw UsageError("io get needs a channel; 'zrctl io list' shows them all");
    std::vector<ChannelName> names;
    for (const std::string& word : arguments.operands())
        names.push_back(parseChannel(word));
    std::vector<Report> reports;
    for (const ChannelName& name : names) {
        Channel channel(name);
        reports.push_back(readingReport(channel, read(channel)));
    }
    return show(reports, "channels", common);
}

bool parseState(const std::string& text) {
    if (text == "on" || text == "1")
        return true;
    if (text == "off" || text == "0")
        return false;
    throw UsageError("no state " + quote(text) + "; give on, off, 1 or 0");
}

int runSet(const Words& words, const CommonOptions& common) {
    const Arguments arguments(words, {});
    if (arguments.operands().size() != 2)
        throw UsageError("io set needs a channel and a state, as in 'zrctl io set do1 on'");
    const ChannelName name = parseChannel(arguments.operands()[0]);
    const bool state = parseState(arguments.operands()[1]);
    Channel channel(name);
    Report report;
    report.thing = name.text();
    report.outcome = channel.outcome(channel.on(state), W_OK);
    const bool done = report.outcome.succeeded();
    if (done)
        report.text = report.thing + " set to " + (state ? "on" : "off") + ": " +
                      describeResult(report.outcome.result);
    report.json = channelJson(channel, done ? std::optional<int>(state) : std::nullopt);
    return show(report, common);
}

}  // namespace

int runIo(const Words& words, const CommonOptions& common) {
    return runAction("io",
                     {{"list", runList},
                      {"get", runGet},
                      {"set", runSet},
                      {"watch", runIoWatch},
                      {"configure", runIoConfigure}},
                     words, common);
}

}  // namespace zrctl
