#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "camera_picture.h"

namespace ZR::test {

/// A stream from a capture node that a test takes frames from, by ioctls of its own.
class CameraStream {
  public:
    /// Opens a node, gives it the size that its path has, and starts.
    explicit CameraStream(const std::string& node);
    CameraStream(const CameraStream&) = delete;
    CameraStream& operator=(const CameraStream&) = delete;
    ~CameraStream();

    /// Zero, or the errno of the step that was refused: the stream did not start.
    int error() const { return error_; }

    /// The next frame; an empty one when none comes within 30 s.
    Frame next();

  private:
    bool ask(unsigned long request, void* argument);
    bool takeFormat();
    bool start();

    struct Buffer {
        void* start;
        std::size_t size;
    };

    int descriptor_;
    int error_ = 0;
    Frame shape_;
    std::vector<Buffer> buffers_;
};

/// What a capture node shows now, in words; the error's name when it does not stream.
std::string shownAt(const std::string& node);

}  // namespace ZR::test
