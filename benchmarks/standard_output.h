#pragma once

#include "benchmarks/comparison.h"
#include "common/file_descriptor_internal.h"

namespace ZR::benchmarks {

/// Sends standard output to the null device for as long as it lives.
class SilencedOutput {
  public:
    SilencedOutput();
    SilencedOutput(const SilencedOutput&) = delete;
    SilencedOutput& operator=(const SilencedOutput&) = delete;
    ~SilencedOutput();

  private:
    FileDescriptor output_;
};

/// Lets a batch print to nowhere. The switch over and back is not timed.
Batch silenced(Batch batch);

}  // namespace ZR::benchmarks
