#include "common/zrapi_common/zr_debug.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <deque>
#include <mutex>
#include <string_view>

namespace ZR {
namespace {

class Sections {
  public:
    unsigned int insert(const std::string& name) {
        const std::lock_guard<std::mutex> lock(mutex_);
        const auto known = std::find(names_.begin(), names_.end(), name);
        if (known != names_.end())
            return static_cast<unsigned int>(known - names_.begin()) + 1;
        names_.push_back(name);
        return static_cast<unsigned int>(names_.size());
    }

    /// The name stays valid for good: a deque never moves its elements when it grows at its end.
    const char* name(unsigned int section) {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (section == 0 || section > names_.size())
            return "unknown";
        return names_[section - 1].c_str();
    }

  private:
    std::mutex mutex_;
    std::deque<std::string> names_;
};

/// Never destroyed: sections are registered before any static object of this library may exist, and
/// destructors of other libraries report after this library's would have run. Unloading this
/// library leaves it behind, which a process does at its end only.
Sections& sections() {
    static auto* const instance = new Sections;
    return *instance;
}

std::atomic<ZRDebug::Sink> currentSink{nullptr};

/// The formatted message, or the bare format when it cannot be formatted.
std::string formatMessage(const char* format, std::va_list values) {
    std::va_list again;
    va_copy(again, values);
    const int length = std::vsnprintf(nullptr, 0, format, values);
    std::string message(length < 0 ? format : "");
    if (length >= 0) {
        message.resize(static_cast<std::size_t>(length));
        std::vsnprintf(message.data(), message.size() + 1, format, again);
    }
    va_end(again);
    return message;
}

void writeToStandardError(const char* section, const std::string& message) {
    const std::string line = section + (": " + message) + '\n';
    std::string_view rest = line;
    while (!rest.empty()) {
        const ssize_t written = ::write(STDERR_FILENO, rest.data(), rest.size());
        if (written < 0 && errno == EINTR)
            continue;
        // Nobody is left to tell that standard error is closed or full.
        if (written <= 0)
            return;
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
}

}  // namespace

unsigned int ZRDebug::insertNewDebugSection(const std::string& name) {
    return sections().insert(name);
}

void ZRDebug::debugPrintError(int level, unsigned int section, const char* format, ...) {
    std::va_list values;
    va_start(values, format);
    const std::string message = formatMessage(format, values);
    va_end(values);
    const char* const name = sections().name(section);
    if (const Sink sink = currentSink.load())
        sink(level, name, message.c_str());
    else
        writeToStandardError(name, message);
}

void ZRDebug::setSink(Sink sink) {
    currentSink.store(sink);
}

}  // namespace ZR
