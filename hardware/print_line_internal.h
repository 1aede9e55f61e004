#pragma once

#include <array>
#include <exception>
#include <initializer_list>
#include <iostream>
#include <memory_resource>
#include <string>
#include <string_view>

namespace ZR {

enum class LineEnd { None, Flushed };

/// Writes one text, given in parts, to standard output; with its line end it is flushed. It goes
/// out in one piece, so that texts of several threads do not mix, and as it is, whatever field
/// width, base or exception mask the application has set on std::cout.
inline void print(std::initializer_list<std::string_view> parts, LineEnd end) {
    const bool usable = std::cout.good();
    try {
        std::array<char, 256> room;  // NOLINT(*-init): filled by the text
        std::pmr::monotonic_buffer_resource memory(room.data(), room.size());
        std::pmr::string text(&memory);  // on the heap only beyond the room
        text.reserve(room.size() - 1);
        for (const std::string_view part : parts)
            text += part;
        if (end == LineEnd::Flushed)
            text += '\n';
        std::cout.write(text.data(), static_cast<std::streamsize>(text.size()));
        if (end == LineEnd::Flushed)
            std::cout.flush();
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): nobody is left to tell
    }
    // A text that could not go out must not silence those that follow.
    if (usable && !std::cout.good())
        std::cout.clear();
}

/// Writes one line, given in parts, to standard output and flushes it.
inline void printLine(std::initializer_list<std::string_view> parts) {
    print(parts, LineEnd::Flushed);
}

/// Writes a text without a line end, which stays in the stream's buffer until something flushes it.
inline void printUnended(std::initializer_list<std::string_view> parts) {
    print(parts, LineEnd::None);
}

}  // namespace ZR
