#pragma once

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

namespace ZR::test {

/// The calls of the substitutes for the cameras' services, in one list: their order is part of what
/// is promised.
struct CaptureCallLog {
    static inline std::vector<std::string> calls;

    /// Whether calls are logged; a log needs the heap.
    static inline bool recording = true;

    /// Logs what @p text gives, a function so that nothing is built for nobody. On any thread; the
    /// calls are to be read when the others are over, and may be counted before.
    template <typename Text>
    static void add(Text text) {
        if (!recording)
            return;
        const std::lock_guard<std::mutex> lock(mutex);
        calls.push_back(text());
    }

    /// How many calls were logged whose text begins with this.
    static std::ptrdiff_t count(const std::string& start) {
        const std::lock_guard<std::mutex> lock(mutex);
        return std::count_if(calls.begin(), calls.end(), [&start](const std::string& call) {
            return call.compare(0, start.size(), start) == 0;
        });
    }

  private:
    static inline std::mutex mutex;
};

}  // namespace ZR::test
