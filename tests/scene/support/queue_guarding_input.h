#pragma once

#include <mutex>
#include <string>

#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

namespace ZR::test {

/// An input whose queue is locked while it is changed, as an application may do where starts fail at
/// once: a camera that is gone fails inside its start, so that the bus thread queues the stop in the
/// moment in which the Qt thread takes the start off the list. All that writes the list is virtual.
class QueueGuardingInput : public ZRGstreamerVideoInput {
  public:
    using ZRGstreamerVideoInput::ZRGstreamerVideoInput;

    int start(unsigned short input) override {
        const std::lock_guard<std::mutex> lock(guard_);
        return ZRGstreamerVideoInput::start(input);
    }

    int stop(unsigned short input) override {
        const std::lock_guard<std::mutex> lock(guard_);
        return ZRGstreamerVideoInput::stop(input);
    }

    int setCurrentInterface(int value) override {
        const std::lock_guard<std::mutex> lock(guard_);
        return ZRGstreamerVideoInput::setCurrentInterface(value);
    }

    void handleQueuedCommands() override {
        for (int command = takeCommand(); command != none; command = takeCommand()) {
            if (command == CommandStart)
                startSlot();
            else if (command == CommandStop)
                stopSlot();
            else if (command == CommandChangeInterface)
                changeInterfaceSlot();
        }
    }

  private:
    static constexpr int none = -1;

    int takeCommand() {
        const std::lock_guard<std::mutex> lock(guard_);
        if (commandQueue.empty())
            return none;
        const int command = commandQueue.front();
        commandQueue.pop_front();
        return command;
    }

    std::mutex guard_;
};

}  // namespace ZR::test
