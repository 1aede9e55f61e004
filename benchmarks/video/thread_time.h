#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace ZR::benchmarks {

/// Processor time that the thread of this process with this name has taken; 0 without such a thread.
std::chrono::nanoseconds threadTime(const std::string& name);

/// Waits 100 ms for something that does not come.
using Wait = std::function<void()>;

/// Makes the waits of a bus thread that has nothing to do, until @p time is over: one for each input,
/// then a sleep of 25 ms.
/// @return the processor time that they took
std::chrono::nanoseconds idleWaits(int inputs, std::chrono::milliseconds time, const Wait& wait);

/// A wait of the kernel alone, on a descriptor of its own.
Wait bareWait();
/// A wait for a message of a bus of its own.
Wait busWait();

/// Memory of this process that no file stands behind, in KiB; 0 when the kernel does not say.
long anonymousMemory();

}  // namespace ZR::benchmarks
