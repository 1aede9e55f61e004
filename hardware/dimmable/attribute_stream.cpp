#include "hardware/dimmable/attribute_stream.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <locale>
#include <system_error>

namespace ZR {
namespace {

int whenceOf(std::ios_base::seekdir direction) {
    if (direction == std::ios_base::beg)
        return SEEK_SET;
    return direction == std::ios_base::cur ? SEEK_CUR : SEEK_END;
}

/// Writes all of it; false when the kernel refuses some.
bool writeAll(int descriptor, const char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t written = ::write(descriptor, data, size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        data += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

}  // namespace

AttributeBuffer::AttributeBuffer() {
    dropOutput();
}

AttributeBuffer::~AttributeBuffer() {
    (void)close();
}

bool AttributeBuffer::open(const std::string& path) {
    if (isOpen())
        return false;
    do {
        descriptor_ = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    } while (descriptor_ < 0 && errno == EINTR);
    return isOpen();
}

bool AttributeBuffer::close() {
    if (!isOpen())
        return false;
    const bool sent = sendPending();
    dropInput();
    const int result = ::close(descriptor_);
    descriptor_ = -1;
    return sent && result == 0;
}

AttributeBuffer::int_type AttributeBuffer::underflow() {
    // An end of file would pass off half a line as a whole one.
    if (!fill())
        throw std::ios_base::failure("reading an attribute",
                                     std::error_code(errno, std::system_category()));
    return gptr() == egptr() ? traits_type::eof() : traits_type::to_int_type(*gptr());
}

AttributeBuffer::int_type AttributeBuffer::overflow(int_type character) {
    if (!sendPending())
        return traits_type::eof();
    if (!traits_type::eq_int_type(character, traits_type::eof()))
        sputc(traits_type::to_char_type(character));
    return traits_type::not_eof(character);
}

int AttributeBuffer::sync() {
    return sendPending() ? 0 : -1;
}

AttributeBuffer::pos_type AttributeBuffer::seekoff(off_type offset,
                                                   std::ios_base::seekdir direction,
                                                   std::ios_base::openmode /*which*/) {
    if (!sendPending())
        return {off_type{-1}};
    // The kernel's position is behind what has been read ahead.
    if (direction == std::ios_base::cur)
        offset -= egptr() - gptr();
    dropInput();
    return {::lseek(descriptor_, offset, whenceOf(direction))};
}

AttributeBuffer::pos_type AttributeBuffer::seekpos(pos_type position,
                                                   std::ios_base::openmode which) {
    return seekoff(position, std::ios_base::beg, which);
}

bool AttributeBuffer::sendPending() {
    const auto size = static_cast<std::size_t>(pptr() - pbase());
    const bool sent = writeAll(descriptor_, pbase(), size);
    dropOutput();
    return sent;
}

bool AttributeBuffer::rewind() {
    if (!sendPending())
        return false;
    dropInput();
    return ::lseek(descriptor_, 0, SEEK_SET) == 0;
}

bool AttributeBuffer::send(std::string_view text) {
    return writeAll(descriptor_, text.data(), text.size());
}

bool AttributeBuffer::fill() {
    ssize_t received = -1;
    do {
        received = ::read(descriptor_, input_.data(), input_.size());
    } while (received < 0 && errno == EINTR);
    if (received < 0)
        return false;
    setg(input_.data(), input_.data(), input_.data() + received);
    return true;
}

const char* AttributeBuffer::takeLine() {
    char* const line = gptr();
    char* const end = std::find(line, egptr(), '\n');
    if (end == egptr())
        return nullptr;
    *end = '\0';
    setg(eback(), end + 1, egptr());
    return line;
}

AttributeStream::AttributeStream() : std::iostream(nullptr) {
    rdbuf(&buffer_);
    imbue(std::locale::classic());
}

AttributeStream::~AttributeStream() = default;

void AttributeStream::open(const std::string& path) {
    if (buffer_.open(path))
        clear();
    else
        setstate(std::ios_base::failbit);
}

void AttributeStream::close() {
    if (!buffer_.close())
        setstate(std::ios_base::failbit);
}

void AttributeStream::writeValue(std::string_view text) {
    if (!good() || !buffer_.rewind())
        setstate(std::ios_base::failbit);
    else if (!buffer_.send(text))
        setstate(std::ios_base::badbit);
}

const char* AttributeStream::readValue() {
    if (!good() || !buffer_.rewind()) {
        setstate(std::ios_base::failbit);
        return "";
    }
    if (!buffer_.fill()) {
        setstate(std::ios_base::badbit);
        return "";
    }
    if (const char* const line = buffer_.takeLine())
        return line;
    // No attribute that is sound: a long text, one in pieces, one without a line end.
    longLine_.clear();
    std::getline(*this, longLine_);
    return longLine_.c_str();
}

}  // namespace ZR
