#include "tests/scene/support/silent_rtsp_peer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "tests/scene/support/ready_line.h"

namespace ZR::test {

namespace {

constexpr char mediaDescription[] =
    "v=0\r\no=- 1 1 IN IP4 127.0.0.1\r\ns=silence\r\nt=0 0\r\n"
    "m=video 0 RTP/AVP 96\r\nc=IN IP4 0.0.0.0\r\na=rtpmap:96 H264/90000\r\n"
    "a=fmtp:96 packetization-mode=1\r\na=control:stream=0\r\n";

/// Ports of the media that is never sent.
constexpr char serverPorts[] = "server_port=9-10";

struct Connection {
    int socket;
    std::string received;
};

int listenOn(int port) {
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int reuse = 1;
    (void)::setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener, SOMAXCONN) != 0)
        return -1;
    return listener;
}

/// The value of a header line, empty without it.
std::string headerOf(const std::string& request, const std::string& name) {
    const std::string start = "\r\n" + name + ": ";
    const std::size_t at = request.find(start);
    if (at == std::string::npos)
        return {};
    const std::size_t from = at + start.size();
    return request.substr(from, request.find("\r\n", from) - from);
}

std::string answerTo(const std::string& request) {
    std::string answer = "RTSP/1.0 200 OK\r\nCSeq: " + headerOf(request, "CSeq") + "\r\n";
    const std::string method = request.substr(0, request.find(' '));
    if (method == "OPTIONS")
        answer += "Public: OPTIONS, DESCRIBE, SETUP, PLAY, TEARDOWN\r\n";
    if (method == "SETUP")
        answer += "Transport: " + headerOf(request, "Transport") + ";" + serverPorts + "\r\n";
    if (method == "SETUP" || method == "PLAY")
        answer += "Session: 1\r\n";
    if (method != "DESCRIBE")
        return answer + "\r\n";
    return answer + "Content-Type: application/sdp\r\nContent-Length: " +
           std::to_string(sizeof mediaDescription - 1) + "\r\n\r\n" + mediaDescription;
}

/// Answers what was received whole. None of the requests that a player makes here has a body.
void answerAll(Connection& connection) {
    for (std::size_t end = connection.received.find("\r\n\r\n"); end != std::string::npos;
         end = connection.received.find("\r\n\r\n")) {
        const std::string answer = answerTo(connection.received.substr(0, end + 2));
        connection.received.erase(0, end + 4);
        (void)::send(connection.socket, answer.data(), answer.size(), MSG_NOSIGNAL);
    }
}

/// @return false when the other side has closed
bool receive(Connection& connection) {
    char bytes[4096];
    const ssize_t length = ::recv(connection.socket, bytes, sizeof bytes, 0);
    if (length > 0)
        connection.received.append(bytes, static_cast<std::size_t>(length));
    return length > 0;
}

/// Looks once at all connections.
void serveOnce(SilentPeer kind, int listener, std::vector<Connection>& connections) {
    std::vector<pollfd> waited = {{listener, POLLIN, 0}};
    for (const Connection& connection : connections)
        waited.push_back({connection.socket, POLLIN, 0});
    (void)::poll(waited.data(), waited.size(), -1);
    for (std::size_t i = connections.size(); i-- > 0;) {
        if (waited[i + 1].revents == 0)
            continue;
        if (!receive(connections[i])) {
            ::close(connections[i].socket);
            connections.erase(connections.begin() + static_cast<std::ptrdiff_t>(i));
        } else if (kind == SilentPeer::WithoutData) {
            answerAll(connections[i]);
        }
    }
    if (waited[0].revents != 0)
        connections.push_back({::accept(listener, nullptr, nullptr), {}});
}

}  // namespace

bool serveSilently(SilentPeer kind, int port) {
    const int listener = listenOn(port);
    if (listener < 0)
        return false;
    std::printf("%s\n", readyLine);
    std::fflush(stdout);
    std::vector<Connection> connections;
    for (;;)
        serveOnce(kind, listener, connections);
}

}  // namespace ZR::test
