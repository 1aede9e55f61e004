#pragma once

#include <exception>

#include "common/zrapi_common/zr_debug.h"

namespace ZR {

/// Reports a fault. A sink, or another maker's debug facility, that raises must not turn a result
/// code into an exception.
template <typename... Values>
void report(unsigned int section, const char* format, Values... values) {
    try {
        ZRDebug::debugPrintError(ZRDebug::levelError, section, format, values...);
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): nobody is left to tell
    }
}

}  // namespace ZR
