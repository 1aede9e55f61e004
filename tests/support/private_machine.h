#pragma once

#include <string>

namespace ZR::test {

/// Moves the process into a user and mount namespace of its own and lays empty folders in memory
/// over /sys, /dev, /proc and /usr/bin. Must be called before any thread is started.
///
/// Where a sanitizer's own thread is in the way, the program is run again in a child inside the
/// namespace, and this call ends the process with the child's exit status.
///
/// @return an empty text, or the reason why the machine cannot be made private
std::string enterPrivateMachine(char* const* arguments);

/// True once the machine's own /sys, /dev and /proc are out of this process's reach.
bool isMachinePrivate();

}  // namespace ZR::test
