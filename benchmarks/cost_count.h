#pragma once

#include <functional>

#include "benchmarks/comparison.h"

namespace ZR::benchmarks {

/// An operation and what comes before and after it uncounted.
struct CountedRun {
    std::function<bool()> before;
    std::function<bool()> operation;
    std::function<bool()> after;
};

/// Counts the system calls and the heap allocations of one run of an operation; negative where they
/// cannot be counted.
/// @return false when a part of the run failed
bool countCost(const CountedRun& run, Cost& cost);

}  // namespace ZR::benchmarks
