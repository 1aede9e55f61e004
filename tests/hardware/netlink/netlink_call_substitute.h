#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

/// Takes the place of socket, bind, setsockopt, sendto, recv and select while a NetlinkCalls lives:
/// logs each call with its arguments and answers what it is told. Without one everything passes on
/// to the kernel.

namespace ZR::test {

struct NetlinkAnswer {
    long result;
    int error;  ///< errno that the call leaves behind; 0 leaves it alone
};

class NetlinkCalls {
  public:
    NetlinkCalls();
    NetlinkCalls(const NetlinkCalls&) = delete;
    NetlinkCalls& operator=(const NetlinkCalls&) = delete;
    ~NetlinkCalls();

    /// Makes the n-th call of @p name, counted from 1, fail with @p error.
    void fail(const std::string& name, int occurrence, int error);

    std::deque<NetlinkAnswer> sends;    ///< for the next calls of sendto; then all bytes are taken
    std::deque<NetlinkAnswer> selects;  ///< for the next calls of select; then 1
    std::string reply;                  ///< the message that waits; each recv takes it whole

    int socket = -1;                 ///< what socket() gave: a real descriptor
    std::vector<std::string> calls;  ///< "bind 16 0 0", in their order
    std::string sent;                ///< bytes that sendto took

    /// Logs a call. True when it is to fail; errno is then set.
    bool isToFail(const std::string& name, const std::string& arguments);

  private:
    struct Failure {
        std::string name;
        int left;
        int error;
    };
    std::vector<Failure> failures_;
};

}  // namespace ZR::test
