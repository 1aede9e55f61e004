#include "tests/support/allocation_counter.h"

#include <malloc.h>

#include <cerrno>
#include <cstdlib>

namespace {

thread_local std::size_t allocations = 0;

}  // namespace

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ZR_TEST_FOREIGN_HEAP 1
#else
#define ZR_TEST_FOREIGN_HEAP 0

// The executable's definitions take the place of the C library's for all libraries of the process.
extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

void* malloc(std::size_t size) noexcept {
    ++allocations;
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) noexcept {
    ++allocations;
    return __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) noexcept {
    ++allocations;
    return __libc_realloc(block, size);
}

void* memalign(std::size_t alignment, std::size_t size) noexcept {
    ++allocations;
    return __libc_memalign(alignment, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    ++allocations;
    return __libc_memalign(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
    ++allocations;
    *block = __libc_memalign(alignment, size);
    return *block == nullptr ? ENOMEM : 0;
}

}  // extern "C"
#endif

namespace ZR::test {

AllocationCounter::AllocationCounter() : start_(allocations) {}

std::size_t AllocationCounter::count() const {
    return allocations - start_;
}

bool canCountAllocations() {
    return ZR_TEST_FOREIGN_HEAP == 0;
}

}  // namespace ZR::test
