#pragma once

#include <string>

#include "tools/zrctl/can_capture.h"
#include "tools/zrctl/can_port.h"

namespace zrctl {

/// The line of one frame, its newline included: candump's, or a JSON document.
std::string frameLine(const CanPort& port, const CapturedFrame& frame, bool json);

/// True for what the kernel tells of the bus in the form of a frame.
bool isBusCondition(const CapturedFrame& frame);

/// "bus-off; ...": what such a frame says.
std::string busConditionText(const CapturedFrame& frame);

/// What the failed read of a port says.
std::string portErrorText(int error);

}  // namespace zrctl
