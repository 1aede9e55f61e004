#pragma once

#include <exception>
#include <string>

#include "common/zrapi_utility/zr_file_access.h"

namespace ZR {

// The file services for operations that must not raise: those of another maker may. Only standard
// exceptions are caught: what ends a thread passes.

/// Returns the service's status, or -1 when it raised a standard exception.
template <typename Service>
int statusOf(Service service) {
    try {
        return service();
    } catch (const std::exception&) {
        return -1;
    }
}

inline int readInteger(const std::string& path, int* value) {
    return statusOf([&] { return readIntegerFromFile(path, value); });
}

inline int readText(const std::string& path, std::string* text) {
    return statusOf([&] { return readStringFromFile(path, text); });
}

inline int writeInteger(const std::string& path, int value) {
    return statusOf([&] { return writeToFile(path, value); });
}

}  // namespace ZR
