#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cerrno>
#include <string>
#include <vector>

#include "tests/hardware/input_output/channel.h"
#include "tests/support/private_root.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::test {
namespace {

constexpr char supply[] = "/sys/class/analog/supply_vcc/value";
constexpr char battery[] = "/sys/class/analog/board_12v_bat/value";
constexpr char light[] = "/sys/class/analog/light/value";
constexpr char lightHysteresis[] = "/sys/class/analog/light/hysteresis";
constexpr char lightScanInterval[] = "/sys/class/analog/light/scan_interval";
constexpr char temperature[] = "/sys/class/analog/temperature/value";
constexpr char frequency[] = "/sys/class/analog/frequency/value";

/// Binds a sensor whose attributes exist, which must succeed without a report.
void expectBound(zrIOType type, const std::string& path) {
    for (const unsigned short number : std::vector<unsigned short>{0, 1, 7, 65535}) {
        const ReportLog log;
        Channel channel(type, number);
        EXPECT_EQ(channel.type, type);
        EXPECT_EQ(channel.path, path);
        ASSERT_TRUE(isOpen(channel.fileDescriptor));
        EXPECT_EQ(accessMode(channel.fileDescriptor), O_RDONLY);
        EXPECT_TRUE(closesOnExec(channel.fileDescriptor));
        EXPECT_EQ(channel.initialize(type, number), 0U);
        EXPECT_EQ(log.reports(), Reports{});
    }
}

/// Binds a sensor whose attributes are missing, which must fail.
void expectFailure(zrIOType type, const std::string& path, const std::string& report) {
    ReportLog log;
    Channel channel(type, 1);
    EXPECT_EQ(channel.type, type);
    EXPECT_EQ(channel.path, path);
    EXPECT_EQ(channel.fileDescriptor, -1);
    EXPECT_EQ(log.reports(), failedConstruction(report));
    log.clear();
    EXPECT_EQ(channel.initialize(type, 1), 2U);
    EXPECT_EQ(log.reports(), Reports{inputOutputReport(report)});
}

/// The paths and contents of the calls that binding a sensor makes.
std::string tracedBinding(zrIOType type, const FaultPlan& plan = {}) {
    const Trace trace = traceSystemCalls(
        [type](TracedRun& run) {
            const ReportLog log;
            Channel channel(type, 1);
            run.begin();
            const unsigned int result = channel.initialize(type, 1);
            run.end();
            run.say(std::to_string(result));
        },
        plan);
    std::string calls;
    for (const SystemCall& call : trace.calls)
        if (call.name != "close")
            calls += call.name + ' ' + call.text + '\n';
    return calls + "result " + trace.text;
}

}  // namespace

TEST(PowerSensor, binds_the_supply_voltage) {
    makeFile(supply, "24000\n");
    expectBound(PowerSensor, supply);
}

TEST(PowerSensor, prefers_the_supply_to_the_battery) {
    makeFile(supply, "24000\n");
    makeFile(battery, "12000\n");
    expectBound(PowerSensor, supply);
}

TEST(PowerSensor, binds_the_battery_without_a_supply) {
    makeFile(battery, "12000\n");
    expectBound(PowerSensor, battery);
}

TEST(PowerSensor, fails_with_2_without_either_and_keeps_the_path_of_the_battery) {
    expectFailure(PowerSensor, battery, "Opening power sensor file");
}

TEST(PowerSensor, tries_the_supply_first) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    makeFile(battery, "12000\n");
    EXPECT_EQ(tracedBinding(PowerSensor),
              std::string("openat ") + supply + "\nopenat " + battery + "\nresult 0");
}

TEST(LightSensor, configures_and_binds_the_sensor) {
    for (const char* const path : {light, lightHysteresis, lightScanInterval})
        makeFile(path, "4711\n");
    expectBound(LightSensor, light);
    EXPECT_EQ(readFile(lightHysteresis), "10");
    EXPECT_EQ(readFile(lightScanInterval), "100");
    EXPECT_EQ(readFile(light), "4711\n");
}

TEST(LightSensor, is_configured_before_it_is_opened) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    for (const char* const path : {light, lightHysteresis, lightScanInterval})
        makeFile(path, "0\n");
    EXPECT_EQ(tracedBinding(LightSensor), std::string("openat ") + lightHysteresis +
                                              "\nwrite 10\nopenat " + lightScanInterval +
                                              "\nwrite 100\nopenat " + light + "\nresult 0");
}

TEST(LightSensor, works_without_the_attributes_that_configure_it) {
    makeFile(light, "0\n");
    expectBound(LightSensor, light);
    EXPECT_FALSE(exists(lightHysteresis));
    EXPECT_FALSE(exists(lightScanInterval));
}

TEST(LightSensor, works_when_the_driver_refuses_the_configuration) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    for (const char* const path : {light, lightHysteresis, lightScanInterval})
        makeFile(path, "0\n");
    const std::string calls =
        tracedBinding(LightSensor, {{}, {{SYS_write, 1, ERANGE, 0}, {SYS_write, 2, EIO, 0}}});
    EXPECT_NE(calls.find(std::string("openat ") + light + "\nresult 0"), std::string::npos)
        << calls;
}

TEST(LightSensor, fails_with_2_without_its_value_but_is_configured) {
    makeFile(lightHysteresis, "0\n");
    makeFile(lightScanInterval, "0\n");
    expectFailure(LightSensor, light, "Opening light sensor file");
    EXPECT_EQ(readFile(lightHysteresis), "10");
    EXPECT_EQ(readFile(lightScanInterval), "100");
}

TEST(TemperatureSensor, binds_the_temperature) {
    makeFile(temperature, "25\n");
    expectBound(TemperatureSensor, temperature);
}

TEST(TemperatureSensor, fails_with_2_without_its_value) {
    expectFailure(TemperatureSensor, temperature, "Opening temperature sensor file");
}

TEST(FrequencyInput, binds_the_frequency) {
    makeFile(frequency, "50\n");
    expectBound(FrequencyInput, frequency);
}

TEST(FrequencyInput, fails_with_2_without_its_value) {
    expectFailure(FrequencyInput, frequency, "Opening frequency input sysfs file");
}

}  // namespace ZR::test
