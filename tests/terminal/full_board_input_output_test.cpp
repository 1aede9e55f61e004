#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "board.h"
#include "hardware/input_output/zr_input_output.h"

namespace ZR::test {
namespace {

struct BoundChannel : ZRInputOutput {
    using ZRInputOutput::path;
    using ZRInputOutput::ZRInputOutput;
};

using Lines = std::vector<std::string>;

}  // namespace

TEST(FullBoardInputOutput, a_digital_input_follows_the_switch_on_the_board) {
    ZRInputOutput input(DigitalInput, 4);
    bool state = false;
    turn("zr_di.3/state/value", "1");
    EXPECT_EQ(0U, input.getState(&state));
    EXPECT_TRUE(state);
    turn("zr_di.3/state/value", "0");
    EXPECT_EQ(0U, input.getState(&state));
    EXPECT_FALSE(state);
}

TEST(FullBoardInputOutput, a_digital_state_of_2_is_true_and_10) {
    collectReports();
    ZRInputOutput input(DigitalInput, 1);
    bool state = false;
    turn("zr_di.0/state/value", "2");
    EXPECT_EQ(10U, input.getState(&state));
    EXPECT_TRUE(state);
    turn("zr_di.0/state/value", "0");
}

TEST(FullBoardInputOutput, a_switched_output_is_what_cat_sees) {
    ZRInputOutput output(DigitalOutput, 3);
    EXPECT_EQ(0U, output.on(true));
    EXPECT_EQ("1", seenByCat("/sys/bus/platform/devices/zr_do.2/state"));
    bool state = false;
    EXPECT_EQ(0U, output.getState(&state));
    EXPECT_TRUE(state);
    EXPECT_EQ(0U, output.on(false));
    EXPECT_EQ("0", seenByCat("/sys/bus/platform/devices/zr_do.2/state"));
}

TEST(FullBoardInputOutput, an_output_that_refuses_answers_6_and_works_again) {
    const auto& reports = collectReports();
    ZRInputOutput output(DigitalOutput, 1);
    turn("zr_do.0/state/fail_write", "EIO");
    EXPECT_EQ(6U, output.on(true));
    EXPECT_EQ(Lines{"zr_io: Writing state to file /sys/bus/platform/devices/zr_do.0/state"},
              reports);
    EXPECT_EQ(0U, output.on(true));
    EXPECT_EQ("1", seenByCat("/sys/bus/platform/devices/zr_do.0/state"));
    EXPECT_EQ(0U, output.on(false));
}

TEST(FullBoardInputOutput, analog_inputs_and_sensors_give_what_cat_sees) {
    const std::vector<std::pair<zrIOType, std::string>> sensors{
        {AnalogInput, "ai.1"},         {PowerSensor, "supply_vcc"},
        {LightSensor, "light"},        {TemperatureSensor, "temperature"},
        {FrequencyInput, "frequency"},
    };
    for (const auto& [type, name] : sensors) {
        BoundChannel sensor(type, 2);
        EXPECT_EQ("/sys/class/analog/" + name + "/value", sensor.path);
        int value = -1;
        EXPECT_EQ(0U, sensor.getValue(&value)) << name;
        EXPECT_EQ(seenByCat(sensor.path), std::to_string(value)) << name;
    }
}

TEST(FullBoardInputOutput, a_reading_of_70000_is_4464) {
    ZRInputOutput input(AnalogInput, 1);
    turn("ai.0/value/value", "70000");
    int value = -1;
    EXPECT_EQ(0U, input.getValue(&value));
    EXPECT_EQ(4464, value);
    turn("ai.0/value/value", "1000");
}

TEST(FullBoardInputOutput, each_error_of_a_sensor_is_5_once_and_the_next_reading_is_good) {
    const auto& reports = collectReports();
    ZRInputOutput sensor(TemperatureSensor, 1);
    std::size_t failures = 0;
    for (const char* error : {"EIO", "EAGAIN", "ENODATA", "ENXIO", "ETIMEDOUT", "EACCES"}) {
        turn("temperature/value/fail_read", error);
        int value = -7;
        EXPECT_EQ(5U, sensor.getValue(&value)) << error;
        EXPECT_EQ(-7, value) << error;
        EXPECT_EQ(Lines(++failures, "zr_io: Reading int value"), reports);
        EXPECT_EQ(0U, sensor.getValue(&value)) << error;
        EXPECT_EQ(25, value) << error;
    }
}

TEST(FullBoardInputOutput, text_that_is_no_number_is_5) {
    collectReports();
    ZRInputOutput input(AnalogInput, 4);
    turn("ai.3/value/value", "abc");
    int value = -7;
    EXPECT_EQ(5U, input.getValue(&value));
    EXPECT_EQ(-7, value);
    turn("ai.3/value/value", "4000");
}

TEST(FullBoardInputOutput, a_driver_that_comes_back_is_usable_again) {
    collectReports();
    ZRInputOutput input(DigitalInput, 2);
    bool state = false;
    turn("zr_di.1/present", "0");
    EXPECT_EQ(5U, input.getState(&state));
    turn("zr_di.1/present", "1");
    EXPECT_EQ(0U, input.getState(&state));
}

TEST(FullBoardInputOutput, a_light_sensor_is_set_up_before_it_is_bound) {
    clearLog();
    const ZRInputOutput sensor(LightSensor, 0);
    EXPECT_EQ((Lines{"light hysteresis 10", "light scan_interval 100"}), logLines());
    EXPECT_EQ("100", seenByCat("/sys/class/analog/light/scan_interval"));
}

TEST(FullBoardInputOutput, the_ignition_is_found_among_the_regulators) {
    BoundChannel ignition(IgnitionInput, 0);
    EXPECT_EQ("ignition-irq", seenByCat(ignition.path));
    bool state = true;
    // The name attribute never reads "enabled" on a real kernel, whatever the ignition does.
    turn("ignition/state/value", "1");
    EXPECT_EQ(0U, ignition.getState(&state));
    EXPECT_FALSE(state);
    turn("ignition/state/value", "0");
}

TEST(FullBoardInputOutput, mode_2_switches_the_load_on_and_writes_the_hysteresis_last) {
    ZRInputOutput channel(DigitalInput, 1);
    clearLog();
    EXPECT_EQ(0U, channel.configureInput(3, 2, 42));
    EXPECT_EQ((Lines{"ai.2 measure_mode 1", "ai.2 toggle_load 1", "ai.2 hysteresis 42"}),
              logLines());
    EXPECT_EQ("42", seenByCat("/sys/class/analog/ai.2/hysteresis"));
}

TEST(FullBoardInputOutput, mode_3_is_11_and_writes_the_hysteresis_alone) {
    ZRInputOutput channel(AnalogInput, 1);
    clearLog();
    EXPECT_EQ(11U, channel.configureInput(1, 3, 7));
    EXPECT_EQ(Lines{"ai.0 hysteresis 7"}, logLines());
}

TEST(FullBoardInputOutput, a_refused_configuration_shows_in_no_result) {
    ZRInputOutput channel(AnalogInput, 1);
    clearLog();
    turn("ai.0/measure_mode/fail_write", "EBUSY");
    EXPECT_EQ(0U, channel.configureInput(1, 1, 8));
    EXPECT_EQ((Lines{"ai.0 measure_mode 0 error EBUSY", "ai.0 hysteresis 8"}), logLines());
}

}  // namespace ZR::test
