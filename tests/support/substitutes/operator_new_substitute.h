#pragma once

#include <cstddef>

namespace ZR::test {

/// Takes the place of `operator new` in a program.
struct OperatorNewSubstitute {
    /// Makes the next allocation raise std::bad_alloc; false again once it has.
    static bool failNext;

    /// How many allocations still succeed before the one that fails.
    static std::size_t allowedBefore;

    /// Part of the path of a library whose own allocations neither fail nor count; null for none.
    static const char* spared;
};

}  // namespace ZR::test
