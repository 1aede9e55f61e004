#pragma once

#include <cstddef>
#include <cstring>

/// A pointer to a data member is its offset in the Itanium ABI.
template <typename Class, typename Member>
std::ptrdiff_t offset(Member Class::*member) {
    static_assert(sizeof member == sizeof(std::ptrdiff_t));
    std::ptrdiff_t result = -1;
    std::memcpy(&result, &member, sizeof result);
    return result;
}
