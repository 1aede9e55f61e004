#include "tests/support/substitutes/operator_new_substitute.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace ZR::test {

bool OperatorNewSubstitute::failNext = false;
std::size_t OperatorNewSubstitute::allowedBefore = 0;

namespace {

bool isToFail() {
    if (!OperatorNewSubstitute::failNext)
        return false;
    if (OperatorNewSubstitute::allowedBefore > 0) {
        --OperatorNewSubstitute::allowedBefore;
        return false;
    }
    OperatorNewSubstitute::failNext = false;
    return true;
}

}  // namespace

}  // namespace ZR::test

// The array forms of the C++ library call these.

void* operator new(std::size_t size) {
    if (ZR::test::isToFail())
        throw std::bad_alloc();
    if (void* const memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
