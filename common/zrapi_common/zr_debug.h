#pragma once

#include <string>

#include "common/zrapi_export.h"

namespace ZR {

/// Fault reports under named sections.
///
/// A report never changes what the reporting operation does or returns. All operations are callable
/// from any thread, also while other libraries are being loaded and at process exit.
class ZRAPI_EXPORT ZRDebug {
  public:
    /// Receives a report: its level, the name of its section and the formatted message. Both texts
    /// are valid during the call only. Called on the reporting thread, possibly on several at once,
    /// in the middle of the operation that failed: a sink uses no object of the hardware library
    /// (its lock may be held) and raises no exception.
    using Sink = void (*)(int level, const char* section, const char* message);

    /// Level of an error, the only one that the library issues.
    static constexpr int levelError = 1;

    /// Registers a section and returns its handle, never 0. The same name gives the same handle.
    static unsigned int insertNewDebugSection(const std::string& name);

    /// Reports a fault: hands it to the sink, or writes the line "<section>: <message>" to standard
    /// error in one write. A handle that was never returned reports under the section "unknown".
    ///
    /// @param level    severity; levelError
    /// @param section  handle from insertNewDebugSection()
    /// @param format   printf-style format of the values that follow
    static void debugPrintError(int level, unsigned int section, const char* format, ...)
        __attribute__((format(printf, 3, 4)));

    /// Replaces the destination of all reports; null restores standard error. The function must
    /// stay callable until it is replaced and no other thread reports any more.
    static void setSink(Sink sink);
};

}  // namespace ZR
