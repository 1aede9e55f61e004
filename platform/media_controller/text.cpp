#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "platform/media_controller/text_internal.h"

namespace ZR::media_controller {
namespace {

// The functions of <cctype> follow the process's locale, and not every char is a valid argument.

bool isBlank(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

char lowerCase(char character) {
    return isUpperCase(character) ? static_cast<char>(character - 'A' + 'a') : character;
}

bool isLetter(char character) {
    const char lower = lowerCase(character);
    return lower >= 'a' && lower <= 'z';
}

}  // namespace

bool isUpperCase(char character) noexcept {
    return character >= 'A' && character <= 'Z';
}

bool isSameWord(std::string_view left, std::string_view right) noexcept {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return lowerCase(a) == lowerCase(b); });
}

void Text::skipBlanks() noexcept {
    while (isBlank(*position_))
        ++position_;
}

bool Text::take(std::string_view expected) noexcept {
    // The NUL that ends the text is in no expected text: it stops the comparison.
    if (std::strncmp(position_, expected.data(), expected.size()) != 0)
        return false;
    position_ += expected.size();
    return true;
}

std::string_view Text::takeUntil(const char* ends) noexcept {
    const std::string_view taken(position_, std::strcspn(position_, ends));
    position_ += taken.size();
    return taken;
}

std::string_view Text::takeWord(bool withDigits) noexcept {
    const char* const begin = position_;
    while (isLetter(*position_) || *position_ == '-' || (withDigits && isDigit(*position_)))
        ++position_;
    return {begin, static_cast<std::size_t>(position_ - begin)};
}

unsigned int Text::takeNumber() noexcept {
    // Whoever prints errno after this is told of the kernel's last word, not of a long number.
    const int error = errno;
    char* end = nullptr;
    const unsigned long number = std::strtoul(position_, &end, 10);
    errno = error;
    position_ = end;
    return static_cast<unsigned int>(number);
}

}  // namespace ZR::media_controller
