#include "tests/support/substitutes/operator_new_substitute.h"

#include <dlfcn.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

namespace ZR::test {

bool OperatorNewSubstitute::failNext = false;
std::size_t OperatorNewSubstitute::allowedBefore = 0;
const char* OperatorNewSubstitute::spared = nullptr;

namespace {

bool isSpared(const void* caller) {
    Dl_info from{};
    return OperatorNewSubstitute::spared != nullptr && ::dladdr(caller, &from) != 0 &&
           std::strstr(from.dli_fname, OperatorNewSubstitute::spared) != nullptr;
}

bool isToFail(const void* caller) {
    if (!OperatorNewSubstitute::failNext || isSpared(caller))
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
    if (ZR::test::isToFail(__builtin_return_address(0)))
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
