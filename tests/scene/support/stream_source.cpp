#include "tests/scene/support/stream_source.h"

#include "tests/scene/support/streams.h"

namespace ZR::test {

namespace {

std::unique_ptr<ChildProcess> startFor(ZRVideoStreamType type, int port) {
    switch (type) {
        case StreamRtsp:
            return serveRtsp("good", port);
        case StreamUdpJpeg:
            return sendJpeg(port);
        default:
            return sendH264(port);
    }
}

}  // namespace

StreamSource::StreamSource(ZRVideoStreamType type)
    : type_(type),
      port_(type == StreamRtsp ? freeTcpPort() : freeUdpPort()),
      process_(startFor(type, port_)) {}

void StreamSource::chooseFor(ZRGstreamerVideoInput& input) const {
    input.setStreamType(type_);
    if (type_ == StreamRtsp)
        input.setRTSPURL(rtspUrl(port_));
    else
        input.setCurrentInterface(port_);
}

std::string streamName(const testing::TestParamInfo<ZRVideoStreamType>& test) {
    constexpr const char* names[] = {"udp_h264", "udp_jpeg", "rtsp"};
    return names[test.param];
}

}  // namespace ZR::test
