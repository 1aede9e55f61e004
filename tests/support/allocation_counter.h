#pragma once

#include <cstddef>

namespace ZR::test {

/// Counts the heap allocations (malloc and its family, and so operator new) that the thread which
/// made it makes while it lives. Test canCountAllocations() first:
/// `if (!canCountAllocations()) GTEST_SKIP() << "a sanitizer owns the heap";`
class AllocationCounter {
  public:
    AllocationCounter();

    /// Allocations of this thread since construction.
    std::size_t count() const;

  private:
    std::size_t start_;
};

/// False under a sanitizer, which brings an allocator of its own.
bool canCountAllocations();

}  // namespace ZR::test
