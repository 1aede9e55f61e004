#pragma once

#include <memory>
#include <string>

#include "tests/scene/support/child_process.h"

namespace ZR::test {

/// @return a UDP port of this machine that nobody has bound: one of its own for every stream of a test,
///         since two receivers on one port would share the packets
int freeUdpPort();
/// @return a TCP port of this machine that nobody listens on
int freeTcpPort();

/// Starts a sender of the test picture (25 pictures a second, a key picture every fifth) to a port of
/// this machine; it has sent its first packet when this returns.
std::unique_ptr<ChildProcess> sendH264(int port);
std::unique_ptr<ChildProcess> sendJpeg(int port);
/// Starts a sender of what is no stream: corrupt, cut off, of another type, about 200 packets a second.
std::unique_ptr<ChildProcess> sendJunk(int port);

/// Starts an RTSP server, which listens when this returns. To restart it, kill it and start another one
/// on the same port.
/// @param mode  good; tcp: offers its media over TCP alone; refusing: answers with an error; hanging:
///              accepts connections and never answers; silent: answers well and sends no media
std::unique_ptr<ChildProcess> serveRtsp(const std::string& mode, int port);

/// @return where such a server offers the test picture
std::string rtspUrl(int port);

}  // namespace ZR::test
