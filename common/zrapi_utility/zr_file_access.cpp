#include "common/zrapi_utility/zr_file_access.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <limits>
#include <string_view>

#include "common/file_descriptor_internal.h"

namespace ZR {
namespace {

// A sysfs attribute is at most one page.
constexpr std::size_t attributeSize = 4096;
// Far above any attribute; a file that never ends must not take the memory.
constexpr std::size_t longestText = std::size_t{1024} * 1024;
constexpr std::string_view blanks = " \t";
constexpr std::string_view blanksAndLineEnds = " \t\r\n";

int openFile(const std::string& path, int flags) {
    int descriptor = -1;
    do {
        descriptor = ::open(path.c_str(), flags | O_CLOEXEC);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

ssize_t readOnce(int descriptor, char* data, std::size_t size) {
    ssize_t received = -1;
    do {
        received = ::read(descriptor, data, size);
    } while (received < 0 && errno == EINTR);
    return received;
}

/// Tells whether the text is one line that has ended.
bool isWholeLine(std::string_view text) {
    return !text.empty() && text.find('\n') == text.size() - 1;
}

/// Reads until the buffer is full or the text has ended; the count of bytes, or -1 with `errno`.
///
/// One line that has ended is the whole value: an attribute hands it out in one piece, and the read
/// that would only confirm it costs a third of the operation.
ssize_t readText(int descriptor, char* data, std::size_t size) {
    std::size_t length = 0;
    while (length < size) {
        const ssize_t received = readOnce(descriptor, data + length, size - length);
        if (received < 0)
            return -1;
        length += static_cast<std::size_t>(received);
        if (received == 0 || (length < size && isWholeLine({data, length})))
            break;
    }
    return static_cast<ssize_t>(length);
}

int parseInteger(std::string_view text, int* value) {
    if (text.empty())
        return ENODATA;
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
        // from_chars takes a minus sign of its own; "+-1" is no number.
        if (!text.empty() && text.front() == '-')
            return EINVAL;
    }
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc::invalid_argument)
        return EINVAL;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    if (text.find_first_not_of(blanksAndLineEnds) != std::string_view::npos)
        return EINVAL;
    if (error == std::errc::result_out_of_range)
        return ERANGE;
    *value = number;
    return 0;
}

/// Appends what @p descriptor gives to @p text, which is empty.
int appendText(int descriptor, std::string* text) {
    std::array<char, attributeSize> buffer;  // NOLINT(*-init): filled by the read
    for (;;) {
        const ssize_t received = readOnce(descriptor, buffer.data(), buffer.size());
        if (received < 0)
            return errno;
        text->append(buffer.data(), static_cast<std::size_t>(received));
        if (text->size() > longestText)
            return EFBIG;
        if (received == 0 || isWholeLine(*text))
            return 0;
    }
}

int writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return errno;
        // A device that takes nothing without an error would be asked for ever.
        if (written == 0)
            return EIO;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return 0;
}

}  // namespace

int readIntegerFromFile(const std::string& path, int* value) {
    const FileDescriptor file(openFile(path, O_RDONLY));
    if (!file.isOpen())
        return errno;
    std::array<char, attributeSize + 1> buffer;  // NOLINT(*-init): filled by the read
    const ssize_t length = readText(file.get(), buffer.data(), buffer.size());
    if (length < 0)
        return errno;
    if (static_cast<std::size_t>(length) > attributeSize)
        return EINVAL;
    return parseInteger({buffer.data(), static_cast<std::size_t>(length)}, value);
}

int readStringFromFile(const std::string& path, std::string* text) {
    const FileDescriptor file(openFile(path, O_RDONLY));
    if (!file.isOpen())
        return errno;
    std::string content;
    const int status = appendText(file.get(), &content);
    if (status != 0)
        return status;
    content.erase(content.find_last_not_of('\n') + 1);
    text->swap(content);
    return 0;
}

int writeToFile(const std::string& path, int value) {
    FileDescriptor file(openFile(path, O_WRONLY | O_TRUNC));
    if (!file.isOpen())
        return errno;
    std::array<char, std::numeric_limits<int>::digits10 + 3> digits{};
    const auto [end, error] = std::to_chars(digits.begin(), digits.end(), value);
    (void)error;  // the buffer holds every int
    const int status =
        writeAll(file.get(), {digits.data(), static_cast<std::size_t>(end - digits.data())});
    if (status != 0)
        return status;
    // Not repeated on EINTR: Linux has released the descriptor by then.
    if (::close(file.release()) != 0 && errno != EINTR)
        return errno;
    return 0;
}

}  // namespace ZR
