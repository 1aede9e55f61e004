#pragma once

#include <sys/types.h>

#include <string>

namespace zrctl {

/// An X server that draws into memory, for a machine without a display. It takes a number that is
/// free and ends with this object, or with the process.
class VirtualDisplay {
  public:
    /// @param width   of its screen, in pixels
    /// @param height  of its screen, in pixels
    /// @throws std::runtime_error with what to do when there is none
    VirtualDisplay(int width, int height);
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;
    ~VirtualDisplay();

    /// As DISPLAY names it.
    const std::string& name() const { return name_; }

  private:
    bool end();

    pid_t server_ = -1;
    std::string name_;
};

/// Whether windows can be shown without one: the environment names a display, or a way to draw
/// without one.
bool hasDisplay();

}  // namespace zrctl
