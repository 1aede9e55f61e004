#include "benchmarks/board.h"

#include <unistd.h>

#include <array>
#include <utility>

#include "tests/support/private_machine.h"
#include "tests/support/private_root.h"

namespace ZR::benchmarks {
namespace {

constexpr char realAttribute[] = "/sys/bus/platform/devices/zr_di.0/state";

constexpr std::array<std::pair<const char*, const char*>, 17> files{{
    {realAttribute, "1\n"},
    {"/sys/bus/platform/devices/zr_do.0/state", "0\n"},
    {"/sys/bus/platform/devices/pwm-speaker.0/volume", "50\n"},
    {"/sys/class/analog/ai.0/value", "12000\n"},
    {"/sys/class/analog/ai.0/measure_mode", "0\n"},
    {"/sys/class/analog/ai.0/toggle_load", "0\n"},
    {"/sys/class/analog/ai.0/hysteresis", "0\n"},
    {"/sys/class/backlight/backlight/brightness", "128\n"},
    {"/sys/class/leds/bl:key/brightness", "128\n"},
    {"/sys/class/leds/bl:key/max_brightness", "255\n"},
    {"/sys/class/leds/bl:enc/brightness", "128\n"},
    {"/sys/class/leds/bl:enc/max_brightness", "255\n"},
    {"/sys/class/leds/user:rgb/brightness", "3430008\n"},
    {"/sys/class/regulator/regulator.0/name", "ignition-irq\n"},
    {"/dev/input/encoder0", ""},
    {"/dev/input/touchscreen0", ""},
    // No terminating newline: a device tree has none.
    {"/proc/device-tree/compatible", "fsl,imx6q-board"},
}};

}  // namespace

bool prepareBoard(char* const* arguments, std::string& board) {
    if (::access(realAttribute, R_OK) == 0) {
        board = "kernel drivers";
        return true;
    }
    const std::string reason = test::enterPrivateMachine(arguments);
    if (!reason.empty()) {
        board = "no drivers and no private namespace: " + reason;
        return false;
    }
    for (const auto& [path, content] : files)
        test::makeFile(path, content);
    board = "files in memory (private namespace)";
    return true;
}

}  // namespace ZR::benchmarks
