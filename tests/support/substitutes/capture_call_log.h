#pragma once

#include <string>
#include <vector>

namespace ZR::test {

/// The calls of the substitutes for the cameras' services, in one list: their order is part of what
/// is promised.
struct CaptureCallLog {
    static inline std::vector<std::string> calls;

    /// Whether calls are logged; a log needs the heap.
    static inline bool recording = true;

    /// Logs what @p text gives, a function so that nothing is built for nobody.
    template <typename Text>
    static void add(Text text) {
        if (recording)
            calls.push_back(text());
    }
};

}  // namespace ZR::test
