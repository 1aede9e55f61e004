#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <string>
#include <utility>

namespace zrctl {

/// Owner of a file descriptor.
class Descriptor {
  public:
    /// Takes over @p number; -1 for none.
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { reset(); }

    /// Opens a device for being asked, never for being changed, without waiting for it.
    static Descriptor openDevice(const std::string& path) {
        return Descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    }

    bool isOpen() const { return number_ >= 0; }
    int number() const { return number_; }
    void reset() {
        if (number_ >= 0)
            ::close(std::exchange(number_, -1));
    }

  private:
    int number_;
};

}  // namespace zrctl
