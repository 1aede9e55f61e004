#pragma once

#include "benchmarks/comparison.h"

namespace ZR::benchmarks {

// From a driver's change to the thread that learns of it, one notification a batch. Each side starts
// its thread with its first batch and ends it with the comparison.

/// A thread in a blocking receive, on the same socket as the library's.
Batch bareLatency();

/// End point manager, dispatcher and queue, up to postEvent().
Batch managedLatency();

}  // namespace ZR::benchmarks
