#pragma once

#include <unistd.h>

#include <utility>

namespace ZR {

/// Owns one file descriptor and closes it at the end of its life.
class FileDescriptor {
  public:
    explicit FileDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    FileDescriptor& operator=(FileDescriptor&&) = delete;
    ~FileDescriptor() {
        if (isOpen())
            ::close(descriptor_);
    }

    bool isOpen() const noexcept { return descriptor_ >= 0; }
    int get() const noexcept { return descriptor_; }

    /// Gives the descriptor up to the caller, who closes it.
    int release() noexcept { return std::exchange(descriptor_, -1); }

  private:
    int descriptor_;
};

}  // namespace ZR
