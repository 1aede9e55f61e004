#pragma once

#include <string_view>

namespace ZR::media_controller {

/// Reads a text that a NUL ends, from left to right; never beyond the NUL.
class Text {
  public:
    explicit Text(const char* position) noexcept : position_(position) {}

    const char* position() const noexcept { return position_; }
    char front() const noexcept { return *position_; }

    void skipBlanks() noexcept;
    /// Takes @p expected if it comes next.
    bool take(std::string_view expected) noexcept;
    /// Takes what comes before the first of @p ends, or before the end of the text.
    std::string_view takeUntil(const char* ends) noexcept;
    /// Takes letters and "-", and digits where @p withDigits.
    std::string_view takeWord(bool withDigits) noexcept;
    /// Takes blanks, a sign and decimal digits, all optional. What is no number is 0; a larger one
    /// than fits wraps around or ends at the largest, as strtoul and a narrower type have it.
    unsigned int takeNumber() noexcept;

  private:
    const char* position_;
};

bool isUpperCase(char character) noexcept;
/// Equal but for the case of the 26 letters.
bool isSameWord(std::string_view left, std::string_view right) noexcept;

}  // namespace ZR::media_controller
