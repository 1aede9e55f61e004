#pragma once

/// @file
/// The attributes of a terminal, as files of the private machine.

namespace ZR::test {

inline constexpr char display[] =
    "/sys/devices/platform/pwm-backlight.0/backlight/pwm-backlight.0/brightness";
inline constexpr char key[] = "/sys/class/leds/bl:key/brightness";
inline constexpr char keyMaximum[] = "/sys/class/leds/bl:key/max_brightness";
inline constexpr char keyTrigger[] = "/sys/class/leds/bl:key/trigger";
inline constexpr char encoder[] = "/sys/class/leds/bl:enc/brightness";
inline constexpr char encoderMaximum[] = "/sys/class/leds/bl:enc/max_brightness";
inline constexpr char rgb[] = "/sys/class/leds/user:rgb/brightness";
inline constexpr char beeper[] = "/sys/bus/platform/devices/pwm-speaker.0/volume";

inline constexpr char di1[] = "/sys/bus/platform/devices/zr_di.0/state";
inline constexpr char di2[] = "/sys/bus/platform/devices/zr_di.1/state";
inline constexpr char do1[] = "/sys/bus/platform/devices/zr_do.0/state";
inline constexpr char ai1[] = "/sys/class/analog/ai.0/value";
inline constexpr char ai1MeasureMode[] = "/sys/class/analog/ai.0/measure_mode";
inline constexpr char ai1ToggleLoad[] = "/sys/class/analog/ai.0/toggle_load";
inline constexpr char ai1Hysteresis[] = "/sys/class/analog/ai.0/hysteresis";

/// All channels: inputs and outputs off, ai1 to ai4 at 1000 to 4000, sensors with plain values.
void makeInputsAndOutputs();

/// All dimmable devices: the display at 128, the key and encoder LEDs plain, the rest at 0.
void makeDimmableDevices();

}  // namespace ZR::test
