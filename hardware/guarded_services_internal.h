#pragma once

#include <exception>
#include <string>

#include "common/zrapi_utility/zr_file_access.h"

namespace ZR {

/// The file services for operations that must not raise: those of another maker may.
/// Each returns the service's status, or -1 for one that raised.

template <typename Service>
int statusOf(Service service) noexcept {
    try {
        return service();
    } catch (const std::exception&) {
        return -1;
    }
}

inline int readInteger(const std::string& path, int* value) noexcept {
    return statusOf([&] { return readIntegerFromFile(path, value); });
}

inline int readText(const std::string& path, std::string* text) noexcept {
    return statusOf([&] { return readStringFromFile(path, text); });
}

inline int writeInteger(const std::string& path, int value) noexcept {
    return statusOf([&] { return writeToFile(path, value); });
}

}  // namespace ZR
