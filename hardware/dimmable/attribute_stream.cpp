#include "hardware/dimmable/attribute_stream.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace ZR {
namespace {

// The platform library's twins of these two are its own: the maker's may have none.

/// Writes all of it; false when the kernel refuses some.
bool writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

ssize_t readOnce(int descriptor, char* data, std::size_t size) {
    ssize_t received = -1;
    do {
        received = ::read(descriptor, data, size);
    } while (received < 0 && errno == EINTR);
    return received;
}

}  // namespace

AttributeStream::~AttributeStream() {
    if (is_open())
        (void)::close(descriptor_);
}

void AttributeStream::open(const std::string& path) {
    if (is_open()) {
        addState(std::ios_base::failbit);
        return;
    }
    do {
        descriptor_ = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    } while (descriptor_ < 0 && errno == EINTR);
    clear();
    if (!is_open())
        addState(std::ios_base::failbit);
}

void AttributeStream::close() {
    // Not repeated on EINTR: Linux has released the descriptor by then.
    const bool closed = is_open() && (::close(descriptor_) == 0 || errno == EINTR);
    descriptor_ = -1;
    if (!closed)
        addState(std::ios_base::failbit);
}

void AttributeStream::writeLine(std::string_view text) {
    if (!goToStart())
        addState(std::ios_base::failbit);
    else if (!writeAll(descriptor_, text))
        addState(std::ios_base::badbit);
}

void AttributeStream::readLine(Line& line) {
    line.front() = '\0';
    const std::ios_base::iostate states = goToStart() ? receiveLine(line) : std::ios_base::failbit;
    if (states != std::ios_base::goodbit)
        addState(states);
}

/// An attribute gives its value at its start only, and takes it there.
bool AttributeStream::goToStart() {
    return good() && ::lseek(descriptor_, 0, SEEK_SET) == 0;
}

/// One read brings a sound attribute; further ones a line that arrives in pieces.
std::ios_base::iostate AttributeStream::receiveLine(Line& line) const {
    char* end = line.data();
    char* const limit = line.data() + line.size() - 1;
    while (end < limit) {
        const ssize_t received = readOnce(descriptor_, end, static_cast<std::size_t>(limit - end));
        if (received <= 0) {
            *end = '\0';
            if (received < 0)
                return std::ios_base::badbit;
            return end == line.data() ? std::ios_base::failbit | std::ios_base::eofbit
                                      : std::ios_base::eofbit;
        }
        char* const lineEnd = std::find(end, end + received, '\n');
        if (lineEnd != end + received) {
            *lineEnd = '\0';
            return std::ios_base::goodbit;
        }
        end += received;
    }
    *limit = '\0';
    return skipLine();
}

/// No attribute is longer than a page; what claims to be is read to its line end like any line.
std::ios_base::iostate AttributeStream::skipLine() const {
    std::array<char, 256> piece;  // NOLINT(*-init): filled by the read
    for (;;) {
        const ssize_t received = readOnce(descriptor_, piece.data(), piece.size());
        if (received <= 0)
            return received < 0 ? std::ios_base::badbit : std::ios_base::eofbit;
        if (std::find(piece.data(), piece.data() + received, '\n') != piece.data() + received)
            return std::ios_base::goodbit;
    }
}

void AttributeStream::addState(std::ios_base::iostate states) {
    std::ios_base::iostate before = state_;
    while (!state_.compare_exchange_weak(before, before | states)) {
    }
    if (((before | states) & raising_) != std::ios_base::goodbit)
        throw std::ios_base::failure("attribute file");
}

}  // namespace ZR
