#pragma once

#include <algorithm>
#include <string>

#include "can_witness.h"

namespace ZR::test {

/// can0 and can1 as controllers whose bus goes wrong at will. Each case begins with a quiet one.
class SimcanBoard : public CanPorts {
  protected:
    void SetUp() override {
        for (const std::string controller : {"simcan.0/", "simcan.1/"}) {
            turn(controller + "present", "1");
            turn(controller + "ack", "1");
            for (const char* knob : {"mute", "stall", "fail_open", "fail_bitrate", "fail_restart"})
                turn(controller + knob, "0");
        }
        CanPorts::SetUp();
        clearLog();
    }
};

/// Takes a controller away and brings it back: without a rate, with all counters at 0.
inline void replug(const std::string& controller) {
    turn(controller + "/present", "0");
    turn(controller + "/present", "1");
}

/// Waits until the board has logged a line.
inline bool isLogged(const std::string& line) {
    return eventually([&] {
        const std::vector<std::string> lines = logLines();
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    });
}

}  // namespace ZR::test
