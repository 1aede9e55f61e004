#pragma once

#include <string>
#include <utility>

namespace ZR::media_controller {

/// An open device node, or none. What a signal interrupts is tried again.
class Node {
  public:
    Node() noexcept = default;
    Node(Node&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    Node& operator=(Node&&) = delete;
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    ~Node();

    bool isOpen() const noexcept { return descriptor_ >= 0; }
    /// Opens for reading and writing; 0 or a negative errno.
    int open(const char* path) noexcept;
    /// 0 or a negative errno.
    int control(unsigned long request, void* argument) const noexcept;

  private:
    int descriptor_ = -1;
};

/// The path below /dev of a device number as sysfs has it, so without udev; empty when there is no
/// such node, or it is another device's.
std::string devicePath(unsigned int major, unsigned int minor);

}  // namespace ZR::media_controller
