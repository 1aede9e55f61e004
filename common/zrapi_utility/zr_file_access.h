#pragma once

#include <string>

#include "common/zrapi_export.h"

/// @file
/// Reading and writing of kernel attribute files (sysfs, procfs): open, one transfer, close.
///
/// All three functions return 0 on success and else an `errno` value that says what went wrong, so
/// that any non-zero status is a failure. They keep no state, may be called from any thread, repeat
/// calls that a signal interrupted and open their descriptors close-on-exec. They report nothing.

namespace ZR {

/// Reads one decimal integer from an attribute file.
///
/// The whole text must be: optional blanks, an optional sign, decimal digits, then only blanks or
/// line ends. A line with its newline, which is what kernel attributes give, costs exactly three
/// system calls and no heap allocation; any other text costs a further read to see its end.
///
/// @param path   file to read
/// @param value  receives the number; untouched on failure; must not be null
/// @return 0, or an `errno` value: that of the failed call (ENOENT, EACCES, EISDIR, EIO, ...),
///         ENODATA for an empty file, EINVAL for a text that is no number or is longer than 4 KiB
///         (the largest attribute), ERANGE for a number outside `int`
ZRAPI_EXPORT int readIntegerFromFile(const std::string& path, int* value);

/// Reads the whole text of a file, without the line feeds at its end.
///
/// NUL bytes are part of the text. An empty file is an empty text. A single line with its newline,
/// which is what kernel attributes give, costs exactly three system calls; any other text is read
/// until the kernel says that it has ended.
///
/// @param path  file to read
/// @param text  receives the content; untouched on failure; must not be null
/// @return 0, or an `errno` value: that of the failed call, EFBIG for more than 1 MiB
ZRAPI_EXPORT int readStringFromFile(const std::string& path, std::string* text);

/// Writes an integer as decimal digits into an existing file, which is truncated first.
///
/// The digits leave in one write, without a newline, because an attribute takes each write for a
/// value of its own. A file that is missing is never created.
///
/// @param path   file to write
/// @param value  number to write
/// @return 0, or the `errno` value of the failed call; a close that fails counts, because some
///         files tell only then that the data was lost
ZRAPI_EXPORT int writeToFile(const std::string& path, int value);

}  // namespace ZR
