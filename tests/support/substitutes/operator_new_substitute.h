#pragma once

namespace ZR::test {

/// Takes the place of `operator new` in a program.
struct OperatorNewSubstitute {
    /// Makes the next allocation raise std::bad_alloc; false again once it has.
    static bool failNext;
};

}  // namespace ZR::test
