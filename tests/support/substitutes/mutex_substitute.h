#pragma once

#include <vector>

/// Stands between std::mutex and the C library's mutexes; link `zrapi_substitute_mutex`.
/// Passes everything on, unless told otherwise. For tests with one thread.

namespace ZR::test {

enum class MutexOperation { Lock, Unlock };

struct MutexCall {
    MutexOperation operation;
    const void* mutex;  ///< address of the std::mutex
};

struct MutexSubstitute {
    static const void* refused;  ///< locking this mutex fails with EINVAL; null for none
    static bool recording;       ///< whether calls are logged
    static std::vector<MutexCall> calls;
};

}  // namespace ZR::test
