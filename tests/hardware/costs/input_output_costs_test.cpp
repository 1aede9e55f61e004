#include <string>
#include <utility>
#include <vector>

#include "hardware/input_output/zr_input_output.h"
#include "tests/hardware/costs/operation_cost.h"
#include "tests/support/private_root.h"

namespace ZR::test {
namespace {

using InputOutputCost = CostTest;

Operation stateOf(ZRInputOutput& channel) {
    return [&channel] {
        bool state = false;
        return channel.getState(&state);
    };
}

Operation valueOf(ZRInputOutput& channel) {
    return [&channel] {
        int value = 0;
        return channel.getValue(&value);
    };
}

void expectOneRead(const OperationCost& cost, const std::string& path) {
    EXPECT_EQ(cost.result, "0");
    EXPECT_EQ(cost.calls(), "openat read close");
    EXPECT_EQ(cost.trace.calls.at(0).text, path);
    EXPECT_EQ(cost.allocations, 0U);
}

/// The calls that take a path or write, as "name text" lines.
std::vector<std::string> conversation(const Trace& trace) {
    std::vector<std::string> lines;
    for (const SystemCall& call : trace.calls)
        if (call.name != "close")
            lines.push_back(call.name + ' ' + call.text);
    return lines;
}

TEST_F(InputOutputCost, getState_of_a_digital_input_takes_open_read_close_and_no_heap) {
    makeFile("/sys/bus/platform/devices/zr_di.3/state", "1\n");
    ZRInputOutput input(DigitalInput, 4);
    expectOneRead(costOf(stateOf(input)), "/sys/bus/platform/devices/zr_di.3/state");
}

TEST_F(InputOutputCost, getState_of_a_digital_output_takes_open_read_close_and_no_heap) {
    makeFile("/sys/bus/platform/devices/zr_do.0/state", "0\n");
    ZRInputOutput output(DigitalOutput, 1);
    expectOneRead(costOf(stateOf(output)), "/sys/bus/platform/devices/zr_do.0/state");
}

TEST_F(InputOutputCost, getState_of_the_ignition_takes_open_read_close_and_no_heap) {
    makeFile("/sys/class/regulator/regulator.1/name", "ignition-irq\n");
    ZRInputOutput ignition(IgnitionInput, 0);
    expectOneRead(costOf(stateOf(ignition)), "/sys/class/regulator/regulator.1/name");
}

TEST_F(InputOutputCost, getValue_of_each_kind_takes_open_read_close_and_no_heap) {
    const std::vector<std::pair<zrIOType, std::string>> kinds{
        {AnalogInput, "/sys/class/analog/ai.0/value"},
        {PowerSensor, "/sys/class/analog/supply_vcc/value"},
        {LightSensor, "/sys/class/analog/light/value"},
        {TemperatureSensor, "/sys/class/analog/temperature/value"},
        {FrequencyInput, "/sys/class/analog/frequency/value"}};
    for (const auto& [type, path] : kinds) {
        SCOPED_TRACE(path);
        makeFile(path, "65535\n");
        ZRInputOutput input(type, 1);
        expectOneRead(costOf(valueOf(input)), path);
    }
}

TEST_F(InputOutputCost, an_operation_that_does_not_fit_the_channel_takes_no_call_at_all) {
    makeFile("/sys/bus/platform/devices/zr_di.0/state", "1\n");
    ZRInputOutput input(DigitalInput, 1);
    const OperationCost value = costOf(valueOf(input));
    const OperationCost on = costOf([&input] { return input.on(true); });
    EXPECT_EQ(value.result, "11");
    EXPECT_EQ(value.calls(), "");
    EXPECT_EQ(value.allocations, 0U);
    EXPECT_EQ(on.result, "11");
    EXPECT_EQ(on.calls(), "");
    EXPECT_EQ(on.allocations, 0U);
}

TEST_F(InputOutputCost, configureInput_takes_its_look_ups_and_writes_and_one_allocation) {
    const std::string input = "/sys/class/analog/ai.2";
    for (const char* const attribute : {"/value", "/measure_mode", "/toggle_load", "/hysteresis"})
        makeFile(input + attribute, "0\n");
    ZRInputOutput object(AnalogInput, 3);
    const OperationCost cost = costOf([&object] { return object.configureInput(3, 2, 25); });
    const std::string look = cost.trace.calls.at(0).name;
    EXPECT_NE(look.find("stat"), std::string::npos);
    const std::vector<std::string> expected{look + ' ' + input + "/measure_mode",
                                            "openat " + input + "/measure_mode",
                                            "write 1",
                                            "openat " + input + "/toggle_load",
                                            "write 1",
                                            look + ' ' + input + "/hysteresis",
                                            "openat " + input + "/hysteresis",
                                            "write 25"};
    EXPECT_EQ(cost.result, "0");
    EXPECT_EQ(conversation(cost.trace), expected);
    EXPECT_EQ(cost.trace.calls.size(), 11U);
    EXPECT_EQ(cost.allocations, 1U);
}

}  // namespace
}  // namespace ZR::test
