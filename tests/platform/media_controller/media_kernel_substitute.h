#pragma once

#include "tests/platform/media_controller/media_kernel.h"

namespace ZR::test {

/// The kernel that open, close, ioctl, readlink and stat of this program reach for media, video and
/// sub-device nodes; everything else is passed on.
MediaKernel& mediaKernel();

}  // namespace ZR::test
