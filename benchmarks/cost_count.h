#pragma once

#include <functional>

#include "benchmarks/comparison.h"

namespace ZR::benchmarks {

/// Counts the system calls and the heap allocations of one run of an operation; negative where they
/// cannot be counted.
Cost countCost(const std::function<bool()>& operation);

}  // namespace ZR::benchmarks
