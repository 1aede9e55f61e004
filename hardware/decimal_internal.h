#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <limits>
#include <string_view>

namespace ZR {

/// A number as decimal text, for as long as the object lives. No heap, no locale.
class Decimal {
  public:
    template <typename Number>
    explicit Decimal(Number number) {
        end_ = std::to_chars(text_.data(), text_.data() + text_.size(), number).ptr;
    }
    Decimal(const Decimal&) = delete;  // the end points into the text
    Decimal& operator=(const Decimal&) = delete;

    std::string_view text() const {
        return {text_.data(), static_cast<std::size_t>(end_ - text_.data())};
    }

  private:
    std::array<char, std::numeric_limits<unsigned long long>::digits10 + 3> text_{};
    char* end_ = nullptr;
};

}  // namespace ZR
