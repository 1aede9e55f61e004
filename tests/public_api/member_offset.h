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

/// Which slot of the virtual table an operation has, as the Itanium ABI tells by its pointer.
template <typename Operation>
std::ptrdiff_t slot(Operation operation) {
    std::ptrdiff_t offset = -1;
    std::memcpy(&offset, &operation, sizeof offset);
    // One more than the offset, or, where functions can have odd addresses, the offset itself.
    return offset / static_cast<std::ptrdiff_t>(sizeof(void*));
}
