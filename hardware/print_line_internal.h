#pragma once

#include <array>
#include <exception>
#include <initializer_list>
#include <iostream>
#include <memory_resource>
#include <string>
#include <string_view>

namespace ZR {

/// Writes one line, given in parts, to standard output and flushes it. The line goes out in one
/// piece, so that lines of several threads do not mix, and as it is, whatever field width, base or
/// exception mask the application has set on std::cout.
inline void printLine(std::initializer_list<std::string_view> parts) {
    const bool usable = std::cout.good();
    try {
        std::array<char, 256> room;  // NOLINT(*-init): filled by the line
        std::pmr::monotonic_buffer_resource memory(room.data(), room.size());
        std::pmr::string line(&memory);  // on the heap only beyond the room
        line.reserve(room.size() - 1);
        for (const std::string_view part : parts)
            line += part;
        line += '\n';
        std::cout.write(line.data(), static_cast<std::streamsize>(line.size())).flush();
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): nobody is left to tell
    }
    // A line that could not go out must not silence the lines that follow.
    if (usable && !std::cout.good())
        std::cout.clear();
}

}  // namespace ZR
