#pragma once

#include <fcntl.h>

#include <string>

#include "hardware/input_output/zr_input_output.h"

namespace ZR {

/// Where the numbered channels of one kind live.
struct ChannelGroup {
    const char* prefix;
    const char* suffix;
    unsigned short lastChannel;
    int openFlags;
    const char* openReport;
};

inline constexpr ChannelGroup digitalInputs{"/sys/bus/platform/devices/zr_di.", "/state", 4,
                                            O_RDONLY, "Opening digital input file"};
inline constexpr ChannelGroup digitalOutputs{"/sys/bus/platform/devices/zr_do.", "/state", 3,
                                             O_RDWR, "Opening digital output file"};
inline constexpr ChannelGroup analogInputs{"/sys/class/analog/ai.", "/value", 4, O_RDONLY,
                                           "Opening analog input file"};

/// The group of a digital input, a digital output or (any other type) an analog input.
constexpr const ChannelGroup& channelGroup(zrIOType type) {
    if (type == DigitalInput)
        return digitalInputs;
    return type == DigitalOutput ? digitalOutputs : analogInputs;
}

/// Tells whether @p channel (1-based) exists in @p group.
constexpr bool contains(const ChannelGroup& group, unsigned short channel) {
    return channel >= 1 && channel <= group.lastChannel;
}

/// Path of the attribute of a channel that exists in @p group. Groups have at most nine channels,
/// so the 0-based number in a device's name is one digit.
inline std::string channelPath(const ChannelGroup& group, unsigned short channel) {
    return std::string(group.prefix) + static_cast<char>('0' + channel - 1) + group.suffix;
}

/// The driver's number as the interface gives it: an unsigned 16-bit quantity.
constexpr int lowSixteenBits(int value) {
    return value & 0xFFFF;
}

/// What configureInput() writes for one measure mode.
struct MeasureModeSetting {
    bool valid;
    int measureMode;
    bool toggleLoad;
};

/// Modes 0 and 1 write the same value on purpose: they differ only in what the object records.
constexpr MeasureModeSetting measureModeSetting(int mode) {
    return {mode >= 0 && mode <= 2, mode == 2 ? 1 : 0, mode == 2};
}

}  // namespace ZR
