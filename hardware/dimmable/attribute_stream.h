#pragma once

#include <array>
#include <atomic>
#include <ios>
#include <string>
#include <string_view>

#include "common/zrapi_export.h"

namespace ZR {

/// Kernel attribute file that stays open, with the life cycle and the error states of a
/// std::fstream. Public only because ZRDimmable holds five of them by value.
///
/// It differs from a std::fstream where a kernel attribute needs it:
/// - Value and line end leave in one write. A value that the driver refused is dropped, never sent
///   again by a later operation.
/// - A line that cannot be read to its end is a failure, never half a value.
/// - The descriptor closes on exec.
/// - Nothing but the error state and the position in the file change after open(). Threads that use
///   one object at once may replace each other's value, or miss it and fail; nothing is corrupted.
class ZRAPI_EXPORT AttributeStream {
  public:
    /// Room for the largest attribute, one page, and the NUL behind it.
    using Line = std::array<char, 4096 + 1>;

    AttributeStream() = default;
    AttributeStream(const AttributeStream&) = delete;
    AttributeStream& operator=(const AttributeStream&) = delete;
    ~AttributeStream();

    /// Selects the error states that raise std::ios_base::failure from then on; none at first.
    void exceptions(std::ios_base::iostate states) { raising_ = states; }
    std::ios_base::iostate exceptions() const { return raising_; }

    /// Tells whether no error state, nor the end of the file, is set.
    bool good() const { return state_ == std::ios_base::goodbit; }

    /// Forgets all error states.
    void clear() { state_ = std::ios_base::goodbit; }

    /// Opens @p path for reading and writing, without truncating it, and forgets all error states.
    /// Sets the fail state when it cannot be opened or the object is open already.
    void open(const std::string& path);

    bool is_open() const { return descriptor_ >= 0; }

    /// Closes; sets the fail state when nothing was open or the kernel reports a failure.
    void close();

    /// Replaces the value: goes to the start and writes @p text, which ends in its line end.
    /// Sets the fail state when it is not good() or cannot go to the start, the bad state when the
    /// driver refuses the text.
    void writeLine(std::string_view text);

    /// Reads the value: goes to the start and reads one line.
    ///
    /// Sets the fail state when it is not good(), cannot go to the start, or finds no character; the
    /// bad state when the driver refuses; the end-of-file state when the line has no line end.
    ///
    /// @param line  receives the line, ended by a NUL in place of its line end, and of a line longer
    ///              than a page what comes first
    void readLine(Line& line);

  private:
    void addState(std::ios_base::iostate states);
    bool goToStart();
    std::ios_base::iostate receiveLine(Line& line) const;
    std::ios_base::iostate skipLine() const;

    int descriptor_ = -1;
    std::ios_base::iostate raising_ = std::ios_base::goodbit;
    std::atomic<std::ios_base::iostate> state_{std::ios_base::goodbit};
};

}  // namespace ZR
