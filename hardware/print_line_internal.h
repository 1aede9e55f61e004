#pragma once

#include <initializer_list>
#include <iostream>
#include <string_view>

namespace ZR {

/// Writes one line, given in parts, to standard output and flushes it. The text goes out as it is,
/// whatever field width, base or other format the application has set on std::cout.
inline void printLine(std::initializer_list<std::string_view> parts) {
    for (const std::string_view part : parts)
        std::cout.write(part.data(), static_cast<std::streamsize>(part.size()));
    std::cout.put('\n').flush();
}

}  // namespace ZR
