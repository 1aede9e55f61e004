#include "tests/scene/support/streams.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

namespace ZR::test {

namespace {

constexpr char senderProgram[] = ZR_SCENE_PROGRAMS "/zr_stream_sender";
constexpr char serverProgram[] = ZR_SCENE_PROGRAMS "/zr_rtsp_server";

int freePort(int type) {
    const int socket = ::socket(AF_INET, type | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    socklen_t length = sizeof address;
    auto* const bound = reinterpret_cast<sockaddr*>(&address);
    const bool found =
        ::bind(socket, bound, length) == 0 && ::getsockname(socket, bound, &length) == 0;
    ::close(socket);
    if (!found)
        throw std::runtime_error("no free port");
    return ntohs(address.sin_port);
}

std::unique_ptr<ChildProcess> send(const char* what, int port) {
    return std::make_unique<ChildProcess>(
        std::vector<std::string>{senderProgram, what, std::to_string(port)});
}

}  // namespace

int freeUdpPort() {
    return freePort(SOCK_DGRAM);
}

int freeTcpPort() {
    return freePort(SOCK_STREAM);
}

std::unique_ptr<ChildProcess> sendH264(int port) {
    return send("h264", port);
}

std::unique_ptr<ChildProcess> sendJpeg(int port) {
    return send("jpeg", port);
}

std::unique_ptr<ChildProcess> sendJunk(int port) {
    return send("junk", port);
}

std::unique_ptr<ChildProcess> serveRtsp(const std::string& mode, int port) {
    return std::make_unique<ChildProcess>(
        std::vector<std::string>{serverProgram, mode, std::to_string(port)});
}

std::string rtspUrl(int port) {
    return "rtsp://127.0.0.1:" + std::to_string(port) + "/pattern";
}

}  // namespace ZR::test
