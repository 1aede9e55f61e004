#pragma once

#include <array>
#include <ios>
#include <istream>
#include <streambuf>
#include <string>

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

  private:
    AttributeBuffer buffer_;
};

}  // namespace ZR
