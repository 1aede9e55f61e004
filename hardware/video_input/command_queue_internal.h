#pragma once

#include <algorithm>
#include <list>

#include "hardware/video_input/zr_video_input_interface.h"

namespace ZR {

/// Only the last element is compared: start, stop, start stays as it is, start, start is one start.
/// A stop makes what waits before it pointless.
inline void appendCommand(std::list<int>& queue, int command) {
    if (!queue.empty() && queue.back() == command)
        return;
    if (command == CommandStop)
        queue.clear();
    queue.push_back(command);
}

inline bool holdsStop(const std::list<int>& queue) {
    return std::find(queue.begin(), queue.end(), CommandStop) != queue.end();
}

}  // namespace ZR
