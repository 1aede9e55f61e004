#pragma once

#include <array>
#include <ios>
#include <istream>
#include <streambuf>
#include <string>
#include <string_view>

#include "common/zrapi_export.h"

namespace ZR {

/// Stream buffer over a kernel attribute file that stays open.
///
/// Unlike a std::filebuf it drops what a failed flush could not send, so that a value which the
/// driver refused is never sent again by a later operation, and its descriptor closes on exec.
class ZRAPI_EXPORT AttributeBuffer : public std::streambuf {
  public:
    AttributeBuffer();
    AttributeBuffer(const AttributeBuffer&) = delete;
    AttributeBuffer& operator=(const AttributeBuffer&) = delete;
    ~AttributeBuffer() override;

    /// Opens @p path for reading and writing, without truncating it.
    /// @return false when it cannot be opened or the buffer is open already
    bool open(const std::string& path);

    bool isOpen() const { return descriptor_ >= 0; }

    /// Sends what is pending and closes.
    /// @return false when nothing is open, or when sending or closing failed; closed in any case
    bool close();

    /// Goes back to the start, where alone an attribute gives and takes its value.
    /// @return false when the kernel refuses
    bool rewind();

    /// Sends @p text past what is pending, in one write.
    /// @return false when the kernel refuses some of it
    bool send(std::string_view text);

    /// Reads a piece of the text, in place of what was read before; an empty piece is its end.
    /// @return false when the kernel refuses
    bool fill();

    /// Takes a line out of the piece that was read, ended by a NUL in place of the newline; valid
    /// until the next operation. Null when the piece holds no whole line: it then stays as it is.
    const char* takeLine();

  protected:
    int_type underflow() override;
    int_type overflow(int_type character) override;
    int sync() override;
    pos_type seekoff(off_type offset, std::ios_base::seekdir direction,
                     std::ios_base::openmode which) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode which) override;

  private:
    void dropInput() { setg(nullptr, nullptr, nullptr); }
    void dropOutput() { setp(output_.data(), output_.data() + output_.size()); }
    bool sendPending();

    // A value and its newline fit many times over; longer lines arrive in several reads.
    static constexpr std::size_t bufferSize = 128;

    int descriptor_ = -1;
    std::array<char, bufferSize> input_;
    std::array<char, bufferSize> output_;
};

/// Stream over a kernel attribute file, with the operations of a std::fstream opened for reading
/// and writing. Numbers are plain digits whatever the process's locale is.
class ZRAPI_EXPORT AttributeStream : public std::iostream {
  public:
    AttributeStream();
    ~AttributeStream() override;

    /// Opens @p path; sets the fail state when that is impossible, clears the state otherwise.
    void open(const std::string& path);

    bool is_open() const { return buffer_.isOpen(); }

    /// Closes; sets the fail state when nothing was open or what was pending could not be sent.
    void close();

    /// Replaces the value: seekp(0), write() and flush() in one step, with the error states of
    /// these. A step of its own because the three together cost an eighth of the system calls.
    void writeValue(std::string_view text);

    /// Reads the value: seekg(0) and std::getline() in one step, with the error states of these.
    /// @return the first line, valid until the next operation; empty on failure
    const char* readValue();

  private:
    AttributeBuffer buffer_;
    std::string longLine_;
};

}  // namespace ZR
