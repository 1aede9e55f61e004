#pragma once

#include <string>
#include <string_view>
#include <system_error>

namespace zrctl {

/// Standard output did not take the text; the code is that of the failed write.
class OutputError : public std::system_error {
  public:
    explicit OutputError(int error) : std::system_error(error, std::generic_category()) {}

    /// True when whoever read the output has left.
    bool readerLeft() const { return code() == std::errc::broken_pipe; }
};

/// Makes standard input, output and error safe to use: a descriptor that is closed is taken by a
/// placeholder, so that no device file which is opened later gets its number and with it the
/// tool's texts. A broken pipe becomes an error of the write.
void prepareStandardStreams();

/// Writes to standard output, at once and completely.
/// @throws OutputError
void print(std::string_view text);

/// Lets print() give up, with the error of a time-out, when @p descriptor is readable and the reader
/// of standard output takes nothing for two seconds more. Before that it waits for the reader.
/// @param descriptor  -1 for none: print() waits as long as the reader likes
void giveUpPrintingWhenReadable(int descriptor);

/// Fills a text up with blanks to a column's width.
std::string column(std::string text, std::size_t width);

/// Writes the line "zrctl: <text>" to standard error.
void printError(std::string_view text);

}  // namespace zrctl
