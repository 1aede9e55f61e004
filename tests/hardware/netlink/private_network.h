#pragma once

#include <string>
#include <string_view>

namespace ZR::test {

/// The controller's family and its one group: there wherever generic netlink is.
inline constexpr char controllerName[] = "nlctrl";
inline constexpr int controllerFamily = 16;
inline constexpr int controllerGroup = 16;

/// Moves the process into a network namespace of its own, where it may send into groups.
/// @return an empty text, or the reason why that is refused
std::string enterPrivateNetwork();

/// Sends messages into a group as a driver does.
class GroupSender {
  public:
    explicit GroupSender(int group);
    GroupSender(const GroupSender&) = delete;
    GroupSender& operator=(const GroupSender&) = delete;
    ~GroupSender();

    bool send(std::string_view bytes) const;

  private:
    int socket_;
    int group_;
};

/// Two connected sockets that keep messages apart and cut long ones off, as netlink does.
class SocketPair {
  public:
    SocketPair();
    SocketPair(const SocketPair&) = delete;
    SocketPair& operator=(const SocketPair&) = delete;
    ~SocketPair();

    int reader() const { return ends_[0]; }
    bool send(std::string_view bytes) const;
    /// Tells whether a message waits at the reader.
    bool holdsMessage() const;
    void hangUp();

  private:
    int ends_[2];
};

}  // namespace ZR::test
