#pragma once

#include "benchmarks/comparison.h"

namespace ZR::benchmarks {

/// Runs each batch, of one operation, in a child process of its own: for what a process does once.
Batch inFreshProcess(Batch batch);

/// Runs `program argument` and returns the nanoseconds that it prints, as seconds; negative when it
/// fails.
double secondsPrintedBy(const std::string& program, const std::string& argument);

}  // namespace ZR::benchmarks
