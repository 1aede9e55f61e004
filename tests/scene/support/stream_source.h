#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"
#include "tests/scene/support/child_process.h"

namespace ZR::test {

/// Where a network stream of one type comes from, for tests that hold for every type.
class StreamSource {
  public:
    /// Starts a sender to a new port, or a server on one.
    explicit StreamSource(ZRVideoStreamType type);

    /// Lets an input show this stream, from its next start on.
    void chooseFor(ZRGstreamerVideoInput& input) const;

    ChildProcess& process() { return *process_; }
    int port() const { return port_; }

  private:
    ZRVideoStreamType type_;
    int port_;
    std::unique_ptr<ChildProcess> process_;
};

constexpr ZRVideoStreamType networkStreams[] = {StreamUdpH264, StreamUdpJpeg, StreamRtsp};

/// How a test of a stream type is named.
std::string streamName(const testing::TestParamInfo<ZRVideoStreamType>& test);

}  // namespace ZR::test
